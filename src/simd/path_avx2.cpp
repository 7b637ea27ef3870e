// The Walsh-Hadamard transforms and the DCT-IV passes on AVX2 vectors.  This file alone is compiled for
// that instruction set (src/CMakeLists.txt), and everything it defines lives
// in its own namespace: no function body is shared with another path.
#define ZAM_PATH avx2
#define ZAM_PATH_BITS 256
#include "simd/lanes.hpp"
#include "dct4_lanes.hpp"
#include "dct4/lanes.hpp"
#include "wht/network.hpp"

namespace zam::dct4::avx2 {

template uint32_t first_groups<float>(uint32_t, const float*, uint32_t, uint32_t, uint32_t, uint32_t, float*, uint32_t);
template uint32_t first_groups<double>(uint32_t, const double*, uint32_t, uint32_t, uint32_t, uint32_t, double*,
                                       uint32_t);
template uint32_t second_groups<float>(uint32_t, uint32_t, const float*, ptrdiff_t, const float*, ptrdiff_t, float*,
                                       uint32_t, uint32_t, uint32_t, uint32_t);
template uint32_t second_groups<double>(uint32_t, uint32_t, const double*, ptrdiff_t, const double*, ptrdiff_t,
                                        double*, uint32_t, uint32_t, uint32_t, uint32_t);
template uint32_t stage_groups<float>(const StageArgs<float>&, const float*, uint32_t, uint32_t, float*, uint32_t);
template uint32_t stage_groups<double>(const StageArgs<double>&, const double*, uint32_t, uint32_t, double*, uint32_t);

} // namespace zam::dct4::avx2

namespace zam::wht::avx2 {

template <class T>
void large_order(int order, const T* src, T* dst, T s, T*)
{
    network_order<typename zam::avx2::Wide<T>::type>(order, src, dst, s);
}

template void large_order<float>(int, const float*, float*, float, float*);
template void large_order<double>(int, const double*, double*, double, double*);

} // namespace zam::wht::avx2
