// The transforms the recipes build on the graph, declared together because
// they call each other: a complex DFT of a Rader prime runs convolutions,
// which run real and complex DFTs, which may contain Rader primes again; the
// real transforms use complex DFTs and the odd-frequency transforms, and those
// use complex DFTs.
//
//   dft.cpp            complex DFT: butterfly, Cooley-Tukey, prime-factor, direct odd primes
//   rader.cpp          complex DFT of the Rader primes over the folded input
//   convolution.cpp    cyclic and negacyclic convolutions with a constant kernel
//   real.cpp           real-input half spectra and real-output inverses
//   odd_frequency.cpp  odd-frequency real transforms (negacyclic convolution, quarter-wave columns)
#pragma once

#include "../graph.hpp"
#include "../planner.hpp"

#include <string>
#include <vector>

namespace zg {

struct Cx {
    Ref re, im;
};
using CxVec = std::vector<Cx>;

inline Cx cadd(Graph& g, Cx a, Cx b) { return {g.add(a.re, b.re), g.add(a.im, b.im)}; }
inline Cx csub(Graph& g, Cx a, Cx b) { return {g.sub(a.re, b.re), g.sub(a.im, b.im)}; }
inline Cx cneg(Cx a) { return {-a.re, -a.im}; }
inline Cx conj(Cx a) { return {a.re, -a.im}; }
// a * i (sgn = +1) or a * (-i) (sgn = -1): an exchange of parts with a sign change.
inline Cx cmul_i(Cx a, int sgn) { return sgn > 0 ? Cx{-a.im, a.re} : Cx{a.im, -a.re}; }
inline Cx cround(Graph& g, Cx a) { return {g.round(a.re), g.round(a.im)}; }

// What every recipe works with: the graph it adds to, the planner, and the
// record of the choices made for the codelet being built (none while a
// candidate is measured on a scratch graph).
struct Context {
    Graph& g;
    Planner& planner;
    PlanNotes* notes = nullptr;

    void note(const std::string& what, const std::string& how) const {
        if (notes) notes->add(what, how);
    }
    Context scratch(Graph& other) const { return {other, planner, nullptr}; }
};

// a * exp(sign * 2*pi*i * e / n).  A twiddle of 1, -1 or +-i costs nothing; an
// odd power of the eighth root of unity costs two products by sqrt(1/2) of the
// sum and difference of the parts; any other twiddle is a full complex product
// (four products, two additions; in single precision each part is one double
// combination rounded once).
Cx twiddle(Graph& g, Cx a, long e, long n, int sign);

// The complex DFT of x with the exponent sign (-1 forward, +1 inverse), by the
// factorisation fixed for its length.
CxVec dft(Context& ctx, const CxVec& x, int sign);

// The primes done by Rader's algorithm (13, 17, 19, 29, ...), and their DFT.
bool uses_rader(int n);
CxVec rader_dft(Context& ctx, const CxVec& x, int sign);

// How a convolution's algorithms are compared: per_add * additions + per_mul *
// products.  Rader primes choose the weighting per half to stay within budget.
struct ConvolutionWeights {
    int per_add = 1000, per_mul = 1;
    auto operator<=>(const ConvolutionWeights&) const = default;
};

// v[l] = base + sum_j u[j] kappa[(l - j) mod m] (cyclic); *sum = sum of u.
std::vector<Ref> cyclic_convolution(Context& ctx, const std::vector<Ref>& u, const std::vector<DoubleDouble>& kappa,
                                    Ref base, Ref* sum, ConvolutionWeights w);
// v[l] = sum_j u[j] kappa~[l - j] with kappa~ antiperiodic (kappa~[t+m] = -kappa~[t]).
std::vector<Ref> negacyclic_convolution(Context& ctx, const std::vector<Ref>& u,
                                        const std::vector<DoubleDouble>& kappa, ConvolutionWeights w);

// Half spectrum of a real sequence x of length n: X[k] for k = 0..n/2 (X[0]
// and, for even n, X[n/2] have a zero imaginary part), with the exponent sign
// of the transform.
CxVec rdft(Context& ctx, const std::vector<Ref>& x, int sign);

// The real sequence of length n whose conjugate-symmetric spectrum has the
// half X[0..n/2]: x[j] = sum_k X[k] exp(sign*2*pi*i*j*k/n) over all k, the
// upper half taken as conj(X[n-k]).  The imaginary parts of X[0] and (even n)
// X[n/2] are ignored.  With `doubled`, the middle bins 0 < k < n/2 are given
// as 2 X[k] (a producer with constant products gets the factor for free).
std::vector<Ref> irdft(Context& ctx, const CxVec& X, int n, int sign, bool doubled = false);

// Odd-frequency half spectrum of a real sequence v of even length n:
// X[j] = sum_i v[i] w^(i(2j+1)) with w = exp(sign*i*pi/n), j = 0..n/2-1 (the
// others are the conjugates X[n-1-j]).  These are the odd bins of the DFT of
// length 2n of the antiperiodic extension of v: the transform under which a
// negacyclic convolution becomes a pointwise product.
CxVec odd_rdft(Context& ctx, const std::vector<Ref>& v, int sign);

// v[i] = sum over all j < n of X[j] w^(-i(2j+1)), X[n-1-j] = conj(X[j]); real.
// With `half`, the sum over j < n/2 only, real part (half the value).
std::vector<Ref> odd_irdft(Context& ctx, const CxVec& X, int n, int sign, bool half);

// The odd-frequency transforms on the P x q map of a length n = (P/2) q, q
// odd: row i2 of the antiperiodic extension v~ is v~[(q i1 + P i2) mod 2n],
// i1 < P/2.  The forward gives each row's odd-frequency half spectrum
// (rows[i2][j1], j1 < P/4); the inverse takes cols[j1][i2] and returns v.
std::vector<CxVec> odd_rdft_rows(Context& ctx, const std::vector<Ref>& v, int sign);
std::vector<Ref> odd_irdft_rows(Context& ctx, const std::vector<CxVec>& cols, int n, int sign, bool half);

} // namespace zg
