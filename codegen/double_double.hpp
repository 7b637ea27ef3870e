// Double-double arithmetic for the codelet compiler's constants.
//
// Every trigonometric and convolution constant of a codelet is computed here
// with about 104 significant bits and rounded to double once.  Only IEEE
// additions, subtractions and multiplications of doubles are used (products
// are split with Dekker's method, never with a fused multiply-add), so the
// constants, and with them the generated sources, are the same on every host.
#pragma once

#include <cstdint>

namespace zg {

struct DoubleDouble {
    double hi = 0.0;
    double lo = 0.0;

    constexpr DoubleDouble() = default;
    constexpr DoubleDouble(double h) : hi(h), lo(0.0) {}
    constexpr DoubleDouble(double h, double l) : hi(h), lo(l) {}

    // The double nearest to the represented value (the pair is kept normalised,
    // so that is the high part).
    double to_double() const { return hi; }
};

DoubleDouble operator+(DoubleDouble a, DoubleDouble b);
DoubleDouble operator-(DoubleDouble a, DoubleDouble b);
DoubleDouble operator-(DoubleDouble a);
DoubleDouble operator*(DoubleDouble a, DoubleDouble b);
DoubleDouble operator/(DoubleDouble a, DoubleDouble b);

// sin and cos of 2*pi*num/den for integers num, den (den > 0).
DoubleDouble cos2pi(int64_t num, int64_t den);
DoubleDouble sin2pi(int64_t num, int64_t den);

} // namespace zg
