#include "counts.hpp"

namespace zg {

std::vector<char> live_nodes(const Graph& g, const std::vector<Ref>& roots) {
    std::vector<char> live(g.size(), 0);
    std::vector<int32_t> stack;
    for (Ref r : roots)
        if (!r.is_zero()) stack.push_back(r.id);
    while (!stack.empty()) {
        const int32_t id = stack.back();
        stack.pop_back();
        if (live[static_cast<size_t>(id)]) continue;
        live[static_cast<size_t>(id)] = 1;
        const Node& n = g.node(id);
        if (n.op == Op::Add || n.op == Op::Sub || n.op == Op::Mul) stack.push_back(n.b);
        if (n.op != Op::Zero && n.op != Op::Input) stack.push_back(n.a);
    }
    return live;
}

OpCounts count(const Graph& g, const std::vector<Ref>& values) {
    const std::vector<char> live = live_nodes(g, values);
    OpCounts k;
    for (size_t i = 0; i < g.size(); ++i) {
        if (!live[i]) continue;
        const Op op = g.node(static_cast<int32_t>(i)).op;
        if (op == Op::Add || op == Op::Sub) ++k.adds;
        if (op == Op::MulConst || op == Op::Mul) ++k.muls;
    }
    return k;
}

OpCounts count(const Graph& g, const std::vector<Output>& outputs) {
    std::vector<Ref> roots;
    for (const Output& o : outputs) roots.push_back(o.v);
    OpCounts k = count(g, roots);
    for (const Output& o : outputs) {
        if (o.mode == Store::ZeroMinus || o.mode == Store::DoubleZeroMinus) ++k.adds;
        else if (o.mode != Store::ZeroConst && o.v.neg) ++k.negs;
    }
    return k;
}

} // namespace zg
