// The passes of the Walsh-Hadamard transforms of orders 8 to 13 on scalars,
// and the choice of the vector path (wht/lanes.hpp has the same passes on
// vectors).
#include "wht/passes.hpp"
#include "wht_blocks.hpp"

#include <cstddef>

namespace zam::wht {
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

template <class T, int Order>
void scalar_passes(const T* src, T* dst, T s, T* work) noexcept
{
    using B = Blocks<T>;
    constexpr ptrdiff_t n = ptrdiff_t{1} << Order;
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
}

} // namespace

template <class T>
void run_passes(Path path, int order, const T* src, T* dst, T s, T* work) noexcept
{
    switch (path) {
#if defined(ZAMGEN_VECTOR_PATHS)
    case Path::Sse2: return sse2::large_order(order, src, dst, s, work);
    case Path::Avx2: return avx2::large_order(order, src, dst, s, work);
    case Path::Avx512: return avx512::large_order(order, src, dst, s, work);
#endif
    default: break;
    }
    switch (order) {
    case 8: return scalar_passes<T, 8>(src, dst, s, work);
    case 9: return scalar_passes<T, 9>(src, dst, s, work);
    case 10: return scalar_passes<T, 10>(src, dst, s, work);
    case 11: return scalar_passes<T, 11>(src, dst, s, work);
    case 12: return scalar_passes<T, 12>(src, dst, s, work);
    case 13: return scalar_passes<T, 13>(src, dst, s, work);
    default: return;
    }
}

template void run_passes<float>(Path, int, const float*, float*, float, float*) noexcept;
template void run_passes<double>(Path, int, const double*, double*, double, double*) noexcept;

} // namespace zam::wht
