#include "support.hpp"

#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace zt {

namespace {

// The per-family tables, filled from the registry the codelet compiler writes.
struct Tables {
    std::vector<ComplexCodelets> complex{63};
    std::vector<RealCodelets> real{63};
    std::vector<HartleyCodelets> hartley{63};
};

int layout_slot(const std::string& family) {
    return family.find("CCS") != std::string::npos ? kCCS : family.find("Pack") != std::string::npos ? kPack : kPerm;
}

void put(Tables& t, const std::string& family, int n, CodeletFn<Zam32fc> fn) {
    auto& e = t.complex[static_cast<size_t>(n - 2)];
    e.n = n;
    (family.find("Fwd") != std::string::npos ? e.fwd32 : e.inv32) = fn;
}
void put(Tables& t, const std::string& family, int n, CodeletFn<Zam64fc> fn) {
    auto& e = t.complex[static_cast<size_t>(n - 2)];
    e.n = n;
    (family.find("Fwd") != std::string::npos ? e.fwd64 : e.inv64) = fn;
}
template <class T>
void put_real(Tables& t, const std::string& family, int n, CodeletFn<T> fn) {
    if (family == "zamgHartley") {
        auto& e = t.hartley[static_cast<size_t>(n - 2)];
        e.n = n;
        if constexpr (std::is_same_v<T, Zam32f>) e.h32 = fn;
        else e.h64 = fn;
        return;
    }
    auto& e = t.real[static_cast<size_t>(n - 2)];
    e.n = n;
    const bool fwd = family.find("Fwd") != std::string::npos;
    const int l = layout_slot(family);
    if constexpr (std::is_same_v<T, Zam32f>) (fwd ? e.fwd32 : e.inv32)[l] = fn;
    else (fwd ? e.fwd64 : e.inv64)[l] = fn;
}
void put(Tables& t, const std::string& family, int n, CodeletFn<Zam32f> fn) { put_real(t, family, n, fn); }
void put(Tables& t, const std::string& family, int n, CodeletFn<Zam64f> fn) { put_real(t, family, n, fn); }

const Tables& tables() {
    static const Tables t = [] {
        Tables t;
#define ZAM_CODELET(name, T, family, n, in, out, rule, layout, sign) put(t, family, n, CodeletFn<T>(name));
#include "registry.inc"
#undef ZAM_CODELET
        return t;
    }();
    return t;
}

} // namespace

const std::vector<ComplexCodelets>& complex_codelets() { return tables().complex; }
const std::vector<RealCodelets>& real_codelets() { return tables().real; }
const std::vector<HartleyCodelets>& hartley_codelets() { return tables().hartley; }

int re_index(Layout l, int n, int k) {
    if (l == kCCS) return 2 * k;
    if (k == 0) return 0;
    if (2 * k == n) return l == kPack ? n - 1 : 1;
    return (l == kPerm && n % 2 == 0) ? 2 * k : 2 * k - 1;
}

int im_index(Layout l, int n, int k) { return re_index(l, n, k) + 1; }

CLD root_of_unity(long e, long n, int sign) {
    long r = e % n;
    if (r < 0) r += n;
    const LD a = 2 * 3.141592653589793238462643383279502884L * static_cast<LD>(r) / static_cast<LD>(n);
    return {std::cos(a), sign * std::sin(a)};
}

std::vector<CLD> reference_dft(const std::vector<CLD>& x, int sign) {
    const long n = static_cast<long>(x.size());
    std::vector<CLD> y(x.size());
    for (long k = 0; k < n; ++k)
        for (long j = 0; j < n; ++j) y[static_cast<size_t>(k)] += x[static_cast<size_t>(j)] * root_of_unity(j * k, n, sign);
    return y;
}

