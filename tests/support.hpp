// Shared helpers of the test suite: codelet tables, a long-double reference
// DFT, deterministic random input and error measures.
#pragma once

#include "zamgen.h"

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace zt {

using LD = long double;
using CLD = std::complex<LD>;

constexpr LD kPi = 3.141592653589793238462643383279502884L;

template <class T>
using CodeletFn = ZamStatus (*)(const T*, T*, uint32_t);

struct ComplexCodelets {
    int n;
    CodeletFn<Zam32fc> fwd32, inv32;
    CodeletFn<Zam64fc> fwd64, inv64;
};

// Every complex codelet the library exports, by length.
const std::vector<ComplexCodelets>& complex_codelets();

// The packed real spectrum layouts.
enum Layout { kCCS = 0, kPack = 1, kPerm = 2 };
inline constexpr Layout kLayouts[] = {kCCS, kPack, kPerm};
inline const char* layout_name(Layout l) { return l == kCCS ? "CCS" : l == kPack ? "Pack" : "Perm"; }

struct RealCodelets {
    int n;
    CodeletFn<Zam32f> fwd32[3], inv32[3];  // by Layout
    CodeletFn<Zam64f> fwd64[3], inv64[3];
};

// Every real codelet the library exports, by length.
const std::vector<RealCodelets>& real_codelets();

struct HartleyCodelets {
    int n;
    CodeletFn<Zam32f> h32;
    CodeletFn<Zam64f> h64;
};

// Every Hartley codelet the library exports, by length.
const std::vector<HartleyCodelets>& hartley_codelets();

// Elements of a packed spectrum of length n in a layout.
inline int packed_size(Layout l, int n) { return l == kCCS ? (n % 2 ? n + 1 : n + 2) : n; }
// Where R[k] (k = 0..n/2) and I[k] (0 < k < n/2) are stored, from the layout's definition.
int re_index(Layout l, int n, int k);
int im_index(Layout l, int n, int k);

// exp(sign * 2*pi*i * e / n) with the exponent reduced first.
CLD root_of_unity(long e, long n, int sign);

// y[k] = sum_n x[n] exp(sign*2*pi*i*n*k/N), in long double.
std::vector<CLD> reference_dft(const std::vector<CLD>& x, int sign);

// The scale factors of the public contract, in the element precision.
template <class R>
R expected_scale(int n, uint32_t flag, int sign /* -1 forward, +1 inverse, 0 symmetric */) {
    const double inv_n = 1.0 / n, inv_sqrt = 1.0 / std::sqrt(static_cast<double>(n));
    switch (flag) {
    case ZAM_DIV_FWD_BY_N: return sign > 0 ? R(1) : static_cast<R>(inv_n);
    case ZAM_DIV_INV_BY_N: return sign < 0 ? R(1) : static_cast<R>(inv_n);
    case ZAM_DIV_BY_SQRTN: return static_cast<R>(inv_sqrt);
    default: return R(1);
    }
}

inline constexpr uint32_t kFlags[] = {ZAM_DIV_FWD_BY_N, ZAM_DIV_INV_BY_N, ZAM_DIV_BY_SQRTN,
                                      ZAM_NODIV_BY_ANY};
inline constexpr uint32_t kBadFlags[] = {0u, 3u, 5u, 6u, 7u, 9u, 12u, 15u, 16u, 0x80000000u,
                                         0xFFFFFFFFu, 1u | 4u, 2u | 8u, 1u | 2u | 4u | 8u};

// Uniform random scalars in [-1, 1) from a fixed seed.
class Random {
public:
    explicit Random(uint64_t seed) : gen_(seed) {}
    double next() { return dist_(gen_); }
    template <class R>
    std::vector<R> reals(size_t count) {
        std::vector<R> v(count);
        for (R& x : v) x = static_cast<R>(next());
        return v;
    }

private:
    std::mt19937_64 gen_;
    std::uniform_real_distribution<double> dist_{-1.0, 1.0};
};

// sqrt(sum |a - b|^2) / sqrt(sum |b|^2)
LD relative_rms(const std::vector<CLD>& a, const std::vector<CLD>& b);

template <class T>
bool bitwise_equal(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// The manifest the codelet compiler wrote: name -> (n, muls, adds, negs).
struct ManifestRow {
    int n = 0, muls = 0, adds = 0, negs = 0;
};
std::vector<std::pair<std::string, ManifestRow>> read_manifest();

} // namespace zt
