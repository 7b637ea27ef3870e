// Real-input and real-output DFT recipes.
#pragma once

#include "cx.hpp"

namespace zg {

// Half spectrum of a real sequence x of length n: X[k] for k = 0..n/2 (X[0]
// and, for even n, X[n/2] have a zero imaginary part), with the exponent sign
// of the transform.
CxVec rdft(Graph& g, const std::vector<Ref>& x, int sign);

// The real sequence of length n whose conjugate-symmetric spectrum has the
// half X[0..n/2]: x[j] = sum_k X[k] exp(sign*2*pi*i*j*k/n) over all k, the
// upper half taken as conj(X[n-k]).  The imaginary parts of X[0] and (even n)
// X[n/2] are ignored.  With `doubled`, the middle bins 0 < k < n/2 are given
// as 2 X[k] (a producer with constant products gets the factor for free).
std::vector<Ref> irdft(Graph& g, const CxVec& X, int n, int sign, bool doubled = false);

// Odd-frequency half spectrum of a real sequence v of even length n:
// X[j] = sum_i v[i] w^(i(2j+1)) with w = exp(sign*i*pi/n), j = 0..n/2-1 (the
// others are the conjugates X[n-1-j]).  These are the odd bins of the DFT of
// length 2n of the antiperiodic extension of v: the transform under which a
// negacyclic convolution becomes a pointwise product.
CxVec odd_rdft(Graph& g, const std::vector<Ref>& v, int sign);

// v[i] = sum over all j < n of X[j] w^(-i(2j+1)), X[n-1-j] = conj(X[j]); real.
// With `half`, the sum over j < n/2 only, real part (half the value).
std::vector<Ref> odd_irdft(Graph& g, const CxVec& X, int n, int sign, bool half);

} // namespace zg
