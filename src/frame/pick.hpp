// The body an exported codelet runs.  Every codelet has a scalar body
// (namespace zam::scalar); most also have a vector body (print_simd), compiled
// once per vector path: zam::sse2 for any x86-64 processor, zam::avx2 for
// those with AVX2; those whose octets pay have an AVX-512 body as well
// (zam::avx512, for processors with AVX-512 F, DQ, VL and BW).  All bodies
// give the same bits; the exported function (codelet_exports.cpp) picks the
// widest body the processor runs, as the compiler's run time recorded when
// the library was loaded (features the operating system does not save the
// registers of count as absent): a load and a well-predicted branch or two
// per call.
#pragma once

#include "frame/checks.hpp"
#include "simd/paths.hpp"

#define ZAM_DECLARE_VEC0(...)
#define ZAM_DECLARE_VEC1(...)                                                                                    \
    namespace zam::sse2 {                                                                                        \
    __VA_ARGS__;                                                                                                 \
    }                                                                                                            \
    namespace zam::avx2 {                                                                                        \
    __VA_ARGS__;                                                                                                 \
    }
#define ZAM_DECLARE_VEC2(...)                                                                                    \
    ZAM_DECLARE_VEC1(__VA_ARGS__)                                                                                \
    namespace zam::avx512 {                                                                                      \
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
#undef ZAM_DECLARE_VEC2

#define ZAM_PICK(vec, name) ZAM_PICK##vec(name)
#define ZAM_PICK0(name) zam::scalar::name
#if defined(ZAMGEN_VECTOR_PATHS)
#define ZAM_PICK1(name) (__builtin_cpu_supports("avx2") ? zam::avx2::name : zam::sse2::name)
#define ZAM_PICK2(name) (zam::path_supported(zam::Path::Avx512) ? zam::avx512::name : ZAM_PICK1(name))
#else
#define ZAM_PICK1(name) zam::scalar::name
#define ZAM_PICK2(name) zam::scalar::name
#endif
