// The real DFT codelets: forward real to CCS, Pack and Perm, and the inverses.
//
// One computation per length serves the three layouts of a direction; only the
// positions of the stores (loads) differ.  The smallest members follow their
// fixed formulas operation by operation, including where single precision
// rounds; the others come from the real DFT recipes.
#include "families.hpp"
#include "transforms.hpp"

namespace zg {
namespace {

size_t idx(int i) { return static_cast<size_t>(i); }

// Position of R[k] and of I[k] (0 < k < n/2, or k = (n-1)/2 for odd n) in a layout.
int re_pos(Layout l, int n, int k) {
    if (l == Layout::CCS) return 2 * k;
    if (k == 0) return 0;
    if (2 * k == n) return l == Layout::Pack ? n - 1 : 1;
    return l == Layout::Perm && n % 2 == 0 ? 2 * k : 2 * k - 1;
}
int im_pos(Layout l, int n, int k) { return re_pos(l, n, k) + 1; }

// A forward result: R[k], I[k] with how each is stored.
struct Spectrum {
    std::vector<Ref> re, im;
    std::vector<Store> re_mode, im_mode;
};

Spectrum make_spectrum(int n) {
    const size_t h = idx(n / 2 + 1);
    return {std::vector<Ref>(h), std::vector<Ref>(h), std::vector<Store>(h, Store::Plain),
            std::vector<Store>(h, Store::Plain)};
}

// The fixed small members; `false` when n has none.
bool small_forward(Graph& g, const std::vector<Ref>& x, Spectrum& s) {
    const int n = static_cast<int>(x.size());
    switch (n) {
    case 2:
        s.re[0] = g.add(x[0], x[1]);
        s.re[1] = g.sub(x[0], x[1]);
        return true;
    case 3: {
        const Ref a = g.add(x[1], x[2]);
        s.re[0] = g.add(x[0], a);
        s.re[1] = g.sub(x[0], g.mul(0.5, a));
        s.im[1] = g.mul(sin2pi(1, 3), g.sub(x[1], x[2]));
        s.re_mode[1] = Store::DoubleScale;
        s.im_mode[1] = Store::DoubleZeroMinus;
        return true;
    }
    case 4: {
        const Ref a = g.add(x[0], x[2]), b = g.add(x[1], x[3]);
        s.re[0] = g.add(a, b);
        s.re[2] = g.sub(a, b);
        s.re[1] = g.sub(x[0], x[2]);
        s.im[1] = g.sub(x[1], x[3]);
        s.im_mode[1] = Store::ZeroMinus;
        return true;
    }
    case 5: {
        const Ref a = g.add(x[1], x[4]), b = g.add(x[2], x[3]);
        const Ref c = g.sub(x[1], x[4]), d = g.sub(x[3], x[2]);
        const DoubleDouble c1 = cos2pi(1, 5), c2 = -cos2pi(2, 5), s1 = sin2pi(2, 5), s2 = sin2pi(1, 5);
        // c1 = 0.309..., c2 = 0.809..., s1 = 0.5877..., s2 = 0.9510...
        s.re[0] = g.add(g.add(a, b), x[0]);
        s.re[1] = g.add(g.sub(g.mul(c1, a), g.mul(c2, b)), x[0]);
        s.re[2] = g.add(g.sub(x[0], g.mul(c2, a)), g.mul(c1, b));
        s.im[1] = g.sub(g.mul(s1, d), g.mul(s2, c));
        s.im[2] = g.add(g.mul(s1, c), g.mul(s2, d));
        s.re_mode[1] = s.re_mode[2] = s.im_mode[1] = Store::DoubleScale;
        s.im_mode[2] = Store::DoubleZeroMinus;
        return true;
    }
    case 6: {
        const DoubleDouble h = sin2pi(1, 3);
        const Ref p = g.add(x[2], x[4]), q = g.add(x[5], x[1]);
        const Ref e = g.add(x[0], p), f = g.round(g.sub(x[0], g.mul(0.5, p)));
        const Ref gg = g.round(g.mul(h, g.sub(x[2], x[4])));
        const Ref hh = g.add(x[3], q), k = g.round(g.sub(x[3], g.mul(0.5, q)));
        const Ref m = g.round(g.mul(h, g.sub(x[5], x[1])));
        s.re[0] = g.add(e, hh);
        s.re[3] = g.sub(e, hh);
        s.re[1] = g.sub(f, k);
        s.re[2] = g.add(f, k);
        s.im[1] = g.sub(gg, m);
        s.im_mode[1] = Store::ZeroMinus;
        s.im[2] = g.add(gg, m);
        return true;
    }
    case 8: {
        const DoubleDouble c = cos2pi(1, 8);
        const Ref a0 = g.add(x[0], x[4]), d0 = g.sub(x[0], x[4]), a1 = g.add(x[1], x[5]), d1 = g.sub(x[1], x[5]);
        const Ref a2 = g.add(x[2], x[6]), d2 = g.sub(x[2], x[6]), a3 = g.add(x[3], x[7]), d3 = g.sub(x[3], x[7]);
        const Ref e = g.add(a0, a2), f = g.add(a1, a3);
        s.re[0] = g.add(e, f);
        s.re[4] = g.sub(e, f);
        s.re[2] = g.sub(a0, a2);
        s.im[2] = g.sub(a1, a3);
        s.im_mode[2] = Store::ZeroMinus;
        const Ref p = g.round(g.mul(c, d1)), q = g.round(g.mul(c, d3));
        const Ref u = g.sub(p, q), v = g.add(p, q);
        s.re[1] = g.add(d0, u);
        s.re[3] = g.sub(d0, u);
        s.im[1] = g.add(d2, v);
        s.im_mode[1] = Store::ZeroMinus;
        s.im[3] = g.sub(v, d2);
        s.im_mode[3] = Store::ZeroMinus;
        return true;
    }
    default:
        return false;
    }
}

// Picks among variants built on one graph: the cheapest within the budget,
// else the one with the fewest additions.
template <class V>
const V& choose(Context& ctx, const std::vector<V>& variants, const Budget& budget,
                std::vector<Output> (*stores)(const V&)) {
    const Choice c = ctx.planner.choose("", variants.size(), [&](size_t i) { return count(ctx.g, stores(variants[i])); },
                                        {1, 1, &budget});
    return variants[c.index];
}

Spectrum spectrum_from(Graph& g, const CxVec& X, int n, bool conjugate) {
    Spectrum s = make_spectrum(n);
    for (int k = 0; 2 * k <= n; ++k) {
        s.re[idx(k)] = g.absorb_negation(X[idx(k)].re);
        // A negated imaginary part that is not a difference is stored as 0.0 - v.
        Ref im = g.absorb_negation(conjugate ? -X[idx(k)].im : X[idx(k)].im);
        if (im.neg) {
            im = -im;
            s.im_mode[idx(k)] = Store::ZeroMinus;
        }
        s.im[idx(k)] = im;
    }
    return s;
}

std::vector<Output> spectrum_stores(const Spectrum& s) {
    std::vector<Output> o;
    for (size_t k = 0; k < s.re.size(); ++k) {
        o.push_back({0, s.re[k], s.re_mode[k]});
        if (!s.im[k].is_zero()) o.push_back({0, s.im[k], s.im_mode[k]});
    }
    return o;
}

// The spectrum by the forward transform, or as the conjugate of the transform
// with the opposite exponent (a real input has both), whichever stores fewer
// negated values within the budget.
Spectrum forward_spectrum(Context& ctx, const std::vector<Ref>& x) {
    Graph& g = ctx.g;
    const int n = static_cast<int>(x.size());
    Spectrum s = make_spectrum(n);
    if (small_forward(g, x, s)) {
        ctx.note("spectrum", "fixed formula");
        return s;
    }
    std::vector<Spectrum> v;
    v.push_back(spectrum_from(g, rdft(ctx, x, -1), n, false));
    v.push_back(spectrum_from(g, rdft(ctx, x, +1), n, true));
    for (Spectrum& sp : v) {  // imaginary parts of the real bins are never stored
        sp.im[0] = Ref{};
        if (n % 2 == 0) sp.im[idx(n / 2)] = Ref{};
    }
    const Spectrum& chosen = choose(ctx, v, budgets_of(n).real_forward, spectrum_stores);
    ctx.note("spectrum", &chosen == &v[0] ? "forward" : "conjugate of the inverse");
    return chosen;
}

// The fixed small inverses; `false` when n has none.  R[k], I[k] as loaded.
bool small_inverse(Graph& g, const std::vector<Ref>& R, const std::vector<Ref>& I, std::vector<Ref>& x) {
    const int n = static_cast<int>(x.size());
    switch (n) {
    case 2:
        x[0] = g.add(R[0], R[1]);
        x[1] = g.sub(R[0], R[1]);
        return true;
    case 3: {
        const Ref t = g.mul(2.0, R[1]);
        x[0] = g.add(t, R[0]);
        const Ref u = g.round(g.sub(R[0], g.mul(0.5, t)));
        const Ref v = g.round(g.mul(2.0 * sin2pi(1, 3), I[1]));
        x[1] = g.sub(u, v);
        x[2] = g.add(u, v);
        return true;
    }
    case 4: {
        const Ref p = g.mul(2.0, R[1]), q = g.mul(2.0, I[1]);
        const Ref a = g.add(R[0], R[2]), b = g.sub(R[0], R[2]);
        x[0] = g.add(a, p);
        x[2] = g.sub(a, p);
        x[1] = g.sub(b, q);
        x[3] = g.add(b, q);
        return true;
    }
    case 5: {
        const DoubleDouble c1 = cos2pi(1, 5), c2 = -cos2pi(2, 5), s1 = sin2pi(2, 5), s2 = sin2pi(1, 5);
        const Ref r1 = g.mul(2.0, R[1]), i1 = g.mul(2.0, I[1]), r2 = g.mul(2.0, R[2]), i2 = g.mul(2.0, I[2]);
        x[0] = g.add(g.add(r1, r2), R[0]);
        const Ref cp1 = g.round(g.sub(g.add(R[0], g.mul(c1, r1)), g.mul(c2, r2)));
        const Ref cp2 = g.round(g.add(g.sub(R[0], g.mul(c2, r1)), g.mul(c1, r2)));
        const Ref d1 = g.round(g.add(g.mul(s2, i1), g.mul(s1, i2)));
        const Ref d2 = g.round(g.sub(g.mul(s1, i1), g.mul(s2, i2)));
        x[1] = g.sub(cp1, d1);
        x[4] = g.add(cp1, d1);
        x[2] = g.sub(cp2, d2);
        x[3] = g.add(cp2, d2);
        return true;
    }
    default:
        return false;
    }
}

std::vector<Output> sample_stores(const std::vector<Ref>& x) {
    std::vector<Output> o;
    for (Ref r : x) o.push_back({0, r});
    return o;
}

// The samples by the inverse transform with its doublings inside, or with the
// middle bins doubled first, or through the conjugate spectrum and the
// opposite exponent: the cheapest within the budget.
std::vector<Ref> inverse_samples(Context& ctx, const std::vector<Ref>& R, const std::vector<Ref>& I, int n) {
    Graph& g = ctx.g;
    CxVec X(R.size()), Xc(R.size()), X2(R.size());
    for (size_t k = 0; k < R.size(); ++k) {
        X[k] = {R[k], I[k]};
        Xc[k] = {R[k], -I[k]};
        const bool middle = k > 0 && 2 * k != static_cast<size_t>(n);
        X2[k] = middle ? Cx{g.mul(2.0, R[k]), g.mul(2.0, I[k])} : X[k];
    }
    // Each variant records its own choices; the chosen one's join the codelet's.
    PlanNotes notes[3];
    Context in[3] = {{g, ctx.planner, &notes[0]}, {g, ctx.planner, &notes[1]}, {g, ctx.planner, &notes[2]}};
    std::vector<std::vector<Ref>> v;
    v.push_back(irdft(in[0], X, n, +1));
    v.push_back(irdft(in[1], Xc, n, -1));
    v.push_back(irdft(in[2], X2, n, +1, true));
    for (auto& x : v)
        for (Ref& r : x) r = g.absorb_negation(r);
    const std::vector<Ref>& chosen = choose(ctx, v, budgets_of(n).real_inverse, sample_stores);
    const size_t which = static_cast<size_t>(&chosen - v.data());
    static const char* const kHow[] = {"inverse", "conjugate spectrum, forward", "middle bins doubled"};
    ctx.note("samples", kHow[which]);
    if (ctx.notes) ctx.notes->add_all(notes[which]);
    return chosen;
}

} // namespace

CodeletGraph real_forward_codelet(Planner& planner, int n, Layout l) {
    CodeletGraph c;
    PlanNotes notes;
    Context ctx{c.g, planner, &notes};
    std::vector<Ref> x(idx(n));
    for (int i = 0; i < n; ++i) x[idx(i)] = c.g.input(i);
    const Spectrum s = forward_spectrum(ctx, x);
    for (int k = 0; 2 * k <= n; ++k) {
        c.outputs.push_back({re_pos(l, n, k), s.re[idx(k)], s.re_mode[idx(k)]});
        const bool has_im = k > 0 && 2 * k != n;
        if (has_im) c.outputs.push_back({im_pos(l, n, k), s.im[idx(k)], s.im_mode[idx(k)]});
        else if (l == Layout::CCS) c.outputs.push_back({2 * k + 1, Ref{}, Store::ZeroConst});
    }
    c.plan = notes.line();
    return c;
}

CodeletGraph real_inverse_codelet(Planner& planner, int n, Layout l) {
    CodeletGraph c;
    PlanNotes notes;
    Context ctx{c.g, planner, &notes};
    Graph& g = c.g;
    std::vector<Ref> R(idx(n / 2 + 1)), I(idx(n / 2 + 1));
    for (int k = 0; 2 * k <= n; ++k) {
        R[idx(k)] = g.input(re_pos(l, n, k));
        if (k > 0 && 2 * k != n) I[idx(k)] = g.input(im_pos(l, n, k));
    }
    std::vector<Ref> x(idx(n));
    if (small_inverse(g, R, I, x)) ctx.note("samples", "fixed formula");
    else x = inverse_samples(ctx, R, I, n);
    for (int i = 0; i < n; ++i) c.outputs.push_back({i, g.absorb_negation(x[idx(i)])});
    c.plan = notes.line();
    return c;
}

} // namespace zg
