// Odd-frequency real transforms: the odd bins of the DFT of length 2n of the
// antiperiodic extension of a real sequence of length n, and their inverse.
// Negacyclic convolutions become pointwise products under them, and the
// quarter-wave column of a real Cooley-Tukey step is one.
//
// For n = P/2 a power of two, a twist by w^i folds the pairs (v[i], v[i+n/2])
// into one complex DFT of length n/2.  With an odd factor q, n = (P/2) q: the
// extension (length M = 2n) is a P x q array under the index map
// i = (q i1 + P i2) mod M, whose odd frequencies need odd-frequency transforms
// of length P/2 over i1 and plain complex DFTs of length q over i2, with no
// twiddles between them.
#include "index_maps.hpp"
#include "transforms.hpp"

namespace zg {
namespace {

size_t idx(long i) { return static_cast<size_t>(i); }

// With p[i] = v[i] + sign*i*v[i+n/2] twisted by w^i, one complex DFT of
// length n/2 gives the even j directly and the odd j conjugated.
CxVec odd_rdft_twisted(Context& ctx, const std::vector<Ref>& v, int sign) {
    Graph& g = ctx.g;
    const int n = static_cast<int>(v.size());
    const int h = n / 2;
    CxVec p(idx(h));
    for (int i = 0; i < h; ++i) {
        const Cx q = cmul_i(Cx{v[idx(i + h)], Ref{}}, sign);
        p[idx(i)] = twiddle(g, Cx{g.add(v[idx(i)], q.re), q.im}, i, 2 * n, sign);
    }
    const CxVec d = dft(ctx, p, sign);
    CxVec X(idx(h));
    for (int j = 0; j < h; ++j) {
        if (j % 2 == 0) X[idx(j)] = d[idx(j / 2)];
        else X[idx(j)] = conj(d[idx(((-1 - (j - 1) / 2) % h + h) % h)]);
    }
    return X;
}

// e[i] = w^-i * sum_l X[2l] W_h^(-il), X[2l] for 2l >= h taken as
// conj(X[n-1-2l]); then v[i] = 2 Re e[i], v[i+h] = 2 sign Im e[i] (with `half`,
// the factor 2 is left out).
std::vector<Ref> odd_irdft_twisted(Context& ctx, const CxVec& X, int n, int sign, bool half) {
    Graph& g = ctx.g;
    const int h = n / 2;
    CxVec ev(idx(h));
    for (int l = 0; l < h; ++l) {
        const int j = 2 * l;
        ev[idx(l)] = j < h ? X[idx(j)] : conj(X[idx(n - 1 - j)]);
    }
    const CxVec e = dft(ctx, ev, -sign);
    const double f = half ? 1.0 : 2.0;
    std::vector<Ref> v(idx(n));
    for (int i = 0; i < h; ++i) {
        const Cx t = twiddle(g, e[idx(i)], i, 2 * n, -sign);
        v[idx(i)] = g.mul(f, t.re);
        v[idx(i + h)] = g.mul(f * sign, t.im);
    }
    return v;
}

} // namespace

CxVec odd_rdft(Context& ctx, const std::vector<Ref>& v, int sign) {
    const int n = static_cast<int>(v.size());
    int hp, q;
    split_power_of_two(n, hp, q);
    if (q == 1) return odd_rdft_twisted(ctx, v, sign);
    ctx.note("odd" + std::to_string(n), "pfa " + std::to_string(hp) + "x" + std::to_string(q));
    const int P = 2 * hp;
    const std::vector<CxVec> rows = odd_rdft_rows(ctx, v, sign);  // rows[i2][j1], j1 < P/4
    CxVec X(idx(n / 2));
    for (int j1 = 0; 2 * j1 < hp; ++j1) {
        CxVec col(idx(q));
        for (int i2 = 0; i2 < q; ++i2) col[idx(i2)] = rows[idx(i2)][idx(j1)];
        const CxVec t = dft(ctx, col, sign);
        for (int k2 = 0; k2 < q; ++k2) {
            const int j = (crt_odd(2 * j1 + 1, P, k2, q) - 1) / 2;
            if (j < n / 2) X[idx(j)] = t[idx(k2)];
            else X[idx(n - 1 - j)] = conj(t[idx(k2)]);
        }
    }
    return X;
}

std::vector<Ref> odd_irdft(Context& ctx, const CxVec& X, int n, int sign, bool half) {
    int hp, q;
    split_power_of_two(n, hp, q);
    if (q == 1) return odd_irdft_twisted(ctx, X, n, sign, half);
    ctx.note("inverse odd" + std::to_string(n), "pfa " + std::to_string(hp) + "x" + std::to_string(q));
    const int P = 2 * hp;
    auto entry = [&](int k) {  // X at odd frequency k of the length-M array
        const int j = (k - 1) / 2;
        return j < n / 2 ? X[idx(j)] : conj(X[idx(n - 1 - j)]);
    };
    std::vector<CxVec> cols(idx(hp / 2));  // cols[j1][i2]; hp >= 2 for even n
    for (int j1 = 0; 2 * j1 < hp; ++j1) {
        CxVec c(idx(q));
        for (int k2 = 0; k2 < q; ++k2) c[idx(k2)] = entry(crt_odd(2 * j1 + 1, P, k2, q));
        cols[idx(j1)] = dft(ctx, c, -sign);
    }
    return odd_irdft_rows(ctx, cols, n, sign, half);
}

std::vector<CxVec> odd_rdft_rows(Context& ctx, const std::vector<Ref>& v, int sign) {
    const int n = static_cast<int>(v.size());
    int hp, q;
    split_power_of_two(n, hp, q);
    const int P = 2 * hp, M = 2 * n;
    auto ext = [&](int i) { i %= M; return i < n ? v[idx(i)] : -v[idx(i - n)]; };
    std::vector<CxVec> rows(idx(q));
    for (int i2 = 0; i2 < q; ++i2) {
        std::vector<Ref> s(idx(hp));
        for (int i1 = 0; i1 < hp; ++i1) s[idx(i1)] = ext(q * i1 + P * i2);
        rows[idx(i2)] = odd_rdft_twisted(ctx, s, sign);
    }
    return rows;
}

std::vector<Ref> odd_irdft_rows(Context& ctx, const std::vector<CxVec>& cols, int n, int sign, bool half) {
    int hp, q;
    split_power_of_two(n, hp, q);
    const int P = 2 * hp, M = 2 * n;
    std::vector<Ref> v(idx(n));
    for (int i2 = 0; i2 < q; ++i2) {
        CxVec r(idx(hp / 2));
        for (int j1 = 0; 2 * j1 < hp; ++j1) r[idx(j1)] = cols[idx(j1)][idx(i2)];
        const std::vector<Ref> s = odd_irdft_twisted(ctx, r, hp, sign, half);
        for (int i1 = 0; i1 < hp; ++i1) {
            const int i = (q * i1 + P * i2) % M;
            if (i < n) v[idx(i)] = s[idx(i1)];
            else v[idx(i - n)] = -s[idx(i1)];
        }
    }
    return v;
}

} // namespace zg
