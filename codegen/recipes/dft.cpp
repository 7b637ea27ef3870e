// Complex DFT recipes: the butterfly, Cooley-Tukey steps for powers of two and
// prime powers, the prime-factor map for coprime lengths and the direct
// symmetric evaluation of odd primes.
#include "index_maps.hpp"
#include "transforms.hpp"

#include <optional>
#include <stdexcept>

namespace zg {
namespace {

size_t idx(long i) { return static_cast<size_t>(i); }

// Fixed two-factor splits of the powers of two: N1 transforms of length N2
// first, then the twiddles, then N2 transforms of length N1.
int pow2_first_factor(int n) {
    switch (n) {
    case 32: return 4;
    case 64: return 8;
    default: return 2;
    }
}

// One Cooley-Tukey step, decimation in time: n = n1 + N1*n2, k = k2 + N2*k1.
CxVec cooley_tukey(Context& ctx, const CxVec& x, int n1s, int n2s, int sign) {
    Graph& g = ctx.g;
    const int n = n1s * n2s;
    // Each stage is a batch of identical transforms (see LaneTag): copy a of
    // the first reads the neighbours of copy a - 1's inputs, copy k2 of the
    // second writes the neighbours of copy k2 - 1's outputs.
    const int32_t rows = g.new_lane_group(), cols = g.new_lane_group();
    std::vector<CxVec> inner(idx(n1s));
    for (int a = 0; a < n1s; ++a) {
        const CopyScope copy(g, rows, a);
        CxVec sub(idx(n2s));
        for (int b = 0; b < n2s; ++b) sub[idx(b)] = x[idx(a + n1s * b)];
        inner[idx(a)] = dft(ctx, sub, sign);
        for (int k2 = 0; k2 < n2s; ++k2) {
            Cx& v = inner[idx(a)][idx(k2)];
            v = twiddle(g, v, static_cast<long>(a) * k2, n, sign);
        }
    }
    CxVec y(idx(n));
    for (int k2 = 0; k2 < n2s; ++k2) {
        const CopyScope copy(g, cols, k2);
        CxVec col(idx(n1s));
        for (int a = 0; a < n1s; ++a) col[idx(a)] = inner[idx(a)][idx(k2)];
        CxVec out = dft(ctx, col, sign);
        for (int k1 = 0; k1 < n1s; ++k1) y[idx(k2 + n2s * k1)] = out[idx(k1)];
    }
    return y;
}

constexpr int kDirectBatches = 17;

// Direct symmetric evaluation of an odd length: pair sums and differences,
// then for each output pair a cosine part (x0 plus products of the sums, one
// double combination per part) and a sine part (products of the differences).
CxVec direct_odd(Graph& g, const CxVec& x, int sign) {
    const int n = static_cast<int>(x.size());
    const int m = (n - 1) / 2;
    CxVec a(idx(m + 1)), b(idx(m + 1));
    // Two batches: the pairs of inputs, and the output pairs, each computed
    // alike (the same chain of products and sums, other constants); marked
    // for the long lengths alone, whose output pairs fill vectors (the short
    // ones run inside the batches of larger transforms).
    const bool batches = n >= kDirectBatches;
    const int32_t pairs = batches ? g.new_lane_group() : -1, outputs = batches ? g.new_lane_group() : -1;
    // The differences are oriented by the exponent sign, b[j] = sign*(x[j] - x[n-j]),
    // so that y[k] = c + i*s in both directions: for real input the imaginary
    // parts come out as positive sums.
    for (int j = 1; j <= m; ++j) {
        std::optional<CopyScope> copy;
        if (batches) copy.emplace(g, pairs, j - 1);
        const Cx& p = x[idx(j)];
        const Cx& q = x[idx(n - j)];
        a[idx(j)] = cadd(g, p, q);
        b[idx(j)] = sign > 0 ? csub(g, p, q) : csub(g, q, p);
    }
    CxVec y(idx(n));
    Cx y0 = x[0];
    for (int j = 1; j <= m; ++j) y0 = cadd(g, y0, a[idx(j)]);
    y[0] = y0;
    for (int k = 1; k <= m; ++k) {
        std::optional<CopyScope> copy;
        if (batches) copy.emplace(g, outputs, k - 1);
        Cx c = x[0];
        Cx s{};
        for (int j = 1; j <= m; ++j) {
            const long e = static_cast<long>(j) * k;
            const DoubleDouble cv = cos2pi(e, n), sv = sin2pi(e, n);
            c = cadd(g, c, Cx{g.mul(cv, a[idx(j)].re), g.mul(cv, a[idx(j)].im)});
            s = cadd(g, s, Cx{g.mul(sv, b[idx(j)].re), g.mul(sv, b[idx(j)].im)});
        }
        c = cround(g, c);
        s = cround(g, s);
        const Cx is = cmul_i(s, +1);
        y[idx(k)] = cadd(g, c, is);
        y[idx(n - k)] = csub(g, c, is);
    }
    return y;
}

// Prime-factor step for coprime n1, n2, without twiddles: the transforms of
// length n2 run first (rows), then those of length n1 (columns).
CxVec prime_factor(Context& ctx, const CxVec& x, int n1s, int n2s, int sign) {
    const int n = n1s * n2s;
    Graph& g = ctx.g;
    // Two batches of identical transforms, as in cooley_tukey.
    const int32_t first = g.new_lane_group(), second = g.new_lane_group();
    std::vector<CxVec> rows(idx(n1s));
    for (int a = 0; a < n1s; ++a) {
        const CopyScope copy(g, first, a);
        CxVec sub(idx(n2s));
        for (int b = 0; b < n2s; ++b) sub[idx(b)] = x[idx(pfa_input(a, b, n1s, n2s))];
        rows[idx(a)] = dft(ctx, sub, sign);
    }
    CxVec y(idx(n));
    for (int k2 = 0; k2 < n2s; ++k2) {
        const CopyScope copy(g, second, k2);
        CxVec col(idx(n1s));
        for (int a = 0; a < n1s; ++a) col[idx(a)] = rows[idx(a)][idx(k2)];
        CxVec out = dft(ctx, col, sign);
        for (int k1 = 0; k1 < n1s; ++k1) y[idx(crt(k1, n1s, k2, n2s))] = out[idx(k1)];
    }
    return y;
}

std::string by(int n1, int n2) { return std::to_string(n1) + "x" + std::to_string(n2); }

} // namespace

Cx twiddle(Graph& g, Cx a, long e, long n, int sign) {
    e = mod(e, n);
    if (e == 0) return a;
    if (2 * e == n) return cneg(a);
    if (4 * e == n) return cmul_i(a, sign);
    if (4 * e == 3 * n) return cmul_i(a, -sign);
    if ((8 * e) % n == 0) {
        // An odd power of exp(sign*i*pi/4): sqrt(1/2) * (e1 + i*e2) with e1, e2 = +-1.
        const long oct = 8 * e / n;  // 1, 3, 5 or 7
        const int e1 = (oct == 1 || oct == 7) ? 1 : -1;
        int e2 = (oct == 1 || oct == 3) ? 1 : -1;
        e2 *= sign;
        const DoubleDouble h = cos2pi(1, 8);
        // (a.re + i a.im)(e1 + i e2) = (e1 a.re - e2 a.im) + i (e2 a.re + e1 a.im)
        const Ref re = g.add(e1 > 0 ? a.re : -a.re, e2 > 0 ? -a.im : a.im);
        const Ref im = g.add(e2 > 0 ? a.re : -a.re, e1 > 0 ? a.im : -a.im);
        return {g.round(g.mul(h, re)), g.round(g.mul(h, im))};
    }
    const DoubleDouble c = cos2pi(e, n);
    const DoubleDouble s = sign > 0 ? sin2pi(e, n) : -sin2pi(e, n);
    const Ref re = g.sub(g.mul(c, a.re), g.mul(s, a.im));
    const Ref im = g.add(g.mul(s, a.re), g.mul(c, a.im));
    return {g.round(re), g.round(im)};
}

CxVec dft(Context& ctx, const CxVec& x, int sign) {
    const int n = static_cast<int>(x.size());
    const std::string what = "dft" + std::to_string(n);
    if (n == 1) return x;
    if (n == 2) {
        ctx.note(what, "butterfly");
        return {cadd(ctx.g, x[0], x[1]), csub(ctx.g, x[0], x[1])};
    }
    if ((n & (n - 1)) == 0) {
        const int n1 = pow2_first_factor(n);
        ctx.note(what, "ct " + by(n1, n / n1));
        return cooley_tukey(ctx, x, n1, n / n1, sign);
    }
    if (uses_rader(n)) return rader_dft(ctx, x, sign);
    if (is_prime(n)) {
        ctx.note(what, "direct");
        return direct_odd(ctx.g, x, sign);
    }
    const std::vector<int> f = prime_power_factors(n);
    if (f.size() > 1) {
        ctx.note(what, "pfa " + by(f[0], n / f[0]));
        return prime_factor(ctx, x, f[0], n / f[0], sign);
    }
    // Powers of an odd prime: one Cooley-Tukey step with full twiddle products.
    static constexpr struct {
        int n, first;
    } kPrimePowers[] = {{9, 3}, {25, 5}, {27, 3}, {49, 7}};
    for (const auto& [len, first] : kPrimePowers) {
        if (n != len) continue;
        ctx.note(what, "ct " + by(first, n / first));
        return cooley_tukey(ctx, x, first, n / first, sign);
    }
    throw std::runtime_error("no factorisation for length " + std::to_string(n));
}

} // namespace zg
