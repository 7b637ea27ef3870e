// The discrete Hartley codelets: y[k] = s * sum_n x[n] (cos + sin)(2 pi n k / N).
//
// With C[k] = sum x[n] cos and S[k] = sum x[n] sin, y[k] = C[k] + S[k] and
// y[N-k] = C[k] - S[k]: the half spectrum of the transform with exponent +1
// (real part C, imaginary part S) and one sum and one difference per pair.
// The butterfly lengths 2 and 4, the direct length 3 and the length-8 network
// follow their fixed formulas.
#include "families.hpp"
#include "transforms.hpp"

#include <tuple>

namespace zg {
namespace {

size_t idx(int i) { return static_cast<size_t>(i); }

bool small_hartley(Graph& g, const std::vector<Ref>& x, std::vector<Ref>& y) {
    switch (x.size()) {
    case 2:
        y[0] = g.add(x[0], x[1]);
        y[1] = g.sub(x[0], x[1]);
        return true;
    case 3: {
        const Ref a = g.add(x[1], x[2]);
        const Ref t = g.round(g.sub(x[0], g.mul(0.5, a)));
        const Ref u = g.round(g.mul(sin2pi(1, 3), g.sub(x[1], x[2])));
        y[0] = g.add(x[0], a);
        y[1] = g.add(t, u);
        y[2] = g.sub(t, u);
        return true;
    }
    case 4: {
        const Ref e = g.add(x[0], x[2]), f = g.sub(x[0], x[2]), p = g.add(x[1], x[3]), q = g.sub(x[1], x[3]);
        y = {g.add(p, e), g.add(q, f), g.sub(e, p), g.sub(f, q)};  // braces evaluate in order
        return true;
    }
    case 8: {
        const DoubleDouble h = cos2pi(1, 8);
        const Ref e = g.add(x[0], x[4]), f = g.sub(x[0], x[4]), gg = g.add(x[2], x[6]), hh = g.sub(x[2], x[6]);
        const Ref p = g.add(x[1], x[5]), q = g.add(x[3], x[7]);
        const Ref r = g.round(g.mul(h, g.sub(x[1], x[5]))), w = g.round(g.mul(h, g.sub(x[3], x[7])));
        const Ref d = g.sub(r, w), c = g.add(r, w);
        const Ref eg = g.add(e, gg), emg = g.sub(e, gg), pq = g.add(p, q), pmq = g.sub(p, q);
        const Ref fd = g.add(f, d), fmd = g.sub(f, d), hc = g.add(hh, c), hmc = g.sub(hh, c);
        for (const auto& [sum, diff, a, b] : {std::tuple{0, 4, eg, pq}, {2, 6, emg, pmq}, {1, 7, fd, hc}}) {
            y[idx(sum)] = g.add(a, b);
            y[idx(diff)] = g.sub(a, b);
        }
        y[3] = g.sub(fmd, hmc);
        y[5] = g.add(fmd, hmc);
        return true;
    }
    default:
        return false;
    }
}

} // namespace

CodeletGraph hartley_codelet(Planner& planner, int n) {
    CodeletGraph c;
    PlanNotes notes;
    Context ctx{c.g, planner, &notes};
    Graph& g = c.g;
    std::vector<Ref> x(idx(n));
    for (int i = 0; i < n; ++i) x[idx(i)] = g.input(i);
    std::vector<Ref> y(idx(n));
    if (small_hartley(g, x, y)) {
        ctx.note("hartley" + std::to_string(n), "fixed formula");
    } else {
        const CxVec X = rdft(ctx, x, +1);  // X[k] = C[k] + i S[k]
        y[0] = X[0].re;
        for (int k = 1; 2 * k <= n; ++k) {
            if (2 * k == n) {
                y[idx(k)] = X[idx(k)].re;
                continue;
            }
            y[idx(k)] = g.add(X[idx(k)].re, X[idx(k)].im);
            y[idx(n - k)] = g.sub(X[idx(k)].re, X[idx(k)].im);
        }
    }
    for (int i = 0; i < n; ++i) c.outputs.push_back({i, g.absorb_negation(y[idx(i)])});
    c.plan = notes.line();
    return c;
}

} // namespace zg
