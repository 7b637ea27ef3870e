// Vectors of lanes for the vector paths.  A translation unit of one path
// defines ZAM_PATH (sse2, avx2, avx512) and ZAM_PATH_BITS (its widest vector:
// 128, 256, 512), switches the compiler to that instruction set and includes
// this header: the types land in namespace zam::ZAM_PATH, so two paths never
// share a function body (the linker would otherwise be free to keep one
// path's copy of an inline function for the other).  The path's width comes
// from ZAM_PATH_BITS, never from the compiler's __AVX2__ or __AVX512F__: a
// user's -march=native turns those on in every path's sources, and the SSE2
// path must stay SSE2 code on every processor.
//
// Every operation acts on each lane alone and is exactly the scalar
// operation on that lane's operands: sums, differences and products in the
// lane type, negation as a flip of the sign bit (what the scalar code does).
// Nothing here fuses, reorders or approximates, so a kernel run on lanes
// gives each lane the bits the scalar kernel gives it.
//
//   V(c)              every lane c
//   V::load(p)        lane l = p[l]
//   V::load_rev(p)    lane l = p[-l]
//   V::store(p, a)    p[l] = lane l
//   V::store_rev(p, a) p[-l] = lane l
//   V::rows(p, row, count, out)   out[k] lane l = p[l row + k], k < count
//                     (a transposition: lane l reads row l)
//   V::store_rows(p, row, count, in)  p[l row + k] = in[k] lane l
#if !defined(ZAM_PATH) || !defined(ZAM_PATH_BITS)
#error "define ZAM_PATH and ZAM_PATH_BITS before including simd/lanes.hpp"
#endif

#include <immintrin.h>

#include <cstddef>

