// The vector printer for codelets: pairs of isomorphic instructions share a
// 128-bit vector, lane 0 and lane 1, each lane performing exactly the
// operation of its instruction; for AVX2, pairs of such pairs share a 256-bit
// vector, lanes 0 to 3 (see print_simd.hpp).
#include "print_simd.hpp"

#include "print_cpp.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <queue>
#include <span>
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

// Two lanes (a pair), four (a quad, two pairs side by side) or eight (an
// octet, two quads side by side).
struct Pack {
    std::array<int, 8> in{-1, -1, -1, -1, -1, -1, -1, -1};  // the instruction of each lane
    int width = 2;
    std::array<int, 2> from{-1, -1};  // a quad's two pairs, an octet's two quads
};

// The instruction defining each value.  Values are graph nodes, few enough
// for a table, and every operand is looked up many times while packing.
class Definitions {
public:
    void set(int value, int instr) {
        if (static_cast<size_t>(value) >= d_.size()) d_.resize(static_cast<size_t>(value) + 1, -1);
        d_[static_cast<size_t>(value)] = instr;
    }
    bool has(int value) const {
        return value >= 0 && static_cast<size_t>(value) < d_.size() && d_[static_cast<size_t>(value)] >= 0;
    }
    int operator[](int value) const {
        if (!has(value)) throw std::out_of_range("value " + std::to_string(value) + " has no defining instruction");
        return d_[static_cast<size_t>(value)];
    }

private:
    std::vector<int> d_;
};

// How packs are seeded.  Found: from neighbouring loads and stores, and
// extended along the instruction list (the lanes rediscovered).  Copies ×
// parts: as found for pairs (a complex value's two parts), then wider packs
// side by side from neighbouring copies of a batch, the same position in
// each.  Copies: every lane another copy, pairs from copies 2k and 2k + 1,
// wider packs from neighbouring pairs of copies.  What the tags leave is
// found as before.
enum class Lanes { Found, CopiesParts, Copies };

class SimdPrinter {
public:
    // `widest` is 2, 4 or 8 lanes; `slack` limits the quads and `slack8` the
    // octets (see can_group); `lanes` says how the recipes' batches of
    // identical transforms seed packs (see Lanes).
    // `by_factor` pairs products by their factors (see same_factor).
    // `float_octets` (AVX2): octets only of float loads, sums and
    // differences, in 256-bit float vectors; products, their combinations
    // and roundings stay in quads, and no 512-bit vector is printed.
    // `by_height`: see schedule.  `modern`: an AVX-512 body printed as the
    // SSE2 and AVX2 bodies are (see modern_).  `pressure`: the body marked
    // ZAM_SCHEDULE_FOR_PRESSURE (frame/checks.hpp).
    SimdPrinter(const Program& p, int widest, int slack = -1, int slack8 = -1, Lanes lanes = Lanes::Found,
                bool by_factor = false, bool float_octets = false, bool by_height = false, bool modern = false,
                bool pressure = false)
        : p_(p), code_(p.code), single_(p.scalar == Type::F32), widest_(widest), slack_{slack, slack8}, lanes_(lanes),
          by_factor_(by_factor), float_octets_(float_octets), modern_(widest < 8 || float_octets || modern),
          by_height_(by_height), pressure_(pressure) {}

    // How many sums printed as a difference or with _mm_addsub (see
    // emit_pack) saved a sign flip that an AVX-512 body prints.
    int saved() const { return saved_; }

    int octets() const {
        int n = 0;
        for (const Unit& u : order_) n += u.pack >= 0 && packs_[static_cast<size_t>(u.pack)].width == 8;
        return n;
    }

    // What spills would cost in the printed order with this many vector
    // registers: a value defined while all registers hold live values sends
    // one to memory, a store and a load.  (Scalars take registers too.)
    // `scheduled`: in the order of the schedule, before loads and stores
    // moved (see place_loads_and_stores), by which the AVX-512 bodies are
    // chosen.
    int spills(int registers, bool scheduled = false) const {
        const std::vector<Unit>& order = scheduled ? scheduled_ : order_;
        const std::vector<int> at = positions(order);
        std::vector<int> last(order.size(), -1);
        for (size_t i = 0; i < code_.size(); ++i)
            for (Operand o : {code_[i].a, code_[i].b})
                if (o.value != 0) {
                    const int d = at[static_cast<size_t>(def_[o.value])];
                    last[static_cast<size_t>(d)] = std::max(last[static_cast<size_t>(d)], at[i]);
                }
        std::vector<int> dies(order.size() + 1, 0);
        int live = 0, cost = 0;
        for (size_t k = 0; k < order.size(); ++k) {
            live -= dies[k];
            if (last[k] < 0) continue;
            if (live >= registers) cost += 2;
            ++live;
            ++dies[static_cast<size_t>(last[k])];
        }
        return cost;
    }

    // Whether pairing by factors chose another partner than the first
    // equally cheap one anywhere (else the body is the one printed without).
    bool pairs_by_factor() {
        index();
        pair();
        return by_factor_chose_;
    }

    // The packs as pair() and group() make them, each lane by the value it
    // defines (a program of the other precision defines the same values).
    std::vector<Pack> packing() {
        index();
        pair();
        for (int w = 4; w <= widest_; w *= 2) group(w);
        std::vector<Pack> r = packs_;
        for (Pack& pk : r)
            for (int l = 0; l < pk.width; ++l) pk.in[static_cast<size_t>(l)] = code_[static_cast<size_t>(pk.in[static_cast<size_t>(l)])].result;
        return r;
    }

    // Packs this body as `twin` (packing() of the double-precision program)
    // before finding more as usual: a single-precision body then runs the
    // double-precision body's vectors, with its roundings in the lanes of
    // the values they round.
    void follow(std::vector<Pack> twin) { twin_ = std::move(twin); }

