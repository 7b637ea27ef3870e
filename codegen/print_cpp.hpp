// The scalar C++ printer: one exported function per lowered codelet, every
// value a `const` local of its instruction's type.
#pragma once

#include "lower.hpp"

#include <string>

namespace zg {

std::string print_cpp(const Program& prog);
// The declaration of a block (Form::Block or ScaledBlock), for a header.
std::string declare_cpp(const Signature& sig);

// Shortest decimal literals that read back as exactly the same value.
std::string double_literal(double v);
std::string float_literal(float v);

} // namespace zg