namespace zam::ZAM_PATH {

#define ZAM_LANE_OPS(V, add, sub, mul, xor_, set1)                                                   \
    inline V operator+(V a, V b) { return V(add(a.v, b.v)); }                                        \
    inline V operator-(V a, V b) { return V(sub(a.v, b.v)); }                                        \
    inline V operator*(V a, V b) { return V(mul(a.v, b.v)); }                                        \
    inline V operator-(V a) { return V(xor_(a.v, set1(-0.0))); }

// Rows to lanes and back: whole squares by transposition, the rest by
// way of memory.
#define ZAM_LANE_ROWS(V)                                                                           \
    static void gather(const T* p, ptrdiff_t row, int k, V* out)                                   \
    {                                                                                                \
        alignas(64) T t[n];                                                                          \
        for (int l = 0; l < n; ++l) t[l] = p[l * row + k];                                           \
        *out = V(load(t));                                                                           \
    }                                                                                                \
    static void scatter(T* p, ptrdiff_t row, int k, V in)                                          \
    {                                                                                                \
        alignas(64) T t[n];                                                                          \
        store(t, in);                                                                                \
        for (int l = 0; l < n; ++l) p[l * row + k] = t[l];                                           \
    }                                                                                                \
    static void store_rows(T* p, ptrdiff_t row, int count, const V* in)                            \
    {                                                                                                \
        for (int k = 0; k < count; k += n) {                                                         \
            if (count - k < n) {                                                                     \
                for (int j = k; j < count; ++j) scatter(p, row, j, in[j]);                           \
                break;                                                                               \
            }                                                                                        \
            V r[n];                                                                                  \
            transpose(in + k, r);                                                                    \
            for (int l = 0; l < n; ++l) store(p + l * row + k, r[l]);                                \
        }                                                                                            \
    }                                                                                                \
    static void rows(const T* p, ptrdiff_t row, int count, V* out)                                 \
    {                                                                                                \
        _Pragma("GCC unroll 16") for (int k = 0; k < count; k += n) {                                \
            if (count - k < n) {                                                                     \
                for (int j = k; j < count; ++j) gather(p, row, j, out + j);                          \
                break;                                                                               \
            }                                                                                        \
            V t[n];                                                                                  \
            _Pragma("GCC unroll 16") for (int l = 0; l < n; ++l) t[l] = load(p + l * row + k);       \
            transpose(t, out + k);                                                                   \
        }                                                                                            \
    }

struct F32x4 {
    using T = float;
    using Half = F32x4;  // the narrowest vector
    static constexpr int n = 4;
    __m128 v;
    F32x4() = default;
    explicit F32x4(__m128 x) : v(x) {}
    explicit F32x4(float c) : v(_mm_set1_ps(c)) {}
    static F32x4 zero() { return F32x4(_mm_setzero_ps()); }
    static F32x4 load(const float* p) { return F32x4(_mm_loadu_ps(p)); }
    static F32x4 load_rev(const float* p) { return F32x4(_mm_shuffle_ps(_mm_loadu_ps(p - 3), _mm_loadu_ps(p - 3), 0x1b)); }
    static void store(float* p, F32x4 a) { _mm_storeu_ps(p, a.v); }
    static void store_rev(float* p, F32x4 a) { _mm_storeu_ps(p - 3, _mm_shuffle_ps(a.v, a.v, 0x1b)); }
    ZAM_LANE_ROWS(F32x4)
    // Rows r[0..3] become the columns t[0..3] (r and t may be the same).
    static void transpose(const F32x4* r, F32x4* t)
    {
        __m128 a = r[0].v, b = r[1].v, c = r[2].v, d = r[3].v;
        _MM_TRANSPOSE4_PS(a, b, c, d);
        t[0].v = a, t[1].v = b, t[2].v = c, t[3].v = d;
    }
};
ZAM_LANE_OPS(F32x4, _mm_add_ps, _mm_sub_ps, _mm_mul_ps, _mm_xor_ps, _mm_set1_ps)

struct F64x2 {
    using T = double;
    using Half = F64x2;
    static constexpr int n = 2;
    __m128d v;
    F64x2() = default;
    explicit F64x2(__m128d x) : v(x) {}
    explicit F64x2(double c) : v(_mm_set1_pd(c)) {}
    static F64x2 zero() { return F64x2(_mm_setzero_pd()); }
    static F64x2 load(const double* p) { return F64x2(_mm_loadu_pd(p)); }
    static F64x2 load_rev(const double* p) { return F64x2(_mm_shuffle_pd(_mm_loadu_pd(p - 1), _mm_loadu_pd(p - 1), 1)); }
    static void store(double* p, F64x2 a) { _mm_storeu_pd(p, a.v); }
    static void store_rev(double* p, F64x2 a) { _mm_storeu_pd(p - 1, _mm_shuffle_pd(a.v, a.v, 1)); }
    ZAM_LANE_ROWS(F64x2)
    static void transpose(const F64x2* r, F64x2* t)
    {
        const __m128d r0 = r[0].v, r1 = r[1].v;
        t[0] = F64x2(_mm_unpacklo_pd(r0, r1)), t[1] = F64x2(_mm_unpackhi_pd(r0, r1));
    }
};
ZAM_LANE_OPS(F64x2, _mm_add_pd, _mm_sub_pd, _mm_mul_pd, _mm_xor_pd, _mm_set1_pd)

#if ZAM_PATH_BITS >= 256
struct F32x8 {
    using T = float;
    using Half = F32x4;
    static constexpr int n = 8;
    __m256 v;
    F32x8() = default;
    explicit F32x8(__m256 x) : v(x) {}
    explicit F32x8(float c) : v(_mm256_set1_ps(c)) {}
    static F32x8 zero() { return F32x8(_mm256_setzero_ps()); }
    static __m256 reverse(__m256 a) { return _mm256_permutevar8x32_ps(a, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0)); }
    static F32x8 load(const float* p) { return F32x8(_mm256_loadu_ps(p)); }
    static F32x8 load_rev(const float* p) { return F32x8(reverse(_mm256_loadu_ps(p - 7))); }
    static void store(float* p, F32x8 a) { _mm256_storeu_ps(p, a.v); }
    static void store_rev(float* p, F32x8 a) { _mm256_storeu_ps(p - 7, reverse(a.v)); }
    ZAM_LANE_ROWS(F32x8)
    // Lane j of a pair at span H (j below j + H): a + b in the lower lane,
    // a - b in the upper one, a = lane j, b = lane j + H.
    template <int H>
    static F32x8 butterfly(F32x8 x)
    {
        const __m256 t = H == 1 ? _mm256_permute_ps(x.v, 0xb1)
                       : H == 2 ? _mm256_permute_ps(x.v, 0x4e)
                                : _mm256_permute2f128_ps(x.v, x.v, 0x01);
        return F32x8(_mm256_blend_ps(_mm256_add_ps(x.v, t), _mm256_sub_ps(t, x.v), H == 1 ? 0xaa : H == 2 ? 0xcc : 0xf0));
    }
    static void transpose(const F32x8* r, F32x8* t)
    {
        const __m256 a0 = _mm256_unpacklo_ps(r[0].v, r[1].v), a1 = _mm256_unpackhi_ps(r[0].v, r[1].v);
        const __m256 a2 = _mm256_unpacklo_ps(r[2].v, r[3].v), a3 = _mm256_unpackhi_ps(r[2].v, r[3].v);
        const __m256 a4 = _mm256_unpacklo_ps(r[4].v, r[5].v), a5 = _mm256_unpackhi_ps(r[4].v, r[5].v);
        const __m256 a6 = _mm256_unpacklo_ps(r[6].v, r[7].v), a7 = _mm256_unpackhi_ps(r[6].v, r[7].v);
        const __m256 b0 = _mm256_shuffle_ps(a0, a2, 0x44), b1 = _mm256_shuffle_ps(a0, a2, 0xee);
        const __m256 b2 = _mm256_shuffle_ps(a1, a3, 0x44), b3 = _mm256_shuffle_ps(a1, a3, 0xee);
        const __m256 b4 = _mm256_shuffle_ps(a4, a6, 0x44), b5 = _mm256_shuffle_ps(a4, a6, 0xee);
        const __m256 b6 = _mm256_shuffle_ps(a5, a7, 0x44), b7 = _mm256_shuffle_ps(a5, a7, 0xee);
        t[0] = F32x8(_mm256_permute2f128_ps(b0, b4, 0x20));
        t[1] = F32x8(_mm256_permute2f128_ps(b1, b5, 0x20));
        t[2] = F32x8(_mm256_permute2f128_ps(b2, b6, 0x20));
        t[3] = F32x8(_mm256_permute2f128_ps(b3, b7, 0x20));
        t[4] = F32x8(_mm256_permute2f128_ps(b0, b4, 0x31));
        t[5] = F32x8(_mm256_permute2f128_ps(b1, b5, 0x31));
        t[6] = F32x8(_mm256_permute2f128_ps(b2, b6, 0x31));
        t[7] = F32x8(_mm256_permute2f128_ps(b3, b7, 0x31));
    }
};
ZAM_LANE_OPS(F32x8, _mm256_add_ps, _mm256_sub_ps, _mm256_mul_ps, _mm256_xor_ps, _mm256_set1_ps)