    std::string run(const std::string& ns, double* packed_share) {
        index();
        if (!twin_.empty()) replay();
        pair();
        for (int w = 4; w <= widest_; w *= 2) group(w);
        schedule();
        scheduled_ = order_;
        if (modern_) place_loads_and_stores();
        if (packed_share) *packed_share = share_;
        out_ << "namespace " << ns << " {\n";
        if (!p_.plan.empty()) out_ << "// plan: " << p_.plan << '\n';
        if (pressure_) out_ << "ZAM_SCHEDULE_FOR_PRESSURE\n";
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
            if (in.op != Opcode::Store) def_.set(in.result, static_cast<int>(i));
        }
        users_.assign(code_.size(), {});
        for (size_t i = 0; i < code_.size(); ++i) {
            const Instr& in = code_[i];
            for (Operand o : {in.a, in.b})
                if (o.value != 0 && def_.has(o.value)) {
                    auto& u = users_[static_cast<size_t>(def_[o.value])];
                    if (u.empty() || u.back() != static_cast<int>(i)) u.push_back(static_cast<int>(i));
                }
        }
        pack_.assign(code_.size(), -1);
        lane_.assign(code_.size(), 0);
        if (lanes_ == Lanes::Found) return;
        for (size_t i = 0; i < code_.size(); ++i)
            for (size_t l = 0; l < kLaneLevels; ++l)
                if (const LaneTag& t = code_[i].lanes[l]; t.group >= 0 && code_[i].op != Opcode::Store)
                    at_[{static_cast<int>(l), t.group, t.copy, t.pos}] = static_cast<int>(i);
    }

    // ---- Lanes from the recipes' batches ------------------------------------

    // The instruction at a position of a copy of a batch (at tag level l), or -1.
    int tagged(size_t l, const LaneTag& t, int copy) const {
        const auto it = at_.find({static_cast<int>(l), t.group, copy, t.pos});
        return it == at_.end() ? -1 : it->second;
    }

    // Pairs of the instructions at one position of copies 2k and 2k + 1, outer
    // batches first; then the loads both lanes of such a pair read.
    void pair_copies() {
        for (size_t l = 0; l < kLaneLevels; ++l)
            for (size_t i = 0; i < code_.size(); ++i) {
                const LaneTag& t = code_[i].lanes[l];
                if (t.group < 0 || t.copy % 2 != 0) continue;
                const int j = tagged(l, t, t.copy + 1);
                if (j >= 0 && can_pair(static_cast<int>(i), j)) make_pack(static_cast<int>(i), j);
            }
        const size_t made = packs_.size();
        for (size_t k = 0; k < made; ++k) {
            const Instr &x = code_[static_cast<size_t>(packs_[k].in[0])], &y = code_[static_cast<size_t>(packs_[k].in[1])];
            for (bool b : {false, true}) {
                if (b && !binary(x)) break;
                const int u = b ? x.b.value : x.a.value, v = b ? y.b.value : y.a.value;
                if (u == 0 || v == 0 || u == v) continue;
                const int du = def_[u], dv = def_[v];
                if (code_[static_cast<size_t>(du)].op == Opcode::Load && code_[static_cast<size_t>(dv)].op == Opcode::Load &&
                    pack_[static_cast<size_t>(du)] < 0 && pack_[static_cast<size_t>(dv)] < 0)
                    make_pack(du, dv);
            }
        }
    }

    // The free pack of w / 2 lanes beside pack p in the batch of tag level l:
    // the same positions in the next copies (p covers copies c to c + d - 1
    // with c a multiple of 2d; its partner c + d to c + 2d - 1, lane by lane).
    int beside(int p, size_t l, int w) const {
        const std::vector<int> in = lanes(p);
        int lo = 1 << 30, hi = -1;
        const int group = code_[static_cast<size_t>(in[0])].lanes[l].group;
        for (int i : in) {
            const LaneTag& t = code_[static_cast<size_t>(i)].lanes[l];
            if (t.group < 0 || t.group != group) return -1;
            lo = std::min(lo, t.copy), hi = std::max(hi, t.copy);
        }
        const int d = hi - lo + 1;
        if (lo % (2 * d) != 0) return -1;
        int q = -1;
        for (size_t k = 0; k < in.size(); ++k) {
            const LaneTag& t = code_[static_cast<size_t>(in[k])].lanes[l];
            const int j = tagged(l, t, t.copy + d);
            if (j < 0 || lane_[static_cast<size_t>(j)] != static_cast<int>(k)) return -1;
            const int kj = pack_[static_cast<size_t>(j)];
            if (kj < 0 || (q >= 0 && kj != q)) return -1;
            q = kj;
        }
        return free_pack(q, w / 2) ? q : -1;
    }

    // Packs of w lanes from free packs of w / 2 beside each other in a batch.
    void group_copies(int w) {
        for (size_t l = 0; l < kLaneLevels; ++l) {
            const size_t made = packs_.size();
            for (size_t k = 0; k < made; ++k)
                if (free_pack(static_cast<int>(k), w / 2))
                    if (const int q = beside(static_cast<int>(k), l, w); q >= 0 && can_group(static_cast<int>(k), q, w))
                        make_group(static_cast<int>(k), q);
        }
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

    // Whether two products take the same factor up to its sign, where the
    // pairs are made by factors: among equally cheap partners a product then
    // pairs with one by the same constant.  A twiddle product x (c + i s)
    // pairs c re with c im and s re with s im, so that packs of neighbouring
    // complex values give the real and imaginary parts with one swap of the
    // second pack's lanes, not a shuffle of two packs for each operand.
    bool same_factor(int u, int v) const {
        if (!by_factor_ || u < 0 || v < 0) return false;
        const Instr &x = code_[static_cast<size_t>(u)], &y = code_[static_cast<size_t>(v)];
        return x.op == Opcode::MulConst && y.op == Opcode::MulConst && std::abs(x.constant) == std::abs(y.constant);
    }

    void make_pack(int u, int v) {
        pack_[u] = pack_[v] = static_cast<int>(packs_.size());
        lane_[u] = 0, lane_[v] = 1;
        Pack pk;
        pk.in[0] = u, pk.in[1] = v;
        packs_.push_back(pk);
    }

    // Seeds: neighbouring loads (a complex element's two parts, or two
    // neighbouring reals).  Then pairs of users of paired values, in order.
    void pair() {
        if (lanes_ == Lanes::Copies) pair_copies();
        std::map<int, int> load_at;
        for (size_t i = 0; i < code_.size(); ++i)
            if (code_[i].op == Opcode::Load) load_at[code_[i].slot] = static_cast<int>(i);
        for (const auto& [slot, i] : load_at)
            if (slot % 2 == 0 && load_at.count(slot + 1) && pack_[static_cast<size_t>(i)] < 0 &&
                pack_[static_cast<size_t>(load_at[slot + 1])] < 0)
                make_pack(i, load_at[slot + 1]);
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
            const int x = packs_[k].in[0], y = packs_[k].in[1];
            for (int u : users_[static_cast<size_t>(x)]) {
                int best = -1, least = kMaxPairCost + 1;
                for (int v : users_[static_cast<size_t>(y)]) {
                    if (!can_pair(u, v)) continue;
                    if (const int c = pair_cost(u, v); c < least) {
                        least = c, best = v;
                    } else if (c == least && same_factor(u, v) && !same_factor(u, best)) {
                        best = v;
                        by_factor_chose_ = true;
                    }
                }
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

    // The twin's packs, lane for lane, where this program's instructions
    // defining the same values can share a vector; and beside each pack of
    // doubles, a pack of their roundings where each lane's value is rounded.
    void replay() {
        std::vector<int> made(twin_.size(), -1), rounded(twin_.size(), -1);
        auto round_of = [&](int i) {
            for (int u : users_[static_cast<size_t>(i)])
                if (code_[static_cast<size_t>(u)].op == Opcode::Round) return u;
            return -1;
        };
        replaying_ = true;
        for (size_t k = 0; k < twin_.size(); ++k) {
            const Pack& pk = twin_[k];
            if (pk.from[0] < 0) {
                const int a = pk.in[0], b = pk.in[1];
                if (!def_.has(a) || !def_.has(b)) continue;
                const int u = def_[a], v = def_[b];
                const Instr &x = code_[static_cast<size_t>(u)], &y = code_[static_cast<size_t>(v)];
                const bool loads = x.op == Opcode::Load && y.op == Opcode::Load && pack_[static_cast<size_t>(u)] < 0 &&
                                   pack_[static_cast<size_t>(v)] < 0;
                if (!loads && !can_pair(u, v)) continue;
                made[k] = static_cast<int>(packs_.size());
                make_pack(u, v);
                if (const int ru = round_of(u), rv = round_of(v); ru >= 0 && rv >= 0 && can_pair(ru, rv)) {
                    rounded[k] = static_cast<int>(packs_.size());
                    make_pack(ru, rv);
                }
                continue;
            }
            const size_t p = static_cast<size_t>(pk.from[0]), q = static_cast<size_t>(pk.from[1]);
            if (made[p] >= 0 && made[q] >= 0 && can_group(made[p], made[q], pk.width)) {
                made[k] = static_cast<int>(packs_.size());
                make_group(made[p], made[q]);
            }
            if (rounded[p] >= 0 && rounded[q] >= 0 && can_group(rounded[p], rounded[q], pk.width)) {
                rounded[k] = static_cast<int>(packs_.size());
                make_group(rounded[p], rounded[q]);
            }
        }
        replaying_ = false;
    }

    // ---- Quads and octets: two packs of half the width whose lanes are
    // isomorphic, found as the pairs are: neighbouring loads and stores seed
    // them, and they extend to their operands and to the packs of their users.

    // A pack of w lanes that has not joined a wider one.
    bool free_pack(int k, int w) const {
        return k >= 0 && packs_[static_cast<size_t>(k)].width == w &&
               pack_[static_cast<size_t>(packs_[static_cast<size_t>(k)].in[0])] == k;
    }

    // A wider pack takes one instruction for two; it is made only where its
    // operand vectors cost no more than its halves' do, give or take the
    // slack for its width (-1: any cost).
    bool can_group(int p, int q, int w) const {
        if (p == q || !free_pack(p, w / 2) || !free_pack(q, w / 2)) return false;
        const Instr &x = code_[static_cast<size_t>(packs_[static_cast<size_t>(p)].in[0])],
                    &y = code_[static_cast<size_t>(packs_[static_cast<size_t>(q)].in[0])];
        if (x.type != y.type || add_class(x.op) != add_class(y.op) || (!add_class(x.op) && x.op != y.op)) return false;
        if (w == 8 && float_octets_ && (x.type != Type::F32 || !(add_class(x.op) || x.op == Opcode::Load))) return false;
        // Neither half may take the other's results.
        for (int i : lanes(p))
            for (int j : lanes(q)) {
                const Instr &u = code_[static_cast<size_t>(i)], &v = code_[static_cast<size_t>(j)];
                for (Operand o : {u.a, u.b})
                    if (o.value != 0 && o.value == v.result) return false;
                for (Operand o : {v.a, v.b})
                    if (o.value != 0 && o.value == u.result) return false;
            }
        const int slack = slack_[w == 8 ? 1 : 0];
        return replaying_ || slack < 0 || operand_cost(lanes(p, q)) <= operand_cost(lanes(p)) + operand_cost(lanes(q)) + slack;
    }

    void make_group(int p, int q) {
        const int k = static_cast<int>(packs_.size());
        const Pack &P = packs_[static_cast<size_t>(p)], &Q = packs_[static_cast<size_t>(q)];
        Pack g;
        g.width = 2 * P.width;
        g.from = {p, q};
        for (int l = 0; l < P.width; ++l) g.in[static_cast<size_t>(l)] = P.in[static_cast<size_t>(l)];
        for (int l = 0; l < Q.width; ++l) g.in[static_cast<size_t>(P.width + l)] = Q.in[static_cast<size_t>(l)];
        for (int l = 0; l < g.width; ++l) {
            pack_[static_cast<size_t>(g.in[static_cast<size_t>(l)])] = k;
            lane_[static_cast<size_t>(g.in[static_cast<size_t>(l)])] = l;
        }
        packs_.push_back(g);
    }

    // The lanes' instructions of a pack, or of two packs side by side.
    std::vector<int> lanes(int p, int q = -1) const {
        std::vector<int> l;
        for (int k : {p, q})
            if (k >= 0)
                for (int w = 0; w < packs_[static_cast<size_t>(k)].width; ++w)
                    l.push_back(packs_[static_cast<size_t>(k)].in[static_cast<size_t>(w)]);
        return l;
    }

    // What the operand vectors of a pack, or of two packs side by side, cost.
    int operand_cost(const std::vector<int>& l) const {
        const Instr& x = code_[static_cast<size_t>(l[0])];
        if (add_class(x.op)) return orient(l).second;
        std::vector<int> a, b;
        for (int i : l) a.push_back(code_[static_cast<size_t>(i)].a.value), b.push_back(code_[static_cast<size_t>(i)].b.value);
        return cost_of(a) + (binary(x) ? cost_of(b) : 0);
    }

    // The pack whose lanes hold a pack's operands (a or b), in any order.
    int operand_pack(int p, bool b) const {
        int k = -1;
        std::vector<int> seen;
        for (int i : lanes(p)) {
            const Instr& x = code_[static_cast<size_t>(i)];
            const int u = b ? x.b.value : x.a.value;
            if (u == 0 || std::find(seen.begin(), seen.end(), u) != seen.end()) return -1;
            seen.push_back(u);
            const int ku = pack_[static_cast<size_t>(def_[u])];
            if (ku < 0 || (k >= 0 && ku != k)) return -1;
            k = ku;
        }
        return k;
    }

    // The packs holding users of a pack's results, each once.
    std::vector<int> user_packs(int p) const {
        std::vector<int> r;
        for (int i : lanes(p))
            for (int u : users_[static_cast<size_t>(i)])
                if (const int k = pack_[static_cast<size_t>(u)]; k >= 0 && std::find(r.begin(), r.end(), k) == r.end())
                    r.push_back(k);
        return r;
    }

    // Packs of w lanes grouped from free packs of w / 2.
    void group(int w) {
        const int h = w / 2;
        const size_t first = packs_.size();
        // Each new pack extends to the packs of its users (the cheapest
        // operand vectors first) and to its operands' packs.
        size_t done = first;
        auto extend = [&] {
            for (; done < packs_.size(); ++done) {
                const auto [p, q] = packs_[done].from;
                const std::vector<int> uq = user_packs(q);
                for (int u : user_packs(p)) {
                    int best = -1, least = 1 << 30;
                    for (int v : uq)
                        if (can_group(u, v, w))
                            if (const int c = operand_cost(lanes(u, v)); c < least) least = c, best = v;
                    if (best >= 0) make_group(u, best);
                }
                const Instr& x = code_[static_cast<size_t>(packs_[done].in[0])];
                if (x.op == Opcode::Load) continue;
                for (bool b : {false, true}) {
                    if (b && !binary(x)) break;
                    const int op = operand_pack(p, b), oq = operand_pack(q, b);
                    if (op >= 0 && oq >= 0 && can_group(op, oq, w)) make_group(op, oq);
                }
            }
        };
        // The batches first, so that their loads group as their copies read
        // them rather than as they lie in memory.
        if (lanes_ != Lanes::Found) {
            group_copies(w);
            extend();
        }
        // Packs of h loads or of h stored values at neighbouring slots, in
        // lane order, from a multiple of h.
        std::map<int, int> loads, stores;
        for (size_t k = 0; k < first; ++k) {
            if (!free_pack(static_cast<int>(k), h)) continue;
            const Pack& P = packs_[k];
            const Instr& x = code_[static_cast<size_t>(P.in[0])];
            bool next = x.op == Opcode::Load && x.slot % h == 0;
            for (int l = 1; l < h && next; ++l) next = code_[static_cast<size_t>(P.in[static_cast<size_t>(l)])].slot == x.slot + l;
            if (next) loads[x.slot] = static_cast<int>(k);
        }
        std::map<int, int> store_at;
        for (size_t i = 0; i < code_.size(); ++i)
            if (code_[i].op == Opcode::Store) store_at[code_[i].slot] = static_cast<int>(i);
        for (const auto& [slot, i] : store_at) {
            if (slot % h != 0) continue;
            int k = -1;
            for (int l = 0; l < h; ++l) {
                const auto j = store_at.find(slot + l);
                const int a = j == store_at.end() ? 0 : code_[static_cast<size_t>(j->second)].a.value;
                const int ka = a == 0 ? -1 : pack_[static_cast<size_t>(def_[a])];
                if (ka < 0 || (l > 0 && ka != k) || lane_[static_cast<size_t>(def_[a])] != l) {
                    k = -1;
                    break;
                }
                k = ka;
            }
            if (k >= 0 && free_pack(k, h)) stores[slot] = k;
        }
        for (const std::map<int, int>* seeds : {&loads, &stores})
            for (const auto& [slot, k] : *seeds)
                if (slot % w == 0 && seeds->count(slot + h) && can_group(k, seeds->at(slot + h), w))
                    make_group(k, seeds->at(slot + h));
        extend();
    }

    // ---- Schedule: packs and single instructions in an order that respects
    // every dependence; a pack that closes a cycle is split again.

    struct Unit {
        int pack = -1;  // or
        int instr = -1;
        std::vector<int> more;  // the neighbouring stores emitted with `instr`
    };

    // A unit's latency in cycles, roughly (a 256-bit product of floats
    // widens them first; a rounding narrows).
    int latency(const Unit& u) const {
        const Instr& in = code_[static_cast<size_t>(u.pack >= 0 ? packs_[static_cast<size_t>(u.pack)].in[0] : u.instr)];
        switch (in.op) {
        case Opcode::Load:
        case Opcode::Store: return 1;
        case Opcode::Round: return 6;
        case Opcode::MulConst:
        case Opcode::Mul: return single_ ? 7 : 3;
        default: return 3;
        }
    }

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
                    for (int j : lanes(u.pack)) unit_of[static_cast<size_t>(j)] = static_cast<int>(units.size());
                } else {
                    u.instr = static_cast<int>(i);
                    unit_of[i] = static_cast<int>(units.size());
                    const Instr& in = code_[i];
                    // Two, four or eight (at most as many as the widest pack)
                    // neighbouring stores with the same scaling.
                    for (int w = widest_; w >= 2; w /= 2) {
                        if (in.op != Opcode::Store || in.slot % w != 0) continue;
                        for (int d = 1; d < w; ++d) {
                            const auto j = store_at.find(in.slot + d);
                            if (j == store_at.end() || unit_of[static_cast<size_t>(j->second)] >= 0 ||
                                code_[static_cast<size_t>(j->second)].mode != in.mode)
                                break;
                            u.more.push_back(j->second);
                        }
                        if (static_cast<int>(u.more.size()) == w - 1) break;
                        u.more.clear();
                    }
                    for (int j : u.more) unit_of[static_cast<size_t>(j)] = static_cast<int>(units.size());
                }
                units.push_back(u);
            }
            // Dependences between units, and Kahn's order by first position.
            std::vector<std::vector<int>> next(units.size());
            std::vector<int> waiting(units.size(), 0);
            for (size_t i = 0; i < code_.size(); ++i)
                for (Operand o : {code_[i].a, code_[i].b})
                    if (o.value != 0 && def_.has(o.value)) {
                        const int from = unit_of[static_cast<size_t>(def_[o.value])], to = unit_of[i];
                        if (from == to) continue;
                        next[static_cast<size_t>(from)].push_back(to);
                        ++waiting[static_cast<size_t>(to)];
                    }
            // Ready units by priority: first position, or with `by_height`
            // the longest chain of latencies to a store first.
            std::vector<int> height(units.size(), 0);
            auto kahn = [&](std::vector<int> waits) {
                auto later = [&](int a, int b) {
                    return height[static_cast<size_t>(a)] != height[static_cast<size_t>(b)]
                               ? height[static_cast<size_t>(a)] < height[static_cast<size_t>(b)]
                               : a > b;
                };
                std::priority_queue<int, std::vector<int>, decltype(later)> ready(later);
                for (size_t k = 0; k < units.size(); ++k)
                    if (waits[k] == 0) ready.push(static_cast<int>(k));
                std::vector<int> seq;
                while (!ready.empty()) {
                    const int k = ready.top();
                    ready.pop();
                    seq.push_back(k);
                    for (int n : next[static_cast<size_t>(k)])
                        if (--waits[static_cast<size_t>(n)] == 0) ready.push(n);
                }
                return std::pair{seq, waits};
            };
            auto [seq, left] = kahn(waiting);
            if (seq.size() == units.size() && by_height_) {
                for (auto k = seq.rbegin(); k != seq.rend(); ++k) {
                    int h = 0;
                    for (int n : next[static_cast<size_t>(*k)]) h = std::max(h, height[static_cast<size_t>(n)]);
                    height[static_cast<size_t>(*k)] = h + latency(units[static_cast<size_t>(*k)]);
                }
                seq = kahn(waiting).first;
            }
            order_.clear();
            for (int k : seq) order_.push_back(units[static_cast<size_t>(k)]);
            waiting = std::move(left);
            if (order_.size() == units.size()) return;
            // A cycle: split the widest packs left unscheduled into their
            // halves (pairs into single instructions), and try again.
            int widest = 0;
            for (size_t k = 0; k < units.size(); ++k)
                if (waiting[k] > 0 && units[k].pack >= 0)
                    widest = std::max(widest, packs_[static_cast<size_t>(units[k].pack)].width);
            for (size_t k = 0; k < units.size(); ++k) {
                if (waiting[k] == 0 || units[k].pack < 0 || packs_[static_cast<size_t>(units[k].pack)].width != widest)
                    continue;
                if (widest == 2) {
                    for (int i : lanes(units[k].pack)) pack_[static_cast<size_t>(i)] = -1;
                    continue;
                }
                for (int p : packs_[static_cast<size_t>(units[k].pack)].from)
                    for (int l = 0; l < packs_[static_cast<size_t>(p)].width; ++l) {
                        const size_t i = static_cast<size_t>(packs_[static_cast<size_t>(p)].in[static_cast<size_t>(l)]);
                        pack_[i] = p, lane_[i] = l;
                    }
            }
        }
    }

    // ---- Printing -----------------------------------------------------------

    static const char* c_type(Type t) { return t == Type::F32 ? "float" : "double"; }
    // Float pairs and quads fill a 128-bit vector, float octets a 256-bit
    // one; double vectors hold two lanes, four (quads) or eight (octets).
    static std::string vtype(Type t, size_t w) {
        if (t == Type::F32) return w == 8 ? "__m256" : "__m128";
        return w == 8 ? "__m512d" : w == 4 ? "__m256d" : "__m128d";
    }
    // The intrinsic `op` (add, sub, mul, xor, setzero, set1) for type t and width w, up to its "(".
    static std::string intr(const char* op, Type t, size_t w) {
        const char* prefix = t == Type::F64 ? (w == 8 ? "_mm512_" : w == 4 ? "_mm256_" : "_mm_") : (w == 8 ? "_mm256_" : "_mm_");
        return std::string(prefix) + op + (t == Type::F32 ? "_ps(" : "_pd(");
    }

    Type type_of(int value) const {
        return value == 0 ? p_.scalar : code_[static_cast<size_t>(def_[value])].type;
    }
    Type pack_type(int k) const { return code_[static_cast<size_t>(packs_[static_cast<size_t>(k)].in[0])].type; }

    int width_of(int k) const { return packs_[static_cast<size_t>(k)].width; }

    // The w lanes of pack k from lane s on, as a vector of w lanes.
    std::string slice_name(int k, int w, int s) const {
        const std::string v = "v" + std::to_string(k);
        const int n = width_of(k);
        if (w >= n) return v;
        if (pack_type(k) == Type::F32) {
            if (n == 8 && w == 4) return s ? "_mm256_extractf128_ps(" + v + ", 1)" : "_mm256_castps256_ps128(" + v + ")";
            const std::string q = n == 8 ? slice_name(k, 4, s / 4 * 4) : v;
            return s % 4 ? "_mm_movehl_ps(" + q + ", " + q + ")" : q;
        }
        if (n == 4) return s ? "_mm256_extractf128_pd(" + v + ", 1)" : "_mm256_castpd256_pd128(" + v + ")";
        if (w == 4) return s ? "_mm512_extractf64x4_pd(" + v + ", 1)" : "_mm512_castpd512_pd256(" + v + ")";
        return s ? "_mm512_extractf64x2_pd(" + v + ", " + std::to_string(s / 2) + ")" : "_mm512_castpd512_pd128(" + v + ")";
    }

    // The 128-bit vector that holds a value (4k + l / 2 for lane l of pack
    // k; -1 for a scalar), the value's lane in it, and its expression.
    int half_of(int value) const {
        if (value == 0) return -1;
        const size_t i = static_cast<size_t>(def_[value]);
        const int k = pack_[i];
        if (k < 0) return -1;
        return 4 * k + lane_[i] / 2;
    }
    int half_lane(int value) const { return lane_[static_cast<size_t>(def_[value])] % 2; }
    std::string half_name(int h) const { return slice_name(h / 4, 2, h % 4 * 2); }
    // The block of four lanes that holds half h of a quad or an octet.
    std::string block_name_of_half(int h) const { return slice_name(h / 4, 4, h % 4 / 2 * 4); }

    // The block of four lanes that holds a value (2k + l / 4 for lane l of
    // pack k, a pair's two lanes in the low half of its block; -1 for a
    // scalar), the value's lane in it, and its expression (a float block is
    // a 128-bit vector, a double block a 256-bit one, a pair a 128-bit one).
    int block_of(int value) const {
        if (value == 0) return -1;
        const size_t i = static_cast<size_t>(def_[value]);
        const int k = pack_[i];
        return k < 0 ? -1 : 2 * k + lane_[i] / 4;
    }
    int block_lane(int value) const { return lane_[static_cast<size_t>(def_[value])] % 4; }
    std::string block_name(int b) const { return slice_name(b / 2, 4, b % 2 * 4); }

    // The block of a quad or an octet holding all four values, or -1.
    int quad_of(std::span<const int> v) const {
        if (v.size() != 4 || v[0] == 0) return -1;
        const int b = block_of(v[0]);
        if (b < 0 || width_of(b / 2) < 4) return -1;
        for (int x : v)
            if (x == 0 || block_of(x) != b) return -1;
        return b;
    }
    // The octet holding all eight values, or -1.
    int octet_of(std::span<const int> v) const {
        if (v.size() != 8 || v[0] == 0) return -1;
        const int k = pack_[static_cast<size_t>(def_[v[0]])];
        if (k < 0 || width_of(k) != 8) return -1;
        for (int x : v)
            if (x == 0 || pack_[static_cast<size_t>(def_[x])] != k) return -1;
        return k;
    }
    int lane_of_value(int value) const { return lane_[static_cast<size_t>(def_[value])]; }

    std::string literal(double v, Type t) const {
        return t == Type::F32 ? float_literal(static_cast<float>(v)) : double_literal(v);
    }

    // A value as a scalar of its type: a name, or a lane taken out of its vector.
    std::string scalar(int value) {
        if (value == 0) return single_ ? "0.0f" : "0.0";
        const int h = half_of(value);
        if (h < 0) return names_.at(value);
        if (auto it = extracted_.find(value); it != extracted_.end()) return it->second;
        const std::string v = half_name(h), nm = "e" + std::to_string(value);
        const bool hi = half_lane(value) == 1;
        if (type_of(value) == Type::F32) {
            // Any lane of a float block comes to lane 0 in one shuffle.
            const std::string b = block_name(block_of(value));
            const int l = block_lane(value);
            out_ << "    const float " << nm << " = _mm_cvtss_f32("
                 << (l ? "_mm_shuffle_ps(" + b + ", " + b + ", " + std::to_string(l) + ")" : b) << ");\n";
        } else
            out_ << "    const double " << nm << " = _mm_cvtsd_f64(" << (hi ? "_mm_unpackhi_pd(" + v + ", " + v + ")" : v)
                 << ");\n";
        extracted_[value] = nm;
        return nm;
    }

    // How costly a vector of the two values is (0 when a vector holds them).
    int cost(int v0, int v1) const {
        if (v0 == 0 && v1 == 0) return 0;
        const int p0 = v0 ? half_of(v0) : -2, p1 = v1 ? half_of(v1) : -2;
        if (p0 >= 0 && p0 == p1) return half_lane(v0) == 0 && half_lane(v1) == 1 ? 0 : 1;
        if (v0 == v1 && p0 >= 0) return 1;
        if (p0 >= 0 && p1 >= 0 && type_of(v0) == type_of(v1)) return 1;
        return 3;
    }

    // The same for two, four or eight values: four from one block (eight
    // from one octet) cost a shuffle if out of order, eight from two octets
    // one shuffle; others their halves and one more to join them.
    int cost_of(std::span<const int> v) const {
        if (v.size() == 2) return cost(v[0], v[1]);
        if (std::all_of(v.begin(), v.end(), [](int x) { return x == 0; })) return 0;
        if (v.size() == 8) {
            if (octet_of(v) >= 0) {
                for (int l = 0; l < 8; ++l)
                    if (lane_of_value(v[static_cast<size_t>(l)]) != l) return 1;
                return 0;
            }
            if (two_octets(v)) return 1;
            return cost_of(v.first(4)) + cost_of(v.last(4)) + 1;
        }
        if (quad_of(v) >= 0) {
            for (int l = 0; l < 4; ++l)
                if (block_lane(v[static_cast<size_t>(l)]) != l) return 1;
            return 0;
        }
        if (float_sources(v)) return 1;
        return cost(v[0], v[1]) + cost(v[2], v[3]) + 1;
    }

    // Whether eight values of one type all come from at most two octets of
    // that type (one two-source permutation).
    bool two_octets(std::span<const int> v) const {
        int k0 = -1, k1 = -1;
        for (int x : v) {
            if (x == 0) return false;
            const int k = pack_[static_cast<size_t>(def_[x])];
            if (k < 0 || width_of(k) != 8 || type_of(x) != type_of(v[0])) return false;
            if (k0 < 0 || k == k0) k0 = k;
            else if (k1 < 0 || k == k1) k1 = k;
            else return false;
        }
        return k1 < 0 || !float_octets_;  // AVX2 has no two-source permutation of eight floats
    }

    // The lanes of a sum or difference oriented for the cheapest operand
    // vectors, and what those cost.
    std::pair<std::vector<Term>, int> orient(const std::vector<int>& l) const {
        const size_t w = l.size();
        // A difference keeps its order: only the sums' lanes may swap.
        unsigned fixed = 0;
        for (size_t i = 0; i < w; ++i)
            if (code_[static_cast<size_t>(l[i])].op == Opcode::Sub) fixed |= 1u << i;
        unsigned best = 0;
        int least = 1 << 30;
        std::array<int, 8> a{}, b{};
        for (unsigned o = 0; o < (1u << w); ++o) {
            if (o & fixed) continue;
            for (size_t i = 0; i < w; ++i) {
                const Instr& x = code_[static_cast<size_t>(l[i])];
                const bool swap = o >> i & 1;
                a[i] = swap ? x.b.value : x.a.value, b[i] = swap ? x.a.value : x.b.value;
            }
            const std::span<const int> sa(a.data(), w), sb(b.data(), w);
            if (const int c = cost_of(sa) + cost_of(sb); c < least) least = c, best = o;
        }
        std::vector<Term> t;
        for (size_t i = 0; i < w; ++i) {
            const Instr& x = code_[static_cast<size_t>(l[i])];
            Term m{x.a, x.b, x.op == Opcode::Sub};
            if (best >> i & 1) std::swap(m.a, m.b);
            t.push_back(m);
        }
        return {t, least};
    }

    // The vector of two, four or eight operands in type t, negations applied.
    std::string vec(const std::vector<Operand>& o, Type t) {
        std::vector<int> v;
        for (Operand x : o) v.push_back(x.value);
        std::string x = v.size() == 8 ? raw8(v, t) : v.size() == 4 ? raw4(v, t) : raw(v[0], v[1], t);
        if (std::none_of(o.begin(), o.end(), [](Operand y) { return y.neg; })) return x;
        auto sign = [&](size_t i) -> std::string {
            const bool n = i < o.size() && o[i].neg;
            return t == Type::F32 ? (n ? "-0.0f" : "0.0f") : (n ? "-0.0" : "0.0");
        };
        if (o.size() == 8) {
            std::string signs;
            for (size_t i = 0; i < 8; ++i) signs += (i ? ", " : "") + sign(i);
            return intr("xor", t, 8) + x + ", " + (t == Type::F32 ? "_mm256_setr_ps(" : "_mm512_setr_pd(") + signs + "))";
        }
        if (t == Type::F32)
            return "_mm_xor_ps(" + x + ", _mm_setr_ps(" + sign(0) + ", " + sign(1) + ", " + sign(2) + ", " + sign(3) + "))";
        if (o.size() == 4)
            return "_mm256_xor_pd(" + x + ", _mm256_setr_pd(" + sign(0) + ", " + sign(1) + ", " + sign(2) + ", " + sign(3) +
                   "))";
        return "_mm_xor_pd(" + x + ", _mm_set_pd(" + sign(1) + ", " + sign(0) + "))";
    }
    std::string vec(Operand o0, Operand o1, Type t) { return vec(std::vector<Operand>{o0, o1}, t); }

    std::string widen(const std::string& x, Type from, Type to) const {
        return from == Type::F32 && to == Type::F64 ? "_mm_cvtps_pd(" + x + ")" : x;
    }

    std::string raw(int v0, int v1, Type t) {
        if (v0 == 0 && v1 == 0) return t == Type::F32 ? "_mm_setzero_ps()" : "_mm_setzero_pd()";
        const int p0 = v0 ? half_of(v0) : -2, p1 = v1 ? half_of(v1) : -2;
        const Type s0 = type_of(v0), s1 = type_of(v1);
        if (s0 == Type::F32 && s1 == Type::F32 && p0 >= 0 && p1 >= 0) return widen(float_pair(v0, v1), s0, t);
        if (s0 == Type::F64 && s1 == Type::F64 && t == Type::F64 && p0 >= 0 && p1 >= 0) {
            const std::string a = half_name(p0), b = half_name(p1);
            if (p0 == p1 && half_lane(v0) == 0 && half_lane(v1) == 1) return a;
            if (p0 == p1 && v0 != v1) return "_mm_shuffle_pd(" + a + ", " + a + ", 1)";  // the lanes swapped
            if (v0 == v1)  // one lane in both
                return (half_lane(v0) == 1 ? "_mm_unpackhi_pd(" : "_mm_unpacklo_pd(") + a + ", " + a + ")";
            return "_mm_shuffle_pd(" + a + ", " + b + ", " + std::to_string(half_lane(v0) | (half_lane(v1) << 1)) + ")";
        }
        const std::string a = scalar(v0), b = scalar(v1);
        if (t == Type::F32) return "_mm_setr_ps(" + a + ", " + b + ", 0.0f, 0.0f)";
        return "_mm_set_pd(" + b + ", " + a + ")";
    }

    // Two float values from float blocks (lanes i and j of blocks A and B)
    // in lanes 0 and 1, in at most two shuffles: one for any two lanes of
    // one block, or for lanes 0 and 0 (2 and 2) of two blocks; else a
    // shuffle that takes A's lane i and B's lane j to lanes 0 and 2, and one
    // that moves lane 2 to lane 1.
    std::string float_pair(int v0, int v1) const {
        const int b0 = block_of(v0), b1 = block_of(v1), i = block_lane(v0), j = block_lane(v1);
        const std::string a = block_name(b0), b = block_name(b1);
        auto shuffle = [](const std::string& x, const std::string& y, int imm) {
            return "_mm_shuffle_ps(" + x + ", " + y + ", " + std::to_string(imm) + ")";
        };
        auto high = [](const std::string& x) { return "_mm_movehl_ps(" + x + ", " + x + ")"; };
        if (b0 == b1) return i == 0 && j == 1 ? a : i == 2 && j == 3 ? high(a) : shuffle(a, a, i | j << 2);
        if (i == j) {
            const std::string u = (i < 2 ? "_mm_unpacklo_ps(" : "_mm_unpackhi_ps(") + a + ", " + b + ")";
            return i % 2 ? high(u) : u;
        }
        const std::string u = shuffle(a, b, i | j << 4);
        return shuffle(u, u, 8);
    }

    // Whether four float values come two and two from float blocks, which
    // one shuffle joins.
    bool float_sources(std::span<const int> v) const {
        for (int x : v)
            if (x == 0 || type_of(x) != Type::F32 || pack_[static_cast<size_t>(def_[x])] < 0) return false;
        return block_of(v[0]) == block_of(v[1]) && block_of(v[2]) == block_of(v[3]);
    }

    // Four lanes: one quad's lanes in any order take one shuffle, and so do
    // float lanes from two vectors and the halves of two double quads; others
    // are built as two halves and joined.
    std::string raw4(const std::vector<int>& v, Type t) {
        if (std::all_of(v.begin(), v.end(), [](int x) { return x == 0; }))
            return t == Type::F32 ? "_mm_setzero_ps()" : "_mm256_setzero_pd()";
        if (t == Type::F64 && std::all_of(v.begin(), v.end(), [&](int x) { return x != 0 && type_of(x) == Type::F32; }))
            return "_mm256_cvtps_pd(" + raw4(v, Type::F32) + ")";
        if (const int k = quad_of(v); k >= 0 && pack_type(k / 2) == t) {
            const std::string q = block_name(k);
            int l[4], imm = 0;
            for (int i = 0; i < 4; ++i) l[i] = block_lane(v[static_cast<size_t>(i)]), imm |= l[i] << (2 * i);
            if (imm == 0xE4) return q;
            if (t == Type::F32) return "_mm_shuffle_ps(" + q + ", " + q + ", " + std::to_string(imm) + ")";
            if (l[0] < 2 && l[1] < 2 && l[2] >= 2 && l[3] >= 2)  // within each 128-bit half
                return "_mm256_permute_pd(" + q + ", " + std::to_string((l[0] & 1) | (l[1] & 1) << 1 | (l[2] & 1) << 2 | (l[3] & 1) << 3) + ")";
            return "_mm256_permute4x64_pd(" + q + ", " + std::to_string(imm) + ")";
        }
        if (t == Type::F32 && float_sources(v)) {
            const std::string a = block_name(block_of(v[0])), b = block_name(block_of(v[2]));
            int imm = 0;
            for (int i = 0; i < 4; ++i) imm |= block_lane(v[static_cast<size_t>(i)]) << (2 * i);
            return "_mm_shuffle_ps(" + a + ", " + b + ", " + std::to_string(imm) + ")";
        }
        if (t == Type::F64 && std::all_of(v.begin(), v.end(), [&](int x) { return x != 0 && type_of(x) == Type::F64; })) {
            const int h0 = half_of(v[0]), h1 = half_of(v[2]);
            auto whole = [&](int h, int x, int y) {
                return h >= 0 && width_of(h / 4) >= 4 && half_of(y) == h && half_lane(x) == 0 && half_lane(y) == 1;
            };
            if (whole(h0, v[0], v[1]) && whole(h1, v[2], v[3]))
                return "_mm256_permute2f128_pd(" + block_name_of_half(h0) + ", " + block_name_of_half(h1) + ", " +
                       std::to_string((h0 % 2) | (2 + h1 % 2) << 4) + ")";
        }
        const std::string lo = raw(v[0], v[1], t), hi = raw(v[2], v[3], t);
        return t == Type::F32 ? "_mm_movelh_ps(" + lo + ", " + hi + ")" : "_mm256_set_m128d(" + hi + ", " + lo + ")";
    }

    // The immediate of _mm256_permute_ps where eight lanes of one float octet
    // move the same way within each 128-bit half, else -1.
    int in_lane(const std::vector<int>& v) const {
        int imm = 0;
        for (int i = 0; i < 8; ++i) {
            const int l = lane_of_value(v[static_cast<size_t>(i)]);
            if (l / 4 != i / 4) return -1;
            if (i < 4) imm |= (l % 4) << (2 * i);
            else if ((imm >> (2 * (i - 4)) & 3) != l % 4) return -1;
        }
        return imm;
    }

    // Eight lanes: one octet's lanes in any order, or lanes from two
    // octets, take one permutation; others are built as two blocks and
    // joined.
    std::string raw8(const std::vector<int>& v, Type t) {
        if (std::all_of(v.begin(), v.end(), [](int x) { return x == 0; }))
            return t == Type::F32 ? "_mm256_setzero_ps()" : "_mm512_setzero_pd()";
        if (t == Type::F64 && std::all_of(v.begin(), v.end(), [&](int x) { return x != 0 && type_of(x) == Type::F32; }))
            return "_mm512_cvtps_pd(" + raw8(v, Type::F32) + ")";
        const bool f = t == Type::F32;
        if (two_octets(v) && type_of(v[0]) == t) {
            const int k0 = pack_[static_cast<size_t>(def_[v[0]])];
            int k1 = -1;
            std::string idx;
            bool in_order = true;
            for (size_t i = 0; i < 8; ++i) {
                const int k = pack_[static_cast<size_t>(def_[v[i]])];
                if (k != k0) k1 = k;
                const int l = lane_of_value(v[i]) + (k == k0 ? 0 : 8);
                in_order &= l == static_cast<int>(i);
                idx += (i ? ", " : "") + std::to_string(l);
            }
            const std::string a = "v" + std::to_string(k0), index = (f ? "_mm256_setr_epi32(" : "_mm512_setr_epi64(") + idx + ")";
            if (in_order) return a;
            if (k1 < 0 && float_octets_)
                if (const int imm = in_lane(v); imm >= 0)
                    return "_mm256_permute_ps(" + a + ", " + std::to_string(imm) + ")";
            if (k1 < 0) return f ? "_mm256_permutevar8x32_ps(" + a + ", " + index + ")" : "_mm512_permutexvar_pd(" + index + ", " + a + ")";
            const std::string b = "v" + std::to_string(k1);
            return (f ? "_mm256_permutex2var_ps(" : "_mm512_permutex2var_pd(") + a + ", " + index + ", " + b + ")";
        }
        const std::string lo = raw4(std::vector<int>(v.begin(), v.begin() + 4), t),
                          hi = raw4(std::vector<int>(v.begin() + 4, v.end()), t);
        return f ? "_mm256_set_m128(" + hi + ", " + lo + ")"
                 : "_mm512_insertf64x4(_mm512_castpd256_pd512(" + lo + "), " + hi + ", 1)";
    }

    void emit(const Unit& u) {
        if (u.pack >= 0) return emit_pack(u.pack);
        const Instr& in = code_[static_cast<size_t>(u.instr)];
        if (in.op == Opcode::Store) {
            if (!u.more.empty()) {
                std::vector<const Instr*> s{&in};
                for (int j : u.more) s.push_back(&code_[static_cast<size_t>(j)]);
                return emit_stores(s);
            }
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
    // The instructions a unit runs: a pack's lanes, or one instruction and
    // the stores printed with it.
    std::vector<int> instrs(const Unit& u) const {
        std::vector<int> v = u.pack >= 0 ? lanes(u.pack) : std::vector<int>{u.instr};
        v.insert(v.end(), u.more.begin(), u.more.end());
        return v;
    }
    // The position in `order` of the unit that runs each instruction.
    std::vector<int> positions(const std::vector<Unit>& order) const {
        std::vector<int> at(code_.size(), -1);
        for (size_t k = 0; k < order.size(); ++k)
            for (int i : instrs(order[k])) at[static_cast<size_t>(i)] = static_cast<int>(k);
        return at;
    }

    // The schedule puts every load first and every store last (their place
    // in the instruction list), so all inputs and all outputs are live at
    // once and most of them spill.  Here each load moves to just before its
    // first use and each store to just after its value, but no store before
    // the last load: a codelet run in place still reads all of its input
    // before it writes.  Loads that only stores read go first.  Only the
    // order of the printed statements changes, not what any lane computes.
    void place_loads_and_stores() {
        const size_t n = order_.size();
        const std::vector<int> at = positions(order_);
        std::vector<std::vector<int>> deps(n);
        std::vector<char> load(n, 0), store(n, 0), used(n, 0);
        for (size_t k = 0; k < n; ++k) {
            const Opcode op = code_[static_cast<size_t>(instrs(order_[k]).front())].op;  // a unit runs one kind
            load[k] = op == Opcode::Load;
            store[k] = op == Opcode::Store;
        }
        for (size_t k = 0; k < n; ++k)
            for (int i : instrs(order_[k]))
                for (Operand o : {code_[static_cast<size_t>(i)].a, code_[static_cast<size_t>(i)].b})
                    if (o.value != 0) {
                        const int d = at[static_cast<size_t>(def_[o.value])];
                        if (d != static_cast<int>(k)) deps[k].push_back(d), used[static_cast<size_t>(d)] |= !store[k];
                    }
        std::vector<int> seq, pos(n, -1);
        auto put = [&](int k) { pos[static_cast<size_t>(k)] = static_cast<int>(seq.size()), seq.push_back(k); };
        for (size_t k = 0; k < n; ++k)
            if (load[k] && !used[k]) put(static_cast<int>(k));
        for (size_t k = 0; k < n; ++k) {
            if (load[k] || store[k]) continue;
            for (int d : deps[k])
                if (load[static_cast<size_t>(d)] && pos[static_cast<size_t>(d)] < 0) put(d);
            put(static_cast<int>(k));
        }
        int last_load = -1;
        for (size_t k = 0; k < n; ++k)
            if (load[k]) {
                if (pos[k] < 0) throw std::logic_error("a load without a place");
                last_load = std::max(last_load, pos[k]);
            }
        // Each store after the later of its operands and the last load.
        std::vector<std::vector<int>> after(seq.size() + 1);
        for (size_t k = 0; k < n; ++k) {
            if (!store[k]) continue;
            int r = last_load;
            for (int d : deps[k]) r = std::max(r, pos[static_cast<size_t>(d)]);
            after[static_cast<size_t>(r + 1)].push_back(static_cast<int>(k));
        }
        std::vector<Unit> order;
        for (size_t p = 0; p <= seq.size(); ++p) {
            for (int k : after[p]) order.push_back(order_[static_cast<size_t>(k)]);
            if (p < seq.size()) order.push_back(order_[static_cast<size_t>(seq[p])]);
        }
        if (order.size() != n) throw std::logic_error("loads and stores placed");
        order_ = std::move(order);
    }

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

    // Two, four or eight neighbouring stores with the same scaling as one
    // vector store.
    void emit_stores(const std::vector<const Instr*>& s) {
        const size_t w = s.size();
        const Instr& x = *s[0];
        const Type t0 = x.a.value ? type_of(x.a.value) : p_.scalar;
        bool same = x.mode != Store::ZeroConst;
        for (const Instr* y : s) same &= (y->a.value ? type_of(y->a.value) : p_.scalar) == t0;
        // AVX2 stores eight floats computed in float only.
        if (w == 8 && float_octets_)
            same &= t0 == Type::F32 && x.mode != Store::DoubleScale && x.mode != Store::DoubleZeroMinus;
        if (!same) {
            if (w > 2) {
                emit_stores(std::vector<const Instr*>(s.begin(), s.begin() + static_cast<ptrdiff_t>(w / 2)));
                emit_stores(std::vector<const Instr*>(s.begin() + static_cast<ptrdiff_t>(w / 2), s.end()));
            } else {
                for (const Instr* y : s) emit_scalar_store(*y);
            }
            return;
        }
        // The type the scalar expression computes in.
        Type t = t0;
        const bool dbl = x.mode == Store::DoubleScale || x.mode == Store::DoubleZeroMinus;
        if (dbl) t = Type::F64;
        std::vector<Operand> o;
        for (const Instr* y : s) o.push_back(y->a);
        std::string v = vec(o, t);
        const bool f = t == Type::F32;
        const std::string mul = intr("mul", t, w), sub = intr("sub", t, w), zero = intr("setzero", t, w) + ")";
        const std::string sv = intr("set1", t, w) + (f || !single_ ? "s)" : "static_cast<double>(s))");
        switch (x.mode) {
        case Store::Plain:
        case Store::DoubleScale: v = mul + v + ", " + sv + ")"; break;
        case Store::ZeroMinus: v = sub + zero + ", " + mul + v + ", " + sv + "))"; break;
        case Store::DoubleZeroMinus: v = sub + zero + ", " + mul + sv + ", " + v + "))"; break;
        default: break;
        }
        const std::string at = "out + " + std::to_string(x.slot);
        if (single_) {
            if (!f) v = (w == 8 ? "_mm512_cvtpd_ps(" : w == 4 ? "_mm256_cvtpd_ps(" : "_mm_cvtpd_ps(") + v + ")";
            if (w == 8)
                out_ << "    _mm256_storeu_ps(" << at << ", " << v << ");\n";
            else if (w == 4)
                out_ << "    _mm_storeu_ps(" << at << ", " << v << ");\n";
            else
                out_ << "    _mm_storel_epi64(reinterpret_cast<__m128i*>(" << at << "), _mm_castps_si128(" << v << "));\n";
        } else {
            out_ << (w == 8 ? "    _mm512_storeu_pd(" : w == 4 ? "    _mm256_storeu_pd(" : "    _mm_storeu_pd(") << at << ", "
                 << v << ");\n";
        }
        for (size_t i = 1; i < w; ++i)
            if (s[i]->slot != x.slot + static_cast<int>(i)) throw std::logic_error("store group");
    }

    // An octet of loads: eight neighbouring elements at once, else two
    // blocks of four (each one load if its elements neighbour) joined.
    std::string load8(const std::vector<int>& l) const {
        const bool f = single_;
        auto slot = [&](size_t i) { return code_[static_cast<size_t>(l[i])].slot; };
        auto block = [&](size_t from, size_t n) {
            bool next = true;
            std::string list;
            for (size_t i = from; i < from + n; ++i) {
                next &= slot(i) == slot(from) + static_cast<int>(i - from);
                list += (i > from ? ", in[" : "in[") + std::to_string(slot(i)) + "]";
            }
            const std::string at = "in + " + std::to_string(slot(from));
            if (n == 8) return next ? (f ? "_mm256_loadu_ps(" : "_mm512_loadu_pd(") + at + ")" : std::string();
            return next ? (f ? "_mm_loadu_ps(" : "_mm256_loadu_pd(") + at + ")" : (f ? "_mm_setr_ps(" : "_mm256_setr_pd(") + list + ")";
        };
        if (std::string all = block(0, 8); !all.empty()) return all;
        const std::string lo = block(0, 4), hi = block(4, 4);
        return f ? "_mm256_set_m128(" + hi + ", " + lo + ")" : "_mm512_insertf64x4(_mm512_castpd256_pd512(" + lo + "), " + hi + ", 1)";
    }

    void emit_pack(int k) {
        const std::vector<int> l = lanes(k);
        const size_t w = l.size();
        auto lane = [&](size_t i) -> const Instr& { return code_[static_cast<size_t>(l[i])]; };
        const Instr& x = lane(0);
        const Type t = x.type;
        const bool f = t == Type::F32;
        const std::string nm = "v" + std::to_string(k);
        auto operands = [&](bool b, bool keep_sign) {
            std::vector<Operand> o;
            for (size_t i = 0; i < w; ++i) o.push_back(b ? lane(i).b : Operand{lane(i).a.value, keep_sign && lane(i).a.neg});
            return o;
        };
        std::string expr;
        if (x.op == Opcode::Load && w == 8) {
            expr = load8(l);
        } else if (x.op == Opcode::Load) {
            bool next = true;
            std::string list;
            for (size_t i = 0; i < w; ++i) {
                next &= lane(i).slot == x.slot + static_cast<int>(i);
                list += (i ? ", in[" : "in[") + std::to_string(lane(i).slot) + "]";
            }
            const std::string at = "in + " + std::to_string(x.slot);
            if (w == 4 && next) {
                expr = (f ? "_mm_loadu_ps(" : "_mm256_loadu_pd(") + at + ")";
            } else if (w == 4 && lane(1).slot == x.slot + 1 && lane(3).slot == lane(2).slot + 1) {  // two neighbouring pairs
                const std::string hi = "in + " + std::to_string(lane(2).slot);
                expr = f ? "_mm_loadh_pi(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(" + at +
                               "))), reinterpret_cast<const __m64*>(" + hi + "))"
                         : "_mm256_set_m128d(_mm_loadu_pd(" + hi + "), _mm_loadu_pd(" + at + "))";
            } else if (w == 4) {
                expr = (f ? "_mm_setr_ps(" : "_mm256_setr_pd(") + list + ")";
            } else if (next)
                expr = f ? "_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(" + at + ")))"
                         : "_mm_loadu_pd(" + at + ")";
            else
                expr = f ? "_mm_setr_ps(in[" + std::to_string(x.slot) + "], in[" + std::to_string(lane(1).slot) + "], 0.0f, 0.0f)"
                         : "_mm_set_pd(in[" + std::to_string(lane(1).slot) + "], in[" + std::to_string(x.slot) + "])";
        } else if (add_class(x.op)) {
            const std::vector<Term> best = orient(l).first;
            const bool all_sub = std::all_of(best.begin(), best.end(), [](const Term& m) { return m.sub; });
            std::vector<Operand> A, B;
            for (const Term& m : best) {
                A.push_back(m.a);
                B.push_back(m.b);
                if (!all_sub) B.back().neg ^= m.sub;
            }
            // A sum whose second operand is negated in every lane is a
            // difference (x + (-y) is x - y, exactly), and with SSE3 (the
            // AVX2 and AVX-512 bodies) one negated in the even lanes alone is
            // _mm_addsub_pd / _ps: each lane one sum or difference (there is
            // none of 512 bits).
            const bool all_neg = std::all_of(B.begin(), B.end(), [](Operand o) { return o.neg; });
            bool alternate = true;
            for (size_t i = 0; i < w; ++i) alternate &= B[i].neg == (i % 2 == 0);
            const char* op = all_sub ? "sub" : "add";
            if (!all_sub && modern_ && (all_neg || (alternate && widest_ >= 4 && !(w == 8 && t == Type::F64)))) {
                for (Operand& o : B) o.neg = false;
                op = all_neg ? "sub" : "addsub";
                ++saved_;
            }
            const std::string a = vec(A, t), b = vec(B, t);
            expr = intr(op, t, w) + a + ", " + b + ")";
        } else if (x.op == Opcode::MulConst) {
            std::vector<std::string> c;
            for (size_t i = 0; i < w; ++i) c.push_back(literal(lane(i).a.neg ? -lane(i).constant : lane(i).constant, t));
            const std::string A = vec(operands(false, false), t);
            if (w == 8) {
                std::string list;
                for (size_t i = 0; i < 8; ++i) list += (i ? ", " : "") + c[i];
                expr = f ? "_mm256_mul_ps(" + A + ", _mm256_setr_ps(" + list + "))"
                         : "_mm512_mul_pd(_mm512_setr_pd(" + list + "), " + A + ")";
            } else if (f)
                expr = "_mm_mul_ps(" + A + ", _mm_setr_ps(" + c[0] + ", " + c[1] + ", " + (w == 4 ? c[2] : "0.0f") + ", " +
                       (w == 4 ? c[3] : "0.0f") + "))";
            else if (w == 4)
                expr = "_mm256_mul_pd(_mm256_setr_pd(" + c[0] + ", " + c[1] + ", " + c[2] + ", " + c[3] + "), " + A + ")";
            else
                expr = "_mm_mul_pd(_mm_set_pd(" + c[1] + ", " + c[0] + "), " + A + ")";
        } else if (x.op == Opcode::Mul) {
            expr = intr("mul", t, w) + vec(operands(false, true), t) + ", " + vec(operands(true, true), t) + ")";
        } else {  // Round
            expr = (w == 8 ? "_mm512_cvtpd_ps(" : w == 4 ? "_mm256_cvtpd_ps(" : "_mm_cvtpd_ps(") +
                   vec(operands(false, true), Type::F64) + ")";
        }
        out_ << "    const " << vtype(t, w) << ' ' << nm << " = " << expr << ";\n";
    }

    const Program& p_;
    const std::vector<Instr>& code_;
    const bool single_;
    const int widest_;                 // lanes of the widest packs: 2, 4 or 8
    const std::array<int, 2> slack_;  // how much dearer than its halves' a quad's (octet's) operands may be; -1: any
    const Lanes lanes_;
    const bool by_factor_;  // products pair by their factors where that costs nothing
    const bool float_octets_;  // AVX2: octets of float sums, differences and loads only
    std::vector<Pack> twin_;  // see follow
    bool replaying_ = false;
    // Sums as differences or addsubs where that saves a sign flip (see
    // emit_pack), and each load placed just before its first use, each store
    // just after its value (see place_loads_and_stores): the SSE2 and AVX2
    // bodies, and the AVX-512 bodies of the variants that ask for it (the
    // others print sums and place loads and stores as they always did).
    const bool modern_;
    const bool by_height_;     // scheduled by the longest chain of latencies to a store (see schedule)
    const bool pressure_;      // scheduled again by GCC for register pressure
    bool by_factor_chose_ = false;
    int saved_ = 0;
    std::map<std::array<int, 4>, int> at_;  // (tag level, batch, copy, position) -> instruction
    Definitions def_;                       // value -> defining instruction
    std::vector<std::vector<int>> users_;  // instruction -> instructions reading its result
    std::vector<int> pack_, lane_;
    std::vector<Pack> packs_;
    std::vector<Unit> order_;
    std::vector<Unit> scheduled_;  // order_ before place_loads_and_stores
    double share_ = 0;
    std::map<int, std::string> names_, extracted_;
    std::ostringstream out_;
};

} // namespace

