// Shared helpers of the test suite: the registry of every exported codelet
// with its long-double reference, deterministic inputs and error measures.
#pragma once

#include "zamgen.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace zt {

using LD = long double;
using Scalars = std::vector<LD>;

inline constexpr uint32_t kFlags[] = {ZAM_DIV_FWD_BY_N, ZAM_DIV_INV_BY_N, ZAM_DIV_BY_SQRTN, ZAM_NODIV_BY_ANY};
inline constexpr uint32_t kBadFlags[] = {0u, 3u, 5u, 6u, 7u, 9u, 10u, 12u, 15u, 16u, 0x80000000u, 0xFFFFFFFFu};

// The packed real spectrum layouts: elements for length n, and where R[k]
// (k = 0..n/2) is stored; I[k] (0 < k < n/2) follows it.
enum Layout { kCCS, kPack, kPerm, kNone };
inline int packed_size(Layout l, int n) { return l == kCCS ? n + 2 - n % 2 : n; }
int re_index(Layout l, int n, int k);

// One exported codelet behind a uniform interface: arrays of scalars (re, im
// interleaved for complex elements) and a long-double reference of its
// unscaled result.  Everything but the function is derived from the name.
struct Case {
    std::string name;       // zamgDFTFwd_RToCCS_16_32f
    std::string family;     // DFTFwd_RToCCS_32f: its length dispatcher without "zamg"
    int n = 0;
    bool single = false;    // float scalars (else double)
    int in = 0, out = 0;    // scalars read, written
    int direction = 0;      // -1 forward, +1 inverse, 0 Hartley
    Layout layout = kNone;  // of a real codelet's spectrum
    std::function<ZamStatus(const void*, void*, uint32_t)> call;
    std::function<ZamStatus(const void*, void*, int32_t, uint32_t)> dispatch;  // the family's length dispatcher
    const Case* inverse = nullptr;  // the case that undoes this one (Hartley: itself)

    // The unscaled result for input x, computed in long double.
    Scalars reference(const Scalars& x) const;
    // 1/N or 1/sqrt(N) computed in double, rounded to the element type; or 1.
    LD scale(uint32_t flag) const;
    // Uniform random input in [-1, 1); a CCS spectrum's unread elements 0.
    Scalars input(uint64_t seed) const;
    // fn(src, dst) on x held in the element type; in place, dst is src (an
    // array of max(in, out) elements).  y receives the output, widened.
    ZamStatus apply(const Scalars& x, Scalars& y, const std::function<ZamStatus(const void*, void*)>& fn,
                    bool in_place = false) const;
    ZamStatus run(const Scalars& x, Scalars& y, uint32_t flag, bool in_place = false) const {
        return apply(x, y, [&](const void* s, void* d) { return call(s, d, flag); }, in_place);
    }
};
const std::vector<Case>& all_cases();
const Case& find_case(const std::string& name);
std::vector<std::string> families();  // in registry order
std::vector<const Case*> cases_of(const std::string& family);

// Uniform scalars in [-1, 1) from an integer generator (24 random bits for
// float, 53 for double), so no library routine decides their bits.
Scalars random_scalars(uint64_t seed, size_t count, bool single);
// sqrt(sum (a - b)^2 / sum b^2)
LD relative_rms(const Scalars& a, const Scalars& b);
// The same values, signs of zeros included (and no NaN).
bool identical(const Scalars& a, const Scalars& b);
// The scale factor of a flag in the element type R for a transform of n
// points (direction -1 forward, +1 inverse, 0 none).
template <class R>
R expected_scale(int n, uint32_t flag, int direction) {
    const bool by_n = (flag == ZAM_DIV_FWD_BY_N && direction <= 0) || (flag == ZAM_DIV_INV_BY_N && direction >= 0);
    return static_cast<R>(by_n ? 1.0 / n : flag == ZAM_DIV_BY_SQRTN ? 1.0 / std::sqrt(static_cast<double>(n)) : 1.0);
}

