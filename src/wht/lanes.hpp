// The Walsh-Hadamard transforms of orders 8 to 13 on vectors of lanes: the
// passes of wht.cpp with neighbouring blocks side by side, one per lane, each
// lane performing exactly the scalar block's operations (the same bits).
// Column passes: lane l is the column l places on, so every access is a
// vector load or store.  Row passes (contiguous blocks): lane l is the block
// l places on, its values transposed into lanes on loading and back on
// storing.  Included by each vector path's translation unit after
// simd/lanes.hpp; everything lands in zam::wht::ZAM_PATH.
#pragma once

#include <cstddef>

namespace zam::wht::ZAM_PATH {

using zam::ZAM_PATH::Wide;

template <class V_>
struct ColumnIO {
    using V = V_;
    using T = typename V::T;
    const T* src;
    ptrdiff_t is;
    T* dst;
    ptrdiff_t os;
    V s;
    V in(int k) const { return V::load(src + k * is); }
    void out(int k, V v) const { V::store(dst + k * os, v); }
};

template <class V_>
struct RowIO {
    using V = V_;
    const V* values;
    V* results;
    V s;
    V in(int k) const { return values[k]; }
    void out(int k, V v) const { results[k] = v; }
};

// The generated blocks of one precision, by length, unscaled (B) and scaled (S).
template <class T> struct Blocks;
#define ZAM_WHT_BLOCKS(T, sfx)                                                                       \
    template <> struct Blocks<T> {                                                                   \
        template <class IO> static void b16(IO io) { wht_lanes::wht_block_16_##sfx(io); }           \
        template <class IO> static void b64(IO io) { wht_lanes::wht_block_64_##sfx(io); }           \
        template <class IO> static void s8(IO io) { wht_lanes::wht_scaled_block_8_##sfx(io); }      \
        template <class IO> static void s16(IO io) { wht_lanes::wht_scaled_block_16_##sfx(io); }    \
        template <class IO> static void s32(IO io) { wht_lanes::wht_scaled_block_32_##sfx(io); }    \
        template <class IO> static void s64(IO io) { wht_lanes::wht_scaled_block_64_##sfx(io); }    \
    };
ZAM_WHT_BLOCKS(float, 32f)
ZAM_WHT_BLOCKS(double, 64f)
#undef ZAM_WHT_BLOCKS

// `count` blocks of M contiguous points from src to dst, unscaled.
template <class V, int M, class T, class Block>
void row_pass(Block block, const T* src, T* dst, ptrdiff_t count)
{
    V in[M], out[M];
    for (ptrdiff_t b = 0; b < count; b += V::n) {
        V::rows(src + M * b, M, M, in);
        block(RowIO<V>{in, out, V(T(1))});
        V::store_rows(dst + M * b, M, M, out);
    }
}

// Columns k < count: column k from src + k at stride `is` to dst + k at
// stride `os`, times s where the block scales.
template <class V, class T, class Block>
void column_pass(Block block, const T* src, ptrdiff_t is, T* dst, ptrdiff_t os, ptrdiff_t count, T s)
{
    for (ptrdiff_t k = 0; k < count; k += V::n) block(ColumnIO<V>{src + k, is, dst + k, os, V(s)});
}

// The passes of wht.cpp's large_order, in the same order on the same areas.
template <class T>
void large_order(int order, const T* src, T* dst, T s, T* work)
{
    using V = typename Wide<T>::type;
    using B = Blocks<T>;
    using Row = RowIO<V>;
    using Col = ColumnIO<V>;
    const ptrdiff_t n = ptrdiff_t{1} << order;
    if (order <= 10) {
        row_pass<V, 16>([](Row io) { B::template b16<Row>(io); }, src, work, n / 16);
        if (order == 8) column_pass<V>([](Col io) { B::template s16<Col>(io); }, work, 16, dst, 16, 16, s);
        else if (order == 9) column_pass<V>([](Col io) { B::template s32<Col>(io); }, work, 16, dst, 16, 16, s);
        else column_pass<V>([](Col io) { B::template s64<Col>(io); }, work, 16, dst, 16, 16, s);
    } else if (order == 11) {
        row_pass<V, 64>([](Row io) { B::template b64<Row>(io); }, src, work, 32);
        column_pass<V>([](Col io) { B::template s32<Col>(io); }, work, 64, dst, 64, 64, s);
    } else {
        const ptrdiff_t super = order == 12 ? 256 : 1024;
        T* const staging = work + n;
        for (ptrdiff_t sb = 0; sb < n / super; ++sb) {
            row_pass<V, 16>([](Row io) { B::template b16<Row>(io); }, src + super * sb, staging, super / 16);
            if (order == 12) column_pass<V>([](Col io) { B::template b16<Col>(io); }, staging, 16, work + super * sb, 16, 16, s);
            else column_pass<V>([](Col io) { B::template b64<Col>(io); }, staging, 16, work + super * sb, 16, 16, s);
        }
        if (order == 12) column_pass<V>([](Col io) { B::template s16<Col>(io); }, work, super, dst, super, super, s);
        else column_pass<V>([](Col io) { B::template s8<Col>(io); }, work, super, dst, super, super, s);
    }
}

} // namespace zam::wht::ZAM_PATH
