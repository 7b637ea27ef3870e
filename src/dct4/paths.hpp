// Each vector path's DCT-IV passes (dct4/lanes.hpp), declared for the
// scalar drivers (transform.cpp).
#pragma once

#include "simd/paths.hpp"

namespace zam::dct4 {

using zam::Path;
using zam::best_path;
using zam::widest_path;
using zam::path_supported;

// What a vector path needs of a nested stage (plan.hpp): its input pass of
// leaf kernels and its radix pass.
template <class T>
struct StageArgs {
    uint32_t first_kind, first_count, first_step, first_stride, first_out, first_mirror;
    const T* twiddles;
    uint32_t radix_kind, radix, groups, length, sub_length;
};

// The stack a vector path may use for the scratch of the nested stages it
// runs side by side.
inline constexpr uint32_t kLaneScratchBytes = 32768;

// Each path's passes over whole vectors of groups (see dct4/lanes.hpp); they
// return the first group left to the scalar kernel.
#define ZAM_DCT4_PATH(ns)                                                                                     \
    namespace ns {                                                                                            \
    template <class T>                                                                                        \
    uint32_t first_groups(uint32_t kind, const T* x, uint32_t off0, uint32_t count, uint32_t s, uint32_t L,  \
                          T* out, uint32_t t);                                                                \
    template <class T>                                                                                        \
    uint32_t second_groups(uint32_t kind, uint32_t r, const T* v, ptrdiff_t vrow, const T* table,            \
                           ptrdiff_t trow, T* y, uint32_t g0, uint32_t count, uint32_t S, uint32_t L);        \
    template <class T>                                                                                        \
    uint32_t stage_groups(const StageArgs<T>& a, const T* x, uint32_t base, uint32_t count, T* out,          \
                          uint32_t t);                                                                        \
    }
ZAM_DCT4_PATH(sse2)
ZAM_DCT4_PATH(avx2)
ZAM_DCT4_PATH(avx512)
#undef ZAM_DCT4_PATH

} // namespace zam::dct4
