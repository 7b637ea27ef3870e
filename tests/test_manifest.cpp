// The operation counts the codelet compiler recorded: every codelet within
// its length's budget, both precisions (and both directions, all layouts)
// making the same number of products, and the members whose structure is
// fixed (powers of two, directly evaluated primes) meeting their counts exactly.
#include "support.hpp"

#include "budgets.hpp"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace zt;

struct Kind {
    const char* prefix;
    const zg::Budget* budget;
};

// The family of a codelet name, or null for a name that is not a codelet.
const Kind* kind_of(const std::string& name) {
    static const Kind kinds[] = {
        {"zamgDFTFwd_CToC_", zg::kComplexBudget},     {"zamgDFTInv_CToC_", zg::kComplexBudget},
        {"zamgDFTFwd_RTo", zg::kRealForwardBudget},   {"zamgDFTInv_CCSToR_", zg::kRealInverseBudget},
        {"zamgDFTInv_PackToR_", zg::kRealInverseBudget}, {"zamgDFTInv_PermToR_", zg::kRealInverseBudget},
        {"zamgHartley_", nullptr},
    };
    for (const Kind& k : kinds)
        if (name.rfind(k.prefix, 0) == 0) return &k;
    return nullptr;
}

TEST(Manifest, ListsEveryCodeletOnce) {
    std::map<std::string, int> seen;
    for (const auto& [name, row] : read_manifest()) ++seen[name];
    for (const Case& c : all_cases()) EXPECT_EQ(seen[c.name], 1) << c.name;
    EXPECT_EQ(seen.size(), all_cases().size());
}

TEST(Manifest, CodeletsStayWithinTheirBudgets) {
    std::map<std::pair<const zg::Budget*, int>, int> products;
    for (const auto& [name, row] : read_manifest()) {
        const Kind* k = kind_of(name);
        ASSERT_NE(k, nullptr) << name;
        EXPECT_EQ(row.negs, 0) << name << " stores negated values";
        if (!k->budget) continue;
        const zg::Budget b = k->budget[row.n - 2];
        EXPECT_LE(row.muls, b.muls) << name;
        EXPECT_LE(row.adds, b.adds) << name;
        auto [it, fresh] = products.emplace(std::make_pair(k->budget, row.n), row.muls);
        if (!fresh) {
            EXPECT_EQ(row.muls, it->second) << name;
        }
    }
}

TEST(Manifest, PowersOfTwoAndDirectPrimesMeetTheirCountsExactly) {
    for (const auto& [name, row] : read_manifest()) {
        if (kind_of(name)->budget != zg::kComplexBudget) continue;
        const zg::Budget b = zg::kComplexBudget[row.n - 2];
        const bool pow2 = (row.n & (row.n - 1)) == 0;
        const bool direct = row.n == 3 || row.n == 5 || row.n == 7 || row.n == 11 || row.n == 23 || row.n == 47;
        if (pow2 || direct) {
            EXPECT_EQ(row.muls, b.muls) << name;
        }
        if (pow2) {
            EXPECT_EQ(row.adds, b.adds) << name;
        }
    }
    // The figures themselves, as the factorisations give them.
    EXPECT_EQ(zg::kComplexBudget[8 - 2].muls, 4);
    EXPECT_EQ(zg::kComplexBudget[16 - 2].muls, 28);
    EXPECT_EQ(zg::kComplexBudget[16 - 2].adds, 148);
    EXPECT_EQ(zg::kComplexBudget[64 - 2].muls, 248);
    EXPECT_EQ(zg::kComplexBudget[64 - 2].adds, 928);
    EXPECT_EQ(zg::kComplexBudget[47 - 2].muls, 2116);
}

} // namespace
