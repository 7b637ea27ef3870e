// A codelet as the compiler builds it: its graph, where each output goes and
// how the scale factor is applied to it, and the plan the recipes chose.
#pragma once

#include "graph.hpp"

#include <string>
#include <vector>

namespace zg {

enum class Precision { Single, Double };

// How one output scalar is scaled and stored.
enum class Store {
    Plain,           // v * s in the element precision
    ZeroMinus,       // 0.0 - v * s (a negated imaginary part; zero gives +0.0)
    DoubleScale,     // single precision: v, s widened, v * s in double, rounded once
    DoubleZeroMinus, // single precision: 0.0 - s * v in double, rounded once
    ZeroConst,       // exact +0.0, stored without computation
    Unscaled,        // v itself (the internal blocks of the larger transforms)
};

struct Output {
    int slot;  // scalar index in the destination
    Ref v;
    Store mode = Store::Plain;
};

struct CodeletGraph {
    Graph g;
    std::vector<Output> outputs;
    std::string plan;  // the choices the recipes made, one line
    // Single precision computes every operation in float, constants as float
    // literals, with no widening and no rounding steps (the DCT-IV kernels).
    bool element_precision = false;
    // Each output is stored as soon as its value is computed, not after the
    // last operation: fewer values stay live to the end.
    bool early_stores = false;
    // Each input is loaded just before its first use (and so are the
    // operations close to the inputs, as far as that keeps fewer values
    // live), not before the first operation.  Every load still precedes the
    // first store, so the code stays valid in place.
    bool late_loads = false;
};

} // namespace zg
