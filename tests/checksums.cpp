// Prints one line per codelet, sorted by name: the name and a 64-bit hash of
// the bits of its outputs for every flag on fixed inputs.  The test suite
// compares the lines with tests/baseline/checksums.txt, on Linux and under
// Wine: every codelet's results stay bit for bit as they were, on both.
#include "support.hpp"

#include <algorithm>
#include <cstdio>

using namespace zt;

// Random scalars, the same at a large and at a tiny magnitude (2^100 and
// 2^-120 for float, 2^900 and 2^-1000 for double: many products of the tiny
// ones are subnormal), signed zeros and an impulse.  All exact in the
// element type.
static std::vector<Scalars> inputs(const Case& c) {
    const size_t len = static_cast<size_t>(c.in);
    const Scalars x = random_scalars(2u * static_cast<uint64_t>(c.n) + c.single, len, c.single);
    std::vector<Scalars> sets{x, x, x, Scalars(len, 0.0L), Scalars(len, 0.0L)};
    for (size_t i = 0; i < len; ++i) {
        sets[1][i] *= c.single ? 0x1p100L : 0x1p900L;
        sets[2][i] *= c.single ? 0x1p-120L : 0x1p-1000L;
        if (x[i] < 0) sets[3][i] = -0.0L;
    }
    sets[4][len / 3] = 1;
    return sets;
}

int main() {
    std::vector<std::string> lines;
    for (const Case& c : all_cases()) {
        uint64_t h = 14695981039346656037ull;  // FNV-1a
        auto mix = [&h](const void* p, size_t size) {
            for (size_t i = 0; i < size; ++i) h = (h ^ static_cast<const unsigned char*>(p)[i]) * 1099511628211ull;
        };
        for (const Scalars& x : inputs(c))
            for (uint32_t flag : kFlags) {
                Scalars y;
                if (c.run(x, y, flag) != ZAM_STS_OK) {
                    std::fprintf(stderr, "%s failed with flag %u\n", c.name.c_str(), flag);
                    return 1;
                }
                for (LD v : y) {
                    const float f = static_cast<float>(v);
                    const double d = static_cast<double>(v);
                    c.single ? mix(&f, sizeof f) : mix(&d, sizeof d);
                }
            }
        char line[96];
        std::snprintf(line, sizeof line, "%s %016llx", c.name.c_str(), static_cast<unsigned long long>(h));
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    for (const std::string& line : lines) std::printf("%s\n", line.c_str());
    return 0;
}
