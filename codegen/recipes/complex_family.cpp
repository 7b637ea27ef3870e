#include "cx.hpp"
#include "families.hpp"

namespace zg {

std::vector<Codelet> complex_codelets(int n) {
    std::vector<Codelet> out;
    for (int sign : {-1, +1}) {
        Codelet c(sign < 0 ? "zamgDFTFwd_CToC" : "zamgDFTInv_CToC", n,
                  sign < 0 ? ScaleRule::Forward : ScaleRule::Inverse, true);
        Graph& g = *c.g;
        const std::vector<Ref> in = c.inputs(2 * n);
        CxVec x(static_cast<size_t>(n));
        for (int k = 0; k < n; ++k) x[static_cast<size_t>(k)] = {in[static_cast<size_t>(2 * k)], in[static_cast<size_t>(2 * k + 1)]};
        CxVec y = dft(g, x, sign);
        for (int k = 0; k < n; ++k) {
            c.outs.push_back({2 * k, y[static_cast<size_t>(k)].re});
            c.outs.push_back({2 * k + 1, y[static_cast<size_t>(k)].im});
        }
        out.push_back(std::move(c));
    }
    return out;
}

} // namespace zg
