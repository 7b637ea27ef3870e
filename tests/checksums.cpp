// Prints one line per codelet (the Walsh-Hadamard ones included), sorted by name: the name and a 64-bit hash of
// the bits of its outputs for every flag on fixed inputs.  The test suite
// compares the lines with tests/baseline/checksums.txt, on Linux and under
// Wine: every codelet's results stay bit for bit as they were, on both.
#include "support.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace zt;

// Random scalars, the same at a large and at a tiny magnitude (2^100 and
// 2^-120 for float, 2^900 and 2^-1000 for double: many products of the tiny
// ones are subnormal), signed zeros and an impulse.  All exact in the
// element type.
static std::vector<Scalars> inputs(size_t len, int n, bool single) {
    const Scalars x = random_scalars(2u * static_cast<uint64_t>(n) + single, len, single);
    std::vector<Scalars> sets{x, x, x, Scalars(len, 0.0L), Scalars(len, 0.0L)};
    for (size_t i = 0; i < len; ++i) {
        sets[1][i] *= single ? 0x1p100L : 0x1p900L;
        sets[2][i] *= single ? 0x1p-120L : 0x1p-1000L;
        if (x[i] < 0) sets[3][i] = -0.0L;
    }
    sets[4][len / 3] = 1;
    return sets;
}

static void mix(uint64_t& h, const void* p, size_t size) {
    for (size_t i = 0; i < size; ++i) h = (h ^ static_cast<const unsigned char*>(p)[i]) * 1099511628211ull;  // FNV-1a
}

static std::string line(const std::string& name, uint64_t h) {
    char text[96];
    std::snprintf(text, sizeof text, "%s %016llx", name.c_str(), static_cast<unsigned long long>(h));
    return text;
}

// A Walsh-Hadamard codelet of 2^order points, without a work buffer.
template <class T>
static std::string wht(const char* name, ZamStatus (*fn)(const T*, T*, uint32_t, uint8_t*), int order) {
    const size_t n = size_t{1} << order;
    uint64_t h = 14695981039346656037ull;
    for (const Scalars& x : inputs(n, order, sizeof(T) == 4))
        for (uint32_t flag : kFlags) {
            const std::vector<T> in(x.begin(), x.end());
            std::vector<T> out(n);
            if (fn(in.data(), out.data(), flag, nullptr) != ZAM_STS_OK) std::exit(1);
            mix(h, out.data(), n * sizeof(T));
        }
    return line(name, h);
}

int main() {
    std::vector<std::string> lines;
#define ZAM_WHT(name, T, order) lines.push_back(wht<T>(#name, name, order));
#include "registry.inc"
    for (const Case& c : all_cases()) {
        uint64_t h = 14695981039346656037ull;
        for (const Scalars& x : inputs(static_cast<size_t>(c.in), c.n, c.single))
            for (uint32_t flag : kFlags) {
                Scalars y;
                if (c.run(x, y, flag) != ZAM_STS_OK) {
                    std::fprintf(stderr, "%s failed with flag %u\n", c.name.c_str(), flag);
                    return 1;
                }
                for (LD v : y) {
                    const float f = static_cast<float>(v);
                    const double d = static_cast<double>(v);
                    c.single ? mix(h, &f, sizeof f) : mix(h, &d, sizeof d);
                }
            }
        lines.push_back(line(c.name, h));
    }
    std::sort(lines.begin(), lines.end());
    for (const std::string& line : lines) std::printf("%s\n", line.c_str());
    return 0;
}
