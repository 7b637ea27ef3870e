// Operation budgets of the codelets, per length (budgets.tsv, turned into
// budgets.inc by the build): the compiler chooses among equivalent
// factorisations one that stays within them, and writes them beside the counts
// into the manifest, where the tests check them.
#pragma once

namespace zg {

struct Budget {
    int muls, adds;
};

struct LengthBudgets {
    int n;
    Budget complex, real_forward, real_inverse;
};

inline constexpr LengthBudgets kBudgets[] = {
#include "budgets.inc"
};

inline constexpr const LengthBudgets& budgets_of(int n) { return kBudgets[n - kBudgets[0].n]; }

} // namespace zg
