// The operation counts the codelet compiler recorded: every codelet within
// its length's budget, both precisions (and both directions, all layouts)
// making the same number of products, and the members whose structure is
// fixed (powers of two, directly evaluated primes) meeting their counts exactly.
#include "support.hpp"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace zt;

// The budget family of a codelet: its name up to the length, with the real
// forward layouts and the real inverse layouts each counted as one.
std::string budget_family(const std::string& name) {
    if (name.rfind("zamgDFTFwd_RTo", 0) == 0) return "real forward";
    if (name.rfind("zamgDFTInv_", 0) == 0 && name.find("ToR_") != std::string::npos) return "real inverse";
    return name.substr(0, name.find('_', 11));
}

TEST(Manifest, ListsEveryCodeletOnce) {
    std::map<std::string, int> seen;
    for (const auto& [name, row] : read_manifest())
        if (name.rfind("zamgWHT", 0) != 0) ++seen[name];
    for (const Case& c : all_cases()) EXPECT_EQ(seen[c.name], 1) << c.name;
    EXPECT_EQ(seen.size(), all_cases().size());
}

TEST(Manifest, CodeletsStayWithinTheirBudgets) {
    std::map<std::pair<std::string, int>, int> products;
    for (const auto& [name, row] : read_manifest()) {
        EXPECT_EQ(row.negs, 0) << name << " stores negated values";
        if (name.rfind("zamgDFT", 0) == 0) {
            EXPECT_GE(row.budget_muls, 0) << name << " has no budget";
        }
        if (row.budget_muls < 0) continue;
        EXPECT_LE(row.muls, row.budget_muls) << name;
        EXPECT_LE(row.adds, row.budget_adds) << name;
        auto [it, fresh] = products.emplace(std::make_pair(budget_family(name), row.n), row.muls);
        if (!fresh) {
            EXPECT_EQ(row.muls, it->second) << name;
        }
    }
}

TEST(Manifest, PowersOfTwoAndDirectPrimesMeetTheirCountsExactly) {
    std::map<int, std::pair<int, int>> complex_budget;
    for (const auto& [name, row] : read_manifest()) {
        if (name.find("_CToC_") == std::string::npos) continue;
        complex_budget[row.n] = {row.budget_muls, row.budget_adds};
        const bool pow2 = (row.n & (row.n - 1)) == 0;
        const bool direct = row.n == 3 || row.n == 5 || row.n == 7 || row.n == 11 || row.n == 23 || row.n == 47;
        if (pow2 || direct) {
            EXPECT_EQ(row.muls, row.budget_muls) << name;
        }
        if (pow2) {
            EXPECT_EQ(row.adds, row.budget_adds) << name;
        }
    }
    // The figures themselves, as the factorisations give them.
    EXPECT_EQ(complex_budget[8], std::make_pair(4, 52));
    EXPECT_EQ(complex_budget[16], std::make_pair(28, 148));
    EXPECT_EQ(complex_budget[64], std::make_pair(248, 928));
    EXPECT_EQ(complex_budget[47].first, 2116);
}

} // namespace
