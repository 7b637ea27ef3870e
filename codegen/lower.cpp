#include "lower.hpp"

#include "counts.hpp"

namespace zg {

Program lower(const CodeletGraph& c, const Signature& sig, Precision p) {
    const Graph& g = c.g;
    const bool single = p == Precision::Single;
    // Whether the single-precision codelet widens products by constants to
    // double and rounds their combinations once.
    const bool widens = single && !c.element_precision;
    Program prog{sig, single ? Type::F32 : Type::F64, c.plan, {}};
    std::vector<Ref> roots;
    for (const Output& o : c.outputs) roots.push_back(o.v);
    const std::vector<char> live = live_nodes(g, roots);

    // The value that stands for each node: itself, or for a rounding step
    // that is not performed, its operand.
    std::vector<int32_t> value(g.size(), 0);
    auto operand = [&](int32_t id, bool neg) { return Operand{value[static_cast<size_t>(id)], neg}; };

    // The outputs of each node, stored right after it with early stores.
    std::vector<std::vector<size_t>> stores_of(g.size());
    std::vector<char> stored(c.outputs.size(), 0);
    if (c.early_stores)
        for (size_t k = 0; k < c.outputs.size(); ++k)
            if (!c.outputs[k].v.is_zero()) stores_of[static_cast<size_t>(c.outputs[k].v.id)].push_back(k);
    auto store = [&](size_t k) {
        const Output& o = c.outputs[k];
        Instr st;
        st.op = Opcode::Store;
        st.type = prog.scalar;
        st.a = operand(o.v.id, o.v.neg);
        st.slot = o.slot;
        st.mode = o.mode;
        prog.code.push_back(st);
        stored[k] = 1;
    };
    auto defined = [&](size_t id) {
        for (size_t k : stores_of[id]) store(k);
    };

    std::vector<char> loaded(g.size(), 0);
    auto load = [&](size_t i) {
        if (loaded[i]) return;
        loaded[i] = 1;
        value[i] = static_cast<int32_t>(i);
        Instr ld;
        ld.op = Opcode::Load;
        ld.type = prog.scalar;
        ld.result = value[i];
        ld.slot = g.node(static_cast<int32_t>(i)).slot;
        prog.code.push_back(ld);
        defined(i);
    };
    for (size_t i = 1; i < g.size(); ++i)
        if (live[i] && g.node(static_cast<int32_t>(i)).op == Op::Input && !c.late_loads) load(i);
    for (size_t i = 1; i < g.size(); ++i) {
        const Node& n = g.node(static_cast<int32_t>(i));
        if (!live[i] || n.op == Op::Input) continue;
        for (int32_t id : {n.a, n.b})
            if (g.node(id).op == Op::Input) load(static_cast<size_t>(id));
        if (n.op == Op::Round && !widens) {
            value[i] = value[static_cast<size_t>(n.a)];
            defined(i);
            continue;
        }
        value[i] = static_cast<int32_t>(i);
        Instr in;
        in.type = widens && n.in_double ? Type::F64 : prog.scalar;
        in.result = value[i];
        in.a = operand(n.a, false);
        switch (n.op) {
        case Op::Add: in.op = Opcode::Add; in.b = operand(n.b, false); break;
        case Op::Sub: in.op = Opcode::Sub; in.b = operand(n.b, false); break;
        case Op::Mul: in.op = Opcode::Mul; in.b = operand(n.b, false); break;
        case Op::MulConst: in.op = Opcode::MulConst; in.constant = g.constant(n.constant); break;
        default: in.op = Opcode::Round; in.type = Type::F32; break;
        }
        prog.code.push_back(in);
        defined(i);
    }
    // An output that is an input itself, with late loads and nothing else
    // using it, is loaded here.
    for (const Output& o : c.outputs)
        if (!o.v.is_zero() && g.node(o.v.id).op == Op::Input) load(static_cast<size_t>(o.v.id));
    for (size_t k = 0; k < c.outputs.size(); ++k)
        if (!stored[k]) store(k);

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
