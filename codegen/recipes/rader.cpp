// Rader's algorithm over the folded input.
//
// For a prime N with m = (N-1)/2, the pair sums a[n] = x[n] + x[N-n] and
// differences b[n] = x[n] - x[N-n] (n = 1..m) give every output pair as
//   y[k] = x0 + C[k] + sign*i*S[k],  y[N-k] = x0 + C[k] - sign*i*S[k],
//   C[k] = sum_n a[n] cos(2 pi n k / N),  S[k] = sum_n b[n] sin(2 pi n k / N).
// Indexing n and k by powers of a generator r of the non-zero residues modulo
// +-1 turns both sums into convolutions of length m: C is cyclic (cos is even);
// S is cyclic when m is odd (r = g^2 for a primitive root g, whose powers are
// a set of representatives) and negacyclic when m is even (r = g, and
// r^m = -1 flips the sign of the sine).  Each convolution acts on the real and
// the imaginary part of the data separately (convolution.cpp).  The
// zero-frequency term is folded into x0 - S/(N-1), so the cosine outputs
// include x0; its input, the sum of the a[n], also gives y[0].
//
// How additions weigh against products when a convolution's algorithm is
// chosen is decided per prime, separately for the two halves, so that the
// codelet stays within its length's budget.
#include "index_maps.hpp"
#include "transforms.hpp"

#include "../budgets.hpp"

namespace zg {
namespace {

size_t idx(long i) { return static_cast<size_t>(i); }

std::string weights_text(ConvolutionWeights w) {
    return std::to_string(w.per_add) + ":" + std::to_string(w.per_mul);
}

CxVec rader_with(Context& ctx, const CxVec& x, int sign, ConvolutionWeights wcos, ConvolutionWeights wsin) {
    Graph& g = ctx.g;
    const int n = static_cast<int>(x.size()), m = (n - 1) / 2;
    const long gen = primitive_root(n);
    const long r = m % 2 ? gen * gen % n : gen;
    ctx.note("dft" + std::to_string(n), "rader, generator " + std::to_string(r) + ", cosine weights " +
                                            weights_text(wcos) + ", sine weights " + weights_text(wsin));
    std::vector<int> rep(idx(m)), id(idx(m)), sg(idx(m));
    long p = 1;
    for (int j = 0; j < m; ++j) {
        rep[idx(j)] = static_cast<int>(p);
        id[idx(j)] = static_cast<int>(p <= m ? p : n - p);
        sg[idx(j)] = p <= m ? 1 : -1;
        p = p * r % n;
    }
    CxVec a(idx(m + 1)), b(idx(m + 1));
    // b[n] = sign*(x[n] - x[N-n]) makes y[k] = x0 + C[k] + i*S'[k] in both
    // directions, with positive sine sums for real input.
    for (int j = 1; j <= m; ++j) {
        a[idx(j)] = cadd(g, x[idx(j)], x[idx(n - j)]);
        b[idx(j)] = sign > 0 ? csub(g, x[idx(j)], x[idx(n - j)]) : csub(g, x[idx(n - j)], x[idx(j)]);
    }
    std::vector<DoubleDouble> kc(idx(m)), ks(idx(m));
    for (int t = 0; t < m; ++t) {
        kc[idx(t)] = cos2pi(rep[idx(t)], n);
        ks[idx(t)] = sin2pi(rep[idx(t)], n);
    }
    // Convolution inputs (correlations turned into convolutions by reversing j).
    std::vector<Ref> cre(idx(m)), cim(idx(m)), sre(idx(m)), sim(idx(m));
    for (int j = 0; j < m; ++j) {
        const int jr = (m - j) % m;
        cre[idx(j)] = a[idx(id[idx(jr)])].re;
        cim[idx(j)] = a[idx(id[idx(jr)])].im;
        const Cx bj = b[idx(id[idx(jr)])];
        int s = sg[idx(jr)];
        if (m % 2 == 0 && j > 0) s = -s;  // kappa[l - j] = -kappa[l - j + m]
        sre[idx(j)] = s > 0 ? bj.re : -bj.re;
        sim[idx(j)] = s > 0 ? bj.im : -bj.im;
    }
    Ref sum_re, sum_im;
    const std::vector<Ref> cr = cyclic_convolution(ctx, cre, kc, x[0].re, &sum_re, wcos);
    const std::vector<Ref> ci = cyclic_convolution(ctx, cim, kc, x[0].im, &sum_im, wcos);
    std::vector<Ref> sr, si;
    if (m % 2) {
        sr = cyclic_convolution(ctx, sre, ks, Ref{}, nullptr, wsin);
        si = cyclic_convolution(ctx, sim, ks, Ref{}, nullptr, wsin);
    } else {
        sr = negacyclic_convolution(ctx, sre, ks, wsin);
        si = negacyclic_convolution(ctx, sim, ks, wsin);
    }
    CxVec y(idx(n));
    y[0] = {g.add(x[0].re, sum_re), g.add(x[0].im, sum_im)};
    for (int l = 0; l < m; ++l) {
        const int k = id[idx(l)];
        const Cx c{cr[idx(l)], ci[idx(l)]};
        Cx s{sr[idx(l)], si[idx(l)]};
        if (sg[idx(l)] < 0) s = cneg(s);
        const Cx is = cmul_i(s, +1);
        y[idx(k)] = cadd(g, c, is);
        y[idx(n - k)] = csub(g, c, is);
    }
    return y;
}

} // namespace

bool uses_rader(int n) {
    switch (n) {
    case 13: case 17: case 19: case 29: case 31: case 37:
    case 41: case 43: case 53: case 59: case 61:
        return true;
    default:
        return false;
    }
}

// The weightings of the cosine and the sine convolutions: the cheapest
// (fewest operations) pair within the length's budget, one weighting for both
// halves if any such pair fits, else mixed ones.
CxVec rader_dft(Context& ctx, const CxVec& x, int sign) {
    const int n = static_cast<int>(x.size());
    using Pair = std::pair<ConvolutionWeights, ConvolutionWeights>;
    static constexpr ConvolutionWeights kWeights[] = {{1000, 1}, {1, 1}, {2, 1}, {1, 2}, {3, 1}, {1, 3}, {1, 1000}};
    std::vector<Pair> same, mixed;
    for (ConvolutionWeights wc : kWeights)
        for (ConvolutionWeights ws : kWeights) (wc == ws ? same : mixed).emplace_back(wc, ws);
    Objective objective{1, 1, &budgets_of(n).complex};
    auto measure_in = [&](const std::vector<Pair>& pairs) {
        return [&](size_t i) {
            Graph g;
            Context s = ctx.scratch(g);
            CxVec in(idx(n));
            for (int k = 0; k < n; ++k) in[idx(k)] = {g.input(2 * k), g.input(2 * k + 1)};
            std::vector<Ref> refs;
            for (Cx v : rader_with(s, in, -1, pairs[i].first, pairs[i].second)) {
                refs.push_back(v.re);
                refs.push_back(v.im);
            }
            return count(g, refs);
        };
    };
    const std::string key = "rader" + std::to_string(n);
    Choice c = ctx.planner.choose(key, same.size(), measure_in(same), objective);
    Pair chosen = same[c.index];
    if (!c.fits) chosen = mixed[ctx.planner.choose(key + " mixed", mixed.size(), measure_in(mixed), objective).index];
    return rader_with(ctx, x, sign, chosen.first, chosen.second);
}

} // namespace zg
