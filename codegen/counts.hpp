// Operation counts of a graph: what the manifest reports and what the planner
// minimises.  Only the operations that the given values need are counted.
#pragma once

#include "codelet.hpp"

#include <vector>

namespace zg {

struct OpCounts {
    int muls = 0;  // products by constants and of two values (the scale factor excluded)
    int adds = 0;  // additions and subtractions, 0.0 - v stores included
    int negs = 0;  // outputs stored negated (sign flips, not arithmetic)
};

// Marks the nodes that the given values depend on.
std::vector<char> live_nodes(const Graph& g, const std::vector<Ref>& roots);

OpCounts count(const Graph& g, const std::vector<Ref>& values);
OpCounts count(const Graph& g, const std::vector<Output>& outputs);
inline OpCounts count(const CodeletGraph& c) { return count(c.g, c.outputs); }

} // namespace zg
