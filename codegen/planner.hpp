// Choosing among equivalent plans.
//
// Wherever a recipe has several equivalent ways to build something (the
// factorisations of a real length, the algorithms of a convolution, the cost
// weightings of a prime's two convolutions, the variants of a real codelet), it
// lists the candidates and the planner measures each one, by building it, and
// keeps the cheapest under an objective.  A choice that depends only on what is
// being built is remembered under a key, so it is made once per run.
#pragma once

#include "budgets.hpp"
#include "counts.hpp"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace zg {

struct Objective {
    int per_add = 1, per_mul = 1;     // minimise per_add * additions + per_mul * products
    const Budget* budget = nullptr;   // if set: candidates within it first; outside it, fewest additions

    bool fits(OpCounts k) const { return !budget || (k.muls <= budget->muls && k.adds <= budget->adds); }
    long cost(OpCounts k) const { return static_cast<long>(per_add) * k.adds + static_cast<long>(per_mul) * k.muls; }
};

struct Choice {
    size_t index = 0;  // of the chosen candidate
    OpCounts counts;   // what it measured
    bool fits = true;  // within the objective's budget
};

class Planner {
public:
    // `steps_first`: where a real length's prime-factor or Cooley-Tukey steps
    // cost exactly what the pruned complex transform costs, take the steps
    // (see the real recipes' forms).  They vectorise better in some codelets
    // and worse in others, so the codelet compiler builds such codelets both
    // ways and keeps the one whose vector body is cheaper.
    explicit Planner(bool steps_first = false) : steps_first_(steps_first) {}
    bool steps_first() const { return steps_first_; }

    // The best of `count` candidates, `measure(i)` building candidate i and
    // counting its operations; the first of equal ones wins.  With a
    // non-empty key the choice is remembered.
    Choice choose(const std::string& key, size_t count, const std::function<OpCounts(size_t)>& measure,
                  const Objective& objective);

private:
    bool steps_first_;
    std::map<std::string, Choice> chosen_;
};

// The choices the recipes made while building one codelet, in the order they
// were first made, each once: what was built and how.
class PlanNotes {
public:
    void add(const std::string& what, const std::string& how);
    void add_all(const PlanNotes& other) {
        for (const auto& [what, how] : other.notes_) add(what, how);
    }
    std::string line() const;  // "what = how; what = how; ..."

private:
    std::vector<std::pair<std::string, std::string>> notes_;
};

} // namespace zg
