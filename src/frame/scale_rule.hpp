// Which flag values divide by N: the forward DFT divides for ZAM_DIV_FWD_BY_N,
// the inverse for ZAM_DIV_INV_BY_N, and transforms without a direction
// (Hartley, Walsh-Hadamard) for both.  The library's checks and the codelet
// compiler, which writes each codelet's rule by name, share this one header.
#pragma once

namespace zam {

enum class ScaleRule { Forward, Inverse, Symmetric };

constexpr const char* scale_rule_name(ScaleRule rule) {
    switch (rule) {
    case ScaleRule::Forward: return "Forward";
    case ScaleRule::Inverse: return "Inverse";
    default: return "Symmetric";
    }
}

} // namespace zam