namespace {

// ---- References on scalar arrays -------------------------------------------

Scalars complex_dft(const Scalars& x, int sign) {
    std::vector<CLD> z(x.size() / 2);
    for (size_t k = 0; k < z.size(); ++k) z[k] = {x[2 * k], x[2 * k + 1]};
    Scalars y;
    for (const CLD& v : reference_dft(z, sign)) {
        y.push_back(v.real());
        y.push_back(v.imag());
    }
    return y;
}

Scalars real_forward(const Scalars& x, Layout l) {
    const int n = static_cast<int>(x.size());
    const std::vector<CLD> X = reference_dft(std::vector<CLD>(x.begin(), x.end()), -1);
    Scalars y(static_cast<size_t>(packed_size(l, n)), 0);
    for (int k = 0; 2 * k <= n; ++k) {
        y[static_cast<size_t>(re_index(l, n, k))] = X[static_cast<size_t>(k)].real();
        if (k > 0 && 2 * k != n) y[static_cast<size_t>(im_index(l, n, k))] = X[static_cast<size_t>(k)].imag();
    }
    return y;
}

Scalars real_inverse(const Scalars& packed, Layout l, int n) {
    std::vector<CLD> full(static_cast<size_t>(n));
    for (int k = 0; 2 * k <= n; ++k) {
        const LD re = packed[static_cast<size_t>(re_index(l, n, k))];
        const LD im = k > 0 && 2 * k != n ? packed[static_cast<size_t>(im_index(l, n, k))] : 0;
        full[static_cast<size_t>(k)] = {re, im};
        if (k > 0) full[static_cast<size_t>(n - k)] = {re, -im};
    }
    Scalars x;
    for (const CLD& v : reference_dft(full, +1)) x.push_back(v.real());
    return x;
}

Scalars hartley(const Scalars& x) {
    Scalars y;
    for (const CLD& v : reference_dft(std::vector<CLD>(x.begin(), x.end()), +1)) y.push_back(v.real() + v.imag());
    return y;
}

// A codelet of element type T behind the uniform interface.
template <class T, class S>
std::function<ZamStatus(const void*, void*, uint32_t)> erase(CodeletFn<T> fn) {
    return [fn](const void* s, void* d, uint32_t f) { return fn(static_cast<const T*>(s), static_cast<T*>(d), f); };
}

template <class T, class S>
Case make(std::string name, int n, int in, int out, int dir, CodeletFn<T> fn,
          std::function<Scalars(const Scalars&)> ref) {
    return Case{std::move(name), n, std::is_same_v<S, float>, in, out, dir, erase<T, S>(fn), std::move(ref)};
}

std::vector<Case> build_cases() {
    std::vector<Case> c;
    c.reserve(1134);
    for (const ComplexCodelets& e : complex_codelets()) {
        const std::string n = std::to_string(e.n);
        auto fwd = [](const Scalars& x) { return complex_dft(x, -1); };
        auto inv = [](const Scalars& x) { return complex_dft(x, +1); };
        c.push_back(make<Zam32fc, float>("zamgDFTFwd_CToC_" + n + "_32fc", e.n, 2 * e.n, 2 * e.n, -1, e.fwd32, fwd));
        c.push_back(make<Zam32fc, float>("zamgDFTInv_CToC_" + n + "_32fc", e.n, 2 * e.n, 2 * e.n, +1, e.inv32, inv));
        c.push_back(make<Zam64fc, double>("zamgDFTFwd_CToC_" + n + "_64fc", e.n, 2 * e.n, 2 * e.n, -1, e.fwd64, fwd));
        c.push_back(make<Zam64fc, double>("zamgDFTInv_CToC_" + n + "_64fc", e.n, 2 * e.n, 2 * e.n, +1, e.inv64, inv));
    }
    for (const RealCodelets& e : real_codelets()) {
        const std::string n = std::to_string(e.n);
        for (Layout l : kLayouts) {
            const int p = packed_size(l, e.n), len = e.n;
            auto fwd = [l](const Scalars& x) { return real_forward(x, l); };
            auto inv = [l, len](const Scalars& x) { return real_inverse(x, l, len); };
            const std::string f = std::string("zamgDFTFwd_RTo") + layout_name(l) + "_" + n;
            const std::string i = std::string("zamgDFTInv_") + layout_name(l) + "ToR_" + n;
            c.push_back(make<Zam32f, float>(f + "_32f", e.n, e.n, p, -1, e.fwd32[l], fwd));
            c.push_back(make<Zam32f, float>(i + "_32f", e.n, p, e.n, +1, e.inv32[l], inv));
            c.push_back(make<Zam64f, double>(f + "_64f", e.n, e.n, p, -1, e.fwd64[l], fwd));
            c.push_back(make<Zam64f, double>(i + "_64f", e.n, p, e.n, +1, e.inv64[l], inv));
        }
    }
    for (const HartleyCodelets& e : hartley_codelets()) {
        const std::string n = std::to_string(e.n);
        c.push_back(make<Zam32f, float>("zamgHartley_" + n + "_32f", e.n, e.n, e.n, 0, e.h32, hartley));
        c.push_back(make<Zam64f, double>("zamgHartley_" + n + "_64f", e.n, e.n, e.n, 0, e.h64, hartley));
    }
    // Round-trip partners: forward and inverse are adjacent pairs; Hartley undoes itself.
    for (size_t i = 0; i < c.size(); ++i) {
        if (c[i].direction < 0) c[i].inverse = &c[i + 1];
        if (c[i].direction == 0) c[i].inverse = &c[i];
    }
    return c;
}

} // namespace