struct F64x4 {
    using T = double;
    using Half = F64x2;
    static constexpr int n = 4;
    __m256d v;
    F64x4() = default;
    explicit F64x4(__m256d x) : v(x) {}
    explicit F64x4(double c) : v(_mm256_set1_pd(c)) {}
    static F64x4 zero() { return F64x4(_mm256_setzero_pd()); }
    static __m256d reverse(__m256d a) { return _mm256_permute4x64_pd(a, 0x1b); }
    static F64x4 load(const double* p) { return F64x4(_mm256_loadu_pd(p)); }
    static F64x4 load_rev(const double* p) { return F64x4(reverse(_mm256_loadu_pd(p - 3))); }
    static void store(double* p, F64x4 a) { _mm256_storeu_pd(p, a.v); }
    static void store_rev(double* p, F64x4 a) { _mm256_storeu_pd(p - 3, reverse(a.v)); }
    ZAM_LANE_ROWS(F64x4)
    template <int H>
    static F64x4 butterfly(F64x4 x)
    {
        const __m256d t = H == 1 ? _mm256_permute_pd(x.v, 0x5) : _mm256_permute2f128_pd(x.v, x.v, 0x01);
        return F64x4(_mm256_blend_pd(_mm256_add_pd(x.v, t), _mm256_sub_pd(t, x.v), H == 1 ? 0xa : 0xc));
    }
    static void transpose(const F64x4* r, F64x4* t)
    {
        const __m256d a0 = _mm256_unpacklo_pd(r[0].v, r[1].v), a1 = _mm256_unpackhi_pd(r[0].v, r[1].v);
        const __m256d a2 = _mm256_unpacklo_pd(r[2].v, r[3].v), a3 = _mm256_unpackhi_pd(r[2].v, r[3].v);
        t[0] = F64x4(_mm256_permute2f128_pd(a0, a2, 0x20));
        t[1] = F64x4(_mm256_permute2f128_pd(a1, a3, 0x20));
        t[2] = F64x4(_mm256_permute2f128_pd(a0, a2, 0x31));
        t[3] = F64x4(_mm256_permute2f128_pd(a1, a3, 0x31));
    }
};
ZAM_LANE_OPS(F64x4, _mm256_add_pd, _mm256_sub_pd, _mm256_mul_pd, _mm256_xor_pd, _mm256_set1_pd)
#endif


