// Real DFTs on the graph.  Forms, chosen per length by operation count:
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
#include "index_maps.hpp"
#include "transforms.hpp"

#include <algorithm>
#include <numeric>
#include <optional>

namespace zg {
namespace {

size_t idx(long i) { return static_cast<size_t>(i); }

// The k-th entry of the full spectrum of length n from its half.
Cx full_entry(const CxVec& half, long k, long n) {
    k = mod(k, n);
    if (2 * k <= n) return half[idx(k)];
    return conj(half[idx(n - k)]);
}

struct Form {
    enum Kind { Pruned, Direct, PrimeFactor, CooleyTukey } kind = Pruned;
    int n1 = 0;  // first factor (rows: n1 transforms of length n/n1)

    std::string text(int n) const {
        const std::string split = std::to_string(n1) + "x" + std::to_string(n / std::max(n1, 1));
        switch (kind) {
        case Direct: return "direct";
        case PrimeFactor: return "pfa " + split;
        case CooleyTukey: return "ct " + split;
        default: return "pruned complex";
        }
    }
};

// ---- Forms of the forward transform -------------------------------------

CxVec rdft_pruned(Context& ctx, const std::vector<Ref>& x, int sign) {
    const int n = static_cast<int>(x.size());
    CxVec z(x.size());
    for (size_t i = 0; i < x.size(); ++i) z[i] = {x[i], Ref{}};
    CxVec y = dft(ctx, z, sign);
    y.resize(idx(n / 2 + 1));
    return y;
}

// Prime-factor step: rows a (n1 of them) are real sequences x[(n2 a + n1 b) mod n].
CxVec rdft_prime_factor(Context& ctx, const std::vector<Ref>& x, int n1, int sign) {
    const int n = static_cast<int>(x.size()), n2 = n / n1;
    Graph& g = ctx.g;
    // The rows are a batch of identical transforms, and so are the complex
    // columns (see LaneTag).
    const int32_t row_batch = g.new_real_lane_group(), column_batch = g.new_real_lane_group();
    std::vector<CxVec> rows(idx(n1));
    for (int a = 0; a < n1; ++a) {
        const CopyScope copy(g, row_batch, a);
        std::vector<Ref> r(idx(n2));
        for (int b = 0; b < n2; ++b) r[idx(b)] = x[idx(pfa_input(a, b, n1, n2))];
        rows[idx(a)] = rdft(ctx, r, sign);
    }
    CxVec y(idx(n / 2 + 1));
    for (int k2 = 0; 2 * k2 <= n2; ++k2) {
        const bool real_col = k2 == 0 || 2 * k2 == n2;
        CxVec out;
        if (real_col) {
            std::vector<Ref> col(idx(n1));
            for (int a = 0; a < n1; ++a) col[idx(a)] = rows[idx(a)][idx(k2)].re;
            out = rdft(ctx, col, sign);
        } else {
            const CopyScope copy(g, column_batch, k2 - 1);
            CxVec col(idx(n1));
            for (int a = 0; a < n1; ++a) col[idx(a)] = rows[idx(a)][idx(k2)];
            out = dft(ctx, col, sign);
        }
        for (int k1 = 0; k1 < n1; ++k1) {
            if (real_col && 2 * k1 > n1) continue;  // conjugates of computed ones
            const Cx v = out[idx(k1)];
            const int k = crt(k1, n1, k2, n2);
            if (2 * k <= n) y[idx(k)] = v;
            else y[idx(n - k)] = conj(v);
        }
    }
    return y;
}

// Real Cooley-Tukey step, decimation in time: n = n1*n2, rows n1 (real, length n2).
CxVec rdft_cooley_tukey(Context& ctx, const std::vector<Ref>& x, int n1, int sign) {
    Graph& g = ctx.g;
    const int n = static_cast<int>(x.size()), n2 = n / n1;
    // Batches of identical transforms: the rows, and the complex columns with
    // their twiddles (see LaneTag).
    const int32_t row_batch = g.new_real_lane_group(), column_batch = g.new_real_lane_group();
    std::vector<CxVec> rows(idx(n1));
    for (int a = 0; a < n1; ++a) {
        const CopyScope copy(g, row_batch, a);
        std::vector<Ref> r(idx(n2));
        for (int b = 0; b < n2; ++b) r[idx(b)] = x[idx(a + n1 * b)];
        rows[idx(a)] = rdft(ctx, r, sign);
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
            const CxVec out = rdft(ctx, col, sign);
            for (int k1 = 0; 2 * k1 <= n1; ++k1) put(static_cast<long>(n2) * k1, out[idx(k1)]);
        } else if (2 * k2 == n2) {
            std::vector<Ref> col(idx(n1));
            for (int a = 0; a < n1; ++a) col[idx(a)] = rows[idx(a)][idx(k2)].re;
            CxVec out;
            if (n1 % 2 == 0) {
                out = odd_rdft(ctx, col, sign);
            } else {
                CxVec c(idx(n1));
                for (int a = 0; a < n1; ++a) c[idx(a)] = twiddle(g, Cx{col[idx(a)], Ref{}}, a, 2 * n1, sign);
                out = dft(ctx, c, sign);
            }
            for (int k1 = 0; 2 * k1 < n1; ++k1) put(k2 + static_cast<long>(n2) * k1, out[idx(k1)]);
        } else {
            const CopyScope copy(g, column_batch, k2 - 1);
            CxVec col(idx(n1));
            for (int a = 0; a < n1; ++a)
                col[idx(a)] = twiddle(g, rows[idx(a)][idx(k2)], static_cast<long>(a) * k2, n, sign);
            const CxVec out = dft(ctx, col, sign);
            for (int k1 = 0; k1 < n1; ++k1) put(k2 + static_cast<long>(n2) * k1, out[idx(k1)]);
        }
    }
    return y;
}

// ---- Forms of the inverse transform -------------------------------------

std::vector<Ref> irdft_pruned(Context& ctx, const CxVec& X, int n, int sign) {
    CxVec z(idx(n));
    for (int k = 0; k < n; ++k) z[idx(k)] = full_entry(X, k, n);
    z[0].im = Ref{};
    if (n % 2 == 0) z[idx(n / 2)].im = Ref{};
    const CxVec y = dft(ctx, z, sign);
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
            c = g.add(c, g.mul(cos2pi(e, n) * DoubleDouble(f), X[idx(k)].re));
            s = g.add(s, g.mul(sin2pi(e, n) * DoubleDouble(f), X[idx(k)].im));
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

std::vector<Ref> irdft_prime_factor(Context& ctx, const CxVec& X, int n, int n1, int sign, bool doubled) {
    const int n2 = n / n1;
    // Batches of identical transforms: the complex columns, and the rows (see
    // LaneTag).
    Graph& g = ctx.g;
    const int32_t column_batch = g.new_real_lane_group(), row_batch = g.new_real_lane_group();
    // Columns k2 = 0..n2/2: transforms over k1 give Z[a][k2].
    std::vector<CxVec> z(idx(n1), CxVec(idx(n2 / 2 + 1)));
    for (int k2 = 0; 2 * k2 <= n2; ++k2) {
        const bool real_col = k2 == 0 || 2 * k2 == n2;
        std::optional<CopyScope> copy;
        if (!real_col) copy.emplace(g, column_batch, k2 - 1);
        CxVec col(idx(n1));
        for (int k1 = 0; k1 < n1; ++k1) col[idx(k1)] = full_entry(X, crt(k1, n1, k2, n2), n);
        if (real_col) {
            const CxVec half(col.begin(), col.begin() + n1 / 2 + 1);
            const std::vector<Ref> r = irdft(ctx, half, n1, sign, doubled);
            for (int a = 0; a < n1; ++a) z[idx(a)][idx(k2)] = {r[idx(a)], Ref{}};
        } else {
            const CxVec out = dft(ctx, col, sign);
            for (int a = 0; a < n1; ++a) z[idx(a)][idx(k2)] = out[idx(a)];
        }
    }
    std::vector<Ref> x(idx(n));
    for (int a = 0; a < n1; ++a) {
        const CopyScope copy(g, row_batch, a);
        const std::vector<Ref> r = irdft(ctx, z[idx(a)], n2, sign, doubled);
        for (int b = 0; b < n2; ++b) x[idx(pfa_input(a, b, n1, n2))] = r[idx(b)];
    }
    return x;
}

std::vector<Ref> irdft_cooley_tukey(Context& ctx, const CxVec& X, int n, int n1, int sign, bool doubled) {
    Graph& g = ctx.g;
    const int n2 = n / n1;
    // Batches of identical transforms: the complex columns with their
    // twiddles, and the rows (see LaneTag).
    const int32_t column_batch = g.new_real_lane_group(), row_batch = g.new_real_lane_group();
    std::vector<CxVec> z(idx(n1), CxVec(idx(n2 / 2 + 1)));
    for (int k2 = 0; 2 * k2 <= n2; ++k2) {
        if (k2 == 0) {
            CxVec half(idx(n1 / 2 + 1));
            for (int k1 = 0; 2 * k1 <= n1; ++k1) half[idx(k1)] = full_entry(X, static_cast<long>(n2) * k1, n);
            const std::vector<Ref> r = irdft(ctx, half, n1, sign, doubled);
            for (int a = 0; a < n1; ++a) z[idx(a)][0] = {r[idx(a)], Ref{}};
        } else if (2 * k2 == n2) {
            CxVec half(idx((n1 + 1) / 2));
            for (int k1 = 0; 2 * k1 < n1; ++k1) half[idx(k1)] = full_entry(X, k2 + static_cast<long>(n2) * k1, n);
            std::vector<Ref> r;
            if (n1 % 2 == 0) {
                r = odd_irdft(ctx, half, n1, -sign, doubled);
            } else {
                CxVec c(idx(n1));
                for (int k1 = 0; k1 < n1; ++k1) {
                    const long k = k2 + static_cast<long>(n2) * k1;
                    Cx v = full_entry(X, k, n);
                    if (doubled && 2 * k != n) v = {g.mul(0.5, v.re), g.mul(0.5, v.im)};  // middle bins only
                    c[idx(k1)] = v;
                }
                const CxVec out = dft(ctx, c, sign);
                r.resize(idx(n1));
                for (int a = 0; a < n1; ++a) r[idx(a)] = twiddle(g, out[idx(a)], a, 2 * n1, sign).re;
            }
            for (int a = 0; a < n1; ++a) z[idx(a)][idx(k2)] = {r[idx(a)], Ref{}};
        } else {
            const CopyScope copy(g, column_batch, k2 - 1);
            CxVec col(idx(n1));
            for (int k1 = 0; k1 < n1; ++k1) col[idx(k1)] = full_entry(X, k2 + static_cast<long>(n2) * k1, n);
            const CxVec out = dft(ctx, col, sign);
            for (int a = 0; a < n1; ++a)
                z[idx(a)][idx(k2)] = twiddle(g, out[idx(a)], static_cast<long>(a) * k2, n, sign);
        }
    }
    std::vector<Ref> x(idx(n));
    for (int a = 0; a < n1; ++a) {
        const CopyScope copy(g, row_batch, a);
        const std::vector<Ref> r = irdft(ctx, z[idx(a)], n2, sign, doubled);
        for (int b = 0; b < n2; ++b) x[idx(a + n1 * b)] = r[idx(b)];
    }
    return x;
}

CxVec rdft_by(Context& ctx, const std::vector<Ref>& x, int sign, Form f) {
    switch (f.kind) {
    case Form::PrimeFactor: return rdft_prime_factor(ctx, x, f.n1, sign);
    case Form::CooleyTukey: return rdft_cooley_tukey(ctx, x, f.n1, sign);
    default: return rdft_pruned(ctx, x, sign);
    }
}

std::vector<Ref> irdft_by(Context& ctx, const CxVec& X, int n, int sign, bool doubled, Form f) {
    switch (f.kind) {
    case Form::PrimeFactor: return irdft_prime_factor(ctx, X, n, f.n1, sign, doubled);
    case Form::CooleyTukey: return irdft_cooley_tukey(ctx, X, n, f.n1, sign, doubled);
    case Form::Direct: return irdft_direct(ctx.g, X, n, sign, doubled);
    default: {
        if (!doubled) return irdft_pruned(ctx, X, n, sign);
        CxVec h = X;  // undo the doubling of the middle bins
        for (int k = 1; 2 * k < n; ++k) h[idx(k)] = {ctx.g.mul(0.5, X[idx(k)].re), ctx.g.mul(0.5, X[idx(k)].im)};
        return irdft_pruned(ctx, h, n, sign);
    }
    }
}

// The forms of a real length, the first of equally cheap ones chosen: the
// pruned complex transform first, or with `steps_first` last (see Planner).
std::vector<Form> forms(int n, bool inverse, bool steps_first) {
    std::vector<Form> c{{Form::Pruned, 0}};
    if (inverse && (n <= 4 || is_prime(n))) c.push_back({Form::Direct, 0});
    if (n <= 4 || is_prime(n)) return c;
    for (int n1 : proper_divisors(n)) c.push_back({std::gcd(n1, n / n1) == 1 ? Form::PrimeFactor : Form::CooleyTukey, n1});
    if (steps_first) std::rotate(c.begin(), c.begin() + 1, c.end());
    return c;
}

std::vector<Ref> parts(const CxVec& y) {
    std::vector<Ref> refs;
    for (Cx v : y) {
        refs.push_back(v.re);
        refs.push_back(v.im);
    }
    return refs;
}

} // namespace

CxVec rdft(Context& ctx, const std::vector<Ref>& x, int sign) {
    const int n = static_cast<int>(x.size());
    if (n == 1) return {Cx{x[0], Ref{}}};
    const std::vector<Form> cands = forms(n, false, ctx.planner.steps_first());
    const std::string what = "rdft" + std::to_string(n);
    const Form f = cands[ctx.planner.choose(what, cands.size(), [&](size_t i) {
        Graph g;
        Context s = ctx.scratch(g);
        std::vector<Ref> in(idx(n));
        for (int j = 0; j < n; ++j) in[idx(j)] = g.input(j);
        return count(g, parts(rdft_by(s, in, -1, cands[i])));
    }, {}).index];
    ctx.note(what, f.text(n));
    return rdft_by(ctx, x, sign, f);
}

std::vector<Ref> irdft(Context& ctx, const CxVec& X, int n, int sign, bool doubled) {
    if (n == 1) return {X[0].re};
    const std::vector<Form> cands = forms(n, true, ctx.planner.steps_first());
    const std::string what = std::string(doubled ? "doubled " : "") + "irdft" + std::to_string(n);
    const Form f = cands[ctx.planner.choose(what, cands.size(), [&](size_t i) {
        Graph g;
        Context s = ctx.scratch(g);
        CxVec in(idx(n / 2 + 1));
        for (int k = 0; 2 * k <= n; ++k) {
            in[idx(k)].re = g.input(2 * k);
            if (k > 0 && 2 * k != n) in[idx(k)].im = g.input(2 * k + 1);
        }
        return count(g, irdft_by(s, in, n, +1, doubled, cands[i]));
    }, {}).index];
    ctx.note(what, f.text(n));
    return irdft_by(ctx, X, n, sign, doubled, f);
}

} // namespace zg