// Uniform values in [-1, 1) from a fixed seed, for the typed tests.
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

template <class T>
bool bitwise_equal(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// Inputs for comparing a vector path with the scalar path: random values,
// huge and tiny ones (subnormal results), signed zeros, and values with
// infinities and NaNs among them.
template <class T>
std::vector<std::vector<T>> path_inputs(size_t n, uint64_t seed)
{
    Random rng(seed);
    std::vector<std::vector<T>> in;
    in.push_back(rng.reals<T>(n));
    for (T scale : {T(sizeof(T) == 4 ? 1e30 : 1e300), T(sizeof(T) == 4 ? 1e-38 : 1e-307)}) {
        in.push_back(rng.reals<T>(n));
        for (T& v : in.back()) v *= scale;
    }
    in.emplace_back(n, T(0));
    for (size_t i = 0; i < n; ++i) in.back()[i] = i % 3 == 0 ? -T(0) : T(0);
    in.push_back(rng.reals<T>(n));
    const T special[] = {std::numeric_limits<T>::infinity(), -std::numeric_limits<T>::infinity(),
                         std::numeric_limits<T>::quiet_NaN()};
    for (size_t i = 0; i < n; i += 7) in.back()[i] = special[i % 3];
    return in;
}

// The same results, a NaN matching any NaN (the sign and payload of a NaN are
// not part of the results).
template <class T>
bool same_results(const std::vector<T>& a, const std::vector<T>& b)
{
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::isnan(a[i]) ? !std::isnan(b[i]) : std::memcmp(&a[i], &b[i], sizeof(T)) != 0) return false;
    return true;
}

// One Walsh-Hadamard codelet with its precision's order entry and buffer-size
// query, behind the same untyped interface.
struct WhtCase {
    std::string name;  // zamgWHT_9_64f
    int order = 0;
    bool single = false;
    std::function<ZamStatus(const void*, void*, uint32_t, uint8_t*)> call;
    std::function<ZamStatus(const void*, void*, int32_t, uint32_t, uint8_t*)> entry;
    ZamStatus (*buffer_size)(int32_t, int32_t*) = nullptr;
    size_t n() const { return size_t{1} << order; }
};
const std::vector<WhtCase>& wht_cases();  // 32f orders 1..13, then 64f

// The DCT-IV functions of one precision, the specification untyped.
struct Dct4Api {
    bool single;
    int32_t max_length;
    ZamStatus (*get_size)(int32_t, uint32_t*);
    ZamStatus (*init)(void**, int32_t, uint8_t*);
    ZamStatus (*init_alloc)(void**, int32_t);
    ZamStatus (*free)(void*);
    ZamStatus (*run)(const void*, void*, const void*);
};
const Dct4Api& dct4_api(bool single);

// Scalars stored as (or loaded from) float or double at any byte address.
void store_scalars(const Scalars& x, bool single, void* p);
Scalars load_scalars(const void* p, size_t count, bool single);

// Exactly `bytes` of memory flush against a page that cannot be touched: the
// bytes end where the page begins (kEnd) or begin where it ends (kStart).
// With no bytes at the end, data() points into the page: any access faults.
class GuardedBytes {
public:
    enum Side { kEnd, kStart };
    explicit GuardedBytes(size_t bytes, Side side = kEnd);
    ~GuardedBytes();
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;
    uint8_t* data() const { return data_; }
    // Where a shorter run of `bytes` starts to touch the page as well.
    uint8_t* flush(size_t bytes) const { return side_ == kEnd ? data_ + size_ - bytes : data_; }

private:
    Side side_;
    uint8_t* base_;
    uint8_t* data_;
    size_t size_, total_;
};
// An address no call may read or write.
uint8_t* inaccessible();

// The rows of a tab-separated file with a header line, as column -> field.
std::vector<std::map<std::string, std::string>> read_tsv(const std::string& path);

} // namespace zt
