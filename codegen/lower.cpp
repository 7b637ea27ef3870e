#include "lower.hpp"

#include "counts.hpp"

namespace zg {

Program lower(const CodeletGraph& c, const Signature& sig, Precision p) {
    const Graph& g = c.g;
    const bool single = p == Precision::Single;
    Program prog{sig, single ? Type::F32 : Type::F64, c.plan, {}};
    std::vector<Ref> roots;
    for (const Output& o : c.outputs) roots.push_back(o.v);
    const std::vector<char> live = live_nodes(g, roots);

    // The value that stands for each node: itself, or for a rounding step of
    // the double-precision codelet, its operand.
    std::vector<int32_t> value(g.size(), 0);
    auto operand = [&](int32_t id, bool neg) { return Operand{value[static_cast<size_t>(id)], neg}; };

    for (size_t i = 1; i < g.size(); ++i) {
        const Node& n = g.node(static_cast<int32_t>(i));
        if (!live[i] || n.op != Op::Input) continue;
        value[i] = static_cast<int32_t>(i);
        Instr load;
        load.op = Opcode::Load;
        load.type = prog.scalar;
        load.result = value[i];
        load.slot = n.slot;
        prog.code.push_back(load);
    }
    for (size_t i = 1; i < g.size(); ++i) {
        const Node& n = g.node(static_cast<int32_t>(i));
        if (!live[i] || n.op == Op::Input) continue;
        if (n.op == Op::Round && !single) {
            value[i] = value[static_cast<size_t>(n.a)];
            continue;
        }
        value[i] = static_cast<int32_t>(i);
        Instr in;
        in.type = single && !n.in_double ? Type::F32 : Type::F64;
        in.result = value[i];
        in.a = operand(n.a, false);
        switch (n.op) {
        case Op::Add: in.op = Opcode::Add; in.b = operand(n.b, false); break;
        case Op::Sub: in.op = Opcode::Sub; in.b = operand(n.b, false); break;
        case Op::MulConst: in.op = Opcode::MulConst; in.constant = g.constant(n.constant); break;
        default: in.op = Opcode::Round; in.type = Type::F32; break;
        }
        prog.code.push_back(in);
    }
    for (const Output& o : c.outputs) {
        Instr store;
        store.op = Opcode::Store;
        store.type = prog.scalar;
        store.a = operand(o.v.id, o.v.neg);
        store.slot = o.slot;
        store.mode = o.mode;
        prog.code.push_back(store);
    }

    std::vector<int32_t> last(g.size(), -1);
    for (size_t k = 0; k < prog.code.size(); ++k) {
        const Instr& in = prog.code[k];
        last[static_cast<size_t>(in.a.value)] = static_cast<int32_t>(k);
        last[static_cast<size_t>(in.b.value)] = static_cast<int32_t>(k);
    }
    for (Instr& in : prog.code)
        if (in.op != Opcode::Store) in.last_use = last[static_cast<size_t>(in.result)];
    return prog;
}

} // namespace zg