#if ZAM_PATH_BITS >= 512
// 512-bit vectors: loads (reversed ones too) and stores for the DCT-IV's
// first passes and nested stages, and the in-vector butterflies of the
// Walsh-Hadamard passes.
//
// The stages at spans 1 .. n/2 inside two vectors x and y at once (double
// precision, where it saves a few per cent over butterfly<H>): each
// stage gathers the lower points a of all pairs into one vector and their
// partners b into another, in the same order (two-source permutations), and
// computes a + b and a - b for all of them; the sums and differences are the
// next stage's vectors, and a last pair of permutations puts every point
// back in place.  Per stage and vector: one permutation and one sum or
// difference.  The index tables follow every point through the stages:
// gather[s] and partner[s] give the slot (vector * n + lane) that stage s
// reads the lower points and their partners from, place[v] the slot each
// lane of result v comes from.
template <class I, int n>
struct PairedStages {
    static constexpr int stages = n == 8 ? 3 : n == 4 ? 2 : 1;
    alignas(64) I gather[stages][n] = {}, partner[stages][n] = {}, place[2][n] = {};
    constexpr PairedStages()
    {
        int slot[2 * n] = {};  // point -> slot
        for (int e = 0; e < 2 * n; ++e) slot[e] = e;
        for (int s = 0, h = 1; h < n; h *= 2, ++s) {
            int next[2 * n] = {}, i = 0;
            for (int e = 0; e < 2 * n; ++e)
                if (!(e & h)) {
                    gather[s][i] = I(slot[e]), partner[s][i] = I(slot[e + h]);
                    next[e] = i, next[e + h] = n + i, ++i;
                }
            for (int e = 0; e < 2 * n; ++e) slot[e] = next[e];
        }
        for (int l = 0; l < 2 * n; ++l) place[l / n][l % n] = I(slot[l]);
    }
};

