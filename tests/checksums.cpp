// Prints one hash per family and precision over the outputs of every codelet
// for fixed inputs and every flag.  CI runs it on Linux and under Wine and
// requires the same lines: the library's results are bit-identical on both.
#include "support.hpp"

#include <cstdio>
#include <cstring>

namespace {

using namespace zt;

// Inputs from an integer generator, so no library routine decides their bits.
template <class S>
std::vector<S> inputs(size_t count, uint64_t seed) {
    std::vector<S> v(count);
    uint64_t x = seed * 0x9E3779B97F4A7C15ull + 1;
    for (S& s : v) {
        x ^= x << 13;
        x ^= x >> 7;
        x ^= x << 17;
        s = static_cast<S>(static_cast<int64_t>(x >> 11) - (int64_t(1) << 52)) / static_cast<S>(int64_t(1) << 52);
    }
    return v;
}

struct Hash {
    uint64_t h = 1469598103934665603ull;
    template <class T>
    void add(const std::vector<T>& v) {
        const auto* p = reinterpret_cast<const unsigned char*>(v.data());
        for (size_t i = 0; i < v.size() * sizeof(T); ++i) h = (h ^ p[i]) * 1099511628211ull;
    }
};

template <class T, class S>
void run(Hash& hash, CodeletFn<T> fn, int in, int out, uint64_t seed) {
    const auto s = inputs<S>(static_cast<size_t>(in) * sizeof(T) / sizeof(S), seed);
    std::vector<T> x(static_cast<size_t>(in)), y(static_cast<size_t>(out));
    std::memcpy(x.data(), s.data(), x.size() * sizeof(T));
    for (uint32_t flag : kFlags) {
        if (fn(x.data(), y.data(), flag) != ZAM_STS_OK) std::printf("status error\n");
        hash.add(y);
    }
}

} // namespace

int main() {
    Hash c32, c64, r32, r64, h32, h64;
    for (const ComplexCodelets& e : complex_codelets()) {
        run<Zam32fc, float>(c32, e.fwd32, e.n, e.n, 1);
        run<Zam32fc, float>(c32, e.inv32, e.n, e.n, 2);
        run<Zam64fc, double>(c64, e.fwd64, e.n, e.n, 1);
        run<Zam64fc, double>(c64, e.inv64, e.n, e.n, 2);
    }
    for (const RealCodelets& e : real_codelets()) {
        for (Layout l : kLayouts) {
            const int p = packed_size(l, e.n);
            run<Zam32f, float>(r32, e.fwd32[l], e.n, p, 3);
            run<Zam32f, float>(r32, e.inv32[l], p, e.n, 4);
            run<Zam64f, double>(r64, e.fwd64[l], e.n, p, 3);
            run<Zam64f, double>(r64, e.inv64[l], p, e.n, 4);
        }
    }
    for (const HartleyCodelets& e : hartley_codelets()) {
        run<Zam32f, float>(h32, e.h32, e.n, e.n, 5);
        run<Zam64f, double>(h64, e.h64, e.n, e.n, 5);
    }
    std::printf("complex 32fc %016llx\ncomplex 64fc %016llx\n", (unsigned long long)c32.h, (unsigned long long)c64.h);
    std::printf("real 32f %016llx\nreal 64f %016llx\n", (unsigned long long)r32.h, (unsigned long long)r64.h);
    std::printf("hartley 32f %016llx\nhartley 64f %016llx\n", (unsigned long long)h32.h, (unsigned long long)h64.h);
    return 0;
}
