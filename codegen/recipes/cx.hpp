// Complex values on the DAG and the operations the transform recipes share.
#pragma once

#include "../dag.hpp"

#include <vector>

namespace zg {

struct Cx {
    Ref re, im;
};

using CxVec = std::vector<Cx>;

inline Cx cadd(Graph& g, Cx a, Cx b) { return {g.add(a.re, b.re), g.add(a.im, b.im)}; }
inline Cx csub(Graph& g, Cx a, Cx b) { return {g.sub(a.re, b.re), g.sub(a.im, b.im)}; }
inline Cx cneg(Cx a) { return {-a.re, -a.im}; }
// a * i (sgn = +1) or a * (-i) (sgn = -1): an exchange of parts with a sign change.
inline Cx cmul_i(Cx a, int sgn) { return sgn > 0 ? Cx{-a.im, a.re} : Cx{a.im, -a.re}; }
inline Cx cround(Graph& g, Cx a) { return {g.round(a.re), g.round(a.im)}; }

// a * exp(sign * 2*pi*i * e / n).  A twiddle of 1, -1 or +-i costs nothing; an
// odd power of the eighth root of unity costs two products by sqrt(1/2) of the
// sum and difference of the parts; any other twiddle is a full complex product
// (four products, two additions; in single precision each part is one double
// combination rounded once).
Cx twiddle(Graph& g, Cx a, long e, long n, int sign);

// The complex DFT of x with the exponent sign (-1 forward, +1 inverse), by the
// factorisation fixed for its length.
CxVec dft(Graph& g, const CxVec& x, int sign);

} // namespace zg
