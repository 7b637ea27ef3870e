// The body an exported codelet runs.  Every codelet has a scalar body
// (namespace zam::scalar); most also have a vector body (print_simd), compiled
// once per vector path: zam::sse2 for any x86-64 processor, zam::avx2 for
// those with AVX2.  All bodies give the same bits; the exported function
// (codelet_exports.cpp) picks the AVX2 body where the processor has it, as
// the compiler's run time recorded when the library was loaded: one load and
// one well-predicted branch per call.
#pragma once

#include "frame/checks.hpp"

#define ZAM_DECLARE_VEC0(...)
#define ZAM_DECLARE_VEC1(...)                                                                                    \
    namespace zam::sse2 {                                                                                        \
    __VA_ARGS__;                                                                                                 \
    }                                                                                                            \
    namespace zam::avx2 {                                                                                        \
    __VA_ARGS__;                                                                                                 \
    }
#define ZAM_DECLARE(vec, ...)                                                                                    \
    namespace zam::scalar {                                                                                      \
    __VA_ARGS__;                                                                                                 \
    }                                                                                                            \
    ZAM_DECLARE_VEC##vec(__VA_ARGS__)
#include "codelet_paths.hpp"
#undef ZAM_DECLARE
#undef ZAM_DECLARE_VEC0
#undef ZAM_DECLARE_VEC1

#define ZAM_PICK(vec, name) ZAM_PICK##vec(name)
#define ZAM_PICK0(name) zam::scalar::name
#if defined(ZAMGEN_VECTOR_PATHS)
#define ZAM_PICK1(name) (__builtin_cpu_supports("avx2") ? zam::avx2::name : zam::sse2::name)
#else
#define ZAM_PICK1(name) zam::scalar::name
#endif
