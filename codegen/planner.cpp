#include "planner.hpp"

namespace zg {

Choice Planner::choose(const std::string& key, size_t count, const std::function<OpCounts(size_t)>& measure,
                       const Objective& objective) {
    if (!key.empty())
        if (auto it = chosen_.find(key); it != chosen_.end()) return it->second;
    Choice best;
    for (size_t i = 0; i < count; ++i) {
        const OpCounts k = measure(i);
        const bool fits = objective.fits(k);
        const bool better = i == 0 || (fits && !best.fits) ||
                            (fits == best.fits && (fits ? objective.cost(k) < objective.cost(best.counts)
                                                        : k.adds < best.counts.adds));
        if (better) best = Choice{i, k, fits};
    }
    if (!key.empty()) chosen_.emplace(key, best);
    return best;
}

void PlanNotes::add(const std::string& what, const std::string& how) {
    for (const auto& [w, h] : notes_)
        if (w == what) return;
    notes_.emplace_back(what, how);
}

std::string PlanNotes::line() const {
    std::string s;
    for (const auto& [what, how] : notes_) s += (s.empty() ? "" : "; ") + what + " = " + how;
    return s;
}

} // namespace zg
