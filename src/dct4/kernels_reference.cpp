// Reference kernels of the DCT-IV: the direct kernels of 16 and 32 points,
// the first-pass kernels of 16, 32 and 64 points, the second-pass kernels of
// radix 8, 16 and 32, and the group kernel of a nested stage's radix pass.
//
// They are loops over one shared building block and exist to be replaced by
// straight-line code from the codelet compiler; each comment states exactly
// what is gathered, what is computed and where it is stored, so that a
// generated kernel can be checked against these.  Everything is computed in
// the element type T; constants come from Cos128 (cos k pi/128 correctly
// rounded to T), products are formed as (a + ib)(c + id) = (ac - bd) +
// i(ad + bc), and a product by the constant 1 is never formed.
//
// Notation: z* is the complex conjugate; F_P(a)[l] = sum_u a[u] e^{+2 pi i u l / P}
// is the DFT of P points with the positive exponent.
#include "dct4/kernels.hpp"

namespace zam::dct4 {

namespace {

template <class T>
struct Cx {
    T re, im;
};

template <class T>
Cx<T> mul(Cx<T> a, T c, T s) { return {a.re * c - a.im * s, a.re * s + a.im * c}; }

template <class T>
Cx<T> conj(Cx<T> a) { return {a.re, -a.im}; }

// a times e^{i k pi/128}.
template <class T>
Cx<T> rotate128(Cx<T> a, int32_t k)
{
    T c, s;
    root128(k, c, s);
    return mul(a, c, s);
}

// F_P in place, P a power of two up to 32: the bit-reversal permutation,
// then for len = 2, 4, ..., P, for every block of len values starting at b,
// for u < len/2: v = a[b+u+len/2] * e^{2 pi i u/len} (not multiplied for
// u = 0), a[b+u+len/2] = a[b+u] - v, a[b+u] = a[b+u] + v.
template <class T>
void dft(Cx<T>* a, uint32_t p)
{
    for (uint32_t i = 1, j = 0; i < p; ++i) {
        uint32_t bit = p >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) {
            const Cx<T> tmp = a[i];
            a[i] = a[j];
            a[j] = tmp;
        }
    }
    for (uint32_t len = 2; len <= p; len *= 2) {
        const uint32_t half = len / 2;
        for (uint32_t b = 0; b < p; b += len)
            for (uint32_t u = 0; u < half; ++u) {
                Cx<T> v = a[b + u + half];
                if (u != 0) v = rotate128(v, int32_t(256 * u / len));
                const Cx<T> w = a[b + u];
                a[b + u + half] = {w.re - v.re, w.im - v.im};
                a[b + u] = {w.re + v.re, w.im + v.im};
            }
    }
}

// First-pass kernel of M points (M = 2..64), one group at offset off.
//   Gather: z[k] = x[off + k s] - i x[L - off - (k + M/2) s], k < M/2
//           (the front value, and minus the mirrored back value).
//   Compute: w[k] = z[k] e^{i pi k/M} (k >= 1), Z = F_{M/2}(w); then
//           Z[l] = sum_k z[k] e^{i pi k (4l + 1)/M}.
//   Store: the group's M/2 complex results S[g] at out[2g t] (real part) and
//           out[(2g + 1) t] (imaginary part), where S[2l] = Z[l] for
//           2l < M/2 and S[M-1-2l] = Z[l]* otherwise.  Equivalently
//           S[g] = sum_k z[k] e^{i pi k (2g+1)/M} for even g and
//           S[g] = sum_k z[k]* e^{i pi k (2g+1)/M} for odd g.
template <class T>
void first_reference(uint32_t m, const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t)
{
    const uint32_t half = m / 2;
    Cx<T> z[32];
    for (uint32_t k = 0; k < half; ++k) z[k] = {x[off + k * s], -x[L - off - (k + half) * s]};
    for (uint32_t k = 1; k < half; ++k) z[k] = rotate128(z[k], int32_t(128 * k / m));
    dft(z, half);
    for (uint32_t l = 0; l < half; ++l) {
        const bool front = 2 * l < half;
        const uint32_t g = front ? 2 * l : m - 1 - 2 * l;
        const Cx<T> v = front ? z[l] : conj(z[l]);
        out[2 * g * t] = v.re;
        out[(2 * g + 1) * t] = v.im;
    }
}

// Second-pass kernel of radix r (r = 1..32), group g.
//   Gather: v[p] = in[p] + i in[r + p], p < r; the table pair (c_p, s_p) at
//           tw[table_slot(r, p)], the cosine and sine of
//           theta = pi (2g+1)(2p+1)/(4N).
//   Compute: P[p] = v[p] (c_p + i s_p); Q[u] = P[2u] for 2u < r and
//           Q[u] = P[2r-1-2u]* otherwise; Y[j] = e^{i pi j/(2r)} F_r(Q)[j]
//           (not multiplied for j = 0).  Then
//           Y[j] = sum_{p even} P[p] e^{i pi j (2p+1)/(2r)}
//                + sum_{p odd} P[p]* e^{-i pi j (2p+1)/(2r)}.
//   Store: y[g + j S] = Re Y[j], y[L - g - (r + j) S] = Im Y[j], j < r.
template <class T>
void second_reference(uint32_t r, const T* in, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L)
{
    Cx<T> p[32], q[32];
    for (uint32_t k = 0; k < r; ++k) {
        const uint32_t slot = table_slot(r, k);
        p[k] = mul(Cx<T>{in[k], in[r + k]}, tw[slot], tw[slot + 1]);
    }
    for (uint32_t u = 0; u < r; ++u) q[u] = 2 * u < r ? p[2 * u] : conj(p[2 * r - 1 - 2 * u]);
    dft(q, r);
    for (uint32_t j = 0; j < r; ++j) {
        const Cx<T> v = j == 0 ? q[0] : rotate128(q[j], int32_t(64 * j / r));
        y[g + j * S] = v.re;
        y[L - g - (r + j) * S] = v.im;
    }
}

// Direct kernel of N points (N = 16 or 32), the scheme of both passes with
// one group and radix 1.
//   Gather: z[k] = x[2k] - i x[N-1-2k], k < N/2 (every input read first).
//   Compute: S[g] for g < N/2 as the first-pass kernel of N points computes
//           it, then P[g] = S[g] e^{i pi (2g+1)/(4N)}.
//   Store: y[g] = Re P[g], y[N-1-g] = Im P[g].
template <class T>
void direct_reference(uint32_t n, const T* x, T* y)
{
    T buf[64];
    first_reference(n, x, 0, 2, 2 * n - 1, buf, 1);
    for (uint32_t g = 0; g < n / 2; ++g) {
        const Cx<T> v = rotate128(Cx<T>{buf[2 * g], buf[2 * g + 1]}, int32_t(32 * (2 * g + 1) / n));
        y[g] = v.re;
        y[n - 1 - g] = v.im;
    }
}

} // namespace

