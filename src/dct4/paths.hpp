// The instruction sets the DCT-IV passes run on, and the choice among them.
//
// The vector paths compute exactly what the scalar kernels compute, one group
// per lane (dct4/lanes.hpp), so the choice changes the speed only.  It is
// made on each call from the processor's features as the compiler's run time
// recorded them once when the library was loaded: one load and one
// well-predicted branch, no state of our own.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zam::dct4 {

enum class Path : uint8_t { Scalar, Sse2, Avx2 };

// Whether this processor (and its operating system) runs the path.
inline bool path_supported(Path p) noexcept
{
#if defined(ZAMGEN_VECTOR_PATHS)
    switch (p) {
    case Path::Scalar:
    case Path::Sse2: return true;
    case Path::Avx2: return __builtin_cpu_supports("avx2");
    }
    return false;
#else
    return p == Path::Scalar;
#endif
}

inline Path best_path() noexcept
{
#if defined(ZAMGEN_VECTOR_PATHS)
    return __builtin_cpu_supports("avx2") ? Path::Avx2 : Path::Sse2;
#else
    return Path::Scalar;
#endif
}

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
#undef ZAM_DCT4_PATH

} // namespace zam::dct4
