// Where the second pass of the DCT-IV finds its rotations: the library fills
// its tables in this order and the codelet compiler's radix kernels read them
// in it, so both share this one header.
#pragma once

#include <cstdint>

namespace zam::dct4 {

// The second-pass table slot of (cos, sin) pair p in a row of radix r: pairs
// come in quadruples, a pair from the front followed by its mirrored pair
// r-1-p.  r <= 4: quadruple q holds pairs q and r-1-q.  r >= 8: quadruple
// q = (r/4)b + 2c + j (b, j in 0..1, c < r/8) holds the front pair
// b + 4c + (r/2)j.
constexpr uint32_t table_slot(uint32_t r, uint32_t p)
{
    if (r <= 4) return p < (r + 1) / 2 ? 4 * p : 4 * (r - 1 - p) + 2;
    const uint32_t front = p % 4 <= 1 ? p : r - 1 - p;
    const uint32_t half = r / 2, j = front / half, rest = front % half;
    const uint32_t b = rest % 4, c = rest / 4;
    const uint32_t quad = (r / 4) * b + 2 * c + j;
    return 4 * quad + (front == p ? 0 : 2);
}

} // namespace zam::dct4