std::string print_simd(const Program& prog, const std::string& ns, double* packed_share) {
    return SimdPrinter(prog, 2).run(ns, packed_share);
}

// An estimate of the instructions a printed body runs: its intrinsics, less
// casts and vectors of constants (which cost nothing or a load from memory
// that an instruction takes as its operand), and its scalar operations.
int estimated_instructions(const std::string& text) {
    int n = 0;
    for (size_t at = text.find("_mm"); at != std::string::npos; at = text.find("_mm", at + 3)) {
        const size_t open = text.find('(', at);
        const std::string name = text.substr(at, open - at);
        if (name.find("cast") != std::string::npos || name.find("setzero") != std::string::npos) continue;
        if (name.find("_set") != std::string::npos && name.find("m128") == std::string::npos) {
            // Literals only: digits, signs, points, exponents, suffixes;
            // each argument starts with a digit or a sign (names such as
            // e12 do not).
            const size_t close = text.find(')', open);
            bool literals = text.find_first_not_of("0123456789.-+ef, ", open + 1) >= close;
            for (size_t i = open + 1; literals && i < close; ++i)
                if ((text[i - 1] == '(' || text[i - 1] == ' ') && text[i] == 'e') literals = false;
            if (literals) continue;
        }
        ++n;
    }
    for (const char* op : {" + ", " - ", " * ", "static_cast<float>("})
        for (size_t at = text.find(op); at != std::string::npos; at = text.find(op, at + 1)) ++n;
    return n;
}

