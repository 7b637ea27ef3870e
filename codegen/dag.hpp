// The expression DAG of one codelet.
//
// A graph holds real scalar operations on the codelet's input: sums,
// differences, products by constants and the points where a double-precision
// combination is rounded to single precision.  Values are referred to by
// signed references, so a negation costs nothing: it is absorbed into the sum,
// difference or constant that uses the value.  Every node is hash-consed, so an
// expression that a recipe builds twice (also as the negation of an existing
// difference) exists once.
//
// Precision.  One graph serves both element precisions.  Each node records
// whether, in the single-precision codelet, it is evaluated in double (`wide`):
// products by constants are wide (the float operand is widened exactly), a sum
// or difference is wide when an operand is, and a Round node ends a wide
// combination with one rounding to float.  The double-precision codelet runs
// the same graph in double throughout, with every Round a plain copy, so both
// precisions perform exactly the same operations.
#pragma once

#include "hp.hpp"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace zg {

enum class Op : uint8_t {
    Zero,   // the constant 0 (node 0)
    Input,  // one scalar of the codelet's input
    Add,    // a + b
    Sub,    // a - b
    MulC,   // constant k times a
    Round,  // a rounded to float (single precision only)
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
    bool wide = false;   // evaluated in double in the single-precision codelet
    int32_t a = 0;       // first operand (always a positive reference)
    int32_t b = 0;       // second operand
    int32_t k = 0;       // MulC: constant index; Input: input slot
};

class Graph {
public:
    Graph();

    Ref input(int slot);
    Ref add(Ref x, Ref y);
    Ref sub(Ref x, Ref y) { return add(x, -y); }
    Ref mul(DD c, Ref x);
    Ref mul(double c, Ref x) { return mul(DD(c), x); }
    // A difference built as written, without reusing an existing y - x: gives
    // a stored value its sign without a negation.
    Ref sub_as_written(Ref x, Ref y);
    // v itself when it is positive; a negated difference a - b becomes b - a.
    // Anything else stays negated.
    Ref orient(Ref v);

    // Ends a double-precision combination: in the single-precision codelet the
    // value is rounded to float here; a value that is already float is
    // returned as it is.
    Ref round(Ref x);

    const Node& node(int32_t id) const { return nodes_[static_cast<size_t>(id)]; }
    size_t size() const { return nodes_.size(); }
    double constant(int32_t k) const { return consts_[static_cast<size_t>(k)].to_double(); }
    bool wide(Ref r) const { return node(r.id).wide; }

private:
public:
    struct Key {
        Op op;
        int32_t a, b, k;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        size_t operator()(const Key& key) const;
    };

private:
    Ref make(Op op, int32_t a, int32_t b, int32_t k, bool wide);
    const Ref* find(Op op, int32_t a, int32_t b, int32_t k) const;
    int32_t constant_index(DD c);

    std::vector<Node> nodes_;
    std::vector<DD> consts_;
    std::unordered_map<uint64_t, int32_t> const_index_;
    std::unordered_map<Key, Ref, KeyHash> memo_;
};

// The values of the given references for one set of input values (indexed by
// input slot), evaluated in double: the compiler's own check of its recipes.
std::vector<double> evaluate(const Graph& g, const std::vector<double>& inputs, const std::vector<Ref>& refs);

} // namespace zg
