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

// The Walsh-Hadamard transform of n points, every output stored as `mode` says.
CodeletGraph wht_graph(int n, Store mode);

// The straight-line blocks that hand-written transforms are built from:
// void name_<type>(src, is, dst, os[, s]), strided, unscaled or scaled.
struct Block {
    std::string name;
    int n;
    bool scaled;
};
const std::vector<Block>& internal_blocks();

} // namespace zg
