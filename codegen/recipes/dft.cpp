// Complex DFT recipes: the butterfly, Cooley-Tukey steps for powers of two and
// the direct symmetric evaluation of odd primes.
#include "cx.hpp"
#include "rader.hpp"

#include <stdexcept>

namespace zg {
namespace {

long mod(long a, long n) {
    long r = a % n;
    return r < 0 ? r + n : r;
}

// Fixed two-factor splits of the powers of two: N1 transforms of length N2
// first, then the twiddles, then N2 transforms of length N1.
int pow2_first_factor(int n) {
    switch (n) {
    case 4: return 2;
    case 8: return 2;
    case 16: return 2;
    case 32: return 4;
    case 64: return 8;
    default: return 2;
    }
}

// One Cooley-Tukey step, decimation in time: n = n1 + N1*n2, k = k2 + N2*k1.
CxVec cooley_tukey(Graph& g, const CxVec& x, int n1s, int n2s, int sign) {
    const int n = n1s * n2s;
    std::vector<CxVec> inner(static_cast<size_t>(n1s));
    for (int a = 0; a < n1s; ++a) {
        CxVec sub(static_cast<size_t>(n2s));
        for (int b = 0; b < n2s; ++b) sub[static_cast<size_t>(b)] = x[static_cast<size_t>(a + n1s * b)];
        inner[static_cast<size_t>(a)] = dft(g, sub, sign);
        for (int k2 = 0; k2 < n2s; ++k2) {
            Cx& v = inner[static_cast<size_t>(a)][static_cast<size_t>(k2)];
            v = twiddle(g, v, static_cast<long>(a) * k2, n, sign);
        }
    }
    CxVec y(static_cast<size_t>(n));
    for (int k2 = 0; k2 < n2s; ++k2) {
        CxVec col(static_cast<size_t>(n1s));
        for (int a = 0; a < n1s; ++a) col[static_cast<size_t>(a)] = inner[static_cast<size_t>(a)][static_cast<size_t>(k2)];
        CxVec out = dft(g, col, sign);
        for (int k1 = 0; k1 < n1s; ++k1) y[static_cast<size_t>(k2 + n2s * k1)] = out[static_cast<size_t>(k1)];
    }
    return y;
}

// Direct symmetric evaluation of an odd length: pair sums and differences,
// then for each output pair a cosine part (x0 plus products of the sums, one
// double combination per part) and a sine part (products of the differences).
CxVec direct_odd(Graph& g, const CxVec& x, int sign) {
    const int n = static_cast<int>(x.size());
    const int m = (n - 1) / 2;
    CxVec a(static_cast<size_t>(m + 1)), b(static_cast<size_t>(m + 1));
    // The differences are oriented by the exponent sign, b[j] = sign*(x[j] - x[n-j]),
    // so that y[k] = c + i*s in both directions: for real input the imaginary
    // parts come out as positive sums.
    for (int j = 1; j <= m; ++j) {
        const Cx& p = x[static_cast<size_t>(j)];
        const Cx& q = x[static_cast<size_t>(n - j)];
        a[static_cast<size_t>(j)] = cadd(g, p, q);
        b[static_cast<size_t>(j)] = sign > 0 ? csub(g, p, q) : csub(g, q, p);
    }
    CxVec y(static_cast<size_t>(n));
    Cx y0 = x[0];
    for (int j = 1; j <= m; ++j) y0 = cadd(g, y0, a[static_cast<size_t>(j)]);
    y[0] = y0;
    for (int k = 1; k <= m; ++k) {
        Cx c = x[0];
        Cx s{};
        for (int j = 1; j <= m; ++j) {
            const long e = static_cast<long>(j) * k;
            DD cv = cos2pi(e, n), sv = sin2pi(e, n);
            c = cadd(g, c, Cx{g.mul(cv, a[static_cast<size_t>(j)].re), g.mul(cv, a[static_cast<size_t>(j)].im)});
            s = cadd(g, s, Cx{g.mul(sv, b[static_cast<size_t>(j)].re), g.mul(sv, b[static_cast<size_t>(j)].im)});
        }
        c = cround(g, c);
        s = cround(g, s);
        Cx is = cmul_i(s, +1);
        y[static_cast<size_t>(k)] = cadd(g, c, is);
        y[static_cast<size_t>(n - k)] = csub(g, c, is);
    }
    return y;
}

// The coprime prime-power factors of n: powers of two first, then the odd
// prime powers by increasing prime (12 = 4 x 3, 45 = 9 x 5, 60 = 4 x 3 x 5).
std::vector<int> prime_power_factors(int n) {
    std::vector<int> f;
    for (int p = 2; n > 1; ++p) {
        if (n % p) continue;
        int q = 1;
        while (n % p == 0) {
            n /= p;
            q *= p;
        }
        f.push_back(q);
    }
    return f;
}

// Prime-factor (Good-Thomas) step for coprime n1, n2, without twiddles: the
// input of inner indices a (length n1) and b (length n2) is x[(n2*a + n1*b) mod
// n]; the transforms of length n2 run first, then those of length n1, and the
// output of inner indices k1, k2 goes to the k with k = k1 mod n1, k = k2 mod n2.
CxVec prime_factor(Graph& g, const CxVec& x, int n1s, int n2s, int sign) {
    const int n = n1s * n2s;
    std::vector<CxVec> rows(static_cast<size_t>(n1s));
    for (int a = 0; a < n1s; ++a) {
        CxVec sub(static_cast<size_t>(n2s));
        for (int b = 0; b < n2s; ++b) sub[static_cast<size_t>(b)] = x[static_cast<size_t>((n2s * a + n1s * b) % n)];
        rows[static_cast<size_t>(a)] = dft(g, sub, sign);
    }
    CxVec y(static_cast<size_t>(n));
    for (int k2 = 0; k2 < n2s; ++k2) {
        CxVec col(static_cast<size_t>(n1s));
        for (int a = 0; a < n1s; ++a) col[static_cast<size_t>(a)] = rows[static_cast<size_t>(a)][static_cast<size_t>(k2)];
        CxVec out = dft(g, col, sign);
        for (int k1 = 0; k1 < n1s; ++k1) {
            int k = 0;
            while (k % n1s != k1 || k % n2s != k2) ++k;
            y[static_cast<size_t>(k)] = out[static_cast<size_t>(k1)];
        }
    }
    return y;
}

bool is_prime(int n) {
    if (n < 2) return false;
    for (int d = 2; d * d <= n; ++d)
        if (n % d == 0) return false;
    return true;
}

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
        const DD h = cos2pi(1, 8);
        // (a.re + i a.im)(e1 + i e2) = (e1 a.re - e2 a.im) + i (e2 a.re + e1 a.im)
        Ref re = g.add(e1 > 0 ? a.re : -a.re, e2 > 0 ? -a.im : a.im);
        Ref im = g.add(e2 > 0 ? a.re : -a.re, e1 > 0 ? a.im : -a.im);
        return {g.round(g.mul(h, re)), g.round(g.mul(h, im))};
    }
    const DD c = cos2pi(e, n);
    const DD s = sign > 0 ? sin2pi(e, n) : -sin2pi(e, n);
    Ref re = g.sub(g.mul(c, a.re), g.mul(s, a.im));
    Ref im = g.add(g.mul(s, a.re), g.mul(c, a.im));
    return {g.round(re), g.round(im)};
}

CxVec dft(Graph& g, const CxVec& x, int sign) {
    const int n = static_cast<int>(x.size());
    if (n == 1) return x;
    if (n == 2) return {cadd(g, x[0], x[1]), csub(g, x[0], x[1])};
    if ((n & (n - 1)) == 0) {
        const int n1 = pow2_first_factor(n);
        return cooley_tukey(g, x, n1, n / n1, sign);
    }
    if (uses_rader(n)) return rader_dft(g, x, sign);
    if (is_prime(n)) return direct_odd(g, x, sign);
    const std::vector<int> f = prime_power_factors(n);
    if (f.size() > 1) return prime_factor(g, x, f[0], n / f[0], sign);
    // Powers of an odd prime: one Cooley-Tukey step with full twiddle products.
    switch (n) {
    case 9: return cooley_tukey(g, x, 3, 3, sign);
    case 25: return cooley_tukey(g, x, 5, 5, sign);
    case 27: return cooley_tukey(g, x, 3, 9, sign);
    case 49: return cooley_tukey(g, x, 7, 7, sign);
    default: break;
    }
    throw std::runtime_error("no factorisation for length " + std::to_string(n));
}

} // namespace zg
