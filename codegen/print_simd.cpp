// The vector printer for codelets: pairs of isomorphic instructions share a
// 128-bit vector, lane 0 and lane 1, each lane performing exactly the
// operation of its instruction (see print_simd.hpp).
#include "print_simd.hpp"

#include "print_cpp.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <queue>
#include <sstream>
#include <stdexcept>

namespace zg {
namespace {

bool add_class(Opcode op) { return op == Opcode::Add || op == Opcode::Sub; }

// The dearest operand vectors a pair found from its users may need (see
// SimdPrinter::cost: 3 builds a vector from two scalars).
constexpr int kMaxPairCost = 4;

// One lane of a sum or difference as (±a) + (±b), a and b in either order
// for a sum (a sum commutes exactly; a difference does not, for the sign of
// a zero result).
struct Term {
    Operand a, b;
    bool sub = false;
};

class SimdPrinter {
public:
    explicit SimdPrinter(const Program& p) : p_(p), code_(p.code), single_(p.scalar == Type::F32) {}

    std::string run(const std::string& ns, double* packed_share) {
        index();
        pair();
        schedule();
        if (packed_share) *packed_share = share_;
        out_ << "namespace " << ns << " {\n";
        if (!p_.plan.empty()) out_ << "// plan: " << p_.plan << '\n';
        out_ << codelet_head(p_.sig) << "\n{\n" << codelet_checks(p_);
        const char* e = single_ ? "float" : "double";
        out_ << "    const " << e << "* const in = reinterpret_cast<const " << e << "*>(src);\n";
        out_ << "    " << e << "* const out = reinterpret_cast<" << e << "*>(dst);\n";
        for (const Unit& u : order_) emit(u);
        out_ << "    return ZAM_STS_OK;\n}\n} // namespace " << ns << '\n';
        return out_.str();
    }

private:
    // ---- Pairing ------------------------------------------------------------

    void index() {
        for (size_t i = 0; i < code_.size(); ++i) {
            const Instr& in = code_[i];
            if (in.op != Opcode::Store) def_[in.result] = static_cast<int>(i);
        }
        users_.assign(code_.size(), {});
        for (size_t i = 0; i < code_.size(); ++i) {
            const Instr& in = code_[i];
            for (Operand o : {in.a, in.b})
                if (o.value != 0 && def_.count(o.value)) {
                    auto& u = users_[static_cast<size_t>(def_[o.value])];
                    if (u.empty() || u.back() != static_cast<int>(i)) u.push_back(static_cast<int>(i));
                }
        }
        pack_.assign(code_.size(), -1);
        lane_.assign(code_.size(), 0);
    }

    bool binary(const Instr& in) const { return in.op != Opcode::MulConst && in.op != Opcode::Round; }

    bool can_pair(int u, int v) const {
        if (u == v || pack_[u] >= 0 || pack_[v] >= 0) return false;
        const Instr &x = code_[u], &y = code_[v];
        if (x.op == Opcode::Store || x.op == Opcode::Load || y.op == Opcode::Store || y.op == Opcode::Load) return false;
        if (x.type != y.type) return false;
        if (add_class(x.op) != add_class(y.op)) return false;
        if (!add_class(x.op) && x.op != y.op) return false;
        // Neither lane may take the other's result (a longer chain between
        // them makes a cycle of units, which the schedule splits).
        for (Operand o : {x.a, x.b})
            if (o.value != 0 && o.value == y.result) return false;
        for (Operand o : {y.a, y.b})
            if (o.value != 0 && o.value == x.result) return false;
        return true;
    }

    // What the operand vectors of a pair would cost with the pairs made so far.
    int pair_cost(int u, int v) const {
        const Instr &x = code_[static_cast<size_t>(u)], &y = code_[static_cast<size_t>(v)];
        if (x.op == Opcode::MulConst || x.op == Opcode::Round) return cost(x.a.value, y.a.value);
        const int straight = cost(x.a.value, y.a.value) + cost(x.b.value, y.b.value);
        if (x.op != Opcode::Add || y.op != Opcode::Add) return straight;
        return std::min(straight, cost(x.a.value, y.b.value) + cost(x.b.value, y.a.value));
    }

