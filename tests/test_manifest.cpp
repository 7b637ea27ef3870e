// The operation counts the codelet compiler recorded against the budgets of
// the library: no codelet may exceed them, and the members whose structure is
// fixed (the powers of two and the directly evaluated primes) meet them exactly.
#include "support.hpp"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace zt;

struct Budget {
    int muls, adds;
};

// Constant multiplications and additions of the complex codelets, N = 2..64.
const std::map<int, Budget> kComplexBudget{
    {2, {0, 4}},       {3, {4, 12}},      {4, {0, 16}},       {5, {16, 32}},
    {6, {8, 36}},      {7, {36, 60}},     {8, {4, 52}},       {9, {40, 80}},
    {10, {32, 84}},    {11, {100, 156}},  {12, {16, 96}},     {13, {72, 176}},
    {14, {72, 148}},   {15, {68, 156}},   {16, {28, 148}},    {17, {108, 264}},
    {18, {80, 196}},   {19, {220, 364}},  {20, {64, 208}},    {21, {136, 264}},
    {22, {200, 356}},  {23, {484, 644}},  {24, {44, 252}},    {25, {224, 352}},
    {26, {144, 404}},  {27, {220, 380}},  {28, {144, 352}},   {29, {396, 656}},
    {30, {136, 372}},  {31, {384, 692}},  {32, {88, 376}},    {33, {344, 600}},
    {34, {216, 596}},  {35, {292, 524}},  {36, {160, 464}},   {37, {444, 864}},
    {38, {440, 804}},  {39, {268, 684}},  {40, {148, 516}},   {41, {452, 960}},
    {42, {272, 612}},  {43, {708, 1148}}, {44, {400, 800}},   {45, {344, 688}},
    {46, {968, 1380}}, {47, {2116, 2612}}, {48, {148, 636}},  {49, {648, 912}},
    {50, {448, 804}},  {51, {392, 996}},  {52, {288, 912}},   {53, {852, 1760}},
    {54, {440, 868}},  {55, {676, 1132}}, {56, {316, 844}},   {57, {736, 1320}},
    {58, {792, 1428}}, {59, {1908, 2796}}, {60, {272, 864}},  {61, {780, 1616}},
    {62, {768, 1508}}, {63, {604, 1100}}, {64, {248, 928}},
};

bool starts_with(const std::string& s, const char* p) { return s.rfind(p, 0) == 0; }

TEST(Manifest, ListsEveryComplexCodeletOnce) {
    std::map<std::string, int> seen;
    for (const auto& [name, row] : read_manifest()) ++seen[name];
    for (const ComplexCodelets& e : complex_codelets()) {
        const std::string n = std::to_string(e.n);
        for (const char* fam : {"zamgDFTFwd_CToC_", "zamgDFTInv_CToC_"})
            for (const char* type : {"_32fc", "_64fc"})
                EXPECT_EQ(seen[fam + n + type], 1) << fam << n << type;
    }
}

TEST(Manifest, ComplexCodeletsStayWithinTheirBudgets) {
    std::map<int, ManifestRow> first;
    for (const auto& [name, row] : read_manifest()) {
        if (!starts_with(name, "zamgDFTFwd_CToC_") && !starts_with(name, "zamgDFTInv_CToC_")) continue;
        const Budget b = kComplexBudget.at(row.n);
        EXPECT_LE(row.muls, b.muls) << name;
        EXPECT_LE(row.adds, b.adds) << name;
        EXPECT_EQ(row.negs, 0) << name << " stores negated outputs";
        // Both directions and both precisions perform the same operations.
        auto [it, fresh] = first.emplace(row.n, row);
        if (!fresh) {
            EXPECT_EQ(row.muls, it->second.muls) << name;
            EXPECT_EQ(row.adds, it->second.adds) << name;
        }
    }
}

TEST(Manifest, PowersOfTwoAndDirectPrimesMeetTheirCountsExactly) {
    const std::map<int, Budget> exact{{2, {0, 4}},    {4, {0, 16}},   {8, {4, 52}},
                                      {16, {28, 148}}, {32, {88, 376}}, {64, {248, 928}}};
    const std::map<int, int> direct_muls{{3, 4}, {5, 16}, {7, 36}, {11, 100}, {23, 484}, {47, 2116}};
    for (const auto& [name, row] : read_manifest()) {
        if (!starts_with(name, "zamgDFTFwd_CToC_") && !starts_with(name, "zamgDFTInv_CToC_")) continue;
        if (auto it = exact.find(row.n); it != exact.end()) {
            EXPECT_EQ(row.muls, it->second.muls) << name;
            EXPECT_EQ(row.adds, it->second.adds) << name;
        }
        if (auto it = direct_muls.find(row.n); it != direct_muls.end()) {
            EXPECT_EQ(row.muls, it->second) << name;
        }
    }
}

} // namespace
