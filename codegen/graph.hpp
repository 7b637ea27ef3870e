// The expression graph of one codelet.
//
// A graph holds real scalar operations on the codelet's input: sums,
// differences, products by constants, products of two values (data times a
// table value read at run time) and the points where a double-precision
// combination is rounded to single precision.  Values are referred to by
// signed references, so a negation costs nothing: it is absorbed into the sum,
// difference or constant that uses the value.  Every node is hash-consed, so an
// expression that a recipe builds twice (also as the negation of an existing
// difference) exists once.
//
// Precision.  One graph serves both element precisions.  Each node records
// whether the single-precision codelet evaluates it in double (`in_double`):
// products by constants are (the float operand is widened exactly), a sum or
// difference is when an operand is, and a Round node ends such a combination
// with one rounding to float.  The double-precision codelet runs the same graph
// in double throughout, with every Round a plain copy, so both precisions
// perform exactly the same operations.
#pragma once

#include "double_double.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace zg {

enum class Op : uint8_t {
    Zero,      // the constant 0 (node 0)
    Input,     // one scalar of the codelet's source
    Add,       // a + b
    Sub,       // a - b
    MulConst,  // constant times a
    Round,     // a rounded to float (single precision only)
    Mul,       // a * b, two values known only at run time
};

struct Ref {
    int32_t id = 0;  // node index; 0 is the constant zero
    bool neg = false;

    bool is_zero() const { return id == 0; }
    Ref operator-() const { return id == 0 ? *this : Ref{id, !neg}; }
    friend bool operator==(Ref x, Ref y) { return x.id == y.id && x.neg == y.neg; }
};

struct Node {
    Op op = Op::Zero;
    bool in_double = false;  // evaluated in double by the single-precision codelet
    int32_t a = 0;           // first operand (a positive reference)
    int32_t b = 0;           // second operand
    int32_t constant = 0;    // MulConst: index into the graph's constants
    int32_t slot = 0;        // Input: scalar index in the source
};

// Where a recipe built a node: in copy `copy` of a batch of identical inner
// transforms (`group`), as the `pos`-th node request of that copy.  Copies of
// one batch perform the same operations on different data, so the nodes at
// one position of neighbouring copies can share a vector's lanes.  Levels
// run from the outermost batch inwards; group -1 is no batch.
struct LaneTag {
    int32_t group = -1;
    int32_t copy = 0;
    int32_t pos = 0;
};
constexpr size_t kLaneLevels = 3;
using LaneTags = std::array<LaneTag, kLaneLevels>;
// The batches of the real-data recipes are numbered from here, apart from
// the complex recipes' (the AVX-512 bodies are printed without them, see
// print_avx512).
constexpr int32_t kRealLaneGroups = 1 << 24;

class Graph {
public:
    Graph();

    Ref input(int slot);
    Ref add(Ref x, Ref y);
    Ref sub(Ref x, Ref y) { return add(x, -y); }
    Ref mul(DoubleDouble c, Ref x);
    Ref mul(double c, Ref x) { return mul(DoubleDouble(c), x); }
    // The product of two values; in single precision it is computed in
    // double when an operand is.
    Ref product(Ref x, Ref y);
    // A difference built as written, without reusing an existing y - x.
    Ref sub_as_written(Ref x, Ref y);
    // The value without a negation where that is free: a negated difference
    // a - b becomes b - a.  A positive value is returned as it is; any other
    // negated value stays negated.
    Ref absorb_negation(Ref v);

    // Ends a double-precision combination: in the single-precision codelet the
    // value is rounded to float here; a value that is already float is
    // returned as it is.
    Ref round(Ref x);

    const Node& node(int32_t id) const { return nodes_[static_cast<size_t>(id)]; }
    size_t size() const { return nodes_.size(); }
    double constant(int32_t index) const { return constants_[static_cast<size_t>(index)].to_double(); }
    bool in_double(Ref r) const { return node(r.id).in_double; }

    // Lane tags: metadata for the vector printers that never changes a node.
    // A node keeps the tags of its first construction.
    int32_t new_lane_group() { return next_group_++; }
    int32_t new_real_lane_group() { return next_real_group_++; }
    void enter_copy(int32_t group, int32_t copy) { open_.push_back({group, copy, 0}); }
    void leave_copy() { open_.pop_back(); }
    const LaneTags& lane_tags(int32_t id) const { return tags_[static_cast<size_t>(id)]; }

private:
    // What makes two nodes the same: operation, operands and the constant
    // index or input slot.
    struct Key {
        Op op;
        int32_t a, b, extra;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        size_t operator()(const Key& key) const;
    };

    Ref make(const Node& n);
    const Ref* find(const Key& key) const;
    int32_t constant_index(DoubleDouble c);
    static Key key_of(const Node& n) { return {n.op, n.a, n.b, n.op == Op::Input ? n.slot : n.constant}; }

    std::vector<Node> nodes_;
    std::vector<DoubleDouble> constants_;
    std::unordered_map<uint64_t, int32_t> constant_by_bits_;
    std::unordered_map<Key, Ref, KeyHash> existing_;
    std::vector<LaneTags> tags_;
    std::vector<LaneTag> open_;  // the copies being built, outermost first
    int32_t next_group_ = 0;
    int32_t next_real_group_ = kRealLaneGroups;
};

// Nodes made while it lives belong to copy `copy` of batch `group`.
class CopyScope {
public:
    CopyScope(Graph& g, int32_t group, int32_t copy) : g_(g) { g_.enter_copy(group, copy); }
    ~CopyScope() { g_.leave_copy(); }
    CopyScope(const CopyScope&) = delete;
    CopyScope& operator=(const CopyScope&) = delete;

private:
    Graph& g_;
};

// The values of the given references for one set of input values (indexed by
// input slot), evaluated in double: the compiler's own check of its recipes.
std::vector<double> evaluate(const Graph& g, const std::vector<double>& inputs, const std::vector<Ref>& refs);

} // namespace zg
