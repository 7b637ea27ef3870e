// The scalar C++ printer: one exported function per lowered codelet, every
// value a `const` local of its instruction's type.
#pragma once

#include "lower.hpp"

#include <string>

namespace zg {

std::string print_cpp(const Program& prog);

// Shortest decimal literals that read back as exactly the same value.
std::string double_literal(double v);
std::string float_literal(float v);

} // namespace zg
