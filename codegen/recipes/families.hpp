// The codelet families: each turns the transform recipes into the graph of
// one exported codelet (input layout, output layout and the stores), recording
// the plan it chose.
#pragma once

#include "../codelet.hpp"
#include "../planner.hpp"
#include "../surface.hpp"

namespace zg {

CodeletGraph build_codelet(Planner& planner, const Family& f, int n);

CodeletGraph complex_codelet(Planner& planner, int n, int sign);
CodeletGraph real_forward_codelet(Planner& planner, int n, Layout l);
CodeletGraph real_inverse_codelet(Planner& planner, int n, Layout l);
CodeletGraph hartley_codelet(Planner& planner, int n);

} // namespace zg