template <class T> void direct16(const T* x, T* y) { direct_reference(16, x, y); }
template <class T> void direct32(const T* x, T* y) { direct_reference(32, x, y); }

template <class T>
void first16(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t) { first_reference(16, x, off, s, L, out, t); }
template <class T>
void first32(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t) { first_reference(32, x, off, s, L, out, t); }
template <class T>
void first64(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t) { first_reference(64, x, off, s, L, out, t); }

template <class T>
void second8(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L) { second_reference(8, v, tw, y, g, S, L); }
template <class T>
void second16(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L) { second_reference(16, v, tw, y, g, S, L); }
template <class T>
void second32(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L) { second_reference(32, v, tw, y, g, S, L); }

// Radix pass of a nested stage of length M = r' M' (radix r' = 2..32), group
// g' < M'/2.  The stage's first pass left, for each i' < r', the results
// S_i'[g'] of its M'-point kernels in the second-pass layout (real parts
// in[2r' g' + i'], imaginary parts in[2r' g' + r' + i']).
//   Gather: a[i'] = S_i'[g'] for even g', S_i'[g']* for odd g' (that is
//           Z_i'[l1] of the M'-point kernel, l1 = kappa/2 with kappa = g' or
//           M'-1-g'); a[i'] times the twiddle (tw[2(i'-1)], tw[2(i'-1)+1]) =
//           e^{i pi i' (kappa + 1/2)/(M/2)} for i' >= 1.
//   Compute: A = F_r'(a): A[l2] = Z[l1 + (M'/2) l2] of the M-point kernel.
//   Store: as the M-point first-pass kernel stores Z[l] with l = l1 + (M'/2) l2:
//           out[2g t], out[(2g+1) t] with g = 2l and A for 2l < M/2, g = M-1-2l
//           and A* otherwise.
template <class T>
void nested_radix_group(const T* in, const T* tw, uint32_t g, uint32_t r, uint32_t m, uint32_t m_sub, T* out,
                        uint32_t t)
{
    Cx<T> a[32];
    const uint32_t kappa = g % 2 == 0 ? g : m_sub - 1 - g, l1 = kappa / 2, groups = m_sub / 2;
    for (uint32_t i = 0; i < r; ++i) {
        Cx<T> v{in[2 * r * g + i], in[2 * r * g + r + i]};
        if (g % 2 != 0) v = conj(v);
        if (i != 0) v = mul(v, tw[2 * (i - 1)], tw[2 * (i - 1) + 1]);
        a[i] = v;
    }
    dft(a, r);
    for (uint32_t l2 = 0; l2 < r; ++l2) {
        const uint64_t l = l1 + uint64_t(groups) * l2;
        const bool front = 2 * l < m / 2;
        const uint64_t gg = front ? 2 * l : m - 1 - 2 * l;
        const Cx<T> v = front ? a[l2] : conj(a[l2]);
        out[2 * gg * t] = v.re;
        out[(2 * gg + 1) * t] = v.im;
    }
}

#define ZAM_DCT4_INSTANTIATE(T)                                                                     \
    template void direct16<T>(const T*, T*);                                                        \
    template void direct32<T>(const T*, T*);                                                        \
    template void first16<T>(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);                \
    template void first32<T>(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);                \
    template void first64<T>(const T*, uint32_t, uint32_t, uint32_t, T*, uint32_t);                \
    template void second8<T>(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);                \
    template void second16<T>(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);               \
    template void second32<T>(const T*, const T*, T*, uint32_t, uint32_t, uint32_t);               \
    template void nested_radix_group<T>(const T*, const T*, uint32_t, uint32_t, uint32_t, uint32_t, T*, \
                                        uint32_t);
ZAM_DCT4_INSTANTIATE(float)
ZAM_DCT4_INSTANTIATE(double)
#undef ZAM_DCT4_INSTANTIATE

} // namespace zam::dct4