    void make_pack(int u, int v) {
        pack_[u] = pack_[v] = static_cast<int>(packs_.size());
        lane_[u] = 0, lane_[v] = 1;
        packs_.push_back({u, v});
    }

    // Seeds: neighbouring loads (a complex element's two parts, or two
    // neighbouring reals).  Then pairs of users of paired values, in order.
    void pair() {
        std::map<int, int> load_at;
        for (size_t i = 0; i < code_.size(); ++i)
            if (code_[i].op == Opcode::Load) load_at[code_[i].slot] = static_cast<int>(i);
        for (const auto& [slot, i] : load_at)
            if (slot % 2 == 0 && load_at.count(slot + 1)) make_pack(i, load_at[slot + 1]);
        // Neighbouring stores seed pairs of the values they store.
        std::map<int, int> store_at;
        for (size_t i = 0; i < code_.size(); ++i)
            if (code_[i].op == Opcode::Store) store_at[code_[i].slot] = static_cast<int>(i);
        for (const auto& [slot, i] : store_at) {
            if (slot % 2 != 0 || !store_at.count(slot + 1)) continue;
            const int a = code_[static_cast<size_t>(i)].a.value, b = code_[static_cast<size_t>(store_at[slot + 1])].a.value;
            if (a != 0 && b != 0 && can_pair(def_[a], def_[b])) make_pack(def_[a], def_[b]);
        }
        // Each pair extends to pairs of its users (the cheapest operand
        // vectors first, none that needs both operands built from scalars)
        // and to pairs of its operands.
        for (size_t k = 0; k < packs_.size(); ++k) {
            const auto [x, y] = packs_[k];
            for (int u : users_[static_cast<size_t>(x)]) {
                int best = -1, least = kMaxPairCost + 1;
                for (int v : users_[static_cast<size_t>(y)])
                    if (can_pair(u, v))
                        if (const int c = pair_cost(u, v); c < least) least = c, best = v;
                if (best >= 0) make_pack(u, best);
            }
            const Instr &ix = code_[static_cast<size_t>(x)], &iy = code_[static_cast<size_t>(y)];
            if (ix.op == Opcode::Load) continue;
            auto operands = [&](Operand p, Operand q) {
                if (p.value != 0 && q.value != 0 && can_pair(def_[p.value], def_[q.value]))
                    make_pack(def_[p.value], def_[q.value]);
            };
            operands(ix.a, iy.a);
            if (binary(ix)) operands(ix.b, iy.b);
        }
        int packed = 0, ops = 0;
        for (size_t i = 0; i < code_.size(); ++i)
            if (code_[i].op != Opcode::Store && code_[i].op != Opcode::Load) {
                ++ops;
                packed += pack_[i] >= 0;
            }
        share_ = ops ? double(packed) / ops : 0.0;
    }

    // ---- Schedule: packs and single instructions in an order that respects
    // every dependence; a pack that closes a cycle is split again.

    struct Unit {
        int pack = -1;  // or
        int instr = -1;
        int store_pair = -1;  // a second store emitted with `instr`
    };

