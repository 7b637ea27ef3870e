#include "lower.hpp"

#include "counts.hpp"

#include <algorithm>

namespace zg {
namespace {

// Registers the placement of late loads aims to stay within (x86-64 has 16
// vector registers; two are left for temporaries).
constexpr int kRegisters = 14;

// The instruction list with the operations up to `near` steps from the
// inputs placed like late loads (see below).
Program lower_placed(const CodeletGraph& c, const Signature& sig, Precision p, int near) {
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
    std::vector<char> emitted(g.size(), 0);
    // A load.  The first store is preceded by every load, so that the code
    // stays valid in place however late the loads are placed.
    bool loads_done = false;
    std::vector<size_t> pending;  // outputs of a load, stored once every load is done
    auto load = [&](size_t i) {
        emitted[i] = 1;
        value[i] = static_cast<int32_t>(i);
        Instr ld;
        ld.op = Opcode::Load;
        ld.type = prog.scalar;
        ld.result = value[i];
        ld.slot = g.node(static_cast<int32_t>(i)).slot;
        prog.code.push_back(ld);
    };
    auto store = [&](size_t k) {
        if (!loads_done) {
            loads_done = true;
            for (size_t i = 1; i < g.size(); ++i)
                if (live[i] && !emitted[i] && g.node(static_cast<int32_t>(i)).op == Op::Input) {
                    load(i);
                    for (size_t o : stores_of[i]) pending.push_back(o);
                }
        }
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
        for (; !pending.empty(); pending.pop_back()) store(pending.back());
    };

    // With late loads, the inputs and the operations near them (at most
    // `near` steps from the inputs, with a consumer) wait until their first
    // consumer is emitted: a rotation of an input, say, is computed just
    // before the butterfly that takes it.
    std::vector<int> depth(g.size(), 0);
    std::vector<char> consumed(g.size(), 0), sunk(g.size(), 0);
    for (size_t i = 1; i < g.size(); ++i) {
        const Node& n = g.node(static_cast<int32_t>(i));
        if (!live[i] || n.op == Op::Input) continue;
        depth[i] = 1 + std::max(depth[static_cast<size_t>(n.a)], depth[static_cast<size_t>(n.b)]);
        consumed[static_cast<size_t>(n.a)] = consumed[static_cast<size_t>(n.b)] = 1;
    }
    for (size_t i = 1; i < g.size(); ++i)
        sunk[i] = c.late_loads && (g.node(static_cast<int32_t>(i)).op == Op::Input || (consumed[i] && depth[i] <= near));

    auto emit = [&](auto& self, size_t i) -> void {
        if (emitted[i] || i == 0) return;
        const Node& n = g.node(static_cast<int32_t>(i));
        if (n.op == Op::Input) {
            load(i);
            defined(i);
            return;
        }
        emitted[i] = 1;
        self(self, static_cast<size_t>(n.a));
        self(self, static_cast<size_t>(n.b));
        if (n.op == Op::Round && !widens) {
            value[i] = value[static_cast<size_t>(n.a)];
            defined(i);
            return;
        }
        value[i] = static_cast<int32_t>(i);
        Instr in;
        in.type = widens && n.in_double ? Type::F64 : prog.scalar;
        in.result = value[i];
        in.lanes = g.lane_tags(static_cast<int32_t>(i));
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
    };
    for (size_t i = 1; i < g.size(); ++i)
        if (live[i] && g.node(static_cast<int32_t>(i)).op == Op::Input && !sunk[i]) emit(emit, i);
    for (size_t i = 1; i < g.size(); ++i)
        if (live[i] && !sunk[i]) emit(emit, i);
    // What is left: outputs placed like loads that nothing else uses.
    for (const Output& o : c.outputs) emit(emit, static_cast<size_t>(o.v.id));
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

// How far the values live at each instruction exceed the registers, summed:
// a measure of the spills a compiler will need.
long excess_pressure(const Program& prog) {
    std::vector<int> dies(prog.code.size(), 0);
    long live = 0, excess = 0;
    for (size_t k = 0; k < prog.code.size(); ++k) {
        const Instr& in = prog.code[k];
        if (in.op != Opcode::Store && in.last_use >= 0) {
            ++live;
            ++dies[static_cast<size_t>(in.last_use)];
        }
        excess += std::max(0L, live - kRegisters);
        live -= dies[k];
    }
    return excess;
}

} // namespace

// With late loads, how far from the inputs operations are placed like loads
// is chosen per graph: the distance whose list keeps the fewest values live
// beyond the registers (the first of equal ones).
Program lower(const CodeletGraph& c, const Signature& sig, Precision p) {
    Program best = lower_placed(c, sig, p, 0);
    if (!c.late_loads) return best;
    long least = excess_pressure(best);
    for (int near = 1; near <= 4; ++near) {
        Program q = lower_placed(c, sig, p, near);
        if (const long e = excess_pressure(q); e < least) {
            least = e;
            best = std::move(q);
        }
    }
    return best;
}

} // namespace zg
