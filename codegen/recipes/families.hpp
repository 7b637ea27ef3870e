// The codelet families: each turns a transform recipe into the codelets of one
// length (graph, input layout, output layout and scale rule).
#pragma once

#include "../codelet.hpp"

#include <vector>

namespace zg {

// zamgDFTFwd_CToC and zamgDFTInv_CToC of length n.
std::vector<Codelet> complex_codelets(int n);

// zamgDFTFwd_RToCCS, _RToPack and _RToPerm of length n (in that order).
std::vector<Codelet> real_forward_codelets(int n);

// zamgDFTInv_CCSToR, _PackToR and _PermToR of length n.
std::vector<Codelet> real_inverse_codelets(int n);

// zamgHartley of length n.
std::vector<Codelet> hartley_codelets(int n);

} // namespace zg
