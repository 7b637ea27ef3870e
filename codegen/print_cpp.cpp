#include "print_cpp.hpp"

#include <charconv>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <algorithm>
#include <unordered_map>

namespace zg {
namespace {

std::string finish_literal(std::string s) {
    if (s.find_first_of(".en") == std::string::npos) s += ".0";
    return s;
}

const char* c_type(Type t) { return t == Type::F32 ? "float" : "double"; }

std::string head(const Signature& sig) {
    const std::string& t = sig.element;
    const std::string v = "void " + sig.function + "(const " + t + "* ";
    switch (sig.form) {
    case Form::Codelet:
        return "ZamStatus " + sig.function + "(const " + t + "* src, " + t + "* dst, uint32_t flag)";
    case Form::BufferedCodelet:
        return "ZamStatus " + sig.function + "(const " + t + "* src, " + t + "* dst, uint32_t flag, uint8_t* buffer)";
    case Form::Block:
        return v + "src, ptrdiff_t is, " + t + "* dst, ptrdiff_t os) noexcept";
    case Form::ScaledBlock:
        return v + "src, ptrdiff_t is, " + t + "* dst, ptrdiff_t os, " + t + " s) noexcept";
    case Form::Dct4Direct: return v + "x, " + t + "* y) noexcept";
    case Form::Dct4First:
        return v + "x, uint32_t off, uint32_t s, uint32_t L, " + t + "* out, uint32_t t) noexcept";
    case Form::Dct4Second:
        return v + "v, const " + t + "* tw, " + t + "* y, uint32_t g, uint32_t S, uint32_t L) noexcept";
    case Form::Dct4Radix: break;
    }
    return v + "v, const " + t + "* tw, " + t + "* front, " + t + "* back, ptrdiff_t step, ptrdiff_t t) noexcept";
}

// The pointers and strides a DCT-IV kernel indexes with, as signed values so
// that mirrored accesses step backwards.
const char* prologue(Form form) {
    switch (form) {
    case Form::Dct4First:
        return "    const auto* const xf = x + off;\n    const auto* const xb = x + (L - off);\n"
               "    const ptrdiff_t ss = s, ts = t;\n";
    case Form::Dct4Second:
        return "    auto* const yf = y + g;\n    auto* const yb = y + (L - g);\n    const ptrdiff_t ss = S;\n";
    default: return "";
    }
}

// "k * stride", or "stride" or nothing for k = 1 or 0, after `sign`.
std::string times(const char* sign, int k, const char* stride) {
    if (k == 0) return "";
    return sign + (k == 1 ? std::string(stride) : std::to_string(k) + " * " + stride);
}

class Printer {
public:
    Printer(const Program& p, bool lanes) : p_(p), single_(p.scalar == Type::F32), lanes_(lanes) {}

    std::string run() {
        const Signature& sig = p_.sig;
        if (!p_.plan.empty()) out_ << "// plan: " << p_.plan << '\n';
        out_ << (lanes_ ? lanes_head(sig) : head(sig)) << "\n{\n" << codelet_checks(p_);
        out_ << prologue(sig.form);
        if (lanes_) lanes_prologue();
        for (const Instr& in : p_.code) statement(in);
        if (sig.form == Form::Codelet || sig.form == Form::BufferedCodelet) out_ << "    return ZAM_STS_OK;\n";
        out_ << "}\n";
        return out_.str();
    }

private:
    std::string literal(double v) const {
        return single_ ? float_literal(static_cast<float>(v)) : double_literal(v);
    }

    // Where an element is loaded from or stored to: a pointer and an index
    // in elements of the scalar type (complex arrays as their scalars).
    struct Place {
        std::string base, index;
    };

    Place place(bool load, int slot) const {
        const int n = p_.sig.n;
        const std::string k = std::to_string(slot);
        switch (p_.sig.form) {
        case Form::Dct4Direct: return {load ? "x" : "y", k};
        case Form::Dct4First:
            if (!load) return {"out", index(times("", slot, "ts"))};
            return slot < n / 2 ? Place{"xf", index(times("", slot, "ss"))} : Place{"xb", times("-", slot, "ss")};
        case Form::Dct4Second:
        case Form::Dct4Radix:
            if (load) return slot < 2 * n ? Place{"v", k} : Place{"tw", std::to_string(slot - 2 * n)};
            return store_place(slot);
        default: break;
        }
        const char* array = load ? "src" : "dst";
        if (blocks()) return {array, k + " * " + (load ? "is" : "os")};
        return {array, k};
    }

