// The Walsh-Hadamard transform in natural (Hadamard) order: log2 N stages of
// sum-and-difference butterflies at spans 1, 2, 4, ..., N/2.  With
// H_N = H_2 (x) H_N/2 this yields y[k] = sum_n (-1)^popcount(k & n) x[n].
// There are no constant products, so single precision stays single
// precision throughout.
#include "families.hpp"

namespace zg {

CodeletGraph wht_graph(int n, Store mode) {
    CodeletGraph c;
    Graph& g = c.g;
    std::vector<Ref> x(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) x[static_cast<size_t>(i)] = g.input(i);
    for (size_t h = 1; h < x.size(); h *= 2)
        for (size_t i = 0; i < x.size(); i += 2 * h)
            for (size_t j = i; j < i + h; ++j) {
                const Ref a = x[j], b = x[j + h];
                x[j] = g.add(a, b);
                x[j + h] = g.sub(a, b);
            }
    for (int i = 0; i < n; ++i) c.outputs.push_back({i, g.absorb_negation(x[static_cast<size_t>(i)]), mode});
    c.plan = "wht" + std::to_string(n) + " = radix-2 network";
    return c;
}

const std::vector<Block>& internal_blocks() {
    static const std::vector<Block> blocks = [] {
        std::vector<Block> b;
        for (int n : {8, 16, 32, 64})
            for (bool scaled : {false, true})
                b.push_back({std::string(scaled ? "wht_scaled_block_" : "wht_block_") + std::to_string(n), n, scaled});
        return b;
    }();
    return blocks;
}

} // namespace zg
