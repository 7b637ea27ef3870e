#include "dag.hpp"

#include <bit>
#include <cmath>
#include <stdexcept>

namespace zg {

Graph::Graph() { nodes_.push_back(Node{}); }

size_t Graph::KeyHash::operator()(const Key& key) const {
    uint64_t h = static_cast<uint64_t>(key.op);
    h = h * 0x9E3779B97F4A7C15ull + static_cast<uint32_t>(key.a);
    h = h * 0x9E3779B97F4A7C15ull + static_cast<uint32_t>(key.b);
    h = h * 0x9E3779B97F4A7C15ull + static_cast<uint32_t>(key.k);
    return static_cast<size_t>(h ^ (h >> 29));
}

const Ref* Graph::find(Op op, int32_t a, int32_t b, int32_t k) const {
    auto it = memo_.find(Key{op, a, b, k});
    return it == memo_.end() ? nullptr : &it->second;
}

Ref Graph::make(Op op, int32_t a, int32_t b, int32_t k, bool wide) {
    if (const Ref* r = find(op, a, b, k)) return *r;
    Node n;
    n.op = op;
    n.a = a;
    n.b = b;
    n.k = k;
    n.wide = wide;
    nodes_.push_back(n);
    Ref r{static_cast<int32_t>(nodes_.size() - 1), false};
    memo_.emplace(Key{op, a, b, k}, r);
    return r;
}

int32_t Graph::constant_index(DD c) {
    uint64_t bits = std::bit_cast<uint64_t>(c.to_double());
    auto it = const_index_.find(bits);
    if (it != const_index_.end()) return it->second;
    consts_.push_back(c);
    int32_t k = static_cast<int32_t>(consts_.size() - 1);
    const_index_.emplace(bits, k);
    return k;
}

Ref Graph::input(int slot) { return make(Op::Input, 0, 0, slot, false); }

Ref Graph::add(Ref x, Ref y) {
    if (x.is_zero()) return y;
    if (y.is_zero()) return x;
    if (x.id == y.id) {
        if (x.neg != y.neg) return Ref{};    // x - x
        return mul(2.0, x);                  // x + x, an exact doubling
    }
    const bool wide = node(x.id).wide || node(y.id).wide;
    if (x.neg == y.neg) {
        // (+x) + (+y) or -(x + y); the sum is commutative, keep one order.
        int32_t a = std::min(x.id, y.id), b = std::max(x.id, y.id);
        Ref r = make(Op::Add, a, b, 0, wide);
        return x.neg ? -r : r;
    }
    // One operand negated: a difference p - q of the positive nodes.
    int32_t p = x.neg ? y.id : x.id;
    int32_t q = x.neg ? x.id : y.id;
    if (const Ref* r = find(Op::Sub, q, p, 0)) return -*r;  // reuse q - p
    return make(Op::Sub, p, q, 0, wide);
}

Ref Graph::sub_as_written(Ref x, Ref y) {
    if (x.neg || y.neg || x.is_zero() || y.is_zero() || x.id == y.id) return sub(x, y);
    return make(Op::Sub, x.id, y.id, 0, node(x.id).wide || node(y.id).wide);
}

Ref Graph::orient(Ref v) {
    if (!v.neg || v.is_zero()) return v;
    const Node& n = node(v.id);
    if (n.op != Op::Sub) return v;
    return sub_as_written(Ref{n.b, false}, Ref{n.a, false});
}

Ref Graph::mul(DD c, Ref x) {
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
    if (n.op == Op::MulC) {
        // c * (d * y): one product by the exactly folded constant.
        return mul(c * consts_[static_cast<size_t>(n.k)], Ref{n.a, neg});
    }
    // A doubling is exact in either precision and stays in the operand's.
    const bool wide = c.to_double() == 2.0 ? n.wide : true;
    Ref r = make(Op::MulC, x.id, 0, constant_index(c), wide);
    return neg ? -r : r;
}

Ref Graph::round(Ref x) {
    if (x.is_zero() || !node(x.id).wide) return x;
    Ref r = make(Op::Round, x.id, 0, 0, false);
    return x.neg ? -r : r;
}

std::vector<double> evaluate(const Graph& g, const std::vector<double>& inputs, const std::vector<Ref>& refs) {
    std::vector<double> v(g.size(), 0.0);
    for (size_t i = 1; i < g.size(); ++i) {
        const Node& n = g.node(static_cast<int32_t>(i));
        const double a = v[static_cast<size_t>(n.a)], b = v[static_cast<size_t>(n.b)];
        switch (n.op) {
        case Op::Input: v[i] = inputs.at(static_cast<size_t>(n.k)); break;
        case Op::Add: v[i] = a + b; break;
        case Op::Sub: v[i] = a - b; break;
        case Op::MulC: v[i] = g.constant(n.k) * a; break;
        case Op::Round: v[i] = a; break;
        default: break;
        }
    }
    std::vector<double> out;
    out.reserve(refs.size());
    for (Ref r : refs) out.push_back(r.neg ? -v[static_cast<size_t>(r.id)] : v[static_cast<size_t>(r.id)]);
    return out;
}

} // namespace zg
