// The operation counts the codelet compiler recorded in the manifest (read by
// column name, so columns may be added): every codelet listed once, within
// its length's budget, both precisions (and both directions, all layouts)
// making the same number of products, and no count above the baseline.
#include "support.hpp"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace zt;

using Row = std::map<std::string, std::string>;

std::map<std::string, Row> manifest() {
    std::map<std::string, Row> rows;
    for (Row& r : read_tsv(ZAMGEN_MANIFEST)) rows[r["name"]] = r;
    return rows;
}

int count(const Row& r, const char* column) { return std::stoi(r.at(column)); }

TEST(Manifest, CodeletsStayWithinTheirBudgets) {
    std::map<std::pair<std::string, int>, int> products;
    const auto rows = manifest();
    EXPECT_EQ(read_tsv(ZAMGEN_MANIFEST).size(), rows.size()) << "a codelet listed twice";
    for (const Case& c : all_cases()) {
        ASSERT_EQ(rows.count(c.name), 1u) << c.name << " is not listed";
        const Row& r = rows.at(c.name);
        EXPECT_EQ(count(r, "negs"), 0) << c.name << " stores negated values";
        // The DFT codelets have budgets: one per length for the complex ones
        // (either direction), one for the real forward and one for the real
        // inverse ones (any layout).
        const std::string budget = c.family.find("CToC") != std::string::npos ? "complex"
                                   : c.layout == kNone                         ? ""
                                   : c.direction < 0                           ? "real forward"
                                                                               : "real inverse";
        EXPECT_EQ(r.at("budget_muls") == "-", budget.empty()) << c.name;
        if (budget.empty()) continue;
        EXPECT_LE(count(r, "muls"), count(r, "budget_muls")) << c.name;
        EXPECT_LE(count(r, "adds"), count(r, "budget_adds")) << c.name;
        const auto [it, fresh] = products.emplace(std::make_pair(budget, c.n), count(r, "muls"));
        EXPECT_TRUE(fresh || it->second == count(r, "muls")) << c.name;
    }
}

// Every codelet of tests/baseline/operation-counts.tsv (the manifest's name,
// muls and adds columns as they were when it was made) is still there and no
// count has risen; counts that fell are reported, and may be lowered there.
TEST(Manifest, NoOperationCountRisesAboveTheBaseline) {
    const auto rows = manifest();
    int fell = 0;
    for (const Row& base : read_tsv(ZAMGEN_OPERATION_COUNTS)) {
        const auto it = rows.find(base.at("name"));
        if (it == rows.end()) {
            ADD_FAILURE() << base.at("name") << " is missing";
            continue;
        }
        for (const char* column : {"muls", "adds"}) {
            const int now = count(it->second, column), before = count(base, column);
            EXPECT_LE(now, before) << it->first << ' ' << column;
            if (now < before) ++fell, std::printf("%s %s: %d, down from %d\n", it->first.c_str(), column, now, before);
        }
    }
    std::printf("%d counts below the baseline\n", fell);
}

} // namespace