namespace {

// The AVX2 body: which quads pay depends on the shuffles their neighbours
// need, which the greedy grouping does not see, so the body is printed with
// pairs alone and with quads under each limit and each way of seeding them,
// and the cheapest kept, with its count, its limit (-2: pairs alone) and its
// seeding.
constexpr int kAvx2Registers = 16, kAvx512Registers = 32;

struct Choice {
    std::string text;
    int instructions = 0;
    int cost = 0;  // the instructions and the spills
    int slack = -2;
    Lanes lanes = Lanes::Found;
    bool by_factor = false;
};

// The ways of pairing products tried: by their factors too for complex
// data, whose twiddle products it serves, where that changes a pair (the
// pairs do not depend on the limits, and seeded from the batches only with
// copies alone); in the real-data and Hartley families it saved estimated
// instructions but ran slower (the real forward transform of 48 floats by a
// third, Hartley 13 and 48 by a tenth).
struct FactorPairings {
    bool found = false, copies = false;  // worth trying as found (and copies x parts), and with copies alone

    explicit FactorPairings(const Program& prog) {
        if (!prog.sig.complex_elements) return;
        found = SimdPrinter(prog, 4, -1, -1, Lanes::Found, true).pairs_by_factor();
        copies = SimdPrinter(prog, 4, -1, -1, Lanes::Copies, true).pairs_by_factor();
    }
    // Whether a body with this seeding and pairing is printed.
    bool tried(Lanes lanes, bool by_factor) const { return !by_factor || (lanes == Lanes::Copies ? copies : found); }
};

// Whether the recipes marked batches of identical transforms in the list.
bool has_batches(const Program& prog) {
    return std::any_of(prog.code.begin(), prog.code.end(), [](const Instr& in) { return in.lanes[0].group >= 0; });
}

// A printed AVX2 body: its instructions, and as many as it would take with
// every sum printed as in the AVX-512 bodies (see SimdPrinter::saved), which
// build on the AVX2 body chosen by that count.
struct Candidate {
    Choice choice;
    int classic = 0;
    int classic_spills = 0;  // in the scheduled order, as the AVX-512 bodies are printed
    bool batches = false;    // seeded from the batches
};

std::vector<Candidate> avx2_candidates(const Program& prog, const std::string& ns) {
    const FactorPairings factors(prog);
    std::vector<Candidate> c;
    auto print = [&](int widest, int slack, Lanes lanes, bool by_factor) {
        SimdPrinter printer(prog, widest, slack, -1, lanes, by_factor);
        std::string text = printer.run(ns, nullptr);
        const int n = estimated_instructions(text);
        c.push_back({{std::move(text), n, n + printer.spills(kAvx2Registers), widest == 2 ? -2 : slack, lanes, by_factor},
                     n + printer.saved(), printer.spills(kAvx2Registers, true), lanes != Lanes::Found});
    };
    // Pairs alone, and quads as found under each limit, each also with the
    // products paired by their factors (see FactorPairings).
    print(2, -1, Lanes::Found, false);
    for (bool by_factor : {false, true})
        for (int slack : {-1, 0, 1})
            if (factors.tried(Lanes::Found, by_factor)) print(4, slack, Lanes::Found, by_factor);
    // Quads seeded from the batches.
    if (has_batches(prog))
        for (bool by_factor : {false, true})
            for (Lanes lanes : {Lanes::CopiesParts, Lanes::Copies})
                for (int slack : {-1, 0, 1})
                    if (factors.tried(lanes, by_factor)) print(4, slack, lanes, by_factor);
    return c;
}

// The body with the fewest instructions of those found as before; one seeded
// from the batches only where it takes fewer instructions still, the one
// with the fewest instructions and spills.  `classic`: by the count of the
// AVX-512 bodies' sums.
Choice avx2_choice(const std::vector<Candidate>& c, bool classic) {
    auto n = [&](const Candidate& x) { return classic ? x.classic : x.choice.instructions; };
    auto cost = [&](const Candidate& x) {
        return n(x) + (classic ? x.classic_spills : x.choice.cost - x.choice.instructions);
    };
    size_t best = 0;
    for (size_t k = 1; k < c.size(); ++k)
        if (!c[k].batches && n(c[k]) < n(c[best])) best = k;
    const int found = n(c[best]);
    for (size_t k = 1; k < c.size(); ++k)
        if (c[k].batches && n(c[k]) < found && cost(c[k]) < cost(c[best])) best = k;
    Choice r = c[best].choice;
    r.instructions = n(c[best]);
    r.cost = cost(c[best]);
    return r;
}

// Single-precision data on AVX2 also in octets: eight floats in a 256-bit
// vector for the loads, sums and differences, the products still in quads of
// doubles (see SimdPrinter's float_octets), on top of the best body's quads,
// seeded and paired as they are, under each limit for the octets; kept where
// it takes at least 7% fewer instructions than `best` and no more
// instructions and spills.  Measured, the octets pay only there (the complex
// DFTs of 4, 16, 32 and 64 points 6 to 24% faster); where they save
// less they ran up to 12% slower, as the float vectors are split and joined
// around every product.
Choice with_float_octets(const Program& prog, const std::string& ns, Choice best) {
    if (prog.scalar != Type::F32) return best;
    const int before = best.instructions;
    const Lanes lanes = best.lanes;
    const bool by_factor = best.by_factor;
    for (int slack8 : {-1, 0, 1}) {
        SimdPrinter printer(prog, 8, std::max(best.slack, -1), slack8, lanes, by_factor, true);
        std::string text = printer.run(ns, nullptr);
        const int n = estimated_instructions(text), c = n + printer.spills(kAvx2Registers);
        if (100 * n <= 93 * before && n < best.instructions && c <= best.cost)
            best = {std::move(text), n, c, best.slack, lanes, by_factor};
    }
    return best;
}

// Whether the real-data recipes marked batches in the list.
bool has_real_batches(const Program& prog) {
    return std::any_of(prog.code.begin(), prog.code.end(), [](const Instr& in) {
        return std::any_of(in.lanes.begin(), in.lanes.end(), [](const LaneTag& l) { return l.group >= kRealLaneGroups; });
    });
}

// The program as the complex recipes alone tagged it: the real-data
// recipes' batches taken out, the inner levels moved up in their place.
Program without_real_batches(const Program& prog) {
    Program p = prog;
    for (Instr& in : p.code) {
        LaneTags t{};
        size_t k = 0;
        for (const LaneTag& l : in.lanes)
            if (l.group >= 0 && l.group < kRealLaneGroups) t[k++] = l;
        in.lanes = t;
    }
    return p;
}

} // namespace

