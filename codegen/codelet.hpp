// A codelet as the compiler sees it: its graph, where its input comes from,
// where each output goes and how the scale factor is applied to it.
#pragma once

#include "dag.hpp"

#include <memory>
#include <string>
#include <vector>

namespace zg {

enum class Prec { F32, F64 };

// Which flag values divide by N (see the scaling flags of the public header).
enum class ScaleRule { Forward, Inverse, Symmetric };

// How one output scalar is scaled and stored.
enum class Store {
    Plain,          // v * s in the element precision
    ZeroMinus,      // 0.0 - v * s (a negated imaginary part; zero gives +0.0)
    WideScale,      // single precision: v, s widened, v * s in double, rounded once
    WideZeroMinus,  // single precision: 0.0 - s * v in double, rounded once
    ZeroConst,      // exact +0.0, stored without computation
};

struct Output {
    int slot;   // scalar index in the destination
    Ref v;
    Store mode = Store::Plain;
};

struct Codelet {
    std::string family;   // e.g. "zamgDFTFwd_CToC"
    int n = 0;            // transform length
    bool complex_io = false;  // complex elements: slot 2k = re, 2k+1 = im of element k
    ScaleRule rule = ScaleRule::Forward;
    std::unique_ptr<Graph> g = std::make_unique<Graph>();
    std::vector<Output> outs;

    Codelet() = default;
    Codelet(std::string family_, int n_, ScaleRule rule_, bool complex_io_ = false)
        : family(std::move(family_)), n(n_), complex_io(complex_io_), rule(rule_) {}

    std::string name(Prec p) const;
    // The codelet's real inputs 0..count-1 as graph values.
    std::vector<Ref> inputs(int count) {
        std::vector<Ref> x(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) x[static_cast<size_t>(i)] = g->input(i);
        return x;
    }
};

struct Counts {
    int muls = 0;   // products by constants (scale excluded)
    int adds = 0;   // additions and subtractions, 0.0 - v stores included
    int negs = 0;   // outputs stored negated (sign flips, not arithmetic)
};

// The live operations of a graph that the given stores (or values) need.
Counts count(const Graph& g, const std::vector<Output>& outs);
Counts count(const Graph& g, const std::vector<Ref>& values);
inline Counts count(const Codelet& c) { return count(*c.g, c.outs); }

// The C++ source of the exported function for one precision.
std::string emit(const Codelet& c, Prec p);

// Shortest decimal literals that read back as exactly the same value.
std::string double_literal(double v);
std::string float_literal(float v);

} // namespace zg
