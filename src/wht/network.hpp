// The Walsh-Hadamard transforms of orders 8 to 13 on vectors whose lanes are
// neighbouring points of one transform (the AVX2 and AVX-512 paths).
//
// The scalar passes (passes.cpp) compute the radix-2 network: stages at
// spans 1, 2, 4, ..., N/2, each turning the values a (at j) and b (at
// j + span) into a + b at j and a - b at j + span, then one product by the
// scale.  Every one of these nodes is computed here as it is there, only
// grouped differently:
//
// - a row pass loads K neighbouring vectors, runs the stages whose span is
//   below the vector length inside each vector (the vector is swapped with
//   itself in pairs at that span; the sum goes to the lower lane of each pair
//   and the difference a - b, in that order, to the upper one; or, where the
//   vector type has it, V::butterflies on two vectors at once), then the
//   next log2 K stages across the vectors;
// - column passes run the later stages across vectors at the stride of the
//   stage, lane l in column l, as the scalar column blocks do.
//
// The data stay in the destination between passes (in place works: a row
// pass reads a block and writes back the same block), the work buffer is
// not used, and the scale is applied by the last pass.  Where the stages
// left after the row pass take two column passes, the first two passes run
// one super-block at a time, so that they stay in the L1 cache.  Included by
// a vector path's translation unit after simd/lanes.hpp.
#pragma once

#include <cstddef>

namespace zam::wht::ZAM_PATH {

// Stages at spans 1 .. K/2 across the vectors x[0..K).
template <class V, int K>
[[gnu::always_inline]] inline void across(V* x)
{
#pragma GCC unroll 8
    for (int h = 1; h < K; h *= 2) {
#pragma GCC unroll 64
        for (int i = 0; i < K / 2; ++i) {
            const int j = (i / h) * 2 * h + i % h;
            const V a = x[j], b = x[j + h];
            x[j] = a + b;
            x[j + h] = a - b;
        }
    }
}

// Stages at spans 1 .. n/2 inside one vector of n lanes.
template <class V, int H = 1>
[[gnu::always_inline]] inline V within(V x)
{
    if constexpr (H < V::n) return within<V, 2 * H>(V::template butterfly<H>(x));
    else return x;
}

// Blocks of K vectors from src to dst: every stage inside a vector and log2 K
// stages across, times s when Scale.
template <class V, int K, bool Scale>
void rows(const typename V::T* src, typename V::T* dst, ptrdiff_t blocks, V s)
{
    constexpr ptrdiff_t n = V::n;
    for (ptrdiff_t b = 0; b < blocks; ++b, src += K * n, dst += K * n) {
        V x[K];
        if constexpr (requires { V::butterflies(x[0], x[1]); }) {
#pragma GCC unroll 64
            for (int k = 0; k < K; ++k) x[k] = V::load(src + k * n);
#pragma GCC unroll 64
            for (int k = 0; k < K; k += 2) V::butterflies(x[k], x[k + 1]);
        } else {
#pragma GCC unroll 64
            for (int k = 0; k < K; ++k) x[k] = within(V::load(src + k * n));
        }
        across<V, K>(x);
#pragma GCC unroll 64
        for (int k = 0; k < K; ++k) V::store(dst + k * n, Scale ? x[k] * s : x[k]);
    }
}

// log2 K stages at spans stride .. (K/2) stride over `groups` consecutive
// regions of K * stride points at p, in place, times s when Scale.
template <class V, int K, bool Scale>
void columns(typename V::T* p, ptrdiff_t stride, ptrdiff_t groups, V s)
{
    constexpr ptrdiff_t n = V::n;
    for (ptrdiff_t g = 0; g < groups; ++g, p += K * stride) {
        for (ptrdiff_t c = 0; c < stride; c += n) {
            V x[K];
#pragma GCC unroll 64
            for (int k = 0; k < K; ++k) x[k] = V::load(p + c + k * stride);
            across<V, K>(x);
#pragma GCC unroll 64
            for (int k = 0; k < K; ++k) V::store(p + c + k * stride, Scale ? x[k] * s : x[k]);
        }
    }
}

// Order L with a first row pass of K vectors (log2(n K) stages) and column
// passes of C1 and then C2 vectors (C2 = 1: none).
template <class V, int L, int K, int C1, int C2>
void passes(const typename V::T* src, typename V::T* dst, V s)
{
    constexpr ptrdiff_t N = ptrdiff_t{1} << L, n = V::n;
    static_assert(n * K * C1 * C2 == N);
    if constexpr (C1 == 1) {
        rows<V, K, true>(src, dst, N / (n * K), s);
    } else if constexpr (C2 == 1) {
        rows<V, K, false>(src, dst, N / (n * K), s);
        columns<V, C1, true>(dst, n * K, 1, s);
    } else {
        // Super-blocks of the first two passes, then the last pass.
        constexpr ptrdiff_t super = n * K * C1;
        for (ptrdiff_t b = 0; b < N; b += super) {
            rows<V, K, false>(src + b, dst + b, C1, s);
            columns<V, C1, false>(dst + b, n * K, 1, s);
        }
        columns<V, C2, true>(dst, super, 1, s);
    }
}

// The passes of order L on vectors V: as many stages as fit in a row pass of
// up to 16 vectors, the rest in one column pass of up to 16 vectors or, from
// five stages on, in two (the last of 8 vectors), the first two passes by
// super-blocks.
template <class V, int L>
void order_passes(const typename V::T* src, typename V::T* dst, typename V::T s)
{
    constexpr int v = V::n == 16 ? 4 : V::n == 8 ? 3 : V::n == 4 ? 2 : 1;
    constexpr int a = L - v < 4 ? L - v : 4, r = L - v - a, c1 = r <= 4 ? r : r - 3, c2 = r - c1;
    passes<V, L, 1 << a, 1 << c1, 1 << c2>(src, dst, V(s));
}

template <class V>
void network_order(int order, const typename V::T* src, typename V::T* dst, typename V::T s)
{
    switch (order) {
    case 8: return order_passes<V, 8>(src, dst, s);
    case 9: return order_passes<V, 9>(src, dst, s);
    case 10: return order_passes<V, 10>(src, dst, s);
    case 11: return order_passes<V, 11>(src, dst, s);
    case 12: return order_passes<V, 12>(src, dst, s);
    case 13: return order_passes<V, 13>(src, dst, s);
    default: return;
    }
}

} // namespace zam::wht::ZAM_PATH