std::string print_avx2(const Program& prog, const std::string& ns) {
    return with_float_octets(prog, ns, avx2_choice(avx2_candidates(prog, ns), false)).text;
}

// A variant's key: widest pack, limits of quads and octets, seeding, pairing
// by factors, float octets, the real-data recipes' batches kept, scheduled
// by height; e.g. "4,0,-1,copies,1,0,1,0".
namespace {
const char* const kLaneNames[] = {"found", "copies-parts", "copies"};
const std::string kTwinKey = "f64:";

struct Variant {
    int widest = 2, slack = -1, slack8 = -1;
    Lanes lanes = Lanes::Found;
    bool by_factor = false, float_octets = false, real_batches = true, by_height = false, pressure = false;

    // A ninth field, 1, marks the body for GCC's scheduling for register
    // pressure; without it the body is printed unmarked.
    std::string key() const {
        return std::to_string(widest) + ',' + std::to_string(slack) + ',' + std::to_string(slack8) + ',' +
               kLaneNames[static_cast<int>(lanes)] + ',' + (by_factor ? '1' : '0') + ',' + (float_octets ? '1' : '0') +
               ',' + (real_batches ? '1' : '0') + ',' + (by_height ? '1' : '0') + (pressure ? ",1" : "");
    }

    static Variant parse(const std::string& key) {
        std::istringstream in(key);
        std::string f[8], rest;
        for (std::string& x : f)
            if (!std::getline(in, x, ',')) throw std::invalid_argument("AVX2 variant key " + key);
        Variant v;
        auto flag = [&](const std::string& x) {
            if (x != "0" && x != "1") throw std::invalid_argument("AVX2 variant key " + key);
            return x == "1";
        };
        if (std::getline(in, rest, ',')) {
            if (rest != "1") throw std::invalid_argument("AVX2 variant key " + key);
            v.pressure = true;
        }
        v.widest = std::stoi(f[0]), v.slack = std::stoi(f[1]), v.slack8 = std::stoi(f[2]);
        v.by_factor = flag(f[4]), v.float_octets = flag(f[5]), v.real_batches = flag(f[6]), v.by_height = flag(f[7]);
        const auto lane = std::find(std::begin(kLaneNames), std::end(kLaneNames), f[3]);
        if (lane == std::end(kLaneNames) || (v.widest != 2 && v.widest != 4 && v.widest != 8) ||
            (v.widest == 8) != v.float_octets || std::getline(in, rest))
            throw std::invalid_argument("AVX2 variant key " + key);
        v.lanes = static_cast<Lanes>(lane - std::begin(kLaneNames));
        return v;
    }
};
} // namespace