struct F32x16 {
    using T = float;
    using Half = F32x8;
    static constexpr int n = 16;
    __m512 v;
    F32x16() = default;
    explicit F32x16(__m512 x) : v(x) {}
    explicit F32x16(float c) : v(_mm512_set1_ps(c)) {}
    static __m512 reverse(__m512 a)
    {
        return _mm512_permutexvar_ps(_mm512_set_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15), a);
    }
    static F32x16 load(const float* p) { return F32x16(_mm512_loadu_ps(p)); }
    static F32x16 load_rev(const float* p) { return F32x16(reverse(_mm512_loadu_ps(p - 15))); }
    static void store(float* p, F32x16 a) { _mm512_storeu_ps(p, a.v); }
    // The sum in every lane, then the difference a - b written over the
    // upper lanes of the pairs.
    template <int H>
    static F32x16 butterfly(F32x16 x)
    {
        const __m512 t = H == 1 ? _mm512_permute_ps(x.v, 0xb1)
                       : H == 2 ? _mm512_permute_ps(x.v, 0x4e)
                       : H == 4 ? _mm512_shuffle_f32x4(x.v, x.v, 0xb1)
                                : _mm512_shuffle_f32x4(x.v, x.v, 0x4e);
        constexpr __mmask16 upper = H == 1 ? 0xaaaa : H == 2 ? 0xcccc : H == 4 ? 0xf0f0 : 0xff00;
        return F32x16(_mm512_mask_sub_ps(_mm512_add_ps(x.v, t), upper, t, x.v));
    }
};
ZAM_LANE_OPS(F32x16, _mm512_add_ps, _mm512_sub_ps, _mm512_mul_ps, _mm512_xor_ps, _mm512_set1_ps)

struct F64x8 {
    using T = double;
    using Half = F64x4;
    static constexpr int n = 8;
    __m512d v;
    F64x8() = default;
    explicit F64x8(__m512d x) : v(x) {}
    explicit F64x8(double c) : v(_mm512_set1_pd(c)) {}
    static __m512d reverse(__m512d a) { return _mm512_permutexvar_pd(_mm512_set_epi64(0, 1, 2, 3, 4, 5, 6, 7), a); }
    static F64x8 load(const double* p) { return F64x8(_mm512_loadu_pd(p)); }
    static F64x8 load_rev(const double* p) { return F64x8(reverse(_mm512_loadu_pd(p - 7))); }
    static void store(double* p, F64x8 a) { _mm512_storeu_pd(p, a.v); }
    template <int H>
    static F64x8 butterfly(F64x8 x)
    {
        const __m512d t = H == 1 ? _mm512_permute_pd(x.v, 0x55)
                        : H == 2 ? _mm512_shuffle_f64x2(x.v, x.v, 0xb1)
                                 : _mm512_shuffle_f64x2(x.v, x.v, 0x4e);
        constexpr __mmask8 upper = H == 1 ? 0xaa : H == 2 ? 0xcc : 0xf0;
        return F64x8(_mm512_mask_sub_pd(_mm512_add_pd(x.v, t), upper, t, x.v));
    }
    static void butterflies(F64x8& x, F64x8& y)
    {
        static constexpr PairedStages<long long, 8> p{};
        const auto index = [](const long long* i) { return _mm512_load_si512(i); };
        __m512d u = x.v, w = y.v;
        for (int s = 0; s < p.stages; ++s) {
            const __m512d a = _mm512_permutex2var_pd(u, index(p.gather[s]), w);
            const __m512d b = _mm512_permutex2var_pd(u, index(p.partner[s]), w);
            u = _mm512_add_pd(a, b), w = _mm512_sub_pd(a, b);
        }
        x.v = _mm512_permutex2var_pd(u, index(p.place[0]), w), y.v = _mm512_permutex2var_pd(u, index(p.place[1]), w);
    }
};
ZAM_LANE_OPS(F64x8, _mm512_add_pd, _mm512_sub_pd, _mm512_mul_pd, _mm512_xor_pd, _mm512_set1_pd)
#endif

#undef ZAM_LANE_OPS
#undef ZAM_LANE_ROWS

// The widest vector of the path, per element type; each vector type names
// the next narrower one as Half (the 128-bit ones themselves).
template <class T> struct Wide;
#if ZAM_PATH_BITS >= 512
template <> struct Wide<float> { using type = F32x16; };
template <> struct Wide<double> { using type = F64x8; };
#elif ZAM_PATH_BITS >= 256
template <> struct Wide<float> { using type = F32x8; };
template <> struct Wide<double> { using type = F64x4; };
#else
template <> struct Wide<float> { using type = F32x4; };
template <> struct Wide<double> { using type = F64x2; };
#endif

} // namespace zam::ZAM_PATH
