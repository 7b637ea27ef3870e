// The scalar C++ printer: one exported function per lowered codelet, every
// value a `const` local of its instruction's type.
#pragma once

#include "lower.hpp"

#include <string>

namespace zg {

std::string print_cpp(const Program& prog);
// The same instructions on vectors of lanes, as a template over the vector
// type V (see src/simd/lanes.hpp): lane l computes exactly what the scalar
// function computes for the group l places on.  For the DCT-IV's first-pass
// (Form::Dct4First) and second-pass (Form::Dct4Second) kernels; the second
// pass reads lane l's group values at v + l vrow and its table values at
// tw + l trow.  For the nested radix kernels (Form::Dct4Radix) lane l is one
// of V::n stages run side by side: value k of lane l at v[k V::n + l], the
// twiddles shared, results of lane l at front + l and back + l.  A block
// (Form::Block, ScaledBlock) becomes a template over an accessor IO with
// io.in(k), io.out(k, v) and the scale io.s: the driver decides where lane l
// reads and writes.
std::string print_lanes(const Program& prog);
// The declaration of a block (Form::Block or ScaledBlock), for a header.
std::string declare_cpp(const Signature& sig);

// A codelet's head (its C signature) and the checks that open it: pointers,
// flag, and the scale factor s (none for blocks and kernels).
std::string codelet_head(const Signature& sig);
std::string codelet_checks(const Program& p);

// Shortest decimal literals that read back as exactly the same value.
std::string double_literal(double v);
std::string float_literal(float v);

} // namespace zg
