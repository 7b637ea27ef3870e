// The Walsh-Hadamard transforms of orders 8 to 13 and the work-buffer sizes.
//
// Orders 1 to 7 are straight-line codelets.  The larger orders factor
// H_N = H_R (x) H_M: a first pass of contiguous blocks of M points (the
// source is read only here, so in-place calls work), then a column pass of R
// points at stride M that writes result k2 of column k1 to M*k2 + k1, which
// gives the natural order without reordering.  Orders 12 and 13 do the first
// two passes one super-block at a time through a staging area behind the
// main area, so that they stay in a cache-sized region, and combine the
// super-blocks in a third pass.  Every block is a generated straight-line WHT
// of 8, 16, 32 or 64 points; the scale is applied once, by the last pass.
#include "frame/checks.hpp"
#include "wht_blocks.hpp"
#include "zamcore.h"

#include <cstddef>

namespace {

template <class T>
struct Blocks;
template <>
struct Blocks<float> {
    static constexpr auto b16 = zam::wht_block_16_32f, b64 = zam::wht_block_64_32f;
    static constexpr auto s8 = zam::wht_scaled_block_8_32f, s16 = zam::wht_scaled_block_16_32f,
                          s32 = zam::wht_scaled_block_32_32f, s64 = zam::wht_scaled_block_64_32f;
};
template <>
struct Blocks<double> {
    static constexpr auto b16 = zam::wht_block_16_64f, b64 = zam::wht_block_64_64f;
    static constexpr auto s8 = zam::wht_scaled_block_8_64f, s16 = zam::wht_scaled_block_16_64f,
                          s32 = zam::wht_scaled_block_32_64f, s64 = zam::wht_scaled_block_64_64f;
};

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
    using B = Blocks<T>;
    constexpr ptrdiff_t n = ptrdiff_t{1} << Order;
    T s;
    if (const ZamStatus st = zam::pick_scale(src, dst, flag, zam::ScaleRule::Symmetric, static_cast<T>(1.0 / n),
                                             static_cast<T>(inv_sqrt_length(Order)), s);
        st != ZAM_STS_OK)
        return st;
    T* const work = buffer ? reinterpret_cast<T*>(buffer)
                           : static_cast<T*>(zamMalloc(static_cast<uint32_t>(sizeof(T)) * buffer_elements(Order)));
    if constexpr (Order <= 10) {
        // Blocks of 16, then 16 columns of n/16 points.
        for (ptrdiff_t b = 0; b < n / 16; ++b) B::b16(src + 16 * b, 1, work + 16 * b, 1);
        constexpr auto column = Order == 8 ? B::s16 : Order == 9 ? B::s32 : B::s64;
        for (ptrdiff_t k = 0; k < 16; ++k) column(work + k, 16, dst + k, 16, s);
    } else if constexpr (Order == 11) {
        for (ptrdiff_t b = 0; b < 32; ++b) B::b64(src + 64 * b, 1, work + 64 * b, 1);
        for (ptrdiff_t k = 0; k < 64; ++k) B::s32(work + k, 64, dst + k, 64, s);
    } else {
        // Super-blocks of 256 (16 x 16) or 1024 (64 x 16) through the staging area.
        constexpr ptrdiff_t super = Order == 12 ? 256 : 1024;
        constexpr auto inner = Order == 12 ? B::b16 : B::b64;
        T* const staging = work + n;
        for (ptrdiff_t sb = 0; sb < n / super; ++sb) {
            for (ptrdiff_t b = 0; b < super / 16; ++b) B::b16(src + super * sb + 16 * b, 1, staging + 16 * b, 1);
            for (ptrdiff_t k = 0; k < 16; ++k) inner(staging + k, 16, work + super * sb + k, 16);
        }
        constexpr auto last = Order == 12 ? B::s16 : B::s8;
        for (ptrdiff_t k = 0; k < super; ++k) last(work + k, super, dst + k, super, s);
    }
    if (!buffer) zamFree(work);
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
