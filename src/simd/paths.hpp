// The instruction sets the transforms with loops (the Walsh-Hadamard
// transforms of orders 8 to 13, the DCT-IV) run on, and the choice among them.
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

} // namespace zam
