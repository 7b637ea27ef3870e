// The straight-line kernels of the DCT-IV (src/dct4/): the direct transforms
// of 16 and 32 points, the first-pass kernels of 16 to 64 points, the
// second-pass kernels of radix 8 to 32 and the radix kernels of the nested
// stages, 2 to 32.  Everything is computed in the element type; the complex
// transforms inside are the DFT recipes with the positive exponent.
//
// All of them rest on one sum: for z[k], k < M/2,
//   Z[l] = sum_k z[k] e^{i pi k (4l+1)/M},  l < M/2,
// a DFT of M/2 points after the pre-rotation of z[k] by e^{i pi k/M}.  The
// first pass stores S[2l] = Z[l] while 2l < M/2 and S[M-1-2l] = conj Z[l]
// otherwise, the S[g] = sum_k z[k] e^{i pi k (2g+1)/M} of even g and the same
// sum of conj z[k] for odd g.
#include "families.hpp"

#include "dct4/table_slot.hpp"
#include "transforms.hpp"

namespace zg {
namespace {

size_t idx(int i) { return static_cast<size_t>(i); }

// Z from z: the pre-rotation, then the DFT of M/2 points.
CxVec shifted_dft(Context& ctx, CxVec z) {
    const long m = 2 * static_cast<long>(z.size());
    for (size_t k = 1; k < z.size(); ++k) z[k] = twiddle(ctx.g, z[k], static_cast<long>(k), 2 * m, +1);
    return dft(ctx, z, +1);
}

// z[k] = in(k) - i in(M/2 + k): the front value and minus the mirrored one.
CxVec gathered(Graph& g, int m) {
    CxVec z(idx(m / 2));
    for (int k = 0; k < m / 2; ++k) z[idx(k)] = {g.input(k), -g.input(m / 2 + k)};
    return z;
}

// S[g] of the first pass from Z.
CxVec first_pass_values(const CxVec& z) {
    const int m = 2 * static_cast<int>(z.size());
    CxVec s(z.size());
    for (int l = 0; l < m / 2; ++l) {
        if (2 * l < m / 2) s[idx(2 * l)] = z[idx(l)];
        else s[idx(m - 1 - 2 * l)] = conj(z[idx(l)]);
    }
    return s;
}

// v times c + i s, the run-time pair at slots `at` and `at` + 1:
// (re c - im s) + i (re s + im c).
Cx rotated(Graph& g, Cx v, int at) {
    const Ref c = g.input(at), s = g.input(at + 1);
    return {g.sub(g.product(v.re, c), g.product(v.im, s)), g.add(g.product(v.re, s), g.product(v.im, c))};
}

void store(CodeletGraph& c, int slot, Ref v) { c.outputs.push_back({slot, c.g.absorb_negation(v), Store::Unscaled}); }

} // namespace

CodeletGraph dct4_graph(Planner& planner, const Dct4Block& b) {
    CodeletGraph c;
    c.element_precision = true;
    c.early_stores = true;
    c.late_loads = true;
    PlanNotes notes;
    Context ctx{c.g, planner, &notes};
    Graph& g = c.g;
    const int n = b.n;
    switch (b.kind) {
    case Dct4Kind::Direct: {
        // z[k] = x[2k] - i x[N-1-2k]; y[g] + i y[N-1-g] = S[g] e^{i pi (2g+1)/(4N)}.
        CxVec z(idx(n / 2));
        for (int k = 0; k < n / 2; ++k) z[idx(k)] = {g.input(2 * k), -g.input(n - 1 - 2 * k)};
        const CxVec s = first_pass_values(shifted_dft(ctx, z));
        for (int j = 0; j < n / 2; ++j) {
            const Cx y = twiddle(g, s[idx(j)], 2 * j + 1, 8 * n, +1);
            store(c, j, y.re);
            store(c, n - 1 - j, y.im);
        }
        break;
    }
    case Dct4Kind::First: {
        const CxVec s = first_pass_values(shifted_dft(ctx, gathered(g, n)));
        for (int j = 0; j < n / 2; ++j) {
            store(c, 2 * j, s[idx(j)].re);
            store(c, 2 * j + 1, s[idx(j)].im);
        }
        break;
    }
    case Dct4Kind::Second: {
        // P[p] rotated by its table pair; Q[u] = P[2u] for 2u < r, else
        // conj P[2r-1-2u]; Y[j] = e^{i pi j/(2r)} DFT(Q)[j].
        CxVec q(idx(n));
        for (int p = 0; p < n; ++p) {
            const int at = 2 * n + static_cast<int>(zam::dct4::table_slot(uint32_t(n), uint32_t(p)));
            const Cx v = rotated(g, {g.input(p), g.input(n + p)}, at);
            if (p % 2 == 0) q[idx(p / 2)] = v;
            else q[idx(n - 1 - (p - 1) / 2)] = conj(v);
        }
        const CxVec f = dft(ctx, q, +1);
        for (int j = 0; j < n; ++j) {
            const Cx y = twiddle(g, f[idx(j)], j, 4 * n, +1);
            store(c, j, y.re);
            store(c, n + j, y.im);
        }
        break;
    }
    case Dct4Kind::RadixEven:
    case Dct4Kind::RadixOdd: {
        // a[i] = S_i[g'] (its conjugate for odd g'), times the run-time twiddle
        // for i >= 1; A = DFT(a), the front half as it is, the back conjugated.
        const bool odd = b.kind == Dct4Kind::RadixOdd;
        CxVec a(idx(n));
        for (int i = 0; i < n; ++i) {
            const Cx v{g.input(i), odd ? -g.input(n + i) : g.input(n + i)};
            a[idx(i)] = i > 0 ? rotated(g, v, 2 * n + 2 * (i - 1)) : v;
        }
        const CxVec f = dft(ctx, a, +1);
        for (int l = 0; l < n; ++l) {
            store(c, 2 * l, f[idx(l)].re);
            store(c, 2 * l + 1, 2 * l < n ? f[idx(l)].im : -f[idx(l)].im);
        }
        break;
    }
    }
    c.plan = notes.line();
    return c;
}

const std::vector<Dct4Block>& dct4_blocks() {
    static const std::vector<Dct4Block> blocks = [] {
        std::vector<Dct4Block> v;
        for (int n : {16, 32}) v.push_back({"direct" + std::to_string(n), Dct4Kind::Direct, n});
        for (int n : {16, 32, 64}) v.push_back({"first" + std::to_string(n), Dct4Kind::First, n});
        for (int n : {8, 16, 32}) v.push_back({"second" + std::to_string(n), Dct4Kind::Second, n});
        for (int n = 2; n <= 32; n *= 2) {
            v.push_back({"radix_even" + std::to_string(n), Dct4Kind::RadixEven, n});
            v.push_back({"radix_odd" + std::to_string(n), Dct4Kind::RadixOdd, n});
        }
        return v;
    }();
    return blocks;
}

} // namespace zg