    void schedule() {
        for (;;) {
            std::vector<Unit> units;
            std::vector<int> unit_of(code_.size(), -1);
            std::map<int, int> store_at;
            for (size_t i = 0; i < code_.size(); ++i)
                if (code_[i].op == Opcode::Store) store_at[code_[i].slot] = static_cast<int>(i);
            for (size_t i = 0; i < code_.size(); ++i) {
                if (unit_of[i] >= 0) continue;
                Unit u;
                if (pack_[i] >= 0) {
                    u.pack = pack_[i];
                    unit_of[static_cast<size_t>(packs_[static_cast<size_t>(u.pack)][0])] = static_cast<int>(units.size());
                    unit_of[static_cast<size_t>(packs_[static_cast<size_t>(u.pack)][1])] = static_cast<int>(units.size());
                } else {
                    u.instr = static_cast<int>(i);
                    unit_of[i] = static_cast<int>(units.size());
                    const Instr& in = code_[i];
                    if (in.op == Opcode::Store && in.slot % 2 == 0 && store_at.count(in.slot + 1)) {
                        const int j = store_at[in.slot + 1];
                        if (unit_of[static_cast<size_t>(j)] < 0 && code_[static_cast<size_t>(j)].mode == in.mode) {
                            u.store_pair = j;
                            unit_of[static_cast<size_t>(j)] = static_cast<int>(units.size());
                        }
                    }
                }
                units.push_back(u);
            }
            // Dependences between units, and Kahn's order by first position.
            std::vector<std::vector<int>> next(units.size());
            std::vector<int> waiting(units.size(), 0);
            for (size_t i = 0; i < code_.size(); ++i)
                for (Operand o : {code_[i].a, code_[i].b})
                    if (o.value != 0 && def_.count(o.value)) {
                        const int from = unit_of[static_cast<size_t>(def_[o.value])], to = unit_of[i];
                        if (from == to) continue;
                        next[static_cast<size_t>(from)].push_back(to);
                        ++waiting[static_cast<size_t>(to)];
                    }
            std::priority_queue<int, std::vector<int>, std::greater<int>> ready;
            for (size_t k = 0; k < units.size(); ++k)
                if (waiting[k] == 0) ready.push(static_cast<int>(k));
            order_.clear();
            while (!ready.empty()) {
                const int k = ready.top();
                ready.pop();
                order_.push_back(units[static_cast<size_t>(k)]);
                for (int n : next[static_cast<size_t>(k)])
                    if (--waiting[static_cast<size_t>(n)] == 0) ready.push(n);
            }
            if (order_.size() == units.size()) return;
            // A cycle: split every pack left unscheduled and try again.
            for (size_t k = 0; k < units.size(); ++k)
                if (waiting[k] > 0 && units[k].pack >= 0)
                    for (int i : packs_[static_cast<size_t>(units[k].pack)]) pack_[static_cast<size_t>(i)] = -1;
        }
    }

    // ---- Printing -----------------------------------------------------------

    static const char* c_type(Type t) { return t == Type::F32 ? "float" : "double"; }
    std::string vtype(Type t) const { return t == Type::F32 ? "__m128" : "__m128d"; }

    Type type_of(int value) const {
        return value == 0 ? p_.scalar : code_[static_cast<size_t>(def_.at(value))].type;
    }
    int pack_of_value(int value) const { return value == 0 ? -1 : pack_[static_cast<size_t>(def_.at(value))]; }
    int lane_of_value(int value) const { return lane_[static_cast<size_t>(def_.at(value))]; }

    std::string literal(double v, Type t) const {
        return t == Type::F32 ? float_literal(static_cast<float>(v)) : double_literal(v);
    }

    // A value as a scalar of its type: a name, or a lane taken out of its vector.
    std::string scalar(int value) {
        if (value == 0) return single_ ? "0.0f" : "0.0";
        const int k = pack_of_value(value);
        if (k < 0) return names_.at(value);
        if (auto it = extracted_.find(value); it != extracted_.end()) return it->second;
        const std::string v = "v" + std::to_string(k), nm = "e" + std::to_string(value);
        const bool hi = lane_of_value(value) == 1;
        if (type_of(value) == Type::F32)
            out_ << "    const float " << nm << " = _mm_cvtss_f32(" << (hi ? "_mm_shuffle_ps(" + v + ", " + v + ", 1)" : v)
                 << ");\n";
        else
            out_ << "    const double " << nm << " = _mm_cvtsd_f64(" << (hi ? "_mm_unpackhi_pd(" + v + ", " + v + ")" : v)
                 << ");\n";
        extracted_[value] = nm;
        return nm;
    }

    // How costly a vector of the two values is (0 when a vector holds them).
    int cost(int v0, int v1) const {
        if (v0 == 0 && v1 == 0) return 0;
        const int p0 = v0 ? pack_of_value(v0) : -2, p1 = v1 ? pack_of_value(v1) : -2;
        if (p0 >= 0 && p0 == p1) return lane_of_value(v0) == 0 && lane_of_value(v1) == 1 ? 0 : 1;
        if (v0 == v1 && p0 >= 0) return 1;
        if (p0 >= 0 && p1 >= 0 && type_of(v0) == type_of(v1)) return 1;
        return 3;
    }

