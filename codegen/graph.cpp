#include "graph.hpp"

#include <algorithm>
#include <bit>

namespace zg {

Graph::Graph() {
    nodes_.push_back(Node{});
    tags_.emplace_back();
}

size_t Graph::KeyHash::operator()(const Key& key) const {
    uint64_t h = static_cast<uint64_t>(key.op);
    h = h * 0x9E3779B97F4A7C15ull + static_cast<uint32_t>(key.a);
    h = h * 0x9E3779B97F4A7C15ull + static_cast<uint32_t>(key.b);
    h = h * 0x9E3779B97F4A7C15ull + static_cast<uint32_t>(key.extra);
    return static_cast<size_t>(h ^ (h >> 29));
}

const Ref* Graph::find(const Key& key) const {
    auto it = existing_.find(key);
    return it == existing_.end() ? nullptr : &it->second;
}

Ref Graph::make(const Node& n) {
    // Every request counts in the open copies, found or new, so the copies
    // of a batch stay aligned where one of them meets an existing node.
    LaneTags t{};
    for (size_t l = 0; l < open_.size() && l < kLaneLevels; ++l) t[l] = open_[l], ++open_[l].pos;
    const Key key = key_of(n);
    if (const Ref* r = find(key)) return *r;
    nodes_.push_back(n);
    tags_.push_back(t);
    const Ref r{static_cast<int32_t>(nodes_.size() - 1), false};
    existing_.emplace(key, r);
    return r;
}

int32_t Graph::constant_index(DoubleDouble c) {
    const uint64_t bits = std::bit_cast<uint64_t>(c.to_double());
    if (auto it = constant_by_bits_.find(bits); it != constant_by_bits_.end()) return it->second;
    constants_.push_back(c);
    const auto index = static_cast<int32_t>(constants_.size() - 1);
    constant_by_bits_.emplace(bits, index);
    return index;
}

Ref Graph::input(int slot) { return make(Node{.op = Op::Input, .slot = slot}); }

Ref Graph::add(Ref x, Ref y) {
    if (x.is_zero()) return y;
    if (y.is_zero()) return x;
    if (x.id == y.id) {
        if (x.neg != y.neg) return Ref{};    // x - x
        return mul(2.0, x);                  // x + x, an exact doubling
    }
    const bool wide = node(x.id).in_double || node(y.id).in_double;
    if (x.neg == y.neg) {
        // (+x) + (+y) or -(x + y); the sum is commutative, keep one order.
        const Ref r = make(Node{.op = Op::Add, .in_double = wide, .a = std::min(x.id, y.id), .b = std::max(x.id, y.id)});
        return x.neg ? -r : r;
    }
    // One operand negated: a difference p - q of the positive nodes.
    const int32_t p = x.neg ? y.id : x.id;
    const int32_t q = x.neg ? x.id : y.id;
    if (const Ref* r = find(Key{Op::Sub, q, p, 0})) return -*r;  // reuse q - p
    return make(Node{.op = Op::Sub, .in_double = wide, .a = p, .b = q});
}

Ref Graph::sub_as_written(Ref x, Ref y) {
    if (x.neg || y.neg || x.is_zero() || y.is_zero() || x.id == y.id) return sub(x, y);
    return make(Node{.op = Op::Sub, .in_double = in_double(x) || in_double(y), .a = x.id, .b = y.id});
}

Ref Graph::absorb_negation(Ref v) {
    if (!v.neg || v.is_zero()) return v;
    const Node& n = node(v.id);
    if (n.op != Op::Sub) return v;
    return sub_as_written(Ref{n.b, false}, Ref{n.a, false});
}

Ref Graph::mul(DoubleDouble c, Ref x) {
    if (x.is_zero()) return x;
    const double v = c.to_double();
    if (v == 0.0) return Ref{};
    bool neg = x.neg;
    if (v < 0.0) {
        c = -c;
        neg = !neg;
    }
    if (c.to_double() == 1.0) return Ref{x.id, neg};
    const Node& n = node(x.id);
    if (n.op == Op::MulConst) {
        // c * (d * y): one product by the exactly folded constant.
        return mul(c * constants_[static_cast<size_t>(n.constant)], Ref{n.a, neg});
    }
    // A doubling is exact in either precision and stays in the operand's.
    const bool wide = c.to_double() == 2.0 ? n.in_double : true;
    const Ref r = make(Node{.op = Op::MulConst, .in_double = wide, .a = x.id, .constant = constant_index(c)});
    return neg ? -r : r;
}

Ref Graph::product(Ref x, Ref y) {
    if (x.is_zero() || y.is_zero()) return Ref{};
    // Commutative: one order; the signs of both operands become the product's.
    const Ref r = make(Node{.op = Op::Mul, .in_double = in_double(x) || in_double(y), .a = std::min(x.id, y.id),
                            .b = std::max(x.id, y.id)});
    return x.neg != y.neg ? -r : r;
}

Ref Graph::round(Ref x) {
    if (x.is_zero() || !in_double(x)) return x;
    const Ref r = make(Node{.op = Op::Round, .a = x.id});
    return x.neg ? -r : r;
}

std::vector<double> evaluate(const Graph& g, const std::vector<double>& inputs, const std::vector<Ref>& refs) {
    std::vector<double> v(g.size(), 0.0);
    for (size_t i = 1; i < g.size(); ++i) {
        const Node& n = g.node(static_cast<int32_t>(i));
        const double a = v[static_cast<size_t>(n.a)], b = v[static_cast<size_t>(n.b)];
        switch (n.op) {
        case Op::Input: v[i] = inputs.at(static_cast<size_t>(n.slot)); break;
        case Op::Add: v[i] = a + b; break;
        case Op::Sub: v[i] = a - b; break;
        case Op::MulConst: v[i] = g.constant(n.constant) * a; break;
        case Op::Round: v[i] = a; break;
        case Op::Mul: v[i] = a * b; break;
        case Op::Zero: break;
        }
    }
    std::vector<double> out;
    out.reserve(refs.size());
    for (Ref r : refs) out.push_back(r.neg ? -v[static_cast<size_t>(r.id)] : v[static_cast<size_t>(r.id)]);
    return out;
}

} // namespace zg