ZamStatus Case::run(const Scalars& x, Scalars& y, uint32_t flag) const {
    y.assign(static_cast<size_t>(out), 0);
    ZamStatus st;
    if (single) {
        std::vector<float> s(x.begin(), x.end()), d(static_cast<size_t>(out));
        st = call(s.data(), d.data(), flag);
        std::copy(d.begin(), d.end(), y.begin());
    } else {
        std::vector<double> s(x.begin(), x.end()), d(static_cast<size_t>(out));
        st = call(s.data(), d.data(), flag);
        std::copy(d.begin(), d.end(), y.begin());
    }
    return st;
}

const std::vector<Case>& all_cases() {
    static const std::vector<Case> cases = build_cases();
    return cases;
}

LD relative_rms(const Scalars& a, const Scalars& b) {
    LD num = 0, den = 0;
    for (size_t i = 0; i < b.size(); ++i) {
        num += (a[i] - b[i]) * (a[i] - b[i]);
        den += b[i] * b[i];
    }
    return std::sqrt(num / den);
}

std::vector<std::pair<std::string, ManifestRow>> read_manifest() {
    std::ifstream in(ZAMGEN_MANIFEST);
    if (!in) throw std::runtime_error(std::string("cannot open ") + ZAMGEN_MANIFEST);
    std::string line;
    std::getline(in, line);
    std::vector<std::string> header;
    for (std::istringstream hs(line); std::getline(hs, line, '\t');) header.push_back(line);
    std::vector<std::pair<std::string, ManifestRow>> rows;
    while (std::getline(in, line)) {
        std::istringstream ls(line);
        std::string name, cell;
        ManifestRow r;
        for (size_t col = 0; col < header.size() && std::getline(ls, cell, '\t'); ++col) {
            const int v = cell == "-" || col == 0 || header[col] == "plan" ? -1 : std::atoi(cell.c_str());
            const std::string& h = header[col];
            if (h == "name") name = cell;
            else if (h == "n") r.n = v;
            else if (h == "muls") r.muls = v;
            else if (h == "adds") r.adds = v;
            else if (h == "negs") r.negs = v;
            else if (h == "budget_muls") r.budget_muls = v;
            else if (h == "budget_adds") r.budget_adds = v;
        }
        rows.emplace_back(name, r);
    }
    return rows;
}

} // namespace zt
