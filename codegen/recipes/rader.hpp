// Rader's algorithm for the prime lengths whose folded convolutions are cheaper
// than the direct symmetric evaluation.
#pragma once

#include "cx.hpp"

namespace zg {

// The primes done by Rader's algorithm (13, 17, 19, 29, ...).
bool uses_rader(int n);

// The complex DFT of prime length x.size() by Rader's algorithm over the folded
// input (see rader.cpp).
CxVec rader_dft(Graph& g, const CxVec& x, int sign);

} // namespace zg
