#include "support.hpp"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <type_traits>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
// Lines end in "\n" on Windows too: ctest reads the list of tests, and the
// checksum lines compare with the baseline as they are.
static const int binary_stdout = _setmode(_fileno(stdout), _O_BINARY);
#endif

namespace zt {

int re_index(Layout l, int n, int k) {
    if (l == kCCS) return 2 * k;
    if (k == 0) return 0;
    if (2 * k == n) return l == kPack ? n - 1 : 1;
    return (l == kPerm && n % 2 == 0) ? 2 * k : 2 * k - 1;
}

namespace {

using CLD = std::complex<LD>;

// y[k] = sum_j x[j] exp(sign * 2 pi i j k / N) in long double, the exponent reduced first.
std::vector<CLD> dft(const std::vector<CLD>& x, int sign) {
    const size_t n = x.size();
    std::vector<CLD> y(n);
    for (size_t k = 0; k < n; ++k)
        for (size_t j = 0; j < n; ++j) {
            const LD a = 2 * 3.141592653589793238462643383279502884L * static_cast<LD>(j * k % n) / static_cast<LD>(n);
            y[k] += x[j] * CLD(std::cos(a), sign * std::sin(a));
        }
    return y;
}

// A codelet with its family's length dispatcher, as the registry lists it.
template <class T>
void add(std::vector<Case>& cases, const char* name, const std::string& prefix, int n, int in_elements,
         int out_elements, int layout, int sign, ZamStatus (*fn)(const T*, T*, uint32_t),
         ZamStatus (*dispatch)(const T*, T*, int32_t, uint32_t)) {
    constexpr bool cplx = std::is_same_v<T, Zam32fc> || std::is_same_v<T, Zam64fc>;
    Case c;
    c.name = name;
    c.family = c.name.substr(4, prefix.size() - 4) + c.name.substr(c.name.rfind('_'));
    c.n = n;
    c.single = std::is_same_v<T, Zam32fc> || std::is_same_v<T, Zam32f>;
    c.call = [fn](const void* s, void* d, uint32_t f) { return fn(static_cast<const T*>(s), static_cast<T*>(d), f); };
    c.dispatch = [dispatch](const void* s, void* d, int32_t len, uint32_t f) {
        return dispatch(static_cast<const T*>(s), static_cast<T*>(d), len, f);
    };
    c.layout = layout == 0 ? kNone : static_cast<Layout>(layout - 1);
    c.direction = sign;
    c.in = cplx ? 2 * in_elements : in_elements;
    c.out = cplx ? 2 * out_elements : out_elements;
    cases.push_back(std::move(c));
}

// The name of the case that undoes c.
std::string inverse_name(const Case& c) {
    static const char* const pairs[][2] = {{"DFTFwd_CToC_", "DFTInv_CToC_"}, {"DFTFwd_RToCCS_", "DFTInv_CCSToR_"},
                                           {"DFTFwd_RToPack_", "DFTInv_PackToR_"}, {"DFTFwd_RToPerm_", "DFTInv_PermToR_"}};
    std::string name = c.name;
    for (const auto& p : pairs)
        for (int i = 0; i < 2; ++i)
            if (name.rfind(std::string("zamg") + p[i], 0) == 0) return name.replace(4, std::strlen(p[i]), p[1 - i]);
    return name;
}

std::vector<Case> build_cases() {
    std::vector<Case> c;
#define ZAM_CODELET(name, T, prefix, n, in, out, rule, layout, sign, dispatcher) \
    add<T>(c, #name, prefix, n, in, out, layout, sign, name, dispatcher);
#include "registry.inc"
    return c;
}

} // namespace

// The input as a complex sequence (a real spectrum made whole by symmetry), its
// DFT, and the output taken from that.
Scalars Case::reference(const Scalars& x) const {
    const bool cplx = family.find("CToC") != std::string::npos, unpack = layout != kNone && direction > 0;
    auto at = [](int i) { return static_cast<size_t>(i); };
    std::vector<CLD> z(at(n));
    for (int k = 0; k < n; ++k) {
        if (cplx) z[at(k)] = {x[at(2 * k)], x[at(2 * k + 1)]};
        else if (!unpack) z[at(k)] = x[at(k)];
        else if (2 * k <= n) {
            const int r = re_index(layout, n, k);
            z[at(k)] = {x[at(r)], k > 0 && 2 * k != n ? x[at(r + 1)] : 0};
            if (k > 0) z[at(n - k)] = std::conj(z[at(k)]);
        }
    }
    const std::vector<CLD> X = dft(z, direction < 0 ? -1 : +1);
    Scalars y(at(out), 0);
    for (int k = 0; k < n; ++k) {
        if (cplx) y[at(2 * k)] = X[at(k)].real(), y[at(2 * k + 1)] = X[at(k)].imag();
        else if (direction == 0) y[at(k)] = X[at(k)].real() + X[at(k)].imag();
        else if (unpack) y[at(k)] = X[at(k)].real();
        else if (2 * k <= n) {
            y[at(re_index(layout, n, k))] = X[at(k)].real();
            if (k > 0 && 2 * k != n) y[at(re_index(layout, n, k) + 1)] = X[at(k)].imag();
        }
    }
    return y;
}

LD Case::scale(uint32_t flag) const {
    const bool by_n = (flag == ZAM_DIV_FWD_BY_N && direction <= 0) || (flag == ZAM_DIV_INV_BY_N && direction >= 0);
    const double s = by_n ? 1.0 / n : flag == ZAM_DIV_BY_SQRTN ? 1.0 / std::sqrt(static_cast<double>(n)) : 1.0;
    return single ? static_cast<LD>(static_cast<float>(s)) : static_cast<LD>(s);
}

Scalars Case::input(uint64_t seed) const {
    Scalars x = random_scalars(seed, static_cast<size_t>(in), single);
    if (layout == kCCS && direction > 0) {
        x[1] = 0;
        if (n % 2 == 0) x[static_cast<size_t>(n + 1)] = 0;
    }
    return x;
}

ZamStatus Case::apply(const Scalars& x, Scalars& y, const std::function<ZamStatus(const void*, void*)>& fn,
                      bool in_place) const {
    auto go = [&](auto zero) {
        std::vector<decltype(zero)> s(x.begin(), x.end()), d(static_cast<size_t>(out));
        if (in_place) s.resize(static_cast<size_t>(std::max(in, out)));
        const ZamStatus st = fn(s.data(), in_place ? s.data() : d.data());
        y.assign(in_place ? s.begin() : d.begin(), (in_place ? s.begin() : d.begin()) + out);
        return st;
    };
    return single ? go(0.0f) : go(0.0);
}

const std::vector<Case>& all_cases() {
    static const std::vector<Case> cases = [] {
        std::vector<Case> c = build_cases();
        std::map<std::string, const Case*> by_name;
        for (const Case& e : c) by_name[e.name] = &e;
        for (Case& e : c) e.inverse = by_name.at(inverse_name(e));
        return c;
    }();
    return cases;
}

const Case& find_case(const std::string& name) {
    for (const Case& c : all_cases())
        if (c.name == name) return c;
    throw std::invalid_argument("no codelet " + name);
}

std::vector<std::string> families() {
    std::vector<std::string> f;
    for (const Case& c : all_cases())
        if (std::find(f.begin(), f.end(), c.family) == f.end()) f.push_back(c.family);
    return f;
}

std::vector<const Case*> cases_of(const std::string& family) {
    std::vector<const Case*> v;
    for (const Case& c : all_cases())
        if (c.family == family) v.push_back(&c);
    return v;
}

Scalars random_scalars(uint64_t seed, size_t count, bool single) {
    uint64_t r = seed * 0x9E3779B97F4A7C15ull + 0x2545F4914F6CDD1Dull;
    Scalars v(count);
    for (LD& x : v) {
        r ^= r >> 12, r ^= r << 25, r ^= r >> 27;  // xorshift64*
        const int64_t bits = static_cast<int64_t>(r * 0x2545F4914F6CDD1Dull);
        x = single ? static_cast<LD>(bits >> 40) * 0x1p-23L : static_cast<LD>(bits >> 11) * 0x1p-52L;
    }
    return v;
}

LD relative_rms(const Scalars& a, const Scalars& b) {
    LD num = 0, den = 0;
    for (size_t i = 0; i < b.size(); ++i) num += (a[i] - b[i]) * (a[i] - b[i]), den += b[i] * b[i];
    return std::sqrt(num / den);
}

bool identical(const Scalars& a, const Scalars& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](LD x, LD y) {
               return x == y && std::signbit(x) == std::signbit(y);
           });
}

std::vector<std::map<std::string, std::string>> read_tsv(const std::string& path) {
    std::ifstream in(path);
    if (!in) throw std::runtime_error("cannot open " + path);
    auto fields = [](std::string line) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::vector<std::string> f;
        std::istringstream ls(line);
        for (std::string s; std::getline(ls, s, '\t');) f.push_back(s);
        return f;
    };
    std::string line;
    std::getline(in, line);
    const std::vector<std::string> header = fields(line);
    std::vector<std::map<std::string, std::string>> rows;
    while (std::getline(in, line)) {
        const std::vector<std::string> f = fields(line);
        if (f.empty()) continue;
        auto& row = rows.emplace_back();
        for (size_t i = 0; i < f.size() && i < header.size(); ++i) row[header[i]] = f[i];
    }
    return rows;
}

} // namespace zt