    // The vector of two operands in type t, negations applied.
    std::string vec(Operand o0, Operand o1, Type t) {
        std::string x = raw(o0.value, o1.value, t);
        if (o0.neg || o1.neg) {
            if (t == Type::F32)
                x = "_mm_xor_ps(" + x + ", _mm_setr_ps(" + (o0.neg ? "-0.0f" : "0.0f") + ", " +
                    (o1.neg ? "-0.0f" : "0.0f") + ", 0.0f, 0.0f))";
            else
                x = "_mm_xor_pd(" + x + ", _mm_set_pd(" + (o1.neg ? "-0.0" : "0.0") + ", " + (o0.neg ? "-0.0" : "0.0") +
                    "))";
        }
        return x;
    }

    std::string widen(const std::string& x, Type from, Type to) const {
        return from == Type::F32 && to == Type::F64 ? "_mm_cvtps_pd(" + x + ")" : x;
    }

    std::string raw(int v0, int v1, Type t) {
        if (v0 == 0 && v1 == 0) return t == Type::F32 ? "_mm_setzero_ps()" : "_mm_setzero_pd()";
        const int p0 = v0 ? pack_of_value(v0) : -2, p1 = v1 ? pack_of_value(v1) : -2;
        const Type s0 = type_of(v0), s1 = type_of(v1);
        if (s0 == s1 && (s0 == t || (s0 == Type::F32 && t == Type::F64))) {
            const std::string a = p0 >= 0 ? "v" + std::to_string(p0) : "", b = p1 >= 0 ? "v" + std::to_string(p1) : "";
            if (p0 >= 0 && p0 == p1 && lane_of_value(v0) == 0 && lane_of_value(v1) == 1) return widen(a, s0, t);
            if (p0 >= 0 && p0 == p1 && v0 != v1) {  // the lanes swapped
                return widen(s0 == Type::F32 ? "_mm_shuffle_ps(" + a + ", " + a + ", 0xE1)"
                                             : "_mm_shuffle_pd(" + a + ", " + a + ", 1)",
                             s0, t);
            }
            if (p0 >= 0 && v0 == v1) {  // one lane in both
                const bool hi = lane_of_value(v0) == 1;
                return widen(s0 == Type::F32 ? "_mm_shuffle_ps(" + a + ", " + a + (hi ? ", 0x55)" : ", 0x00)")
                                             : (hi ? "_mm_unpackhi_pd(" : "_mm_unpacklo_pd(") + a + ", " + a + ")",
                             s0, t);
            }
            if (p0 >= 0 && p1 >= 0) {
                const int l0 = lane_of_value(v0), l1 = lane_of_value(v1);
                if (s0 == Type::F64) return "_mm_shuffle_pd(" + a + ", " + b + ", " + std::to_string(l0 | (l1 << 1)) + ")";
                auto at0 = [](const std::string& x, int l) { return l ? "_mm_shuffle_ps(" + x + ", " + x + ", 1)" : x; };
                return widen("_mm_unpacklo_ps(" + at0(a, l0) + ", " + at0(b, l1) + ")", s0, t);
            }
        }
        const std::string a = scalar(v0), b = scalar(v1);
        if (t == Type::F32) return "_mm_setr_ps(" + a + ", " + b + ", 0.0f, 0.0f)";
        return "_mm_set_pd(" + b + ", " + a + ")";
    }

    void emit(const Unit& u) {
        if (u.pack >= 0) return emit_pack(packs_[static_cast<size_t>(u.pack)], u.pack);
        const Instr& in = code_[static_cast<size_t>(u.instr)];
        if (in.op == Opcode::Store) {
            if (u.store_pair >= 0) return emit_store_pair(in, code_[static_cast<size_t>(u.store_pair)]);
            return emit_scalar_store(in);
        }
        emit_scalar(in);
    }

