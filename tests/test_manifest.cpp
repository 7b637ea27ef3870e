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

// Forward real DFT codelets (any layout): products by constants, additions
// (0.0 - v stores included).
const std::map<int, Budget> kRealForwardBudget{
    {2, {0, 2}},     {3, {2, 5}},      {4, {0, 7}},      {5, {8, 13}},     {6, {4, 15}},
    {7, {18, 25}},   {8, {2, 23}},     {9, {20, 35}},    {10, {16, 37}},   {11, {50, 61}},
    {12, {8, 41}},   {13, {41, 80}},   {14, {36, 65}},   {15, {34, 67}},   {16, {12, 64}},
    {17, {54, 121}}, {18, {40, 86}},   {19, {108, 168}}, {20, {32, 91}},   {21, {68, 118}},
    {22, {100, 147}}, {23, {242, 304}}, {24, {22, 109}},  {25, {112, 158}}, {26, {82, 189}},
    {27, {110, 172}}, {28, {72, 157}},  {29, {210, 314}}, {30, {68, 167}},  {31, {192, 322}},
    {32, {44, 168}},  {33, {172, 252}}, {34, {108, 274}}, {35, {146, 236}}, {36, {80, 208}},
    {37, {228, 408}}, {38, {216, 378}}, {39, {149, 321}}, {40, {74, 231}},  {41, {242, 453}},
    {42, {136, 276}}, {43, {352, 541}}, {44, {200, 337}}, {45, {172, 311}}, {46, {484, 657}},
    {47, {1058, 1269}}, {48, {68, 280}}, {49, {324, 419}}, {50, {224, 372}}, {51, {196, 464}},
    {52, {164, 428}}, {53, {456, 858}}, {54, {220, 395}}, {55, {338, 486}}, {56, {158, 382}},
    {57, {362, 620}}, {58, {420, 684}}, {59, {954, 1350}}, {60, {136, 392}}, {61, {415, 776}},
    {62, {384, 715}}, {63, {302, 506}}, {64, {132, 417}},
};

// Inverse real DFT codelets (any layout): products (doublings included), additions.
const std::map<int, Budget> kRealInverseBudget{
    {2, {0, 2}},     {3, {3, 4}},      {4, {2, 6}},      {5, {12, 12}},    {6, {8, 14}},
    {7, {24, 24}},   {8, {8, 20}},     {9, {25, 32}},    {10, {24, 34}},   {11, {60, 68}},
    {12, {16, 38}},  {13, {56, 80}},   {14, {48, 62}},   {15, {47, 64}},   {16, {26, 58}},
    {17, {68, 116}}, {18, {52, 82}},   {19, {128, 164}}, {20, {50, 86}},   {21, {87, 112}},
    {22, {120, 158}}, {23, {264, 284}}, {24, {44, 104}},  {25, {136, 152}}, {26, {112, 186}},
    {27, {125, 164}}, {28, {98, 150}},  {29, {238, 306}}, {30, {94, 158}},  {31, {224, 316}},
    {32, {72, 156}},  {33, {203, 268}}, {34, {136, 266}}, {35, {180, 228}}, {36, {106, 198}},
    {37, {272, 402}}, {38, {256, 366}}, {39, {180, 308}}, {40, {112, 220}}, {41, {282, 444}},
    {42, {176, 266}}, {43, {394, 532}}, {44, {242, 358}}, {45, {206, 300}}, {46, {528, 614}},
    {47, {1104, 1260}}, {48, {118, 270}}, {49, {372, 408}}, {50, {272, 354}}, {51, {245, 448}},
    {52, {210, 414}}, {53, {502, 840}}, {54, {250, 382}}, {55, {392, 512}}, {56, {212, 368}},
    {57, {423, 604}}, {58, {476, 670}}, {59, {1012, 1340}}, {60, {194, 374}}, {61, {478, 762}},
    {62, {448, 694}}, {63, {361, 488}}, {64, {196, 400}},
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

TEST(Manifest, ListsEveryRealCodeletOnce) {
    std::map<std::string, int> seen;
    for (const auto& [name, row] : read_manifest()) ++seen[name];
    for (const RealCodelets& e : real_codelets()) {
        const std::string n = std::to_string(e.n);
        for (const char* fam : {"zamgDFTFwd_RToCCS_", "zamgDFTFwd_RToPack_", "zamgDFTFwd_RToPerm_",
                                "zamgDFTInv_CCSToR_", "zamgDFTInv_PackToR_", "zamgDFTInv_PermToR_"})
            for (const char* type : {"_32f", "_64f"}) EXPECT_EQ(seen[fam + n + type], 1) << fam << n << type;
    }
}

TEST(Manifest, RealCodeletsStayWithinTheirBudgets) {
    // All layouts and precisions of one length and direction make the same
    // number of products; the layouts may differ only in where values go.
    std::map<std::pair<int, bool>, int> muls;
    int rows = 0;
    for (const auto& [name, row] : read_manifest()) {
        const bool fwd = starts_with(name, "zamgDFTFwd_RTo");
        const bool inv = starts_with(name, "zamgDFTInv_") && name.find("ToR_") != std::string::npos;
        if (!fwd && !inv) continue;
        ++rows;
        const Budget b = (fwd ? kRealForwardBudget : kRealInverseBudget).at(row.n);
        EXPECT_LE(row.muls, b.muls) << name;
        EXPECT_LE(row.adds, b.adds) << name;
        EXPECT_EQ(row.negs, 0) << name;
        auto [it, fresh] = muls.emplace(std::make_pair(row.n, fwd), row.muls);
        if (!fresh) {
            EXPECT_EQ(row.muls, it->second) << name;
        }
    }
    EXPECT_EQ(rows, 756);
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
