#include "codelet.hpp"

#include <charconv>
#include <cmath>
#include <sstream>
#include <stdexcept>

namespace zg {
namespace {

std::string finish_literal(std::string s) {
    if (s.find_first_of(".en") == std::string::npos) s += ".0";
    return s;
}

// Marks the nodes that the given values depend on.
std::vector<char> live_nodes(const Graph& g, const std::vector<Ref>& roots) {
    std::vector<char> live(g.size(), 0);
    std::vector<int32_t> stack;
    for (Ref r : roots)
        if (!r.is_zero()) stack.push_back(r.id);
    while (!stack.empty()) {
        int32_t id = stack.back();
        stack.pop_back();
        if (live[static_cast<size_t>(id)]) continue;
        live[static_cast<size_t>(id)] = 1;
        const Node& n = g.node(id);
        switch (n.op) {
        case Op::Add:
        case Op::Sub:
            stack.push_back(n.a);
            stack.push_back(n.b);
            break;
        case Op::MulC:
        case Op::Round:
            stack.push_back(n.a);
            break;
        default:
            break;
        }
    }
    return live;
}

std::vector<Ref> roots_of(const std::vector<Output>& outs) {
    std::vector<Ref> r;
    for (const Output& o : outs) r.push_back(o.v);
    return r;
}

const char* element_type(const Codelet& c, Prec p) {
    if (c.complex_io) return p == Prec::F32 ? "Zam32fc" : "Zam64fc";
    return p == Prec::F32 ? "Zam32f" : "Zam64f";
}

std::string scalar_access(const Codelet& c, const char* array, int slot) {
    std::string s = array;
    s += '[';
    if (c.complex_io) {
        s += std::to_string(slot / 2);
        s += slot % 2 ? "].im" : "].re";
    } else {
        s += std::to_string(slot);
        s += ']';
    }
    return s;
}

} // namespace

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

std::string Codelet::name(Prec p) const {
    std::string s = family + "_" + std::to_string(n) + "_";
    s += p == Prec::F32 ? "32f" : "64f";
    if (complex_io) s += "c";
    return s;
}

Counts count(const Graph& g, const std::vector<Ref>& values) {
    const std::vector<char> live = live_nodes(g, values);
    Counts k;
    for (size_t i = 0; i < g.size(); ++i) {
        if (!live[i]) continue;
        switch (g.node(static_cast<int32_t>(i)).op) {
        case Op::Add:
        case Op::Sub: ++k.adds; break;
        case Op::MulC: ++k.muls; break;
        default: break;
        }
    }
    return k;
}

Counts count(const Graph& g, const std::vector<Output>& outs) {
    Counts k = count(g, roots_of(outs));
    for (const Output& o : outs) {
        if (o.mode == Store::ZeroMinus || o.mode == Store::WideZeroMinus) ++k.adds;
        else if (o.mode != Store::ZeroConst && o.v.neg) ++k.negs;
    }
    return k;
}

std::string emit(const Codelet& c, Prec p) {
    const Graph& g = *c.g;
    const bool single = p == Prec::F32;
    const char* real_t = single ? "float" : "double";
    std::vector<char> live = live_nodes(g, roots_of(c.outs));
    std::vector<std::string> names(g.size());
    std::ostringstream out;

    const double inv_n = 1.0 / static_cast<double>(c.n);
    const double inv_sqrt_n = 1.0 / std::sqrt(static_cast<double>(c.n));
    const std::string lit_n = single ? float_literal(static_cast<float>(inv_n)) : double_literal(inv_n);
    const std::string lit_sqrt =
        single ? float_literal(static_cast<float>(inv_sqrt_n)) : double_literal(inv_sqrt_n);
    const char* rule = c.rule == ScaleRule::Forward   ? "Forward"
                       : c.rule == ScaleRule::Inverse ? "Inverse"
                                                      : "Symmetric";
    const std::string elem = element_type(c, p);

    out << "ZamStatus " << c.name(p) << "(const " << elem << "* src, " << elem
        << "* dst, uint32_t flag)\n{\n";
    out << "    " << real_t << " s;\n";
    out << "    if (const ZamStatus st = zam::pick_scale(src, dst, flag, zam::ScaleRule::" << rule
        << ", " << lit_n << ", " << lit_sqrt << ", s); st != ZAM_STS_OK)\n        return st;\n";

    // Every input is loaded before anything is stored, so src may equal dst.
    for (size_t i = 1; i < g.size(); ++i) {
        const Node& n = g.node(static_cast<int32_t>(i));
        if (!live[i] || n.op != Op::Input) continue;
        names[i] = c.complex_io ? "x" + std::to_string(n.k / 2) + (n.k % 2 ? "i" : "r")
                                : "x" + std::to_string(n.k);
        out << "    const " << real_t << ' ' << names[i] << " = " << scalar_access(c, "src", n.k)
            << ";\n";
    }
    for (size_t i = 1; i < g.size(); ++i) {
        const Node& n = g.node(static_cast<int32_t>(i));
        if (!live[i] || n.op == Op::Input) continue;
        const std::string& a = names[static_cast<size_t>(n.a)];
        if (n.op == Op::Round && !single) {
            names[i] = a;  // double precision: no rounding step
            continue;
        }
        names[i] = "t" + std::to_string(i);
        const char* type = (!single || n.wide) ? "double" : "float";
        out << "    const " << type << ' ' << names[i] << " = ";
        switch (n.op) {
        case Op::Add: out << a << " + " << names[static_cast<size_t>(n.b)]; break;
        case Op::Sub: out << a << " - " << names[static_cast<size_t>(n.b)]; break;
        case Op::MulC: {
            double k = g.constant(n.k);
            if (single && !n.wide) out << a << " * " << float_literal(static_cast<float>(k));
            else out << double_literal(k) << " * " << a;
            break;
        }
        case Op::Round: out << "static_cast<float>(" << a << ")"; break;
        default: throw std::logic_error("unexpected node");
        }
        out << ";\n";
    }
    const std::string zero = single ? "0.0f" : "0.0";
    for (const Output& o : c.outs) {
        out << "    " << scalar_access(c, "dst", o.slot) << " = ";
        std::string v = o.v.is_zero() ? zero : names[static_cast<size_t>(o.v.id)];
        if (o.v.neg) v = "-" + v;
        switch (o.mode) {
        case Store::Plain: out << v << " * s"; break;
        case Store::ZeroMinus: out << zero << " - " << v << " * s"; break;
        case Store::WideScale:
            if (single) out << "static_cast<float>(" << v << " * static_cast<double>(s))";
            else out << v << " * s";
            break;
        case Store::WideZeroMinus:
            if (single) out << "static_cast<float>(0.0 - static_cast<double>(s) * " << v << ")";
            else out << "0.0 - s * " << v;
            break;
        case Store::ZeroConst: out << zero; break;
        }
        out << ";\n";
    }
    out << "    return ZAM_STS_OK;\n}\n";
    return out.str();
}

} // namespace zg