    std::string operand(Operand o) {
        const std::string s = scalar(o.value);
        return o.neg ? "-" + s : s;
    }

    void emit_scalar(const Instr& in) {
        std::string nm, expr;
        switch (in.op) {
        case Opcode::Load:
            nm = "x" + std::to_string(in.slot);
            expr = std::string("zam::load<") + c_type(p_.scalar) + ">(in, " + std::to_string(in.slot) + ")";
            break;
        case Opcode::Add: expr = operand(in.a) + " + " + operand(in.b); break;
        case Opcode::Sub: expr = operand(in.a) + " - " + operand(in.b); break;
        case Opcode::Mul: expr = operand(in.a) + " * " + operand(in.b); break;
        case Opcode::MulConst:
            expr = in.type == Type::F32 ? operand(in.a) + " * " + float_literal(static_cast<float>(in.constant))
                                        : double_literal(in.constant) + " * " + operand(in.a);
            break;
        case Opcode::Round: expr = "static_cast<float>(" + operand(in.a) + ")"; break;
        case Opcode::Store: break;
        }
        if (nm.empty()) nm = "t" + std::to_string(in.result);
        names_[in.result] = nm;
        out_ << "    const " << c_type(in.type) << ' ' << nm << " = " << expr << ";\n";
    }

    // The scalar printer's store expressions (print_cpp.cpp), on names.
    std::string stored(const Instr& in) {
        const std::string v = operand(in.a), zero = single_ ? "0.0f" : "0.0";
        switch (in.mode) {
        case Store::Plain: return v + " * s";
        case Store::ZeroMinus: return zero + " - " + v + " * s";
        case Store::DoubleScale: return single_ ? "static_cast<float>(" + v + " * static_cast<double>(s))" : v + " * s";
        case Store::DoubleZeroMinus:
            return single_ ? "static_cast<float>(0.0 - static_cast<double>(s) * " + v + ")" : "0.0 - s * " + v;
        case Store::Unscaled: return v;
        case Store::ZeroConst: break;
        }
        return zero;
    }

    void emit_scalar_store(const Instr& in) {
        const std::string v = stored(in);
        out_ << "    zam::store<" << c_type(p_.scalar) << ">(out, " << in.slot << ", " << v << ");\n";
    }

    // Two neighbouring stores with the same scaling as one vector store.
    void emit_store_pair(const Instr& x, const Instr& y) {
        const Type t0 = x.a.value ? type_of(x.a.value) : p_.scalar, t1 = y.a.value ? type_of(y.a.value) : p_.scalar;
        if (t0 != t1 || x.mode == Store::ZeroConst) {
            emit_scalar_store(x);
            emit_scalar_store(y);
            return;
        }
        // The type the scalar expression computes in.
        Type t = t0;
        const bool dbl = x.mode == Store::DoubleScale || x.mode == Store::DoubleZeroMinus;
        if (dbl) t = Type::F64;
        std::string v = vec(x.a, y.a, t);
        const bool f = t == Type::F32;
        const std::string mul = f ? "_mm_mul_ps(" : "_mm_mul_pd(", sub = f ? "_mm_sub_ps(" : "_mm_sub_pd(";
        const std::string zero = f ? "_mm_setzero_ps()" : "_mm_setzero_pd()";
        std::string sv;
        if (f) sv = "_mm_set1_ps(s)";
        else sv = single_ ? "_mm_set1_pd(static_cast<double>(s))" : "_mm_set1_pd(s)";
        switch (x.mode) {
        case Store::Plain:
        case Store::DoubleScale: v = mul + v + ", " + sv + ")"; break;
        case Store::ZeroMinus: v = sub + zero + ", " + mul + v + ", " + sv + "))"; break;
        case Store::DoubleZeroMinus: v = sub + zero + ", " + mul + sv + ", " + v + "))"; break;
        default: break;
        }
        if (single_) {
            if (!f) v = "_mm_cvtpd_ps(" + v + ")";
            out_ << "    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + " << x.slot << "), _mm_castps_si128(" << v
                 << "));\n";
        } else {
            out_ << "    _mm_storeu_pd(out + " << x.slot << ", " << v << ");\n";
        }
        if (y.slot != x.slot + 1) throw std::logic_error("store pair");
    }