    // Where result `slot` of a second-pass or radix kernel goes.
    Place store_place(int slot) const {
        const int n = p_.sig.n;
        if (p_.sig.form == Form::Dct4Second)
            return slot < n ? Place{"yf", index(times("", slot, "ss"))} : Place{"yb", times("-", slot, "ss")};
        const int l = slot / 2;
        const std::string at = times("", l, "step");
        if (slot % 2 == 0) return l < n / 2 ? Place{"front", index(at)} : Place{"back", "-" + at};
        return l < n / 2 ? Place{"front", l == 0 ? "t" : at + " + t"} : Place{"back", "t - " + at};
    }

    std::string loaded(int slot) const {
        const Place at = place(true, slot);
        return std::string("zam::load<") + c_type(p_.scalar) + ">(" + at.base + ", " + at.index + ")";
    }

    static std::string index(const std::string& s) { return s.empty() ? "0" : s; }

    std::string name(Operand o) const {
        std::string s;
        if (o.value == 0) s = lanes_ ? "V::zero()" : single_ ? "0.0f" : "0.0";
        else s = names_.at(o.value);
        return o.neg ? "-" + s : s;
    }

    void define(const Instr& in, const std::string& nm, const std::string& expr) {
        names_[in.result] = nm;
        out_ << "    const " << (lanes_ ? "V" : c_type(in.type)) << ' ' << nm << " = " << expr << ";\n";
    }

    void statement(const Instr& in) {
        const std::string t = "t" + std::to_string(in.result);
        switch (in.op) {
        case Opcode::Load: {
            const std::string nm = p_.sig.complex_elements
                                       ? "x" + std::to_string(in.slot / 2) + (in.slot % 2 ? "i" : "r")
                                       : "x" + std::to_string(in.slot);
            define(in, nm, lanes_ ? lane_loaded(in.slot) : loaded(in.slot));
            break;
        }
        case Opcode::Add: define(in, t, name(in.a) + " + " + name(in.b)); break;
        case Opcode::Sub: define(in, t, name(in.a) + " - " + name(in.b)); break;
        case Opcode::MulConst:
            if (in.type == Type::F32) define(in, t, name(in.a) + " * " + wrap(float_literal(static_cast<float>(in.constant))));
            else define(in, t, wrap(double_literal(in.constant)) + " * " + name(in.a));
            break;
        case Opcode::Mul: define(in, t, name(in.a) + " * " + name(in.b)); break;
        case Opcode::Round: define(in, t, "static_cast<float>(" + name(in.a) + ")"); break;
        case Opcode::Store: {
            if (lanes_) {
                lane_store(in);
                break;
            }
            const Place at = place(false, in.slot);
            out_ << "    zam::store<" << c_type(p_.scalar) << ">(" << at.base << ", " << at.index << ", " << stored(in)
                 << ");\n";
            break;
        }
        }
    }

    std::string stored(const Instr& in) const {
        const std::string v = name(in.a), zero = single_ ? "0.0f" : "0.0";
        switch (in.mode) {
        case Store::Plain: return v + " * s";
        case Store::ZeroMinus: return zero + " - " + v + " * s";
        case Store::DoubleScale:
            return single_ ? "static_cast<float>(" + v + " * static_cast<double>(s))" : v + " * s";
        case Store::DoubleZeroMinus:
            return single_ ? "static_cast<float>(0.0 - static_cast<double>(s) * " + v + ")" : "0.0 - s * " + v;
        case Store::Unscaled: return v;
        case Store::ZeroConst: break;
        }
        return zero;
    }

    bool blocks() const { return p_.sig.form == Form::Block || p_.sig.form == Form::ScaledBlock; }

    // ---- Lanes: the same instructions on vectors, lane l for the group l
    // places after the one the scalar kernel is given (see lanes_head).

    std::string wrap(const std::string& literal) const { return lanes_ ? "V(" + literal + ")" : literal; }

    static std::string at(const Place& p) {
        if (p.index == "0") return p.base;
        return p.index[0] == '-' ? p.base + " - " + p.index.substr(1) : p.base + " + " + p.index;
    }

    // A first-pass kernel reads the source forwards for lane l at off + l and
    // mirrored at L - off - l; a second-pass kernel reads its group's values
    // and table values from rows (see lanes_prologue).  A radix kernel runs
    // the same group of V::n stages at once: their values are interleaved
    // (value k of lane l at v[k V::n + l]), their twiddles are the same.
    std::string lane_loaded(int slot) const {
        const int n = p_.sig.n;
        if (p_.sig.form == Form::Dct4Second)
            return slot < 2 * n ? "in[" + std::to_string(slot) + "]" : "w[" + std::to_string(slot - 2 * n) + "]";
        if (blocks()) return "io.in(" + std::to_string(slot) + ")";
        if (p_.sig.form == Form::Dct4Radix)
            return slot < 2 * n ? "V::load(v + " + std::to_string(slot) + " * V::n)"
                                : "V(tw[" + std::to_string(slot - 2 * n) + "])";
        const Place pl = place(true, slot);
        return (pl.base == "xb" ? "V::load_rev(" : "V::load(") + at(pl) + ")";
    }

