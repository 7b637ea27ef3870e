// The DCT-IV kernels of lengths 2, 4 and 8, the first-pass kernels of 2, 4
// and 8 points, the second-pass kernels of radix 1, 2 and 4, and the drivers
// of the two passes.  The longer kernels are generated (dct4_kernels.hpp).
// The caller's vectors need not be aligned to their element type: they are
// read and written through load and store (frame/access.hpp).
#include "dct4/kernels.hpp"
#include "dct4/pass_kernels.hpp"
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

// ---- Pass kernels (dct4/pass_kernels.hpp) on one group -------------------------

#define ZAM_FIRST(M)                                                                     \
    template <class T>                                                                   \
    void first##M(const T* x, uint32_t off, uint32_t s, uint32_t L, T* out, uint32_t t) \
    {                                                                                    \
        first##M##_on(ScalarFirst<T>{x, off, s, L, out, t, M});                          \
    }
ZAM_FIRST(2)
ZAM_FIRST(4)
ZAM_FIRST(8)
#undef ZAM_FIRST

#define ZAM_SECOND(R)                                                                          \
    template <class T>                                                                         \
    void second##R(const T* v, const T* tw, T* y, uint32_t g, uint32_t S, uint32_t L)         \
    {                                                                                          \
        second##R##_on(ScalarSecond<T>{v, tw, y, g, S, L, R});                                 \
    }
ZAM_SECOND(1)
ZAM_SECOND(2)
ZAM_SECOND(4)
#undef ZAM_SECOND

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
ZamStatus run_stage(const NestedStage<T>* st, const T* x, uint32_t base, T* out, uint32_t t, Path path)
{
    const auto* ip = as_ptr<const InputPass<T>>(list_item(st->first, 0));
    const auto* rp = as_ptr<const RadixPass<T>>(list_item(st->second, 0));
    if (ip == nullptr || rp == nullptr || rp->kind < 1 || rp->kind > 5) return ZAM_STS_CONTEXT_ERR;
    const ZamStatus sts = run_first_pass(ip, x, base, st->scratch, path);
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

// The groups that fill whole vectors on a vector path, then the others on
// scalars.  Vector lanes take neighbouring groups, which start at
// neighbouring elements when the pass's group step is 1.
template <class T>
uint32_t first_groups_on(Path path, const InputPass<T>* pass, const T* x, uint32_t base, T* out)
{
#if defined(ZAMGEN_VECTOR_PATHS)
    if (pass->group_step != 1) return 0;
    const uint32_t k = pass->kind, n = pass->count, s = pass->in_stride, L = pass->mirror, t = pass->out_stride;
    switch (path) {
    case Path::Sse2: return sse2::first_groups(k, x, base, n, s, L, out, t);
    case Path::Avx2: return avx2::first_groups(k, x, base, n, s, L, out, t);
    case Path::Avx512: return avx512::first_groups(k, x, base, n, s, L, out, t);
    default: return 0;
    }
#else
    (void)path, (void)pass, (void)x, (void)base, (void)out;
    return 0;
#endif
}

// Nested stages side by side, one per lane, where the owner's groups start
// at neighbouring elements.
template <class T>
uint32_t stage_groups_on(Path path, const InputPass<T>* pass, const T* x, uint32_t base, T* out)
{
#if defined(ZAMGEN_VECTOR_PATHS)
    if (pass->group_step != 1 || path == Path::Scalar) return 0;
    const NestedStage<T>* st = pass->stage;
    const auto* ip = as_ptr<const InputPass<T>>(list_item(st->first, 0));
    const auto* rp = as_ptr<const RadixPass<T>>(list_item(st->second, 0));
    if (ip == nullptr || rp == nullptr) return 0;
    const StageArgs<T> a{ip->kind,     ip->count,   ip->group_step, ip->in_stride, ip->out_stride, ip->mirror,
                         rp->twiddles, rp->kind,    rp->radix,      rp->groups,    rp->length,     rp->sub_length};
    switch (path) {
    case Path::Sse2: return sse2::stage_groups(a, x, base, pass->count, out, pass->out_stride);
    case Path::Avx2: return avx2::stage_groups(a, x, base, pass->count, out, pass->out_stride);
    case Path::Avx512: return avx512::stage_groups(a, x, base, pass->count, out, pass->out_stride);
    default: return 0;
    }
#else
    (void)path, (void)pass, (void)x, (void)base, (void)out;
    return 0;
#endif
}

template <class T>
uint32_t second_groups_on(Path path, const OutputPass<T>* pass, const T* v, const T* table, T* y, uint32_t g0,
                          uint32_t count, uint32_t S, uint32_t L)
{
#if defined(ZAMGEN_VECTOR_PATHS)
    const uint32_t k = pass->kind, r = pass->radix;
    const ptrdiff_t vrow = pass->in_stride, trow = 2 * ptrdiff_t(r);
    switch (path) {
    case Path::Sse2: return sse2::second_groups(k, r, v, vrow, table, trow, y, g0, count, S, L);
    case Path::Avx2: return avx2::second_groups(k, r, v, vrow, table, trow, y, g0, count, S, L);
    case Path::Avx512: return avx512::second_groups(k, r, v, vrow, table, trow, y, g0, count, S, L);
    default: return 0;
    }
#else
    (void)path, (void)pass, (void)v, (void)table, (void)y, (void)g0, (void)count, (void)S, (void)L;
    return 0;
#endif
}

} // namespace

