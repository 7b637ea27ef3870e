// The Walsh-Hadamard transforms of orders 8 to 13 and the work-buffer sizes.
//
// Orders 1 to 7 are straight-line codelets.  The larger orders (passes.cpp) factor
// H_N = H_R (x) H_M: a first pass of contiguous blocks of M points (the
// source is read only here, so in-place calls work), then a column pass of R
// points at stride M that writes result k2 of column k1 to M*k2 + k1, which
// gives the natural order without reordering.  Orders 12 and 13 do the first
// two passes one super-block at a time through a staging area behind the
// main area, so that they stay in a cache-sized region, and combine the
// super-blocks in a third pass.  Every block is a generated straight-line WHT
// of 8, 16, 32 or 64 points; the scale is applied once, by the last pass.
#include "frame/checks.hpp"
#include "wht/passes.hpp"
#include "zamcore.h"

#include <cstddef>

namespace {

// Elements of the work buffer: the main area of N, and for orders 12 and 13 a
// staging area of one super-block's 256 or 1024 elements behind it.
constexpr int32_t buffer_elements(int order) {
    return (1 << order) + (order == 12 ? 256 : order == 13 ? 1024 : 0);
}

// 1/sqrt(N) evaluated in double (the square root rounded first): for an odd
// order sqrt(2^order) rounds to sqrt(2) rounded, times an exact power of two,
// so the quotient is 1/sqrt(2) rounded (0.7071067811865475) scaled exactly.
constexpr double inv_sqrt_length(int order) {
    double v = order % 2 ? 0.7071067811865475 : 1.0;
    for (int i = 0; i < order / 2; ++i) v /= 2;
    return v;
}

template <class T, int Order>
ZamStatus large_order(const T* src, T* dst, uint32_t flag, uint8_t* buffer) noexcept {
    constexpr ptrdiff_t n = ptrdiff_t{1} << Order;
    T s;
    if (const ZamStatus st = zam::pick_scale(src, dst, flag, zam::ScaleRule::Symmetric, static_cast<T>(1.0 / n),
                                             static_cast<T>(inv_sqrt_length(Order)), s);
        st != ZAM_STS_OK)
        return st;
    const zam::Path path = zam::widest_path();
    const bool allocate = !buffer && zam::wht::uses_work(path);
    T* const work = buffer ? reinterpret_cast<T*>(buffer)
                    : allocate ? static_cast<T*>(zamMalloc(static_cast<uint32_t>(sizeof(T)) * buffer_elements(Order)))
                               : nullptr;
    zam::wht::run_passes(path, Order, src, dst, s, work);
    if (allocate) zamFree(work);
    return ZAM_STS_OK;
}

ZamStatus buffer_size(int32_t order, int32_t* size, int32_t element) noexcept {
    if (order < 1 || order > 13) return ZAM_STS_SIZE_ERR;
    *size = order < 8 ? 0 : element * buffer_elements(order);
    return ZAM_STS_OK;
}

} // namespace

#define ZAM_LARGE_ORDER(order)                                                                                 \
    extern "C" ZamStatus zamgWHT_##order##_32f(const Zam32f* pSrc, Zam32f* pDst, uint32_t flag, uint8_t* pBuffer) \
    {                                                                                                          \
        return large_order<float, order>(pSrc, pDst, flag, pBuffer);                                           \
    }                                                                                                          \
    extern "C" ZamStatus zamgWHT_##order##_64f(const Zam64f* pSrc, Zam64f* pDst, uint32_t flag, uint8_t* pBuffer) \
    {                                                                                                          \
        return large_order<double, order>(pSrc, pDst, flag, pBuffer);                                          \
    }
ZAM_LARGE_ORDER(8)
ZAM_LARGE_ORDER(9)
ZAM_LARGE_ORDER(10)
ZAM_LARGE_ORDER(11)
ZAM_LARGE_ORDER(12)
ZAM_LARGE_ORDER(13)

extern "C" ZamStatus zamgWHTGetBufferSize_32f(int32_t order, int32_t* pSize) { return buffer_size(order, pSize, 4); }
extern "C" ZamStatus zamgWHTGetBufferSize_64f(int32_t order, int32_t* pSize) { return buffer_size(order, pSize, 8); }
