#include "support.hpp"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>
#include <stdexcept>
#include <type_traits>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#include <fcntl.h>
#include <io.h>
// Lines end in "\n" on Windows too: ctest reads the list of tests, and the
// checksum lines compare with the baseline as they are.
static const int binary_stdout = _setmode(_fileno(stdout), _O_BINARY);
#else
#include <sys/mman.h>
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
// Not inlined: the registry calls it once per codelet, and inlined those calls
// make one function too large to compile quickly.
template <class T>
[[gnu::noinline]] void add(std::vector<Case>& cases, const char* name, std::string_view prefix, int n, int in_elements,
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

namespace {

template <class T>
WhtCase wht_case(const char* name, int order, ZamStatus (*fn)(const T*, T*, uint32_t, uint8_t*)) {
    constexpr bool single = std::is_same_v<T, Zam32f>;
    WhtCase w{name, order, single, {}, {}, single ? zamgWHTGetBufferSize_32f : zamgWHTGetBufferSize_64f};
    w.call = [fn](const void* s, void* d, uint32_t f, uint8_t* b) {
        return fn(static_cast<const T*>(s), static_cast<T*>(d), f, b);
    };
    w.entry = [](const void* s, void* d, int32_t o, uint32_t f, uint8_t* b) {
        if constexpr (single) return zamgWHT_32f(static_cast<const T*>(s), static_cast<T*>(d), o, f, b);
        else return zamgWHT_64f(static_cast<const T*>(s), static_cast<T*>(d), o, f, b);
    };
    return w;
}

template <class T, class S, auto GetSize, auto Init, auto InitAlloc, auto Free, auto Run>
constexpr Dct4Api dct4_functions(int32_t max_length) {
    return {std::is_same_v<T, Zam32f>, max_length, GetSize,
            [](void** s, int32_t n, uint8_t* b) { return Init(reinterpret_cast<S**>(s), n, b); },
            [](void** s, int32_t n) { return InitAlloc(reinterpret_cast<S**>(s), n); },
            [](void* s) { return Free(static_cast<S*>(s)); },
            [](const void* x, void* y, const void* s) {
                return Run(static_cast<const T*>(x), static_cast<T*>(y), static_cast<const S*>(s));
            }};
}

} // namespace

const std::vector<WhtCase>& wht_cases() {
    static const std::vector<WhtCase> cases = [] {
        std::vector<WhtCase> v;
#define ZAM_WHT(name, T, order) v.push_back(wht_case<T>(#name, order, name));
#include "registry.inc"
        return v;
    }();
    return cases;
}

const Dct4Api& dct4_api(bool single) {
    static constexpr Dct4Api f = dct4_functions<Zam32f, ZamDCT4Spec_32f, zamgDCT4GetSize_32f, zamgDCT4Init_32f,
                                                 zamgDCT4InitAlloc_32f, zamgDCT4Free_32f, zamgDCT4_32f>(1 << 27);
    static constexpr Dct4Api d = dct4_functions<Zam64f, ZamDCT4Spec_64f, zamgDCT4GetSize_64f, zamgDCT4Init_64f,
                                                 zamgDCT4InitAlloc_64f, zamgDCT4Free_64f, zamgDCT4_64f>(1 << 26);
    return single ? f : d;
}

void store_scalars(const Scalars& x, bool single, void* p) {
    auto put = [&](auto v) {
        for (size_t i = 0; i < x.size(); ++i) {
            v = static_cast<decltype(v)>(x[i]);
            std::memcpy(static_cast<uint8_t*>(p) + i * sizeof v, &v, sizeof v);
        }
    };
    single ? put(0.0f) : put(0.0);
}

Scalars load_scalars(const void* p, size_t count, bool single) {
    Scalars x(count);
    auto get = [&](auto v) {
        for (size_t i = 0; i < count; ++i) {
            std::memcpy(&v, static_cast<const uint8_t*>(p) + i * sizeof v, sizeof v);
            x[i] = v;
        }
    };
    single ? get(0.0f) : get(0.0);
    return x;
}

// 64 KiB: a multiple of every page size and of Windows' allocation granule.
constexpr size_t kGuardPage = 65536;

GuardedBytes::GuardedBytes(size_t bytes, Side side) : side_(side), size_(bytes) {
    const size_t span = std::max<size_t>((bytes + kGuardPage - 1) / kGuardPage, side == kStart) * kGuardPage;
    total_ = span + kGuardPage;
    const size_t guard = side == kEnd ? span : 0;
#if defined(_WIN32)
    base_ = static_cast<uint8_t*>(VirtualAlloc(nullptr, total_, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD old;
    const bool guarded = base_ != nullptr && VirtualProtect(base_ + guard, kGuardPage, PAGE_NOACCESS, &old);
#else
    void* m = mmap(nullptr, total_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    base_ = m == MAP_FAILED ? nullptr : static_cast<uint8_t*>(m);
    const bool guarded = base_ != nullptr && mprotect(base_ + guard, kGuardPage, PROT_NONE) == 0;
#endif
    if (!guarded) throw std::runtime_error("no guarded memory");
    data_ = side == kEnd ? base_ + span - bytes : base_ + kGuardPage;
}

GuardedBytes::~GuardedBytes() {
#if defined(_WIN32)
    VirtualFree(base_, 0, MEM_RELEASE);
#else
    munmap(base_, total_);
#endif
}

uint8_t* inaccessible() {
    static const GuardedBytes page(0);
    return page.data();
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