std::string print_avx2(const Program& prog, const std::string& ns, const std::string& key, const Program* twin) {
    const bool as_twin = key.starts_with(kTwinKey);
    const Variant v = Variant::parse(as_twin ? key.substr(kTwinKey.size()) : key);
    if (v.float_octets && prog.scalar != Type::F32) throw std::invalid_argument("float octets in a double body: " + key);
    if (as_twin && (!twin || prog.scalar != Type::F32 || twin->scalar != Type::F64))
        throw std::invalid_argument("a body packed as the double-precision one needs both programs: " + key);
    auto printer = [&](const Program& p) {
        return SimdPrinter(p, v.widest, v.slack, v.slack8, v.lanes, v.by_factor, v.float_octets, v.by_height, false,
                           v.pressure);
    };
    const Program& p = v.real_batches ? prog : without_real_batches(prog);
    SimdPrinter out = printer(p);
    if (as_twin) out.follow(printer(v.real_batches ? *twin : without_real_batches(*twin)).packing());
    return out.run(ns, nullptr);
}

std::string avx2_estimate_key(const Program& prog) {
    if (prog.scalar != Type::F64) throw std::invalid_argument("the estimate's key is for double-precision bodies");
    const Choice c = avx2_choice(avx2_candidates(prog, "ZAM_VX_NS"), false);
    Variant v;
    v.widest = c.slack == -2 ? 2 : 4, v.slack = c.slack == -2 ? -1 : c.slack, v.lanes = c.lanes, v.by_factor = c.by_factor;
    return v.key();
}

