#include "families.hpp"

#include "transforms.hpp"

namespace zg {

CodeletGraph complex_codelet(Planner& planner, int n, int sign) {
    CodeletGraph c;
    PlanNotes notes;
    Context ctx{c.g, planner, &notes};
    CxVec x(static_cast<size_t>(n));
    for (int k = 0; k < n; ++k) x[static_cast<size_t>(k)] = {c.g.input(2 * k), c.g.input(2 * k + 1)};
    const CxVec y = dft(ctx, x, sign);
    for (int k = 0; k < n; ++k) {
        c.outputs.push_back({2 * k, y[static_cast<size_t>(k)].re});
        c.outputs.push_back({2 * k + 1, y[static_cast<size_t>(k)].im});
    }
    c.plan = notes.line();
    return c;
}

CodeletGraph build_codelet(Planner& planner, const Family& f, int n) {
    switch (f.transform) {
    case Transform::ComplexDft: return complex_codelet(planner, n, f.sign);
    case Transform::RealForward: return real_forward_codelet(planner, n, f.layout);
    case Transform::RealInverse: return real_inverse_codelet(planner, n, f.layout);
    case Transform::Wht: return wht_graph(length_of(f, n), Store::Plain);
    case Transform::Hartley: break;
    }
    return hartley_codelet(planner, n);
}

} // namespace zg
