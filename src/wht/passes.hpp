// The passes of the Walsh-Hadamard transforms of orders 8 to 13 (see
// wht.cpp) on the given instruction set; every path gives the same bits.
// `work` holds the transform's work buffer; the scale s is applied by the
// last pass.
#pragma once

#include "simd/paths.hpp"

namespace zam::wht {

template <class T>
void run_passes(Path path, int order, const T* src, T* dst, T s, T* work) noexcept;

// Whether the path's passes use the work buffer (the AVX2 and AVX-512 ones
// work in the destination alone).
inline bool uses_work(Path path) noexcept { return path == Path::Scalar || path == Path::Sse2; }

#define ZAM_WHT_PATH(ns)                                                       \
    namespace ns {                                                             \
    template <class T>                                                         \
    void large_order(int order, const T* src, T* dst, T s, T* work);          \
    }
ZAM_WHT_PATH(sse2)
ZAM_WHT_PATH(avx2)
ZAM_WHT_PATH(avx512)
#undef ZAM_WHT_PATH

} // namespace zam::wht