std::vector<std::string> avx2_variants(const Program& tagged) {
    std::vector<Variant> v{Variant{}};
    // With the real-data recipes' batches, and where there are some, without.
    for (bool real_batches : {true, false}) {
        if (!real_batches && !has_real_batches(tagged)) break;
        const Program& prog = real_batches ? tagged : without_real_batches(tagged);
        const FactorPairings factors(prog);
        for (Lanes lanes : {Lanes::Found, Lanes::CopiesParts, Lanes::Copies}) {
            if (lanes != Lanes::Found && !has_batches(prog)) break;
            for (bool by_factor : {false, true})
                for (int slack : {-1, 0, 1}) {
                    if (!factors.tried(lanes, by_factor)) continue;
                    v.push_back({4, slack, -1, lanes, by_factor, false, real_batches});
                    if (prog.scalar == Type::F32)
                        for (int slack8 : {-1, 0, 1}) v.push_back({8, slack, slack8, lanes, by_factor, true, real_batches});
                }
        }
    }
    // Each also scheduled by height.
    std::vector<std::string> keys;
    for (Variant& x : v) {
        keys.push_back(x.key());
        x.by_height = true;
        keys.push_back(x.key());
    }
    return keys;
}

std::vector<std::string> avx512_variants(const Program& prog) {
    if (has_real_batches(prog)) return {"0,0", "0,1", "1,0", "1,1"};
    return {"0,0", "0,1"};
}