template <class T>
ZamStatus run_first_pass(const InputPass<T>* pass, const T* x, uint32_t base, T* out, Path path)
{
    if (pass->kind == kNestedKind) {
        for (uint32_t j = stage_groups_on(path, pass, x, base, out); j < pass->count; ++j) {
            const ZamStatus sts =
                run_stage(pass->stage, x, base + j * pass->group_step, out + j, pass->out_stride, path);
            if (sts != ZAM_STS_OK) return sts;
        }
        return ZAM_STS_OK;
    }
    const FirstKernel<T> kernel = first_kernel<T>(pass->kind);
    if (kernel == nullptr) return ZAM_STS_CONTEXT_ERR;
    for (uint32_t j = first_groups_on(path, pass, x, base, out); j < pass->count; ++j)
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
ZamStatus run_second_pass(const OutputPass<T>* pass, const T* scratch, T* y, Path path)
{
    const SecondKernel<T> kernel = second_kernel<T>(pass->kind);
    if (kernel == nullptr) return ZAM_STS_CONTEXT_ERR;
    const uint32_t r = pass->radix, width = 2 * r, S = pass->out_step, L = pass->mirror;
    constexpr uint32_t B = kLineBytes / sizeof(T);
    if (uint64_t(pass->length) * sizeof(T) <= kDirectBytes || pass->groups % B != 0) {
        for (uint32_t g = second_groups_on(path, pass, scratch, pass->table, y, 0, pass->groups, S, L);
             g < pass->groups; ++g)
            kernel(scratch + uint64_t(pass->in_stride) * g, pass->table + uint64_t(width) * g, y, g, S, L);
        return ZAM_STS_OK;
    }
    alignas(kLineBytes) T block[2 * 32 * B];
    for (uint32_t g0 = 0; g0 < pass->groups; g0 += B) {
        const T* v = scratch + uint64_t(pass->in_stride) * g0;
        const T* table = pass->table + uint64_t(width) * g0;
        for (uint32_t b = second_groups_on(path, pass, v, table, block, 0, B, B, 3 * r * B - 1); b < B; ++b)
            kernel(v + uint64_t(pass->in_stride) * b, table + uint64_t(width) * b, block, b, B, 3 * r * B - 1);
        for (uint32_t j = 0; j < r; ++j) {
            std::memcpy(y + g0 + uint64_t(j) * S, block + j * B, sizeof(T) * B);
            std::memcpy(y + (L - g0 - uint64_t(r + j) * S - (B - 1)), block + (2 * r - 1 - j) * B, sizeof(T) * B);
        }
    }
    return ZAM_STS_OK;
}

template <class T>
ZamStatus transform(const T* x, T* y, const Spec<T>* spec, Path path)
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
        if (ip != nullptr && op != nullptr && run_first_pass(ip, x, 0, spec->scratch, path) == ZAM_STS_OK)
            run_second_pass(op, spec->scratch, y, path);
        return ZAM_STS_OK;
    }
    default: return ZAM_STS_CONTEXT_ERR;
    }
}

template <class T>
void two_pass(uint32_t m, uint32_t r, const T* x, T* scratch, const T* table, T* y, Path path)
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
    run_first_pass(&ip, x, 0, scratch, path);
    run_second_pass(&op, scratch, y, path);
}

#define ZAM_DCT4_INSTANTIATE(T)                                                            \
    template void direct2<T>(const T*, T*);                                                \
    template void direct4<T>(const T*, T*);                                                \
    template void direct8<T>(const T*, T*);                                                \
    template ZamStatus run_first_pass<T>(const InputPass<T>*, const T*, uint32_t, T*, Path);    \
    template ZamStatus run_second_pass<T>(const OutputPass<T>*, const T*, T*, Path);            \
    template ZamStatus transform<T>(const T*, T*, const Spec<T>*, Path);                         \
    template void two_pass<T>(uint32_t, uint32_t, const T*, T*, const T*, T*, Path);
ZAM_DCT4_INSTANTIATE(float)
ZAM_DCT4_INSTANTIATE(double)
#undef ZAM_DCT4_INSTANTIATE

} // namespace zam::dct4
