// The Walsh-Hadamard transforms and the DCT-IV passes on SSE2 vectors.  This file alone is compiled for
// that instruction set (src/CMakeLists.txt), and everything it defines lives
// in its own namespace: no function body is shared with another path.
#define ZAM_PATH sse2
#define ZAM_PATH_BITS 128
#include "simd/lanes.hpp"
#include "dct4_lanes.hpp"
#include "dct4/lanes.hpp"
#include "wht_lanes.hpp"
#include "wht/lanes.hpp"

namespace zam::dct4::sse2 {

template uint32_t first_groups<float>(uint32_t, const float*, uint32_t, uint32_t, uint32_t, uint32_t, float*, uint32_t);
template uint32_t first_groups<double>(uint32_t, const double*, uint32_t, uint32_t, uint32_t, uint32_t, double*,
                                       uint32_t);
template uint32_t second_groups<float>(uint32_t, uint32_t, const float*, ptrdiff_t, const float*, ptrdiff_t, float*,
                                       uint32_t, uint32_t, uint32_t, uint32_t);
template uint32_t second_groups<double>(uint32_t, uint32_t, const double*, ptrdiff_t, const double*, ptrdiff_t,
                                        double*, uint32_t, uint32_t, uint32_t, uint32_t);
template uint32_t stage_groups<float>(const StageArgs<float>&, const float*, uint32_t, uint32_t, float*, uint32_t);
template uint32_t stage_groups<double>(const StageArgs<double>&, const double*, uint32_t, uint32_t, double*, uint32_t);

} // namespace zam::dct4::sse2

namespace zam::wht::sse2 {

template void large_order<float>(int, const float*, float*, float, float*);
template void large_order<double>(int, const double*, double*, double, double*);

} // namespace zam::wht::sse2
