// The DCT-IV passes on vectors of lanes: each lane runs the scalar kernel of
// one group, so the results are the scalar path's bit for bit.  Included by
// the translation unit of each vector path inside its instruction-set region
// (dct4/path_*.cpp), after simd/lanes.hpp; everything lands in
// zam::dct4::ZAM_PATH.
//
// First pass: groups j of one input pass start at off0 + j and write to
// out + j, so lane l of a vector reads x[off + l + k s] (a vector load),
// x[L - off - l - k s] (a reversed load) and writes out[l + k t].
// Second pass: lane l is group g + l; its 2r scratch values and its table
// values are rows of the scratch and of the table, transposed into lanes on
// loading; its results go to y[g + l + j S] and y[L - g - l - j S].
#pragma once

#include "dct4/pass_kernels.hpp"

namespace zam::dct4::ZAM_PATH {

using zam::ZAM_PATH::Narrow;
using zam::ZAM_PATH::Wide;

template <class V_>
struct LaneFirst {
    using V = V_;
    using T = typename V::T;
    const T* x;
    uint32_t off, s, L;
    T* o;
    uint32_t t, m;
    V in(uint32_t k) const { return k < m / 2 ? V::load(x + (off + k * s)) : V::load_rev(x + (L - off - k * s)); }
    void out(uint32_t k, V v) const { V::store(o + ptrdiff_t(k) * t, v); }
};

template <class V_>
struct LaneSecond {
    using V = V_;
    using T = typename V::T;
    const V* values;
    const V* table;
    T* y;
    uint32_t g, S, L, r;
    V in(uint32_t k) const { return values[k]; }
    V tw(uint32_t k) const { return table[k]; }
    void out(uint32_t k, V v) const
    {
        if (k < r) V::store(y + (g + ptrdiff_t(k) * S), v);
        else V::store_rev(y + (ptrdiff_t(L) - g - ptrdiff_t(k) * S), v);
    }
};

// Groups j0, j0 + V::n, ... while a whole vector fits; returns the next j.
template <class V, class T>
uint32_t first_on(uint32_t kind, const T* x, uint32_t off0, uint32_t j, uint32_t count, uint32_t s, uint32_t L, T* out,
                  uint32_t t)
{
    auto each = [&](auto kernel) {
        for (; j + V::n <= count; j += V::n) kernel(off0 + j, out + j);
    };
    switch (kind) {
    case 1: each([&](uint32_t off, T* o) { first2_on(LaneFirst<V>{x, off, s, L, o, t, 2}); }); break;
    case 2: each([&](uint32_t off, T* o) { first4_on(LaneFirst<V>{x, off, s, L, o, t, 4}); }); break;
    case 3: each([&](uint32_t off, T* o) { first8_on(LaneFirst<V>{x, off, s, L, o, t, 8}); }); break;
    case 4: each([&](uint32_t off, T* o) { lanes::first16<V>(x, off, s, L, o, t); }); break;
    case 5: each([&](uint32_t off, T* o) { lanes::first32<V>(x, off, s, L, o, t); }); break;
    case 6: each([&](uint32_t off, T* o) { lanes::first64<V>(x, off, s, L, o, t); }); break;
    default: break;
    }
    return j;
}

// Groups g0 + i, i = i0, i0 + V::n, ... while a whole vector fits; group i's
// values at v + i vrow, its table values at table + i trow.  Returns the
// next i.
template <class V, class T>
uint32_t second_on(uint32_t kind, uint32_t r, const T* v, ptrdiff_t vrow, const T* table, ptrdiff_t trow, T* y,
                   uint32_t g0, uint32_t i, uint32_t count, uint32_t S, uint32_t L)
{
    auto each = [&](auto kernel) {
        for (; i + V::n <= count; i += V::n) kernel(v + ptrdiff_t(i) * vrow, table + ptrdiff_t(i) * trow, g0 + i);
    };
    auto small = [&](auto body) {
        each([&](const T* vg, const T* tg, uint32_t g) {
            V values[8], tw[8];
            V::rows(vg, vrow, int(2 * r), values);
            V::rows(tg, trow, int(2 * r), tw);
            body(LaneSecond<V>{values, tw, y, g, S, L, r});
        });
    };
    switch (kind) {
    case 1: small([](LaneSecond<V> io) { second1_on(io); }); break;
    case 2: small([](LaneSecond<V> io) { second2_on(io); }); break;
    case 3: small([](LaneSecond<V> io) { second4_on(io); }); break;
    case 4: each([&](const T* vg, const T* tg, uint32_t g) { lanes::second8<V>(vg, vrow, tg, trow, y, g, S, L); }); break;
    case 5: each([&](const T* vg, const T* tg, uint32_t g) { lanes::second16<V>(vg, vrow, tg, trow, y, g, S, L); }); break;
    case 6: each([&](const T* vg, const T* tg, uint32_t g) { lanes::second32<V>(vg, vrow, tg, trow, y, g, S, L); }); break;
    default: break;
    }
    return i;
}

// The path's entry points: as many groups as fill vectors, widest first;
// the caller runs the scalar kernel on the groups from the returned index.
template <class T>
uint32_t first_groups(uint32_t kind, const T* x, uint32_t off0, uint32_t count, uint32_t s, uint32_t L, T* out,
                      uint32_t t)
{
    using W = typename Wide<T>::type;
    using N = typename Narrow<T>::type;
    uint32_t j = first_on<W>(kind, x, off0, 0, count, s, L, out, t);
    if constexpr (N::n < W::n) j = first_on<N>(kind, x, off0, j, count, s, L, out, t);
    return j;
}

template <class T>
uint32_t second_groups(uint32_t kind, uint32_t r, const T* v, ptrdiff_t vrow, const T* table, ptrdiff_t trow, T* y,
                       uint32_t g0, uint32_t count, uint32_t S, uint32_t L)
{
    using W = typename Wide<T>::type;
    using N = typename Narrow<T>::type;
    uint32_t i = second_on<W>(kind, r, v, vrow, table, trow, y, g0, 0, count, S, L);
    if constexpr (N::n < W::n) i = second_on<N>(kind, r, v, vrow, table, trow, y, g0, i, count, S, L);
    return i;
}

} // namespace zam::dct4::ZAM_PATH
