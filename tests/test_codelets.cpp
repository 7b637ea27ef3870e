// What every codelet promises, checked for every flag over all of them, one
// test per family and precision: accuracy against a long-double reference,
// the status contract, in-place use, the exact scale literals, round trips
// and its length dispatcher.  Then the real layouts, the version record and
// the C interface.
#include "support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <sstream>

extern "C" int zt_c_api_check(void);

namespace {

using namespace zt;

class Codelets : public testing::TestWithParam<std::string> {
protected:
    const std::vector<const Case*> cases = cases_of(GetParam());
};
INSTANTIATE_TEST_SUITE_P(, Codelets, testing::ValuesIn(families()), [](const auto& info) { return info.param; });

// Relative RMS error bounds: a little over three units of rounding of the
// element type (2^-24 = 6.0e-8 for float, 2^-53 = 1.1e-16 for double), the
// growth of a few rounded stages; the measured worst cases are 1.3e-7 and 3.1e-16.
LD rms_bound(const Case& c) { return c.single ? 2e-7L : 5e-16L; }

TEST_P(Codelets, MatchTheReferenceForEveryFlag) {
    LD worst = 0;
    for (const Case* c : cases) {
        for (uint32_t flag : kFlags) {
            const Scalars x = c->input(97u * static_cast<uint64_t>(c->n) + flag);
            Scalars y, want = c->reference(x);
            ASSERT_EQ(c->run(x, y, flag), ZAM_STS_OK) << c->name;
            for (LD& v : want) v *= c->scale(flag);
            const LD err = relative_rms(y, want);
            EXPECT_LE(err, rms_bound(*c)) << c->name << " flag " << flag;
            worst = std::max(worst, err);
        }
    }
    std::printf("worst relative RMS error of %s: %.3e\n", GetParam().c_str(), static_cast<double>(worst));
}

// Null pointers are refused first, then bad flags, and nothing is written.
TEST_P(Codelets, RefuseNullPointersFirstThenBadFlagsWithoutWriting) {
    const uint32_t bad[] = {0u, 3u, 5u, 6u, 7u, 9u, 10u, 12u, 15u, 16u, 0x80000000u, 0xFFFFFFFFu};
    for (const Case* c : cases) {
        std::vector<unsigned char> src(static_cast<size_t>(c->in) * 8, 0), dst(static_cast<size_t>(c->out) * 8, 0xA5);
        const auto untouched = dst;
        for (uint32_t flag : {ZAM_DIV_BY_SQRTN, 0u, 5u, 0xFFFFFFFFu}) {
            EXPECT_EQ(c->call(nullptr, dst.data(), flag), ZAM_STS_NULL_PTR_ERR) << c->name;
            EXPECT_EQ(c->call(src.data(), nullptr, flag), ZAM_STS_NULL_PTR_ERR) << c->name;
        }
        for (uint32_t flag : bad) EXPECT_EQ(c->call(src.data(), dst.data(), flag), ZAM_STS_FLAG_ERR) << c->name << ' ' << flag;
        EXPECT_EQ(dst, untouched) << c->name << " wrote on failure";
    }
}

// Every input is read before any output is written: the source may be the
// destination (an array large enough for both), with bit-identical results.
TEST_P(Codelets, InPlaceEqualsOutOfPlaceBitwise) {
    for (const Case* c : cases) {
        for (uint32_t flag : kFlags) {
            const Scalars x = c->input(13u * static_cast<uint64_t>(c->n) + flag);
            Scalars y, z;
            ASSERT_EQ(c->run(x, y, flag), ZAM_STS_OK) << c->name;
            ASSERT_EQ(c->run(x, z, flag, true), ZAM_STS_OK) << c->name;
            EXPECT_TRUE(identical(y, z)) << c->name << " flag " << flag;
        }
    }
}

// An impulse at the first input passes through every factorisation unchanged
// (sums with zeros, products of zeros), so each output is exactly the scale
// literal of the flag, or an exact zero.
TEST_P(Codelets, ImpulseGivesTheScaleLiteralsExactly) {
    for (const Case* c : cases) {
        Scalars x(static_cast<size_t>(c->in), 0);
        x[0] = 1;
        const Scalars ref = c->reference(x);
        for (uint32_t flag : kFlags) {
            Scalars y;
            ASSERT_EQ(c->run(x, y, flag), ZAM_STS_OK) << c->name;
            for (size_t i = 0; i < y.size(); ++i)
                EXPECT_EQ(y[i], std::fabs(ref[i]) > 0.5L ? c->scale(flag) : 0) << c->name << " flag " << flag << " output " << i;
        }
    }
}

// A transform followed by its inverse (Hartley: itself) with the same flag
// gives N * s * s' times the input: the input itself for the flags 1, 2 and 4
// of the DFTs and 4 of Hartley, N times it for 8.
TEST_P(Codelets, TransformThenInverseRestoresTheInput) {
    for (const Case* c : cases) {
        const Scalars x = c->input(7u * static_cast<uint64_t>(c->n));
        for (uint32_t flag : kFlags) {
            Scalars y, z, want = x;
            ASSERT_EQ(c->run(x, y, flag), ZAM_STS_OK) << c->name;
            ASSERT_EQ(c->inverse->run(y, z, flag), ZAM_STS_OK) << c->inverse->name;
            for (LD& v : want) v *= c->n * c->scale(flag) * c->inverse->scale(flag);
            EXPECT_LE(relative_rms(z, want), 2 * rms_bound(*c)) << c->name << " flag " << flag;
        }
    }
}

// The length dispatcher of the family: every length gives its codelet's
// result bit for bit, a bad length is refused before anything else, then the
// codelet's own checks follow.
TEST_P(Codelets, DispatcherForwardsEveryLengthAndRefusesBadLengthsFirst) {
    double buf[2 * 64 + 2] = {};
    for (const Case* c : cases) {
        const auto& d = c->dispatch;
        const Scalars x = c->input(static_cast<uint64_t>(c->n));
        for (uint32_t flag : kFlags) {
            Scalars a, b;
            ASSERT_EQ(c->apply(x, a, [&](const void* s, void* o) { return d(s, o, c->n, flag); }), ZAM_STS_OK) << c->name;
            ASSERT_EQ(c->run(x, b, flag), ZAM_STS_OK) << c->name;
            EXPECT_TRUE(identical(a, b)) << c->name << " flag " << flag;
        }
        EXPECT_EQ(d(buf, buf, c->n, 3u), ZAM_STS_FLAG_ERR) << c->name;
        EXPECT_EQ(d(nullptr, buf, c->n, 3u), ZAM_STS_NULL_PTR_ERR) << c->name;
    }
    for (int32_t len : {1, 0, -1, 65, 66, 1000, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(cases[0]->dispatch(nullptr, nullptr, len, ZAM_DIV_FWD_BY_N), ZAM_STS_SIZE_ERR) << len;
        EXPECT_EQ(cases[0]->dispatch(nullptr, nullptr, len, 0u), ZAM_STS_SIZE_ERR) << len;
    }
}

// ---- The real layouts ---------------------------------------------------

bool positive_zero(LD v) { return v == 0 && !std::signbit(v); }

// CCS's imaginary parts of the real bins are +0.0, and an all-zero input gives
// only +0.0 in every layout (negated parts are 0.0 - v, never -v).
TEST(RealLayouts, ZerosArePositive) {
    for (const Case& c : all_cases()) {
        if (c.layout == kNone || c.direction > 0) continue;
        for (uint32_t flag : kFlags) {
            Scalars y, z;
            ASSERT_EQ(c.run(c.input(5u * static_cast<uint64_t>(c.n)), y, flag), ZAM_STS_OK) << c.name;
            if (c.layout == kCCS) {
                EXPECT_TRUE(positive_zero(y[1]) && (c.n % 2 || positive_zero(y[c.n + 1]))) << c.name;
            }
            ASSERT_EQ(c.run(Scalars(static_cast<size_t>(c.in), 0), z, flag), ZAM_STS_OK) << c.name;
            EXPECT_TRUE(std::all_of(z.begin(), z.end(), positive_zero)) << c.name << " flag " << flag;
        }
    }
}

// Case a on xa and case b on xb give the same bits under every flag.
void expect_same_bits(const Case& a, const Scalars& xa, const Case& b, const Scalars& xb) {
    for (uint32_t flag : kFlags) {
        Scalars ya, yb;
        ASSERT_EQ(a.run(xa, ya, flag), ZAM_STS_OK) << a.name;
        ASSERT_EQ(b.run(xb, yb, flag), ZAM_STS_OK) << b.name;
        EXPECT_TRUE(identical(ya, yb)) << a.name << " flag " << flag;
    }
}

// The CCS inverse never reads element 1 nor (even N) element N+1.
TEST(RealLayouts, CcsInverseIgnoresTheZeroImaginaryParts) {
    for (const Case& c : all_cases()) {
        if (c.layout != kCCS || c.direction < 0) continue;
        const Scalars clean = c.input(3u * static_cast<uint64_t>(c.n));
        Scalars dirty = clean;
        dirty[1] = std::numeric_limits<LD>::quiet_NaN();
        if (c.n % 2 == 0) dirty[static_cast<size_t>(c.n + 1)] = std::numeric_limits<LD>::quiet_NaN();
        expect_same_bits(c, clean, c, dirty);
    }
}

TEST(RealLayouts, OddLengthPackAndPermAreIdentical) {
    for (const Case& c : all_cases()) {
        if (c.layout != kPack || c.n % 2 == 0) continue;
        std::string perm = c.name;
        const Case& p = find_case(perm.replace(perm.find("Pack"), 4, "Perm"));
        const Scalars x = c.input(11u * static_cast<uint64_t>(c.n));
        expect_same_bits(c, x, p, x);
    }
}

// Positions per layout, as listed in the header ('r' = R[k], 'i' = I[k],
// '0' = stored zero), for an input whose spectrum has distinct parts.
TEST(RealLayouts, IndexTableOfFourFiveAndEight) {
    const char* const rows[][2] = {
        {"RToCCS_4", "r0 0 r1 i1 r2 0"}, {"RToPack_4", "r0 r1 i1 r2"}, {"RToPerm_4", "r0 r2 r1 i1"},
        {"RToCCS_5", "r0 0 r1 i1 r2 i2"}, {"RToPack_5", "r0 r1 i1 r2 i2"}, {"RToPerm_5", "r0 r1 i1 r2 i2"},
        {"RToCCS_8", "r0 0 r1 i1 r2 i2 r3 i3 r4 0"}, {"RToPack_8", "r0 r1 i1 r2 i2 r3 i3 r4"},
        {"RToPerm_8", "r0 r4 r1 i1 r2 i2 r3 i3"},
    };
    for (const auto& [codelet, cells] : rows) {
        const Case& c = find_case(std::string("zamgDFTFwd_") + codelet + "_64f");
        Scalars x, y;
        for (int i = 0; i < c.n; ++i) x.push_back(1.0L + i * i);
        ASSERT_EQ(c.run(x, y, ZAM_NODIV_BY_ANY), ZAM_STS_OK);
        const Scalars ccs = find_case("zamgDFTFwd_RToCCS_" + std::to_string(c.n) + "_64f").reference(x);
        std::istringstream in(cells);
        size_t i = 0;
        for (std::string cell; in >> cell; ++i) {
            ASSERT_LT(i, y.size()) << codelet;
            const LD want = cell == "0" ? 0 : ccs[static_cast<size_t>(2 * (cell[1] - '0') + (cell[0] == 'i'))];
            EXPECT_NEAR(y[i], want, 1e-12) << codelet << " element " << i;
        }
        EXPECT_EQ(i, y.size()) << codelet;
    }
}

// ---- The version record and the C interface ---------------------------

TEST(Version, IsOneConstantRecord) {
    const ZamLibVersion* v = zamgenGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, zamgenGetLibVersion());
    EXPECT_EQ(v->major, 6);
    EXPECT_EQ(v->minor, 1);
    EXPECT_EQ(v->build, 137);
    EXPECT_EQ(v->build2, 316);
    EXPECT_EQ(std::memcmp(v->targetCode, "mx\0\0", 4), 0);
    EXPECT_STREQ(v->name, "zamgenmx-6.1.dll");
    EXPECT_STREQ(v->version, "6.1 build 137.36");
    EXPECT_STREQ(v->buildDate, "Sep 29 2009");
}

TEST(CInterface, HeaderCompilesAsCAndCallsWork) { EXPECT_EQ(zt_c_api_check(), 0); }

} // namespace
