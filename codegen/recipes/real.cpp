// Real DFTs on the DAG.  Forms, chosen per length by operation count:
//
//  - the complex recipe pruned: zero imaginary inputs (forward) or a
//    conjugate-symmetric input with only real outputs used (inverse) are
//    simplified away by the graph;
//  - prime-factor steps whose row transforms are real (half spectra), with
//    only the columns 0..n2/2 of the complex column transforms computed;
//  - real Cooley-Tukey steps: real row transforms, twiddles and complex column
//    transforms for the columns 1..n2/2-1 only (the others are their
//    conjugates), a real column 0 and a quarter-wave column n2/2;
//  - for the inverse of small and prime lengths, the direct half-complex sum,
//    whose factor 2 (or none, for pre-doubled bins) rides on the constants.
#include "real.hpp"

#include "../codelet.hpp"

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>

namespace zg {
namespace {

size_t idx(long i) { return static_cast<size_t>(i); }

Cx conj(Cx a) { return {a.re, -a.im}; }

// The k-th entry of the full spectrum of length n from its half.
Cx full_entry(const CxVec& half, long k, long n) {
    k %= n;
    if (k < 0) k += n;
    if (2 * k <= n) return half[idx(k)];
    return conj(half[idx(n - k)]);
}

std::vector<int> divisors(int n) {
    std::vector<int> d;
    for (int k = 2; k < n; ++k)
        if (n % k == 0) d.push_back(k);
    return d;
}

int gcd(int a, int b) { return b == 0 ? a : gcd(b, a % b); }

bool is_prime(int n) {
    if (n < 2) return false;
    for (int d = 2; d * d <= n; ++d)
        if (n % d == 0) return false;
    return true;
}

// ---- Forms of the forward transform -------------------------------------

enum class Form { Pruned, Direct, PrimeFactor, CooleyTukey };
struct Choice {
    Form form = Form::Pruned;
    int n1 = 0;  // first factor (rows: n1 transforms of length n/n1)
};

CxVec rdft_with(Graph& g, const std::vector<Ref>& x, int sign, Choice c);
std::vector<Ref> irdft_with(Graph& g, const CxVec& X, int n, int sign, bool doubled, Choice c);

CxVec rdft_pruned(Graph& g, const std::vector<Ref>& x, int sign) {
    const int n = static_cast<int>(x.size());
    CxVec z(x.size());
    for (size_t i = 0; i < x.size(); ++i) z[i] = {x[i], Ref{}};
    CxVec y = dft(g, z, sign);
    y.resize(idx(n / 2 + 1));
    return y;
}

// Odd-frequency half spectrum of a real sequence v of even length n:
// X[j] = sum_i v[i] w^(i(2j+1)), w = exp(sign*i*pi/n), for j = 0..n/2-1 (the
// rest are conjugates).  With p[i] = v[i] + sign*i*v[i+n/2] twisted by w^i, one
// complex DFT of length n/2 gives the even j directly and the odd j conjugated.
CxVec odd_rdft_twisted(Graph& g, const std::vector<Ref>& v, int sign) {
    const int n = static_cast<int>(v.size());
    const int h = n / 2;
    CxVec p(idx(h));
    for (int i = 0; i < h; ++i) {
        Cx q = cmul_i(Cx{v[idx(i + h)], Ref{}}, sign);
        p[idx(i)] = twiddle(g, Cx{g.add(v[idx(i)], q.re), q.im}, i, 2 * n, sign);
    }
    CxVec d = dft(g, p, sign);
    CxVec X(idx(h));
    for (int j = 0; j < h; ++j) {
        if (j % 2 == 0) X[idx(j)] = d[idx(j / 2)];
        else X[idx(j)] = conj(d[idx(((-1 - (j - 1) / 2) % h + h) % h)]);
    }
    return X;
}

// v[i] = sum over all j of X[j] w^(-i(2j+1)) with X[n-1-j] = conj(X[j]), real;
// with `half` only the half j < n/2 is summed and the real part taken (the
// result is half as large, and no doubling is needed).
std::vector<Ref> odd_irdft_twisted(Graph& g, const CxVec& X, int n, int sign, bool half) {
    const int h = n / 2;
    // e[i] = w^-i * sum_l X[2l] W_h^(-il), X[2l] for 2l >= h taken as conj(X[n-1-2l])
    CxVec ev(idx(h));
    for (int l = 0; l < h; ++l) {
        const int j = 2 * l;
        ev[idx(l)] = j < h ? X[idx(j)] : conj(X[idx(n - 1 - j)]);
    }
    CxVec e = dft(g, ev, -sign);
    const double f = half ? 1.0 : 2.0;
    std::vector<Ref> v(idx(n));
    for (int i = 0; i < h; ++i) {
        Cx t = twiddle(g, e[idx(i)], i, 2 * n, -sign);
        // v[i] = 2 Re e[i], v[i+h] = 2 sign Im e[i]
        v[idx(i)] = g.mul(f, t.re);
        v[idx(i + h)] = g.mul(f * sign, t.im);
    }
    return v;
}

// Splits an even n into (P/2, q) with n = (P/2) * q, P a power of two and q odd.
void odd_split(int n, int& half_p, int& q) {
    half_p = 1;
    while (n % (2 * half_p) == 0) half_p *= 2;
    q = n / half_p;
}

} // namespace

// With an odd factor q, n = (P/2) q: the antiperiodic extension of v (length
// M = 2n) is a P x q array under the index map i = (q i1 + P i2) mod M, whose
// odd frequencies need odd-frequency transforms of length P/2 over i1 and plain
// complex DFTs of length q over i2, with no twiddles between them.
CxVec odd_rdft(Graph& g, const std::vector<Ref>& v, int sign) {
    const int n = static_cast<int>(v.size());
    int hp, q;
    odd_split(n, hp, q);
    if (q == 1) return odd_rdft_twisted(g, v, sign);
    const int P = 2 * hp, M = 2 * n;
    auto ext = [&](int i) { i %= M; return i < n ? v[idx(i)] : -v[idx(i - n)]; };
    std::vector<CxVec> rows(idx(q));  // rows[i2][j1], j1 < P/4
    for (int i2 = 0; i2 < q; ++i2) {
        std::vector<Ref> s(idx(hp));
        for (int i1 = 0; i1 < hp; ++i1) s[idx(i1)] = ext(q * i1 + P * i2);
        rows[idx(i2)] = odd_rdft_twisted(g, s, sign);
    }
    CxVec X(idx(n / 2));
    for (int j1 = 0; 2 * j1 < hp; ++j1) {
        CxVec col(idx(q));
        for (int i2 = 0; i2 < q; ++i2) col[idx(i2)] = rows[idx(i2)][idx(j1)];
        CxVec t = dft(g, col, sign);
        const int k1 = 2 * j1 + 1;
        for (int k2 = 0; k2 < q; ++k2) {
            int k = 1;
            while (k % P != k1 || k % q != k2) k += 2;
            const int j = (k - 1) / 2;
            if (j < n / 2) X[idx(j)] = t[idx(k2)];
            else X[idx(n - 1 - j)] = conj(t[idx(k2)]);
        }
    }
    return X;
}

std::vector<Ref> odd_irdft(Graph& g, const CxVec& X, int n, int sign, bool half) {
    int hp, q;
    odd_split(n, hp, q);
    if (q == 1) return odd_irdft_twisted(g, X, n, sign, half);
    const int P = 2 * hp, M = 2 * n;
    auto entry = [&](int k) {  // X at odd frequency k of the length-M array
        const int j = (k - 1) / 2;
        return j < n / 2 ? X[idx(j)] : conj(X[idx(n - 1 - j)]);
    };
    std::vector<CxVec> cols(idx(hp / 2));  // cols[j1][i2]; hp >= 2 for even n
    for (int j1 = 0; 2 * j1 < hp; ++j1) {
        const int k1 = 2 * j1 + 1;
        CxVec c(idx(q));
        for (int k2 = 0; k2 < q; ++k2) {
            int k = 1;
            while (k % P != k1 || k % q != k2) k += 2;
            c[idx(k2)] = entry(k);
        }
        cols[idx(j1)] = dft(g, c, -sign);
    }
    std::vector<Ref> v(idx(n));
    for (int i2 = 0; i2 < q; ++i2) {
        CxVec r(idx(hp / 2));
        for (int j1 = 0; 2 * j1 < hp; ++j1) r[idx(j1)] = cols[idx(j1)][idx(i2)];
        std::vector<Ref> s = odd_irdft_twisted(g, r, hp, sign, half);
        for (int i1 = 0; i1 < hp; ++i1) {
            const int i = (q * i1 + P * i2) % M;
            if (i < n) v[idx(i)] = s[idx(i1)];
            else v[idx(i - n)] = -s[idx(i1)];
        }
    }
    return v;
}

namespace {

// Prime-factor step: rows a (n1 of them) are real sequences x[(n2 a + n1 b) mod n].
CxVec rdft_prime_factor(Graph& g, const std::vector<Ref>& x, int n1, int sign) {
    const int n = static_cast<int>(x.size()), n2 = n / n1;
    std::vector<CxVec> rows(idx(n1));
    for (int a = 0; a < n1; ++a) {
        std::vector<Ref> r(idx(n2));
        for (int b = 0; b < n2; ++b) r[idx(b)] = x[idx((n2 * a + n1 * b) % n)];
        rows[idx(a)] = rdft(g, r, sign);
    }
    CxVec y(idx(n / 2 + 1));
    for (int k2 = 0; 2 * k2 <= n2; ++k2) {
        CxVec out;
        if (k2 == 0 || 2 * k2 == n2) {
            std::vector<Ref> col(idx(n1));
            for (int a = 0; a < n1; ++a) col[idx(a)] = rows[idx(a)][idx(k2)].re;
            out = rdft(g, col, sign);
        } else {
            CxVec col(idx(n1));
            for (int a = 0; a < n1; ++a) col[idx(a)] = rows[idx(a)][idx(k2)];
            out = dft(g, col, sign);
        }
        const bool real_col = k2 == 0 || 2 * k2 == n2;
        for (int k1 = 0; k1 < n1; ++k1) {
            if (real_col && 2 * k1 > n1) continue;  // conjugates of computed ones
            Cx v = out[idx(k1)];
            int k = 0;
            while (k % n1 != k1 || k % n2 != k2) ++k;
            if (2 * k <= n) y[idx(k)] = v;
            else y[idx(n - k)] = conj(v);
        }
    }
    return y;
}

// Real Cooley-Tukey step, decimation in time: n = n1*n2, rows n1 (real, length n2).
CxVec rdft_cooley_tukey(Graph& g, const std::vector<Ref>& x, int n1, int sign) {
    const int n = static_cast<int>(x.size()), n2 = n / n1;
    std::vector<CxVec> rows(idx(n1));
    for (int a = 0; a < n1; ++a) {
        std::vector<Ref> r(idx(n2));
        for (int b = 0; b < n2; ++b) r[idx(b)] = x[idx(a + n1 * b)];
        rows[idx(a)] = rdft(g, r, sign);
    }
    CxVec y(idx(n / 2 + 1));
    auto put = [&](long k, Cx v) {
        if (2 * k <= n) y[idx(k)] = v;
        else y[idx(n - k)] = conj(v);
    };
    for (int k2 = 0; 2 * k2 <= n2; ++k2) {
        if (k2 == 0) {
            std::vector<Ref> col(idx(n1));
            for (int a = 0; a < n1; ++a) col[idx(a)] = rows[idx(a)][0].re;
            CxVec out = rdft(g, col, sign);
            for (int k1 = 0; 2 * k1 <= n1; ++k1) put(static_cast<long>(n2) * k1, out[idx(k1)]);
        } else if (2 * k2 == n2) {
            std::vector<Ref> col(idx(n1));
            for (int a = 0; a < n1; ++a) col[idx(a)] = rows[idx(a)][idx(k2)].re;
            if (n1 % 2 == 0) {
                CxVec out = odd_rdft(g, col, sign);
                for (int k1 = 0; 2 * k1 < n1; ++k1) put(k2 + static_cast<long>(n2) * k1, out[idx(k1)]);
            } else {
                CxVec c(idx(n1));
                for (int a = 0; a < n1; ++a) c[idx(a)] = twiddle(g, Cx{col[idx(a)], Ref{}}, a, 2 * n1, sign);
                CxVec out = dft(g, c, sign);
                for (int k1 = 0; 2 * k1 < n1; ++k1) put(k2 + static_cast<long>(n2) * k1, out[idx(k1)]);
            }
        } else {
            CxVec col(idx(n1));
            for (int a = 0; a < n1; ++a)
                col[idx(a)] = twiddle(g, rows[idx(a)][idx(k2)], static_cast<long>(a) * k2, n, sign);
            CxVec out = dft(g, col, sign);
            for (int k1 = 0; k1 < n1; ++k1) put(k2 + static_cast<long>(n2) * k1, out[idx(k1)]);
        }
    }
    return y;
}

// ---- Forms of the inverse transform -------------------------------------

std::vector<Ref> irdft_pruned(Graph& g, const CxVec& X, int n, int sign) {
    CxVec z(idx(n));
    for (int k = 0; k < n; ++k) z[idx(k)] = full_entry(X, k, n);
    z[0].im = Ref{};
    if (n % 2 == 0) z[idx(n / 2)].im = Ref{};
    CxVec y = dft(g, z, sign);
    std::vector<Ref> out(idx(n));
    for (int k = 0; k < n; ++k) out[idx(k)] = y[idx(k)].re;
    return out;
}

// Direct half-complex evaluation: for each output pair (j, n-j) a cosine part
// X0 (+-X[n/2]) + sum_k f cos(2 pi jk/n) R[k] and a sine part
// sum_k f sin(2 pi jk/n) I[k], each one double combination; f = 2 (a plain
// half spectrum) or 1 (middle bins given doubled) is folded into the constants.
std::vector<Ref> irdft_direct(Graph& g, const CxVec& X, int n, int sign, bool doubled) {
    const int m = (n + 1) / 2 - 1;  // middle bins 1..m
    const double f = doubled ? 1.0 : 2.0;
    std::vector<Ref> x(idx(n));
    Ref sum{};
    for (int k = 1; k <= m; ++k) sum = g.add(sum, X[idx(k)].re);
    Ref base0 = X[0].re, base1 = X[0].re;
    if (n % 2 == 0) {
        base0 = g.add(X[0].re, X[idx(n / 2)].re);
        base1 = g.sub(X[0].re, X[idx(n / 2)].re);
    }
    x[0] = g.add(base0, g.mul(f, sum));
    for (int j = 1; 2 * j <= n; ++j) {
        Ref c = j % 2 ? base1 : base0;
        Ref s{};
        for (int k = 1; k <= m; ++k) {
            const long e = static_cast<long>(j) * k;
            c = g.add(c, g.mul(cos2pi(e, n) * DD(f), X[idx(k)].re));
            s = g.add(s, g.mul(sin2pi(e, n) * DD(f), X[idx(k)].im));
        }
        c = g.round(c);
        s = g.round(s);
        if (2 * j == n) {
            x[idx(j)] = c;
            continue;
        }
        // x[j] = c - sign*s, x[n-j] = c + sign*s
        x[idx(j)] = sign > 0 ? g.sub(c, s) : g.add(c, s);
        x[idx(n - j)] = sign > 0 ? g.add(c, s) : g.sub(c, s);
    }
    return x;
}

std::vector<Ref> irdft_prime_factor(Graph& g, const CxVec& X, int n, int n1, int sign, bool doubled) {
    const int n2 = n / n1;
    // Columns k2 = 0..n2/2: transforms over k1 give Z[a][k2].
    std::vector<CxVec> z(idx(n1), CxVec(idx(n2 / 2 + 1)));
    for (int k2 = 0; 2 * k2 <= n2; ++k2) {
        CxVec col(idx(n1));
        for (int k1 = 0; k1 < n1; ++k1) {
            int k = 0;
            while (k % n1 != k1 || k % n2 != k2) ++k;
            col[idx(k1)] = full_entry(X, k, n);
        }
        if (k2 == 0 || 2 * k2 == n2) {
            CxVec half(col.begin(), col.begin() + n1 / 2 + 1);
            std::vector<Ref> r = irdft(g, half, n1, sign, doubled);
            for (int a = 0; a < n1; ++a) z[idx(a)][idx(k2)] = {r[idx(a)], Ref{}};
        } else {
            CxVec out = dft(g, col, sign);
            for (int a = 0; a < n1; ++a) z[idx(a)][idx(k2)] = out[idx(a)];
        }
    }
    std::vector<Ref> x(idx(n));
    for (int a = 0; a < n1; ++a) {
        std::vector<Ref> r = irdft(g, z[idx(a)], n2, sign, doubled);
        for (int b = 0; b < n2; ++b) x[idx((n2 * a + n1 * b) % n)] = r[idx(b)];
    }
    return x;
}

std::vector<Ref> irdft_cooley_tukey(Graph& g, const CxVec& X, int n, int n1, int sign, bool doubled) {
    const int n2 = n / n1;
    std::vector<CxVec> z(idx(n1), CxVec(idx(n2 / 2 + 1)));
    for (int k2 = 0; 2 * k2 <= n2; ++k2) {
        if (k2 == 0) {
            CxVec half(idx(n1 / 2 + 1));
            for (int k1 = 0; 2 * k1 <= n1; ++k1) half[idx(k1)] = full_entry(X, static_cast<long>(n2) * k1, n);
            std::vector<Ref> r = irdft(g, half, n1, sign, doubled);
            for (int a = 0; a < n1; ++a) z[idx(a)][0] = {r[idx(a)], Ref{}};
        } else if (2 * k2 == n2) {
            CxVec half(idx((n1 + 1) / 2));
            for (int k1 = 0; 2 * k1 < n1; ++k1) half[idx(k1)] = full_entry(X, k2 + static_cast<long>(n2) * k1, n);
            std::vector<Ref> r;
            if (n1 % 2 == 0) {
                r = odd_irdft(g, half, n1, -sign, doubled);
            } else {
                CxVec c(idx(n1));
                for (int k1 = 0; k1 < n1; ++k1) {
                    const long k = k2 + static_cast<long>(n2) * k1;
                    Cx v = full_entry(X, k, n);
                    if (doubled && 2 * k != n) v = {g.mul(0.5, v.re), g.mul(0.5, v.im)};  // middle bins only
                    c[idx(k1)] = v;
                }
                CxVec out = dft(g, c, sign);
                r.resize(idx(n1));
                for (int a = 0; a < n1; ++a) r[idx(a)] = twiddle(g, out[idx(a)], a, 2 * n1, sign).re;
            }
            for (int a = 0; a < n1; ++a) z[idx(a)][idx(k2)] = {r[idx(a)], Ref{}};
        } else {
            CxVec col(idx(n1));
            for (int k1 = 0; k1 < n1; ++k1) col[idx(k1)] = full_entry(X, k2 + static_cast<long>(n2) * k1, n);
            CxVec out = dft(g, col, sign);
            for (int a = 0; a < n1; ++a)
                z[idx(a)][idx(k2)] = twiddle(g, out[idx(a)], static_cast<long>(a) * k2, n, sign);
        }
    }
    std::vector<Ref> x(idx(n));
    for (int a = 0; a < n1; ++a) {
        std::vector<Ref> r = irdft(g, z[idx(a)], n2, sign, doubled);
        for (int b = 0; b < n2; ++b) x[idx(a + n1 * b)] = r[idx(b)];
    }
    return x;
}

CxVec rdft_with(Graph& g, const std::vector<Ref>& x, int sign, Choice c) {
    switch (c.form) {
    case Form::PrimeFactor: return rdft_prime_factor(g, x, c.n1, sign);
    case Form::CooleyTukey: return rdft_cooley_tukey(g, x, c.n1, sign);
    default: return rdft_pruned(g, x, sign);
    }
}

std::vector<Ref> irdft_with(Graph& g, const CxVec& X, int n, int sign, bool doubled, Choice c) {
    switch (c.form) {
    case Form::PrimeFactor: return irdft_prime_factor(g, X, n, c.n1, sign, doubled);
    case Form::CooleyTukey: return irdft_cooley_tukey(g, X, n, c.n1, sign, doubled);
    case Form::Direct: return irdft_direct(g, X, n, sign, doubled);
    default: {
        if (!doubled) return irdft_pruned(g, X, n, sign);
        CxVec h = X;  // undo the doubling of the middle bins
        for (int k = 1; 2 * k < n; ++k) h[idx(k)] = {g.mul(0.5, X[idx(k)].re), g.mul(0.5, X[idx(k)].im)};
        return irdft_pruned(g, h, n, sign);
    }
    }
}

int cost(const Graph& g, const std::vector<Ref>& outs) {
    const Counts k = count(g, outs);
    return k.muls + k.adds;
}

std::vector<Choice> candidates(int n, bool inverse) {
    std::vector<Choice> c{{Form::Pruned, 0}};
    if (inverse && (n <= 4 || is_prime(n))) c.push_back({Form::Direct, 0});
    if (n <= 4 || is_prime(n)) return c;
    for (int n1 : divisors(n)) {
        if (gcd(n1, n / n1) == 1) c.push_back({Form::PrimeFactor, n1});
        else c.push_back({Form::CooleyTukey, n1});
    }
    return c;
}

// The cheapest form for one length, found once by building each candidate on
// a scratch graph (the choice depends only on the length).
Choice best_forward(int n) {
    static std::map<int, Choice> memo;
    if (auto it = memo.find(n); it != memo.end()) return it->second;
    Choice best{};
    int best_cost = -1;
    for (Choice c : candidates(n, false)) {
        Graph g;
        std::vector<Ref> x(idx(n));
        for (int i = 0; i < n; ++i) x[idx(i)] = g.input(i);
        CxVec y = rdft_with(g, x, -1, c);
        std::vector<Ref> outs;
        for (Cx v : y) {
            outs.push_back(v.re);
            outs.push_back(v.im);
        }
        int k = cost(g, outs);
        if (best_cost < 0 || k < best_cost) {
            best_cost = k;
            best = c;
        }
    }
    memo[n] = best;
    return best;
}

Choice best_inverse(int n, bool doubled) {
    static std::map<std::pair<int, bool>, Choice> memo;
    if (auto it = memo.find({n, doubled}); it != memo.end()) return it->second;
    Choice best{};
    int best_cost = -1;
    for (Choice c : candidates(n, true)) {
        Graph g;
        CxVec X(idx(n / 2 + 1));
        for (int k = 0; 2 * k <= n; ++k) {
            X[idx(k)].re = g.input(2 * k);
            if (k > 0 && 2 * k != n) X[idx(k)].im = g.input(2 * k + 1);
        }
        std::vector<Ref> x = irdft_with(g, X, n, +1, doubled, c);
        int k = cost(g, x);
        if (best_cost < 0 || k < best_cost) {
            best_cost = k;
            best = c;
        }
    }
    memo[{n, doubled}] = best;
    return best;
}

} // namespace

CxVec rdft(Graph& g, const std::vector<Ref>& x, int sign) {
    const int n = static_cast<int>(x.size());
    if (n == 1) return {Cx{x[0], Ref{}}};
    return rdft_with(g, x, sign, best_forward(n));
}

std::vector<Ref> irdft(Graph& g, const CxVec& X, int n, int sign, bool doubled) {
    if (n == 1) return {X[0].re};
    return irdft_with(g, X, n, sign, doubled, best_inverse(n, doubled));
}

} // namespace zg
