// The DCT-IV kernels of lengths 2, 4 and 8, the first-pass kernels of 2, 4
// and 8 points, the second-pass kernels of radix 1, 2 and 4, and the drivers
// of the two passes.  The longer kernels are generated (dct4_kernels.hpp).
// The caller's vectors need not be aligned to their element type: they are
// read and written through load and store (frame/access.hpp).
#include "dct4/kernels.hpp"
#include "frame/access.hpp"

#include <cstring>

namespace zam::dct4 {

// ---- Direct kernels ----------------------------------------------------------

template <class T>
void direct2(const T* x, T* y)
{
    const T a = load<T>(x, 0), b = load<T>(x, 1);
    store<T>(y, 0, K<T>::c8 * a + K<T>::s8 * b);
    store<T>(y, 1, K<T>::s8 * a - K<T>::c8 * b);
}

// Two rotations as three lifting steps each (tangent, sine, tangent), then a
// butterfly scaled by sqrt(1/2).
template <class T>
void direct4(const T* x, T* y)
{
    const T t1 = K<T>::t7, t2 = K<T>::t5, s1 = K<T>::s7_16, s2 = K<T>::s5_16, h = K<T>::h;
    const T x0 = load<T>(x, 0), x1 = load<T>(x, 1), x2 = load<T>(x, 2), x3 = load<T>(x, 3);
    const T u = x0 - t1 * x3, v = x1 - t2 * x2;
    const T p = x3 + s1 * u, q = x2 + s2 * v;
    const T u1 = u - t1 * p, v1 = v - t2 * q;
    const T w = (u1 + v1) * h;
    const T d = (p - q) * h;
    store<T>(y, 0, p + q);
    store<T>(y, 3, u1 - v1);
    store<T>(y, 1, d + w);
    store<T>(y, 2, d - w);
}

// Mirrored pairs folded with sqrt(1/2), rotations by pi/32, 3pi/32, 7pi/32,
// then butterflies whose cross terms are scaled by sqrt(1/2).
template <class T>
void direct8(const T* x, T* y)
{
    using C = K<T>;
    const T h = C::h;
    const T x0 = load<T>(x, 0), x1 = load<T>(x, 1), x2 = load<T>(x, 2), x3 = load<T>(x, 3), x4 = load<T>(x, 4), x5 = load<T>(x, 5), x6 = load<T>(x, 6), x7 = load<T>(x, 7);
    const T p = h * (x4 + x3), q = h * (x4 - x3), u = h * (x5 + x2), w = h * (x5 - x2);
    const T A = x0 + p, E = x0 - p, B = x1 + u, H = x1 - u;
    const T D = q - x7, F = q + x7, Kk = w - x6, G = w + x6;
    const T R1 = C::c1 * A - C::s1 * D, I1 = C::s1 * A + C::c1 * D;
    const T R2 = C::c3 * B - C::s3 * Kk, I2 = C::s3 * B + C::c3 * Kk;
    const T R3 = C::c3 * E - C::s3 * F, I3 = C::s3 * E + C::c3 * F;
    const T R4 = C::s7 * H - C::c7 * G, I4 = C::c7 * H + C::s7 * G;
    const T a1 = h * (R1 - R2), b1 = h * (I1 + I2);
    const T a2 = h * (R3 - R4), b2 = h * (I3 + I4);
    store<T>(y, 0, R1 + R2);
    store<T>(y, 7, I1 - I2);
    store<T>(y, 4, a1 - b1);
    store<T>(y, 3, a1 + b1);
    store<T>(y, 1, R3 + R4);
    store<T>(y, 6, I3 - I4);
    store<T>(y, 5, a2 - b2);
    store<T>(y, 2, a2 + b2);
}

// ---- First-pass kernels --------------------------------------------------------

template <class T>
void first2(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t)
{
    const T a = load<T>(x, off), b = load<T>(x, L - off - s);
    out[0] = a;
    out[t] = -b;
}

template <class T>
void first4(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t)
{
    const T h = K<T>::h;
    const T a = load<T>(x, off), b = load<T>(x, off + s), d = load<T>(x, L - off - 2 * s), e = load<T>(x, L - off - 3 * s);
    const T sum = h * (b + e), dif = h * (b - e);
    out[0] = a + sum;
    out[t] = dif - d;
    out[2 * t] = a - sum;
    out[3 * t] = d + dif;
}

template <class T>
void first8(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t)
{
    const T h = K<T>::h, c = K<T>::c8, n = K<T>::s8;
    const T a0 = load<T>(x, off), a1 = load<T>(x, off + s), a2 = load<T>(x, off + 2 * s), a3 = load<T>(x, off + 3 * s);
    const T b4 = load<T>(x, L - off - 4 * s), b5 = load<T>(x, L - off - 5 * s), b6 = load<T>(x, L - off - 6 * s), b7 = load<T>(x, L - off - 7 * s);
    const T p = h * (a2 + b6), q = h * (a2 - b6), u = h * (a3 + b7), w = h * (a3 - b7);
    const T A = a0 + p, B = a1 + u, D = w - b5, E = a0 - p, F = a1 - u, G = b5 + w;
    const T r0 = c * B - n * D, i0 = n * B + c * D, r1 = n * F - c * G, i1 = c * F + n * G;
    const T qm = q - b4, qp = b4 + q;
    out[0] = A + r0;
    out[6 * t] = A - r0;
    out[t] = qm + i0;
    out[7 * t] = i0 - qm;
    out[2 * t] = E + r1;
    out[4 * t] = E - r1;
    out[3 * t] = qp + i1;
    out[5 * t] = i1 - qp;
}

// ---- Second-pass kernels -------------------------------------------------------

template <class T>
void second1(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L)
{
    const T a = v[0], b = v[1], u = tw[0], w = tw[1];
    store<T>(y, g, u * a - w * b);
    store<T>(y, L - S - g, w * a + u * b);
}

template <class T>
void second2(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L)
{
    const T h = K<T>::h;
    const T pr = v[0] * tw[0] - v[2] * tw[1], pi = v[0] * tw[1] + v[2] * tw[0];
    const T qr = v[1] * tw[2] - v[3] * tw[3], qi = v[1] * tw[3] + v[3] * tw[2];
    const T a = h * (pr - qr), b = h * (pi + qi);
    store<T>(y, g, pr + qr);
    store<T>(y, g + S, a - b);
    store<T>(y, L - g - 2 * S, pi - qi);
    store<T>(y, L - g - 3 * S, a + b);
}

template <class T>
void second4(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L)
{
    const T h = K<T>::h, c = K<T>::c8, n = K<T>::s8;
    // Values 0, 3, 1, 2 take the group's four table pairs in that order.
    const T r0 = v[0] * tw[0] - v[4] * tw[1], i0 = v[0] * tw[1] + v[4] * tw[0];
    const T r3 = v[3] * tw[2] - v[7] * tw[3], i3 = v[3] * tw[3] + v[7] * tw[2];
    const T r1 = v[1] * tw[4] - v[5] * tw[5], i1 = v[1] * tw[5] + v[5] * tw[4];
    const T r2 = v[2] * tw[6] - v[6] * tw[7], i2 = v[2] * tw[7] + v[6] * tw[6];
    const T X = c * (r0 - r3) - n * (i0 + i3), Y = n * (r0 - r3) + c * (i0 + i3);
    const T Z = n * (r1 - r2) - c * (i1 + i2), W = c * (r1 - r2) + n * (i1 + i2);
    const T ra = r0 + r3, rb = r1 + r2, ia = i0 - i3, ib = i1 - i2;
    const T e = h * (ra - rb), f = h * (ia + ib);
    const T xz = h * (X - Z), yw = h * (Y + W);
    store<T>(y, g, ra + rb);
    store<T>(y, g + 2 * S, e - f);
    store<T>(y, L - g - 6 * S, e + f);
    store<T>(y, L - g - 4 * S, ia - ib);
    store<T>(y, g + S, X + Z);
    store<T>(y, g + 3 * S, xz - yw);
    store<T>(y, L - g - 7 * S, xz + yw);
    store<T>(y, L - g - 5 * S, Y - W);
}

// ---- Drivers ----------------------------------------------------------------------

namespace {

template <class T>
FirstKernel<T> first_kernel(uint32_t kind)
{
    switch (kind) {
    case 1: return first2<T>;
    case 2: return first4<T>;
    case 3: return first8<T>;
    case 4: return first16;
    case 5: return first32;
    case 6: return first64;
    default: return nullptr;
    }
}

template <class T>
SecondKernel<T> second_kernel(uint32_t kind)
{
    switch (kind) {
    case 1: return second1<T>;
    case 2: return second2<T>;
    case 3: return second4<T>;
    case 4: return second8;
    case 5: return second16;
    case 6: return second32;
    default: return nullptr;
    }
}

template <class T>
RadixKernel<T> radix_kernel(uint32_t kind, bool odd)
{
    switch (2 * kind + odd) {
    case 2: return radix_even2;
    case 3: return radix_odd2;
    case 4: return radix_even4;
    case 5: return radix_odd4;
    case 6: return radix_even8;
    case 7: return radix_odd8;
    case 8: return radix_even16;
    case 9: return radix_odd16;
    case 10: return radix_even32;
    default: return radix_odd32;
    }
}

// A nested stage for one group of its owner: its own first pass from the
// source into its scratch, then its radix pass into the owner's output (out,
// stride t).  Group g' (kappa = g' or M'-1-g' for odd g') yields the M-point
// kernel's Z[l1 + (M'/2) l2], l1 = kappa/2: for l2 < r'/2 at g = 2l, from
// 2(2 l1) t on in steps of 2M't; the others at g = M-1-2l, conjugated, from
// 2(M-1-2 l1) t backwards.
template <class T>
ZamStatus run_stage(const NestedStage<T>* st, const T* x, uint32_t base, T* out, uint32_t t)
{
    const auto* ip = as_ptr<const InputPass<T>>(list_item(st->first, 0));
    const auto* rp = as_ptr<const RadixPass<T>>(list_item(st->second, 0));
    if (ip == nullptr || rp == nullptr || rp->kind < 1 || rp->kind > 5) return ZAM_STS_CONTEXT_ERR;
    const ZamStatus sts = run_first_pass(ip, x, base, st->scratch);
    if (sts != ZAM_STS_OK) return sts;
    const RadixKernel<T> even = radix_kernel<T>(rp->kind, false), odd = radix_kernel<T>(rp->kind, true);
    const uint32_t r = rp->radix, per_group = 2 * (r - 1), m = rp->length, m_sub = rp->sub_length;
    const ptrdiff_t step = 2 * ptrdiff_t(m_sub) * t;
    for (uint32_t g = 0; g < rp->groups; ++g) {
        const uint32_t low = (g % 2 == 0 ? g : m_sub - 1 - g) & ~1u;  // 2 l1
        (g % 2 == 0 ? even : odd)(st->scratch + uint64_t(2 * r) * g, rp->twiddles + uint64_t(per_group) * g,
                                  out + ptrdiff_t(2 * low) * t, out + ptrdiff_t(2 * (m - 1 - low)) * t, step, t);
    }
    return ZAM_STS_OK;
}

} // namespace

template <class T>
ZamStatus run_first_pass(const InputPass<T>* pass, const T* x, uint32_t base, T* out)
{
    if (pass->kind == kNestedKind) {
        for (uint32_t j = 0; j < pass->count; ++j) {
            const ZamStatus sts = run_stage(pass->stage, x, base + j * pass->group_step, out + j, pass->out_stride);
            if (sts != ZAM_STS_OK) return sts;
        }
        return ZAM_STS_OK;
    }
    const FirstKernel<T> kernel = first_kernel<T>(pass->kind);
    if (kernel == nullptr) return ZAM_STS_CONTEXT_ERR;
    for (uint32_t j = 0; j < pass->count; ++j)
        kernel(x, base + j * pass->group_step, pass->in_stride, pass->mirror, out + j, pass->out_stride);
    return ZAM_STS_OK;
}

// The second pass stores result j of group g at y[g + jS] and y[L - g - (r+j)S],
// S = M a power of two: one group's 2r stores fall into one set of the
// cache, and the next group stores next to them after they were evicted.
// Past kDirectBytes of output, the groups run in blocks of one cache line's
// worth of elements: the kernels write into a local block of 2r rows, each
// row then goes out as one contiguous run (front row j to y[g0 + jS], back
// row 2r-1-j, reversed by the kernel's mirror, to y[L - g0 - (r+j)S - B+1]).
inline constexpr uint64_t kDirectBytes = 16384;
inline constexpr uint32_t kLineBytes = 64;

template <class T>
ZamStatus run_second_pass(const OutputPass<T>* pass, const T* scratch, T* y)
{
    const SecondKernel<T> kernel = second_kernel<T>(pass->kind);
    if (kernel == nullptr) return ZAM_STS_CONTEXT_ERR;
    const uint32_t r = pass->radix, width = 2 * r, S = pass->out_step, L = pass->mirror;
    constexpr uint32_t B = kLineBytes / sizeof(T);
    if (uint64_t(pass->length) * sizeof(T) <= kDirectBytes || pass->groups % B != 0) {
        for (uint32_t g = 0; g < pass->groups; ++g)
            kernel(scratch + uint64_t(pass->in_stride) * g, pass->table + uint64_t(width) * g, y, g, S, L);
        return ZAM_STS_OK;
    }
    alignas(kLineBytes) T block[2 * 32 * B];
    for (uint32_t g0 = 0; g0 < pass->groups; g0 += B) {
        for (uint32_t b = 0; b < B; ++b)
            kernel(scratch + uint64_t(pass->in_stride) * (g0 + b), pass->table + uint64_t(width) * (g0 + b), block, b,
                   B, 3 * r * B - 1);
        for (uint32_t j = 0; j < r; ++j) {
            std::memcpy(y + g0 + uint64_t(j) * S, block + j * B, sizeof(T) * B);
            std::memcpy(y + (L - g0 - uint64_t(r + j) * S - (B - 1)), block + (2 * r - 1 - j) * B, sizeof(T) * B);
        }
    }
    return ZAM_STS_OK;
}

template <class T>
ZamStatus transform(const T* x, T* y, const Spec<T>* spec)
{
    switch (spec->kind) {
    case 1: direct2(x, y); return ZAM_STS_OK;
    case 2: direct4(x, y); return ZAM_STS_OK;
    case 3: direct8(x, y); return ZAM_STS_OK;
    case 4: direct16(x, y); return ZAM_STS_OK;
    case 5: direct32(x, y); return ZAM_STS_OK;
    case 6: {
        // The first pass reads the whole source into the scratch before the
        // second pass writes the destination, so source and destination may
        // be the same vector.  A pass's own refusal is not reported.
        const auto* ip = as_ptr<const InputPass<T>>(list_item(spec->first, 0));
        const auto* op = as_ptr<const OutputPass<T>>(list_item(spec->second, 0));
        if (ip != nullptr && op != nullptr && run_first_pass(ip, x, 0, spec->scratch) == ZAM_STS_OK)
            run_second_pass(op, spec->scratch, y);
        return ZAM_STS_OK;
    }
    default: return ZAM_STS_CONTEXT_ERR;
    }
}

template <class T>
void two_pass(uint32_t m, uint32_t r, const T* x, T* scratch, const T* table, T* y)
{
    const uint32_t n = m * r;
    InputPass<T> ip{};
    ip.kind = 1;
    while ((2u << (ip.kind - 1)) < m) ++ip.kind;
    ip.sub_length = m;
    ip.count = r;
    ip.group_step = 1;
    ip.in_stride = 2 * r;
    ip.out_stride = r;
    ip.mirror = 2 * n - 1;
    OutputPass<T> op{};
    op.kind = 1;
    while ((1u << (op.kind - 1)) < r) ++op.kind;
    op.radix = r;
    op.groups = m / 2;
    op.in_stride = 2 * r;
    op.out_step = m;
    op.mirror = 2 * n - 1;
    op.length = n;
    op.table = const_cast<T*>(table);
    run_first_pass(&ip, x, 0, scratch);
    run_second_pass(&op, scratch, y);
}

#define ZAM_DCT4_INSTANTIATE(T)                                                            \
    template void direct2<T>(const T*, T*);                                                \
    template void direct4<T>(const T*, T*);                                                \
    template void direct8<T>(const T*, T*);                                                \
    template ZamStatus run_first_pass<T>(const InputPass<T>*, const T*, uint32_t, T*);    \
    template ZamStatus run_second_pass<T>(const OutputPass<T>*, const T*, T*);            \
    template ZamStatus transform<T>(const T*, T*, const Spec<T>*);                         \
    template void two_pass<T>(uint32_t, uint32_t, const T*, T*, const T*, T*);
ZAM_DCT4_INSTANTIATE(float)
ZAM_DCT4_INSTANTIATE(double)
#undef ZAM_DCT4_INSTANTIATE

} // namespace zam::dct4
