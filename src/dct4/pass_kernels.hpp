// The first-pass kernels of 2, 4 and 8 points and the second-pass kernels of
// radix 1, 2 and 4, written once for any kind of value: the scalar path runs
// them on one group with `ScalarFirst`/`ScalarSecond`, the vector paths on
// as many groups at once as a vector has lanes (dct4/lanes.hpp).  `io.in(k)`
// is input k of the group (first pass: x[off + k s] for k < M/2, else
// x[L - off - k s]; second pass: scratch values 0..2r-1, then table values
// 2r..), `io.tw(k)` table value k, `io.out(k, v)` stores result k (first pass
// to out[k t]; second pass: k < r to y[g + k S], else y[L - g - k S]).
#pragma once

#include "dct4/kernels.hpp"
#include "frame/access.hpp"

namespace zam::dct4 {

template <class IO>
[[gnu::always_inline]] inline void first2_on(IO io)
{
    using V = typename IO::V;
    const V a = io.in(0), b = io.in(1);
    io.out(0, a);
    io.out(1, -b);
}

template <class IO>
[[gnu::always_inline]] inline void first4_on(IO io)
{
    using V = typename IO::V;
    const V h(K<typename IO::T>::h);
    const V a = io.in(0), b = io.in(1), d = io.in(2), e = io.in(3);
    const V sum = h * (b + e), dif = h * (b - e);
    io.out(0, a + sum);
    io.out(1, dif - d);
    io.out(2, a - sum);
    io.out(3, d + dif);
}

template <class IO>
[[gnu::always_inline]] inline void first8_on(IO io)
{
    using V = typename IO::V;
    using C = K<typename IO::T>;
    const V h(C::h), c(C::c8), n(C::s8);
    const V a0 = io.in(0), a1 = io.in(1), a2 = io.in(2), a3 = io.in(3);
    const V b4 = io.in(4), b5 = io.in(5), b6 = io.in(6), b7 = io.in(7);
    const V p = h * (a2 + b6), q = h * (a2 - b6), u = h * (a3 + b7), w = h * (a3 - b7);
    const V A = a0 + p, B = a1 + u, D = w - b5, E = a0 - p, F = a1 - u, G = b5 + w;
    const V r0 = c * B - n * D, i0 = n * B + c * D, r1 = n * F - c * G, i1 = c * F + n * G;
    const V qm = q - b4, qp = b4 + q;
    io.out(0, A + r0);
    io.out(6, A - r0);
    io.out(1, qm + i0);
    io.out(7, i0 - qm);
    io.out(2, E + r1);
    io.out(4, E - r1);
    io.out(3, qp + i1);
    io.out(5, i1 - qp);
}

template <class IO>
[[gnu::always_inline]] inline void second1_on(IO io)
{
    using V = typename IO::V;
    const V a = io.in(0), b = io.in(1), u = io.tw(0), w = io.tw(1);
    io.out(0, u * a - w * b);
    io.out(1, w * a + u * b);
}

template <class IO>
[[gnu::always_inline]] inline void second2_on(IO io)
{
    using V = typename IO::V;
    const V h(K<typename IO::T>::h);
    const V v0 = io.in(0), v1 = io.in(1), v2 = io.in(2), v3 = io.in(3);
    const V w0 = io.tw(0), w1 = io.tw(1), w2 = io.tw(2), w3 = io.tw(3);
    const V pr = v0 * w0 - v2 * w1, pi = v0 * w1 + v2 * w0;
    const V qr = v1 * w2 - v3 * w3, qi = v1 * w3 + v3 * w2;
    const V a = h * (pr - qr), b = h * (pi + qi);
    io.out(0, pr + qr);
    io.out(1, a - b);
    io.out(2, pi - qi);
    io.out(3, a + b);
}

template <class IO>
[[gnu::always_inline]] inline void second4_on(IO io)
{
    using V = typename IO::V;
    using C = K<typename IO::T>;
    const V h(C::h), c(C::c8), n(C::s8);
    V v[8], t[8];
    for (int k = 0; k < 8; ++k) v[k] = io.in(k), t[k] = io.tw(k);
    // Values 0, 3, 1, 2 take the group's four table pairs in that order.
    const V r0 = v[0] * t[0] - v[4] * t[1], i0 = v[0] * t[1] + v[4] * t[0];
    const V r3 = v[3] * t[2] - v[7] * t[3], i3 = v[3] * t[3] + v[7] * t[2];
    const V r1 = v[1] * t[4] - v[5] * t[5], i1 = v[1] * t[5] + v[5] * t[4];
    const V r2 = v[2] * t[6] - v[6] * t[7], i2 = v[2] * t[7] + v[6] * t[6];
    const V X = c * (r0 - r3) - n * (i0 + i3), Y = n * (r0 - r3) + c * (i0 + i3);
    const V Z = n * (r1 - r2) - c * (i1 + i2), W = c * (r1 - r2) + n * (i1 + i2);
    const V ra = r0 + r3, rb = r1 + r2, ia = i0 - i3, ib = i1 - i2;
    const V e = h * (ra - rb), f = h * (ia + ib);
    const V xz = h * (X - Z), yw = h * (Y + W);
    io.out(0, ra + rb);
    io.out(2, e - f);
    io.out(6, e + f);
    io.out(4, ia - ib);
    io.out(1, X + Z);
    io.out(3, xz - yw);
    io.out(7, xz + yw);
    io.out(5, Y - W);
}

// One group on scalars: the addresses of the first-pass kernel of M points.
template <class T_>
struct ScalarFirst {
    using T = T_;
    using V = T_;
    const T* x;
    uint32_t off, s, L;
    T* o;
    uint32_t t, m;
    T in(uint32_t k) const { return load<T>(x, k < m / 2 ? off + k * s : L - off - k * s); }
    void out(uint32_t k, T v) const { o[k * t] = v; }
};

// One group on scalars: the second-pass kernel of radix r.
template <class T_>
struct ScalarSecond {
    using T = T_;
    using V = T_;
    const T* v;
    const T* table;
    T* y;
    uint32_t g, S, L, r;
    T in(uint32_t k) const { return v[k]; }
    T tw(uint32_t k) const { return table[k]; }
    void out(uint32_t k, T value) const { store<T>(y, k < r ? g + k * S : L - g - k * S, value); }
};

} // namespace zam::dct4