    // Front results of lane l go l places up, mirrored (back) ones l down.
    void lane_store(const Instr& in) {
        if (blocks()) {
            if (in.mode != Store::Unscaled && in.mode != Store::Plain) throw std::runtime_error("lanes: block store");
            out_ << "    io.out(" << in.slot << ", " << name(in.a) << (in.mode == Store::Plain ? " * io.s" : "")
                 << ");\n";
            return;
        }
        if (in.mode != Store::Unscaled) throw std::runtime_error("lanes: only unscaled stores");
        const Place pl = place(false, in.slot);
        const bool back = pl.base == "yb";
        out_ << "    V::" << (back ? "store_rev(" : "store(") << at(pl) << ", " << name(in.a) << ");\n";
    }

    void lanes_prologue() {
        if (blocks()) out_ << "    using V = typename IO::V;\n";
        if (p_.sig.form != Form::Dct4Second) return;
        const int n = p_.sig.n;
        int tw = 0;
        for (const Instr& in : p_.code)
            if (in.op == Opcode::Load && in.slot >= 2 * n) tw = std::max(tw, in.slot - 2 * n + 1);
        out_ << "    V in[" << 2 * n << "], w[" << tw << "];\n    V::rows(v, vrow, " << 2 * n
             << ", in);\n    V::rows(tw, trow, " << tw << ", w);\n";
    }

    static std::string lanes_head(const Signature& sig) {
        const std::string& t = sig.element;
        switch (sig.form) {
        case Form::Dct4First:
            return "template <class V>\nvoid " + sig.function + "(const " + t + "* x, uint32_t off, uint32_t s, uint32_t L, " +
                   t + "* out, uint32_t t) noexcept";
        case Form::Dct4Second:
            return "template <class V>\nvoid " + sig.function + "(const " + t + "* v, ptrdiff_t vrow, const " + t +
                   "* tw, ptrdiff_t trow, " + t + "* y, uint32_t g, uint32_t S, uint32_t L) noexcept";
        case Form::Block:
        case Form::ScaledBlock: return "template <class IO>\nvoid " + sig.function + "(IO io) noexcept";
        case Form::Dct4Radix:
            return "template <class V>\nvoid " + sig.function + "(const " + t + "* v, const " + t + "* tw, " + t +
                   "* front, " + t + "* back, ptrdiff_t step, ptrdiff_t t) noexcept";
        default: throw std::runtime_error("lanes: no lane form for " + sig.function);
        }
    }

    const Program& p_;
    const bool single_;
    const bool lanes_;
    std::ostringstream out_;
    std::unordered_map<int32_t, std::string> names_;
};

} // namespace

std::string codelet_checks(const Program& p) {
    const Signature& sig = p.sig;
    if (sig.form != Form::Codelet && sig.form != Form::BufferedCodelet) return "";
    const bool single = p.scalar == Type::F32;
    auto literal = [&](double v) { return single ? float_literal(static_cast<float>(v)) : double_literal(v); };
    const double inv_n = 1.0 / static_cast<double>(sig.n);
    const double inv_sqrt_n = 1.0 / std::sqrt(static_cast<double>(sig.n));
    std::string out = std::string("    ") + c_type(p.scalar) + " s;\n";
    out += "    if (const ZamStatus st = zam::pick_scale(src, dst, flag, zam::ScaleRule::" +
           std::string(zam::scale_rule_name(sig.rule)) + ", " + literal(inv_n) + ", " + literal(inv_sqrt_n) +
           ", s); st != ZAM_STS_OK)\n        return st;\n";
    if (sig.form == Form::BufferedCodelet) out += "    (void)buffer;  // no work area at this size\n";
    return out;
}

std::string codelet_head(const Signature& sig) { return head(sig); }

std::string double_literal(double v) {
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    return finish_literal(std::string(buf, r.ptr));
}

std::string float_literal(float v) {
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    return finish_literal(std::string(buf, r.ptr)) + "f";
}

std::string print_cpp(const Program& prog) { return Printer(prog, false).run(); }

std::string print_lanes(const Program& prog) { return Printer(prog, true).run(); }

std::string declare_cpp(const Signature& sig) { return head(sig) + ";\n"; }

} // namespace zg
