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
// the imaginary part of the data separately, with constants computed here:
//
//  - cyclic: real DFT of length m, a product with the kernel's spectrum
//    (already divided by m), inverse real DFT.  The zero-frequency term is
//    folded into x0 - S/(N-1), so the outputs include x0; its input, the sum of
//    the a[n], also gives y[0].
//  - negacyclic, m = (P/2) q with q odd: the odd frequencies of the
//    antiperiodic extension (length 2m) on a P x q prime-factor map.  The P
//    direction is an odd-frequency real transform of length P/2 (free for
//    P = 4); the q direction is a cyclic convolution of complex values with a
//    complex kernel.
//
// Every convolution picks its algorithm (below) by operation count; how
// additions weigh against products is chosen per prime, separately for the two
// halves, so that the codelet stays within its length's budget.
#include "rader.hpp"

#include "real.hpp"
#include "../budgets.hpp"
#include "../codelet.hpp"

#include <map>
#include <numeric>
#include <tuple>
#include <stdexcept>

namespace zg {
namespace {

size_t idx(long i) { return static_cast<size_t>(i); }

struct CxDD {
    DD re, im;
};

CxDD cmul(CxDD a, CxDD b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
CxDD cscale(CxDD a, DD s) { return {a.re * s, a.im * s}; }
CxDD cplus(CxDD a, CxDD b) { return {a.re + b.re, a.im + b.im}; }
CxDD cminus(CxDD a, CxDD b) { return {a.re - b.re, a.im - b.im}; }
// exp(sign * 2 pi i * e / n)
CxDD unit(long e, long n, int sign) {
    DD s = sin2pi(e, n);
    return {cos2pi(e, n), sign > 0 ? s : -s};
}

// Data times a constant: four products, each part one double combination.
Cx cmulc(Graph& g, Cx a, CxDD k) {
    return {g.round(g.sub(g.mul(k.re, a.re), g.mul(k.im, a.im))),
            g.round(g.add(g.mul(k.re, a.im), g.mul(k.im, a.re)))};
}

// ---- Cyclic convolutions with a fixed kernel ------------------------------
//
// conv(u, kappa)[l] = sum_j u[j] kappa[(l - j) mod L], for real data with a real
// kernel or complex data with a complex kernel.  Algorithms:
//   Dft       transform, product with the kernel's spectrum, inverse transform;
//   Three     length 3 in four products: the sum times the kernel's sum, and
//             in Q(w), w^2 + w + 1 = 0, x*y = -x1 y1' - (x0-x1)(y0'-y1') w - x0 y0' w^2
//             with y' = y/(1-w), whose terms times (1-w) have the coefficient
//             vectors (1,-1,0), (0,1,-1), (-1,0,1): no products by 2 or 3;
//   Nested    L = L1 * L2: transforms of length L2 along the rows (prime-factor
//             map without twiddles when L1, L2 are coprime, else Cooley-Tukey
//             with twiddles), a convolution of length L1 down each needed
//             column (real for the self-conjugate columns of real data), and
//             the inverse row transforms.
// The cheapest algorithm per length and kind is found by building each
// candidate on a scratch graph.

// How candidate algorithms are compared: wa * additions + wm * products.
struct Weights {
    int wa = 1000, wm = 1;
    auto operator<=>(const Weights&) const = default;
};
Weights g_weights;

struct WeightsScope {
    Weights saved;
    explicit WeightsScope(Weights w) : saved(g_weights) { g_weights = w; }
    ~WeightsScope() { g_weights = saved; }
};

struct ConvPlan {
    enum Kind { Scalar, Dft, Three, Nested } kind = Dft;
    int l1 = 0;  // Nested: column convolution length (rows have length L / l1)
};

using Kernel = std::vector<CxDD>;

ConvPlan best_plan(int len, bool real);
CxVec conv_with(Graph& g, const CxVec& u, const Kernel& kappa, bool real, Ref base_re, Ref base_im,
                Cx* sum, ConvPlan p);

CxVec conv(Graph& g, const CxVec& u, const Kernel& kappa, bool real, Ref base_re, Ref base_im, Cx* sum) {
    return conv_with(g, u, kappa, real, base_re, base_im, sum, best_plan(static_cast<int>(u.size()), real));
}

// The kernel's DFT of length L (exponent -1).
Kernel spectrum(const Kernel& kappa) {
    const int L = static_cast<int>(kappa.size());
    Kernel K(idx(L));
    for (int k = 0; k < L; ++k) {
        CxDD acc{DD(0.0), DD(0.0)};
        for (int t = 0; t < L; ++t) acc = cplus(acc, cmul(kappa[idx(t)], unit(static_cast<long>(k) * t, L, -1)));
        K[idx(k)] = acc;
    }
    return K;
}

CxVec conv_dft(Graph& g, const CxVec& u, const Kernel& kappa, bool real, Ref base_re, Ref base_im, Cx* sum) {
    const int L = static_cast<int>(u.size());
    const Kernel K = spectrum(kappa);
    const DD inv = DD(1.0) / DD(static_cast<double>(L));
    if (real) {
        std::vector<Ref> ur(idx(L));
        for (int j = 0; j < L; ++j) ur[idx(j)] = u[idx(j)].re;
        CxVec U = rdft(g, ur, -1);
        CxVec Z(U.size());
        for (int k = 0; 2 * k <= L; ++k) {
            const CxDD Kk = cscale(K[idx(k)], inv);
            if (k == 0) Z[0] = {g.round(g.add(base_re, g.mul(Kk.re, U[0].re))), Ref{}};
            else if (2 * k == L) Z[idx(k)] = {g.round(g.mul(Kk.re, U[idx(k)].re)), Ref{}};
            else Z[idx(k)] = cmulc(g, U[idx(k)], cscale(Kk, DD(2.0)));  // doubled for the inverse
        }
        if (sum) *sum = {U[0].re, Ref{}};
        std::vector<Ref> v = irdft(g, Z, L, +1, true);
        CxVec out(idx(L));
        for (int j = 0; j < L; ++j) out[idx(j)] = {v[idx(j)], Ref{}};
        return out;
    }
    CxVec U = dft(g, u, -1);
    CxVec Z(idx(L));
    for (int k = 0; k < L; ++k) {
        const CxDD Kk = cscale(K[idx(k)], inv);
        if (k == 0)
            Z[0] = {g.round(g.add(base_re, g.sub(g.mul(Kk.re, U[0].re), g.mul(Kk.im, U[0].im)))),
                    g.round(g.add(base_im, g.add(g.mul(Kk.re, U[0].im), g.mul(Kk.im, U[0].re))))};
        else
            Z[idx(k)] = cmulc(g, U[idx(k)], Kk);
    }
    if (sum) *sum = U[0];
    return dft(g, Z, +1);
}

CxVec conv_three(Graph& g, const CxVec& a, const Kernel& kappa, bool real, Ref base_re, Ref base_im, Cx* sum) {
    const CxDD third{DD(1.0) / DD(3.0), DD(0.0)};
    CxDD y0 = cminus(kappa[0], kappa[2]), y1 = cminus(kappa[1], kappa[2]);
    CxDD y0p = cmul(cminus(cscale(y0, DD(2.0)), y1), third);
    CxDD y1p = cmul(cplus(y0, y1), third);
    CxDD k0 = cmul(cplus(cplus(kappa[0], kappa[1]), kappa[2]), third);
    CxDD ka = cscale(y1p, DD(-1.0)), kb = cminus(y1p, y0p), kc = y0p;
    Cx s = cadd(g, cadd(g, a[0], a[1]), a[2]);
    Cx x0 = csub(g, a[0], a[2]), x1 = csub(g, a[1], a[2]), x01 = csub(g, a[0], a[1]);
    Cx p{g.round(g.add(base_re, g.sub(g.mul(k0.re, s.re), g.mul(k0.im, s.im)))),
         g.round(g.add(base_im, g.add(g.mul(k0.re, s.im), g.mul(k0.im, s.re))))};
    Cx ma = cmulc(g, x1, ka), mb = cmulc(g, x01, kb), mc = cmulc(g, x0, kc);
    if (real) {
        p.im = ma.im = mb.im = mc.im = Ref{};
    }
    if (sum) *sum = s;
    return {cadd(g, cadd(g, p, ma), mc), cadd(g, csub(g, p, ma), mb), csub(g, csub(g, p, mb), mc)};
}

CxVec conv_nested(Graph& g, const CxVec& u, const Kernel& kappa, bool real, Ref base_re, Ref base_im,
                  Cx* sum, int l1) {
    const int L = static_cast<int>(u.size()), l2 = L / l1;
    const bool pfa = std::gcd(l1, l2) == 1;
    auto pos = [&](int a, int b) { return pfa ? (l2 * a + l1 * b) % L : a + l1 * b; };
    auto freq = [&](int k1, int k2) {
        if (!pfa) return k2 + l2 * k1;
        int k = 0;
        while (k % l1 != k1 || k % l2 != k2) ++k;
        return k;
    };
    const Kernel K = spectrum(kappa);
    const int cols = real ? l2 / 2 + 1 : l2;
    // Row transforms.
    std::vector<CxVec> U(idx(l1));
    for (int a = 0; a < l1; ++a) {
        if (real) {
            std::vector<Ref> r(idx(l2));
            for (int b = 0; b < l2; ++b) r[idx(b)] = u[idx(pos(a, b))].re;
            U[idx(a)] = rdft(g, r, -1);
        } else {
            CxVec r(idx(l2));
            for (int b = 0; b < l2; ++b) r[idx(b)] = u[idx(pos(a, b))];
            U[idx(a)] = dft(g, r, -1);
        }
    }
    std::vector<CxVec> Z(idx(l1), CxVec(idx(cols)));
    for (int k2 = 0; k2 < cols; ++k2) {
        const bool self_conj = real && (k2 == 0 || (pfa && 2 * k2 == l2));
        const bool doubled = real && !(k2 == 0 || 2 * k2 == l2);
        // Column kernel: (1/L) sum_k1 K[freq(k1,k2)] W_l1^(-t k1), doubled for
        // middle columns of real data (the row inverse takes them doubled).
        Kernel kc(idx(l1));
        for (int t = 0; t < l1; ++t) {
            CxDD acc{DD(0.0), DD(0.0)};
            for (int k1 = 0; k1 < l1; ++k1)
                acc = cplus(acc, cmul(K[idx(freq(k1, k2))], unit(static_cast<long>(t) * k1, l1, +1)));
            kc[idx(t)] = cscale(acc, DD(doubled ? 2.0 : 1.0) / DD(static_cast<double>(L)));
            if (self_conj) kc[idx(t)].im = DD(0.0);
        }
        CxVec w(idx(l1));
        for (int a = 0; a < l1; ++a) {
            w[idx(a)] = U[idx(a)][idx(k2)];
            if (!pfa) w[idx(a)] = twiddle(g, w[idx(a)], static_cast<long>(a) * k2, L, -1);
        }
        CxVec c = k2 == 0 ? conv(g, w, kc, self_conj, base_re, base_im, sum)
                          : conv(g, w, kc, self_conj, Ref{}, Ref{}, nullptr);
        for (int a = 0; a < l1; ++a) {
            Cx z = c[idx(a)];
            if (!pfa) z = twiddle(g, z, -static_cast<long>(a) * k2, L, -1);
            Z[idx(a)][idx(k2)] = z;
        }
    }
    CxVec out(idx(L));
    for (int a = 0; a < l1; ++a) {
        if (real) {
            std::vector<Ref> r = irdft(g, Z[idx(a)], l2, +1, true);
            for (int b = 0; b < l2; ++b) out[idx(pos(a, b))] = {r[idx(b)], Ref{}};
        } else {
            CxVec r = dft(g, Z[idx(a)], +1);
            for (int b = 0; b < l2; ++b) out[idx(pos(a, b))] = r[idx(b)];
        }
    }
    return out;
}

CxVec conv_with(Graph& g, const CxVec& u, const Kernel& kappa, bool real, Ref base_re, Ref base_im,
                Cx* sum, ConvPlan p) {
    switch (p.kind) {
    case ConvPlan::Scalar: {
        Cx v = cmulc(g, u[0], kappa[0]);
        if (real) v.im = Ref{};
        if (sum) *sum = u[0];
        return {Cx{g.round(g.add(base_re, v.re)), g.round(g.add(base_im, v.im))}};
    }
    case ConvPlan::Three: return conv_three(g, u, kappa, real, base_re, base_im, sum);
    case ConvPlan::Nested: return conv_nested(g, u, kappa, real, base_re, base_im, sum, p.l1);
    default: return conv_dft(g, u, kappa, real, base_re, base_im, sum);
    }
}

// Live (additions, products) that the values need.
std::pair<int, int> live_cost(const Graph& g, const CxVec& y) {
    std::vector<Ref> refs;
    for (Cx v : y) {
        refs.push_back(v.re);
        refs.push_back(v.im);
    }
    const Counts k = count(g, refs);
    return {k.adds, k.muls};
}

ConvPlan best_plan(int len, bool real) {
    static std::map<std::tuple<int, bool, Weights>, ConvPlan> memo;
    const auto key = std::make_tuple(len, real, g_weights);
    if (auto it = memo.find(key); it != memo.end()) return it->second;
    std::vector<ConvPlan> cands;
    if (len == 1) cands.push_back({ConvPlan::Scalar, 0});
    else cands.push_back({ConvPlan::Dft, 0});
    if (len == 3) cands.push_back({ConvPlan::Three, 0});
    for (int l1 = 2; l1 < len; ++l1)
        if (len % l1 == 0) cands.push_back({ConvPlan::Nested, l1});
    ConvPlan best = cands[0];
    long best_cost = -1;
    for (ConvPlan p : cands) {
        Graph g;
        CxVec u(idx(len));
        Kernel k(idx(len));
        for (int j = 0; j < len; ++j) {
            u[idx(j)] = {g.input(2 * j), real ? Ref{} : g.input(2 * j + 1)};
            // A generic kernel: no zero or unit values, no symmetry.
            k[idx(j)] = {cos2pi(3 * j + 1, 7 * len + 3), real ? DD(0.0) : sin2pi(5 * j + 2, 11 * len + 1)};
        }
        Ref br = g.input(2 * len), bi = real ? Ref{} : g.input(2 * len + 1);
        Cx sum;
        CxVec v = conv_with(g, u, k, real, br, bi, &sum, p);
        v.push_back(sum);
        const auto [adds, muls] = live_cost(g, v);
        const long c = static_cast<long>(g_weights.wa) * adds + static_cast<long>(g_weights.wm) * muls;
        if (best_cost < 0 || c < best_cost) {
            best_cost = c;
            best = p;
        }
    }
    memo[key] = best;
    return best;
}

// Real cyclic convolution plus base; *sum = sum of u.
std::vector<Ref> cyclic_conv(Graph& g, const std::vector<Ref>& u, const std::vector<DD>& kappa, Ref base,
                             Ref* sum) {
    CxVec cu(u.size());
    Kernel k(kappa.size());
    for (size_t i = 0; i < u.size(); ++i) {
        cu[i] = {u[i], Ref{}};
        k[i] = {kappa[i], DD(0.0)};
    }
    Cx s;
    CxVec v = conv(g, cu, k, true, base, Ref{}, &s);
    if (sum) *sum = s.re;
    std::vector<Ref> out(u.size());
    for (size_t i = 0; i < u.size(); ++i) out[i] = v[i].re;
    return out;
}

// v[l] = sum_j u[j] kappa~[l - j] with kappa~ antiperiodic (kappa~[t+m] = -kappa~[t]).
std::vector<Ref> negacyclic_conv(Graph& g, const std::vector<Ref>& u, const std::vector<DD>& kappa) {
    const int m = static_cast<int>(u.size());
    int hp = 1;
    while (m % (2 * hp) == 0) hp *= 2;
    const int q = m / hp, P = 2 * hp, M = 2 * m;
    auto ext = [&](int i) { i %= M; return i < m ? u[idx(i)] : -u[idx(i - m)]; };
    auto kext = [&](int i) { i %= M; return i < m ? kappa[idx(i)] : -kappa[idx(i - m)]; };
    const int nj = hp / 2;  // odd frequencies kept per row
    // Row transforms of the data and the kernel: Y[i2][j1].
    std::vector<CxVec> Y(idx(q));
    std::vector<std::vector<CxDD>> Yk(idx(q), std::vector<CxDD>(idx(nj)));
    for (int i2 = 0; i2 < q; ++i2) {
        std::vector<Ref> s(idx(hp));
        for (int i1 = 0; i1 < hp; ++i1) s[idx(i1)] = ext(q * i1 + P * i2);
        Y[idx(i2)] = odd_rdft(g, s, -1);
        for (int j1 = 0; j1 < nj; ++j1) {
            CxDD acc{DD(0.0), DD(0.0)};
            for (int i1 = 0; i1 < hp; ++i1)
                acc = cplus(acc, cscale(unit(static_cast<long>(i1) * (2 * j1 + 1), 2 * hp, -1), kext(q * i1 + P * i2)));
            // 2/P for the transform pair, doubled for the half inverse sum.
            Yk[idx(i2)][idx(j1)] = cscale(acc, DD(4.0) / DD(static_cast<double>(P)));
        }
    }
    // Cyclic convolutions along i2, one per kept odd frequency.
    std::vector<CxVec> R(idx(nj));
    for (int j1 = 0; j1 < nj; ++j1) {
        CxVec a(idx(q));
        std::vector<CxDD> k(idx(q));
        for (int i2 = 0; i2 < q; ++i2) {
            a[idx(i2)] = Y[idx(i2)][idx(j1)];
            k[idx(i2)] = Yk[idx(i2)][idx(j1)];
        }
        R[idx(j1)] = conv(g, a, k, false, Ref{}, Ref{}, nullptr);
    }
    std::vector<Ref> v(idx(m));
    for (int i2 = 0; i2 < q; ++i2) {
        CxVec r(idx(nj));
        for (int j1 = 0; j1 < nj; ++j1) r[idx(j1)] = R[idx(j1)][idx(i2)];
        std::vector<Ref> s = odd_irdft(g, r, hp, -1, true);
        for (int i1 = 0; i1 < hp; ++i1) {
            const int i = (q * i1 + P * i2) % M;
            if (i < m) v[idx(i)] = s[idx(i1)];
            else v[idx(i - m)] = -s[idx(i1)];
        }
    }
    return v;
}

int primitive_root(int n) {
    for (int r = 2; r < n; ++r) {
        long x = 1;
        int order = 0;
        do {
            x = x * r % n;
            ++order;
        } while (x != 1);
        if (order == n - 1) return r;
    }
    throw std::logic_error("no primitive root");
}

CxVec rader_with(Graph& g, const CxVec& x, int sign, Weights wcos, Weights wsin) {
    const int n = static_cast<int>(x.size()), m = (n - 1) / 2;
    const long gen = primitive_root(n);
    const long r = m % 2 ? gen * gen % n : gen;
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
    std::vector<DD> kc(idx(m)), ks(idx(m));
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
        Cx bj = b[idx(id[idx(jr)])];
        int s = sg[idx(jr)];
        if (m % 2 == 0 && j > 0) s = -s;  // kappa[l - j] = -kappa[l - j + m]
        sre[idx(j)] = s > 0 ? bj.re : -bj.re;
        sim[idx(j)] = s > 0 ? bj.im : -bj.im;
    }
    Ref sum_re, sum_im;
    std::vector<Ref> cr, ci, sr, si;
    {
        WeightsScope scope(wcos);
        cr = cyclic_conv(g, cre, kc, x[0].re, &sum_re);
        ci = cyclic_conv(g, cim, kc, x[0].im, &sum_im);
    }
    WeightsScope scope(wsin);
    if (m % 2) {
        sr = cyclic_conv(g, sre, ks, Ref{}, nullptr);
        si = cyclic_conv(g, sim, ks, Ref{}, nullptr);
    } else {
        sr = negacyclic_conv(g, sre, ks);
        si = negacyclic_conv(g, sim, ks);
    }
    CxVec y(idx(n));
    y[0] = {g.add(x[0].re, sum_re), g.add(x[0].im, sum_im)};
    for (int l = 0; l < m; ++l) {
        const int k = id[idx(l)];
        Cx c{cr[idx(l)], ci[idx(l)]};
        Cx s{sr[idx(l)], si[idx(l)]};
        if (sg[idx(l)] < 0) s = cneg(s);
        Cx is = cmul_i(s, +1);
        y[idx(k)] = cadd(g, c, is);
        y[idx(n - k)] = csub(g, c, is);
    }
    return y;
}


// The weightings used for the cosine and for the sine convolutions: the
// cheapest (fewest operations) combination that stays within the length's
// budget, trying one weighting for both halves before mixed ones.
std::pair<Weights, Weights> chosen_weights(int n) {
    static std::map<int, std::pair<Weights, Weights>> memo;
    if (auto it = memo.find(n); it != memo.end()) return it->second;
    const Weights cands[] = {{1000, 1}, {1, 1}, {2, 1}, {1, 2}, {3, 1}, {1, 3}, {1, 1000}};
    const Budget b = kComplexBudget[n - 2];
    std::pair<Weights, Weights> best{cands[0], cands[0]};
    int best_total = -1;
    auto consider = [&](Weights wc, Weights ws) {
        Graph g;
        CxVec x(idx(n));
        for (int k = 0; k < n; ++k) x[idx(k)] = {g.input(2 * k), g.input(2 * k + 1)};
        const auto [adds, muls] = live_cost(g, rader_with(g, x, -1, wc, ws));
        if (adds > b.adds || muls > b.muls) return;
        if (best_total < 0 || adds + muls < best_total) {
            best_total = adds + muls;
            best = {wc, ws};
        }
    };
    for (Weights w : cands) consider(w, w);
    if (best_total < 0)
        for (Weights wc : cands)
            for (Weights ws : cands)
                if (!(wc == ws)) consider(wc, ws);
    memo[n] = best;
    return best;
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

CxVec rader_dft(Graph& g, const CxVec& x, int sign) {
    const auto [wc, ws] = chosen_weights(static_cast<int>(x.size()));
    return rader_with(g, x, sign, wc, ws);
}

} // namespace zg
