// The DCT-IV passes on vectors of lanes: each lane runs the scalar kernel of
// one group, so the results are the scalar path's bit for bit.  Included by
// the translation unit of each vector path inside its instruction-set region
// (simd/path_*.cpp), after simd/lanes.hpp; everything lands in
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

#include <type_traits>

namespace zam::dct4::ZAM_PATH {

using zam::ZAM_PATH::Wide;

template <class V_, uint32_t M>
struct LaneFirst {
    using V = V_;
    using T = typename V::T;
    const T* x;
    uint32_t off, s, L;
    T* o;
    uint32_t t;
    V in(uint32_t k) const { return k < M / 2 ? V::load(x + (off + k * s)) : V::load_rev(x + (L - off - k * s)); }
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

// One vector of first-pass groups: lane l at off + l, results to o + l.
template <class V, class T>
void first_call(uint32_t kind, const T* x, uint32_t off, uint32_t s, uint32_t L, T* o, uint32_t t)
{
    switch (kind) {
    case 1: first2_on(LaneFirst<V, 2>{x, off, s, L, o, t}); break;
    case 2: first4_on(LaneFirst<V, 4>{x, off, s, L, o, t}); break;
    case 3: first8_on(LaneFirst<V, 8>{x, off, s, L, o, t}); break;
    case 4: lanes::first16<V>(x, off, s, L, o, t); break;
    case 5: lanes::first32<V>(x, off, s, L, o, t); break;
    case 6: lanes::first64<V>(x, off, s, L, o, t); break;
    default: break;
    }
}

// Groups j, j + V::n, ... while a whole vector fits; returns the next j.
template <class V, class T>
uint32_t first_on(uint32_t kind, const T* x, uint32_t off0, uint32_t j, uint32_t count, uint32_t s, uint32_t L, T* out,
                  uint32_t t)
{
    for (; j + V::n <= count; j += V::n) first_call<V>(kind, x, off0 + j, s, L, out + j, t);
    return j;
}

// One vector of nested stages' radix kernels (kind 1..5 for r' = 2..32).
template <class V, class T>
void radix_call(uint32_t kind, bool odd, const T* v, const T* tw, T* front, T* back, ptrdiff_t step, ptrdiff_t t)
{
    switch (2 * kind + odd) {
    case 2: lanes::radix_even2<V>(v, tw, front, back, step, t); break;
    case 3: lanes::radix_odd2<V>(v, tw, front, back, step, t); break;
    case 4: lanes::radix_even4<V>(v, tw, front, back, step, t); break;
    case 5: lanes::radix_odd4<V>(v, tw, front, back, step, t); break;
    case 6: lanes::radix_even8<V>(v, tw, front, back, step, t); break;
    case 7: lanes::radix_odd8<V>(v, tw, front, back, step, t); break;
    case 8: lanes::radix_even16<V>(v, tw, front, back, step, t); break;
    case 9: lanes::radix_odd16<V>(v, tw, front, back, step, t); break;
    case 10: lanes::radix_even32<V>(v, tw, front, back, step, t); break;
    case 11: lanes::radix_odd32<V>(v, tw, front, back, step, t); break;
    default: break;
    }
}

// The nested stages of owner groups j, j + V::n, ... side by side, lane l
// for owner group j + l (its source from base + j + l, its results to
// out + j + l): the stages' scratch values interleaved on the stack, value
// k of lane l at scratch[k V::n + l], so every access is a whole vector.
// Stages with nested stages of their own, or too long for the stack, are
// left to the scalar code.
template <class V, class T>
uint32_t stage_on(const StageArgs<T>& a, const T* x, uint32_t base, uint32_t j, uint32_t count, T* out, uint32_t t)
{
    constexpr uint32_t n = V::n;
    if (a.first_kind < 1 || a.first_kind > 6 || a.radix_kind < 1 || a.radix_kind > 5 ||
        uint64_t(a.length) * n * sizeof(T) > kLaneScratchBytes)
        return j;
    alignas(64) T scratch[kLaneScratchBytes / sizeof(T)];
    const uint32_t per_group = 2 * (a.radix - 1);
    const ptrdiff_t step = 2 * ptrdiff_t(a.sub_length) * t;
    for (; j + n <= count; j += n) {
        for (uint32_t i = 0; i < a.first_count; ++i)
            first_call<V>(a.first_kind, x, base + j + i * a.first_step, a.first_stride, a.first_mirror, scratch + i * n,
                          a.first_out * n);
        for (uint32_t g = 0; g < a.groups; ++g) {
            const uint32_t low = (g % 2 == 0 ? g : a.sub_length - 1 - g) & ~1u;  // 2 l1, as the scalar driver
            radix_call<V>(a.radix_kind, g % 2 != 0, scratch + uint64_t(2 * a.radix) * g * n,
                          a.twiddles + uint64_t(per_group) * g, out + j + ptrdiff_t(2 * low) * t,
                          out + j + ptrdiff_t(2 * (a.length - 1 - low)) * t, step, t);
        }
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

// The path's entry points: as many groups as fill vectors, widest first,
// then on each narrower vector in turn (W, its Half H, H's Half Q); the
// caller runs the scalar kernel on the groups from the returned index.
template <class T>
uint32_t first_groups(uint32_t kind, const T* x, uint32_t off0, uint32_t count, uint32_t s, uint32_t L, T* out,
                      uint32_t t)
{
    using W = typename Wide<T>::type;
    using H = typename W::Half;
    using Q = typename H::Half;
    uint32_t j = first_on<W>(kind, x, off0, 0, count, s, L, out, t);
    if constexpr (H::n < W::n) j = first_on<H>(kind, x, off0, j, count, s, L, out, t);
    if constexpr (Q::n < H::n) j = first_on<Q>(kind, x, off0, j, count, s, L, out, t);
    return j;
}

template <class T>
uint32_t stage_groups(const StageArgs<T>& a, const T* x, uint32_t base, uint32_t count, T* out, uint32_t t)
{
    using W = typename Wide<T>::type;
    using H = typename W::Half;
    using Q = typename H::Half;
    uint32_t j = stage_on<W>(a, x, base, 0, count, out, t);
    if constexpr (H::n < W::n) j = stage_on<H>(a, x, base, j, count, out, t);
    if constexpr (Q::n < H::n) j = stage_on<Q>(a, x, base, j, count, out, t);
    return j;
}

// The second pass transposes its rows into lanes: on 512-bit vectors that
// costs more than the wider arithmetic saves (on AMD's Zen 4 no length ran
// faster and most ran 5 to 20% slower than on 256-bit ones), so there it
// starts at 256 bits.
template <class T>
uint32_t second_groups(uint32_t kind, uint32_t r, const T* v, ptrdiff_t vrow, const T* table, ptrdiff_t trow, T* y,
                       uint32_t g0, uint32_t count, uint32_t S, uint32_t L)
{
    using Widest = typename Wide<T>::type;
    using W = std::conditional_t<(sizeof(Widest) > 32), typename Widest::Half, Widest>;
    using H = typename W::Half;
    using Q = typename H::Half;
    uint32_t i = second_on<W>(kind, r, v, vrow, table, trow, y, g0, 0, count, S, L);
    if constexpr (H::n < W::n) i = second_on<H>(kind, r, v, vrow, table, trow, y, g0, i, count, S, L);
    if constexpr (Q::n < H::n) i = second_on<Q>(kind, r, v, vrow, table, trow, y, g0, i, count, S, L);
    return i;
}

} // namespace zam::dct4::ZAM_PATH
