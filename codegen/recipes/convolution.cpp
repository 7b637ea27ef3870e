// Cyclic convolutions with a constant kernel, the building block of Rader's
// algorithm.
//
// conv(u, kappa)[l] = base + sum_j u[j] kappa[(l - j) mod L], for real data with
// a real kernel or complex data with a complex kernel.  Algorithms:
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
// The planner picks the algorithm per length, kind and cost weighting.
//
// A negacyclic convolution of length m = (P/2) q, q odd, works on the odd
// frequencies of the antiperiodic extension (length 2m) on a P x q
// prime-factor map: odd-frequency real transforms of length P/2 along one
// direction, cyclic convolutions of complex values of length q along the other.
#include "index_maps.hpp"
#include "transforms.hpp"

#include <numeric>

namespace zg {
namespace {

size_t idx(long i) { return static_cast<size_t>(i); }

struct CxConst {
    DoubleDouble re, im;
};
using Kernel = std::vector<CxConst>;

CxConst cmul(CxConst a, CxConst b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
CxConst cscale(CxConst a, DoubleDouble s) { return {a.re * s, a.im * s}; }
CxConst cplus(CxConst a, CxConst b) { return {a.re + b.re, a.im + b.im}; }
CxConst cminus(CxConst a, CxConst b) { return {a.re - b.re, a.im - b.im}; }
// exp(sign * 2 pi i * e / n)
CxConst unit(long e, long n, int sign) {
    const DoubleDouble s = sin2pi(e, n);
    return {cos2pi(e, n), sign > 0 ? s : -s};
}

// Data times a constant: four products, each part one double combination.
Cx cmulc(Graph& g, Cx a, CxConst k) {
    return {g.round(g.sub(g.mul(k.re, a.re), g.mul(k.im, a.im))),
            g.round(g.add(g.mul(k.re, a.im), g.mul(k.im, a.re)))};
}

struct Algorithm {
    enum Kind { Scalar, Dft, Three, Nested } kind = Dft;
    int l1 = 0;  // Nested: column convolution length (rows have length L / l1)

    std::string text(int len) const {
        switch (kind) {
        case Scalar: return "scalar";
        case Three: return "three";
        case Nested: return "nested " + std::to_string(l1) + "x" + std::to_string(len / l1);
        default: return "dft";
        }
    }
};

// One convolution's operands: data, kernel, whether both are real, the
// base added to every output, and where to put the sum of the data (or null).
struct Operands {
    const CxVec& u;
    const Kernel& kappa;
    bool real;
    Cx base;
    Cx* sum;
};

CxVec convolve(Context& ctx, const Operands& o, ConvolutionWeights w);

// The kernel's DFT of length L (exponent -1).
Kernel spectrum(const Kernel& kappa) {
    const int L = static_cast<int>(kappa.size());
    Kernel K(idx(L));
    for (int k = 0; k < L; ++k) {
        CxConst acc{DoubleDouble(0.0), DoubleDouble(0.0)};
        for (int t = 0; t < L; ++t) acc = cplus(acc, cmul(kappa[idx(t)], unit(static_cast<long>(k) * t, L, -1)));
        K[idx(k)] = acc;
    }
    return K;
}

CxVec by_dft(Context& ctx, const Operands& o) {
    Graph& g = ctx.g;
    const int L = static_cast<int>(o.u.size());
    const Kernel K = spectrum(o.kappa);
    const DoubleDouble inv = DoubleDouble(1.0) / DoubleDouble(static_cast<double>(L));
    if (o.real) {
        std::vector<Ref> ur(idx(L));
        for (int j = 0; j < L; ++j) ur[idx(j)] = o.u[idx(j)].re;
        CxVec U = rdft(ctx, ur, -1);
        CxVec Z(U.size());
        for (int k = 0; 2 * k <= L; ++k) {
            const CxConst Kk = cscale(K[idx(k)], inv);
            if (k == 0) Z[0] = {g.round(g.add(o.base.re, g.mul(Kk.re, U[0].re))), Ref{}};
            else if (2 * k == L) Z[idx(k)] = {g.round(g.mul(Kk.re, U[idx(k)].re)), Ref{}};
            else Z[idx(k)] = cmulc(g, U[idx(k)], cscale(Kk, DoubleDouble(2.0)));  // doubled for the inverse
        }
        if (o.sum) *o.sum = {U[0].re, Ref{}};
        std::vector<Ref> v = irdft(ctx, Z, L, +1, true);
        CxVec out(idx(L));
        for (int j = 0; j < L; ++j) out[idx(j)] = {v[idx(j)], Ref{}};
        return out;
    }
    CxVec U = dft(ctx, o.u, -1);
    CxVec Z(idx(L));
    for (int k = 0; k < L; ++k) {
        const CxConst Kk = cscale(K[idx(k)], inv);
        if (k == 0)
            Z[0] = {g.round(g.add(o.base.re, g.sub(g.mul(Kk.re, U[0].re), g.mul(Kk.im, U[0].im)))),
                    g.round(g.add(o.base.im, g.add(g.mul(Kk.re, U[0].im), g.mul(Kk.im, U[0].re))))};
        else
            Z[idx(k)] = cmulc(g, U[idx(k)], Kk);
    }
    if (o.sum) *o.sum = U[0];
    return dft(ctx, Z, +1);
}

CxVec by_three(Graph& g, const Operands& o) {
    const Kernel& kappa = o.kappa;
    const CxVec& a = o.u;
    const CxConst third{DoubleDouble(1.0) / DoubleDouble(3.0), DoubleDouble(0.0)};
    const CxConst y0 = cminus(kappa[0], kappa[2]), y1 = cminus(kappa[1], kappa[2]);
    const CxConst y0p = cmul(cminus(cscale(y0, DoubleDouble(2.0)), y1), third);
    const CxConst y1p = cmul(cplus(y0, y1), third);
    const CxConst k0 = cmul(cplus(cplus(kappa[0], kappa[1]), kappa[2]), third);
    const CxConst ka = cscale(y1p, DoubleDouble(-1.0)), kb = cminus(y1p, y0p), kc = y0p;
    const Cx s = cadd(g, cadd(g, a[0], a[1]), a[2]);
    const Cx x0 = csub(g, a[0], a[2]), x1 = csub(g, a[1], a[2]), x01 = csub(g, a[0], a[1]);
    Cx p{g.round(g.add(o.base.re, g.sub(g.mul(k0.re, s.re), g.mul(k0.im, s.im)))),
         g.round(g.add(o.base.im, g.add(g.mul(k0.re, s.im), g.mul(k0.im, s.re))))};
    Cx ma = cmulc(g, x1, ka), mb = cmulc(g, x01, kb), mc = cmulc(g, x0, kc);
    if (o.real) p.im = ma.im = mb.im = mc.im = Ref{};
    if (o.sum) *o.sum = s;
    return {cadd(g, cadd(g, p, ma), mc), cadd(g, csub(g, p, ma), mb), csub(g, csub(g, p, mb), mc)};
}

CxVec by_nesting(Context& ctx, const Operands& o, int l1, ConvolutionWeights w) {
    const int L = static_cast<int>(o.u.size()), l2 = L / l1;
    const bool pfa = std::gcd(l1, l2) == 1;
    auto pos = [&](int a, int b) { return pfa ? pfa_input(a, b, l1, l2) : a + l1 * b; };
    auto freq = [&](int k1, int k2) { return pfa ? crt(k1, l1, k2, l2) : k2 + l2 * k1; };
    const Kernel K = spectrum(o.kappa);
    const int cols = o.real ? l2 / 2 + 1 : l2;
    // Row transforms.
    std::vector<CxVec> U(idx(l1));
    for (int a = 0; a < l1; ++a) {
        if (o.real) {
            std::vector<Ref> r(idx(l2));
            for (int b = 0; b < l2; ++b) r[idx(b)] = o.u[idx(pos(a, b))].re;
            U[idx(a)] = rdft(ctx, r, -1);
        } else {
            CxVec r(idx(l2));
            for (int b = 0; b < l2; ++b) r[idx(b)] = o.u[idx(pos(a, b))];
            U[idx(a)] = dft(ctx, r, -1);
        }
    }
    std::vector<CxVec> Z(idx(l1), CxVec(idx(cols)));
    for (int k2 = 0; k2 < cols; ++k2) {
        const bool self_conj = o.real && (k2 == 0 || (pfa && 2 * k2 == l2));
        const bool doubled = o.real && !(k2 == 0 || 2 * k2 == l2);
        // Column kernel: (1/L) sum_k1 K[freq(k1,k2)] W_l1^(-t k1), doubled for
        // middle columns of real data (the row inverse takes them doubled).
        Kernel kc(idx(l1));
        for (int t = 0; t < l1; ++t) {
            CxConst acc{DoubleDouble(0.0), DoubleDouble(0.0)};
            for (int k1 = 0; k1 < l1; ++k1)
                acc = cplus(acc, cmul(K[idx(freq(k1, k2))], unit(static_cast<long>(t) * k1, l1, +1)));
            kc[idx(t)] = cscale(acc, DoubleDouble(doubled ? 2.0 : 1.0) / DoubleDouble(static_cast<double>(L)));
            if (self_conj) kc[idx(t)].im = DoubleDouble(0.0);
        }
        CxVec col(idx(l1));
        for (int a = 0; a < l1; ++a) {
            col[idx(a)] = U[idx(a)][idx(k2)];
            if (!pfa) col[idx(a)] = twiddle(ctx.g, col[idx(a)], static_cast<long>(a) * k2, L, -1);
        }
        const CxVec c = k2 == 0 ? convolve(ctx, {col, kc, self_conj, o.base, o.sum}, w)
                                : convolve(ctx, {col, kc, self_conj, Cx{}, nullptr}, w);
        for (int a = 0; a < l1; ++a) {
            Cx z = c[idx(a)];
            if (!pfa) z = twiddle(ctx.g, z, -static_cast<long>(a) * k2, L, -1);
            Z[idx(a)][idx(k2)] = z;
        }
    }
    CxVec out(idx(L));
    for (int a = 0; a < l1; ++a) {
        if (o.real) {
            std::vector<Ref> r = irdft(ctx, Z[idx(a)], l2, +1, true);
            for (int b = 0; b < l2; ++b) out[idx(pos(a, b))] = {r[idx(b)], Ref{}};
        } else {
            CxVec r = dft(ctx, Z[idx(a)], +1);
            for (int b = 0; b < l2; ++b) out[idx(pos(a, b))] = r[idx(b)];
        }
    }
    return out;
}

CxVec convolve_by(Context& ctx, const Operands& o, Algorithm alg, ConvolutionWeights w) {
    switch (alg.kind) {
    case Algorithm::Scalar: {
        Cx v = cmulc(ctx.g, o.u[0], o.kappa[0]);
        if (o.real) v.im = Ref{};
        if (o.sum) *o.sum = o.u[0];
        return {Cx{ctx.g.round(ctx.g.add(o.base.re, v.re)), ctx.g.round(ctx.g.add(o.base.im, v.im))}};
    }
    case Algorithm::Three: return by_three(ctx.g, o);
    case Algorithm::Nested: return by_nesting(ctx, o, alg.l1, w);
    default: return by_dft(ctx, o);
    }
}

// The algorithm for a length and kind, measured on a generic kernel (no zero
// or unit values, no symmetry) with a base and the data's sum.
Algorithm algorithm_for(Context& ctx, int len, bool real, ConvolutionWeights w) {
    std::vector<Algorithm> cands{{len == 1 ? Algorithm::Scalar : Algorithm::Dft, 0}};
    if (len == 3) cands.push_back({Algorithm::Three, 0});
    for (int l1 = 2; l1 < len; ++l1)
        if (len % l1 == 0) cands.push_back({Algorithm::Nested, l1});
    auto measure = [&](size_t i) {
        Graph g;
        Context s = ctx.scratch(g);
        CxVec u(idx(len));
        Kernel k(idx(len));
        for (int j = 0; j < len; ++j) {
            u[idx(j)] = {g.input(2 * j), real ? Ref{} : g.input(2 * j + 1)};
            k[idx(j)] = {cos2pi(3 * j + 1, 7 * len + 3), real ? DoubleDouble(0.0) : sin2pi(5 * j + 2, 11 * len + 1)};
        }
        const Cx base{g.input(2 * len), real ? Ref{} : g.input(2 * len + 1)};
        Cx sum;
        CxVec v = convolve_by(s, {u, k, real, base, &sum}, cands[i], w);
        v.push_back(sum);
        std::vector<Ref> refs;
        for (Cx c : v) {
            refs.push_back(c.re);
            refs.push_back(c.im);
        }
        return count(g, refs);
    };
    const std::string key = "conv" + std::to_string(len) + (real ? "r" : "c") + " w" + std::to_string(w.per_add) +
                            ":" + std::to_string(w.per_mul);
    const Algorithm alg = cands[ctx.planner.choose(key, cands.size(), measure, {w.per_add, w.per_mul}).index];
    ctx.note(key, alg.text(len));
    return alg;
}

CxVec convolve(Context& ctx, const Operands& o, ConvolutionWeights w) {
    return convolve_by(ctx, o, algorithm_for(ctx, static_cast<int>(o.u.size()), o.real, w), w);
}

} // namespace

std::vector<Ref> cyclic_convolution(Context& ctx, const std::vector<Ref>& u, const std::vector<DoubleDouble>& kappa,
                                    Ref base, Ref* sum, ConvolutionWeights w) {
    CxVec cu(u.size());
    Kernel k(kappa.size());
    for (size_t i = 0; i < u.size(); ++i) {
        cu[i] = {u[i], Ref{}};
        k[i] = {kappa[i], DoubleDouble(0.0)};
    }
    Cx s;
    const CxVec v = convolve(ctx, {cu, k, true, Cx{base, Ref{}}, &s}, w);
    if (sum) *sum = s.re;
    std::vector<Ref> out(u.size());
    for (size_t i = 0; i < u.size(); ++i) out[i] = v[i].re;
    return out;
}

std::vector<Ref> negacyclic_convolution(Context& ctx, const std::vector<Ref>& u,
                                        const std::vector<DoubleDouble>& kappa, ConvolutionWeights w) {
    const int m = static_cast<int>(u.size());
    int hp, q;
    split_power_of_two(m, hp, q);
    const int P = 2 * hp, M = 2 * m;
    auto kext = [&](int i) { i %= M; return i < m ? kappa[idx(i)] : -kappa[idx(i - m)]; };
    const int nj = hp / 2;  // odd frequencies kept per row
    ctx.note("negacyclic" + std::to_string(m), "odd " + std::to_string(hp) + " x cyclic " + std::to_string(q));
    // Row transforms of the data and the kernel: Y[i2][j1].
    const std::vector<CxVec> Y = odd_rdft_rows(ctx, u, -1);
    std::vector<std::vector<CxConst>> Yk(idx(q), std::vector<CxConst>(idx(nj)));
    for (int i2 = 0; i2 < q; ++i2) {
        for (int j1 = 0; j1 < nj; ++j1) {
            CxConst acc{DoubleDouble(0.0), DoubleDouble(0.0)};
            for (int i1 = 0; i1 < hp; ++i1)
                acc = cplus(acc, cscale(unit(static_cast<long>(i1) * (2 * j1 + 1), 2 * hp, -1), kext(q * i1 + P * i2)));
            // 2/P for the transform pair, doubled for the half inverse sum.
            Yk[idx(i2)][idx(j1)] = cscale(acc, DoubleDouble(4.0) / DoubleDouble(static_cast<double>(P)));
        }
    }
    // Cyclic convolutions along i2, one per kept odd frequency.
    std::vector<CxVec> R(idx(nj));
    for (int j1 = 0; j1 < nj; ++j1) {
        CxVec a(idx(q));
        Kernel k(idx(q));
        for (int i2 = 0; i2 < q; ++i2) {
            a[idx(i2)] = Y[idx(i2)][idx(j1)];
            k[idx(i2)] = Yk[idx(i2)][idx(j1)];
        }
        R[idx(j1)] = convolve(ctx, {a, k, false, Cx{}, nullptr}, w);
    }
    return odd_irdft_rows(ctx, R, m, -1, true);
}

} // namespace zg
