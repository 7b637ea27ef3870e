// The instruction sets the transforms with loops (the Walsh-Hadamard
// transforms of orders 8 to 13, the DCT-IV) run on, and the choice among them.
// AVX-512 (F, DQ, BW and VL) serves the Walsh-Hadamard transforms, the DCT-IV
// and the codelets whose AVX-512 bodies pay (frame/pick.hpp).
//
// The vector paths compute exactly what the scalar code computes, one block
// or group per lane, so the choice changes the speed only.  It is
// made on each call from the processor's features as the compiler's run time
// recorded them once when the library was loaded: one load and one
// well-predicted branch, no state of our own.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zam {

enum class Path : uint8_t { Scalar, Sse2, Avx2, Avx512 };

// Whether this processor (and its operating system) runs the path.
inline bool path_supported(Path p) noexcept
{
#if defined(ZAMGEN_VECTOR_PATHS)
    switch (p) {
    case Path::Scalar:
    case Path::Sse2: return true;
    case Path::Avx2: return __builtin_cpu_supports("avx2");
    case Path::Avx512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
               __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
    }
    return false;
#else
    return p == Path::Scalar;
#endif
}

// The best path every family has (AVX2 at most).
inline Path best_path() noexcept
{
#if defined(ZAMGEN_VECTOR_PATHS)
    return __builtin_cpu_supports("avx2") ? Path::Avx2 : Path::Sse2;
#else
    return Path::Scalar;
#endif
}

// The best path of the families that have an AVX-512 path too (the
// Walsh-Hadamard transforms, the DCT-IV).
inline Path widest_path() noexcept
{
    return path_supported(Path::Avx512) ? Path::Avx512 : best_path();
}

} // namespace zam
