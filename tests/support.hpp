// Shared helpers of the test suite: the table of every exported codelet,
// long-double references, deterministic input and error measures.
#pragma once

#include "zamgen.h"

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace zt {

using LD = long double;
using CLD = std::complex<LD>;
using Scalars = std::vector<LD>;

template <class T>
using CodeletFn = ZamStatus (*)(const T*, T*, uint32_t);

inline constexpr uint32_t kFlags[] = {ZAM_DIV_FWD_BY_N, ZAM_DIV_INV_BY_N, ZAM_DIV_BY_SQRTN, ZAM_NODIV_BY_ANY};
inline constexpr uint32_t kBadFlags[] = {0u, 3u, 5u, 6u, 7u, 9u, 12u, 15u, 16u, 0x80000000u,
                                         0xFFFFFFFFu, 1u | 4u, 2u | 8u, 1u | 2u | 4u | 8u};

// The packed real spectrum layouts.
enum Layout { kCCS = 0, kPack = 1, kPerm = 2 };
inline constexpr Layout kLayouts[] = {kCCS, kPack, kPerm};
inline const char* layout_name(Layout l) { return l == kCCS ? "CCS" : l == kPack ? "Pack" : "Perm"; }
// Elements of a packed spectrum of length n, and where R[k] (k = 0..n/2) and
// I[k] (0 < k < n/2) are stored, from the layouts' definitions.
inline int packed_size(Layout l, int n) { return l == kCCS ? (n % 2 ? n + 1 : n + 2) : n; }
int re_index(Layout l, int n, int k);
int im_index(Layout l, int n, int k);

// Every codelet, by length (index n - 2).
struct ComplexCodelets {
    int n;
    CodeletFn<Zam32fc> fwd32, inv32;
    CodeletFn<Zam64fc> fwd64, inv64;
};
struct RealCodelets {
    int n;
    CodeletFn<Zam32f> fwd32[3], inv32[3];  // by Layout
    CodeletFn<Zam64f> fwd64[3], inv64[3];
};
struct HartleyCodelets {
    int n;
    CodeletFn<Zam32f> h32;
    CodeletFn<Zam64f> h64;
};
const std::vector<ComplexCodelets>& complex_codelets();
const std::vector<RealCodelets>& real_codelets();
const std::vector<HartleyCodelets>& hartley_codelets();

// exp(sign * 2*pi*i * e / n) with the exponent reduced first.
CLD root_of_unity(long e, long n, int sign);
// y[k] = sum_n x[n] exp(sign*2*pi*i*n*k/N), in long double.
std::vector<CLD> reference_dft(const std::vector<CLD>& x, int sign);

// The scale factor of a flag in the element precision R (direction -1
// forward, +1 inverse, 0 for transforms without direction).
template <class R>
R expected_scale(int n, uint32_t flag, int direction) {
    const double inv_n = 1.0 / n, inv_sqrt = 1.0 / std::sqrt(static_cast<double>(n));
    switch (flag) {
    case ZAM_DIV_FWD_BY_N: return direction > 0 ? R(1) : static_cast<R>(inv_n);
    case ZAM_DIV_INV_BY_N: return direction < 0 ? R(1) : static_cast<R>(inv_n);
    case ZAM_DIV_BY_SQRTN: return static_cast<R>(inv_sqrt);
    default: return R(1);
    }
}

// Every exported codelet through one interface: arrays of scalars (re, im
// interleaved for complex elements), a reference of its unscaled result.
struct Case {
    std::string name;
    int n;
    bool single;     // float scalars (else double)
    int in, out;     // scalars read, written
    int direction;   // for the scale factor
    std::function<ZamStatus(const void*, void*, uint32_t)> call;
    std::function<Scalars(const Scalars&)> reference;
    const Case* inverse = nullptr;  // the case that undoes this one (round trips)

    LD scale(uint32_t flag) const {
        return single ? expected_scale<float>(n, flag, direction) : expected_scale<double>(n, flag, direction);
    }
    // Runs on scalars held as long double, returns the result widened.
    ZamStatus run(const Scalars& x, Scalars& y, uint32_t flag) const;
};
const std::vector<Case>& all_cases();

// Uniform random scalars in [-1, 1) from a fixed seed, representable in R.
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
    Scalars scalars(size_t count, bool single) {
        Scalars v(count);
        for (LD& x : v) x = single ? static_cast<LD>(static_cast<float>(next())) : static_cast<LD>(next());
        return v;
    }

private:
    std::mt19937_64 gen_;
    std::uniform_real_distribution<double> dist_{-1.0, 1.0};
};

// sqrt(sum (a - b)^2 / sum b^2)
LD relative_rms(const Scalars& a, const Scalars& b);

template <class T>
bool bitwise_equal(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// The manifest the codelet compiler wrote: per codelet its length, operation
// counts and budget (-1 where none is set).
struct ManifestRow {
    int n = 0, muls = 0, adds = 0, negs = 0, budget_muls = -1, budget_adds = -1;
};
std::vector<std::pair<std::string, ManifestRow>> read_manifest();

} // namespace zt