// Octets on top of the AVX2 body's quads (under its limit, or any where it
// has none), under each limit for the octets, kept only if it has octets
// and fewer instructions than the AVX2 body: as found, the one with the
// fewest instructions; seeded from the batches where they take fewer still,
// the one with the fewest instructions and spills.
std::string print_avx512(const Program& tagged, const std::string& ns, const std::string& key, double* gain) {
    if (key.size() != 3 || key[1] != ',' || (key[0] != '0' && key[0] != '1') || (key[2] != '0' && key[2] != '1'))
        throw std::invalid_argument("AVX-512 variant key " + key);
    const bool real = has_real_batches(tagged) && key[0] == '0', modern = key[2] == '1';
    const Program prog = real ? without_real_batches(tagged) : tagged;
    const std::vector<Candidate> candidates = avx2_candidates(prog, ns);
    const Choice avx2 = avx2_choice(candidates, !modern);
    const FactorPairings factors(prog);
    std::string best;
    int least = avx2.instructions, cheapest = 1 << 30, found = least;
    for (Lanes lanes : {Lanes::Found, Lanes::CopiesParts, Lanes::Copies}) {
        if (lanes != Lanes::Found && !has_batches(prog)) break;
        if (lanes == Lanes::CopiesParts) found = least;
        for (bool by_factor : {false, true})
            for (int slack8 : {-1, 0, 1}) {
                if (!factors.tried(lanes, by_factor)) continue;
                SimdPrinter printer(prog, 8, std::max(avx2.slack, -1), slack8, lanes, by_factor, false, false, modern);
                std::string text = printer.run(ns, nullptr);
                if (printer.octets() == 0) continue;
                const int n = estimated_instructions(text), c = n + printer.spills(kAvx512Registers);
                if (lanes == Lanes::Found ? n < least : n < found && c < cheapest)
                    least = n, cheapest = c, best = std::move(text);
            }
    }
    if (gain) *gain = avx2.instructions ? double(avx2.instructions - least) / avx2.instructions : 0.0;
    return best;
}

} // namespace zg