    void emit_pack(const std::array<int, 2>& pk, int k) {
        const Instr &x = code_[static_cast<size_t>(pk[0])], &y = code_[static_cast<size_t>(pk[1])];
        const Type t = x.type;
        const bool f = t == Type::F32;
        const std::string nm = "v" + std::to_string(k);
        std::string expr;
        if (x.op == Opcode::Load) {
            if (y.slot == x.slot + 1)
                expr = f ? "_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + " +
                               std::to_string(x.slot) + ")))"
                         : "_mm_loadu_pd(in + " + std::to_string(x.slot) + ")";
            else
                expr = f ? "_mm_setr_ps(in[" + std::to_string(x.slot) + "], in[" + std::to_string(y.slot) + "], 0.0f, 0.0f)"
                         : "_mm_set_pd(in[" + std::to_string(y.slot) + "], in[" + std::to_string(x.slot) + "])";
        } else if (add_class(x.op)) {
            // Orient the sums for the cheapest operand vectors.
            Term best[2];
            int least = 1 << 30;
            for (int o = 0; o < 4; ++o) {
                Term a{x.a, x.b, x.op == Opcode::Sub}, b{y.a, y.b, y.op == Opcode::Sub};
                if (o & 1) {
                    if (a.sub) continue;
                    std::swap(a.a, a.b);
                }
                if (o & 2) {
                    if (b.sub) continue;
                    std::swap(b.a, b.b);
                }
                const int c = cost(a.a.value, b.a.value) + cost(a.b.value, b.b.value);
                if (c < least) least = c, best[0] = a, best[1] = b;
            }
            Operand rb0 = best[0].b, rb1 = best[1].b;
            const bool both_sub = best[0].sub && best[1].sub;
            if (!both_sub) {
                rb0.neg ^= best[0].sub;
                rb1.neg ^= best[1].sub;
            }
            const std::string A = vec(best[0].a, best[1].a, t), B = vec(rb0, rb1, t);
            expr = std::string(both_sub ? (f ? "_mm_sub_ps(" : "_mm_sub_pd(") : (f ? "_mm_add_ps(" : "_mm_add_pd(")) + A +
                   ", " + B + ")";
        } else if (x.op == Opcode::MulConst) {
            const double c0 = x.a.neg ? -x.constant : x.constant, c1 = y.a.neg ? -y.constant : y.constant;
            const std::string A = vec(Operand{x.a.value, false}, Operand{y.a.value, false}, t);
            expr = f ? "_mm_mul_ps(" + A + ", _mm_setr_ps(" + literal(c0, t) + ", " + literal(c1, t) + ", 0.0f, 0.0f))"
                     : "_mm_mul_pd(_mm_set_pd(" + literal(c1, t) + ", " + literal(c0, t) + "), " + A + ")";
        } else if (x.op == Opcode::Mul) {
            expr = std::string(f ? "_mm_mul_ps(" : "_mm_mul_pd(") + vec(x.a, y.a, t) + ", " + vec(x.b, y.b, t) + ")";
        } else {  // Round
            expr = "_mm_cvtpd_ps(" + vec(x.a, y.a, Type::F64) + ")";
        }
        out_ << "    const " << vtype(t) << ' ' << nm << " = " << expr << ";\n";
    }

    const Program& p_;
    const std::vector<Instr>& code_;
    const bool single_;
    std::map<int, int> def_;                // value -> defining instruction
    std::vector<std::vector<int>> users_;  // instruction -> instructions reading its result
    std::vector<int> pack_, lane_;
    std::vector<std::array<int, 2>> packs_;
    std::vector<Unit> order_;
    double share_ = 0;
    std::map<int, std::string> names_, extracted_;
    std::ostringstream out_;
};

} // namespace

std::string print_simd(const Program& prog, const std::string& ns, double* packed_share) {
    return SimdPrinter(prog).run(ns, packed_share);
}

} // namespace zg
