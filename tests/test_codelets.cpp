// What every codelet of every family promises, checked over all 1,134 of them
// for every flag: accuracy against a long-double reference, the status
// contract, in-place use, the exact scale literals and round trips.
#include "support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace {

using namespace zt;

// Relative RMS error bounds: a little over three units of rounding of the
// element type (2^-24 = 6.0e-8 for float, 2^-53 = 1.1e-16 for double), the
// growth of a few rounded stages; the measured worst cases are 1.4e-7 and 3.0e-16.
LD rms_bound(const Case& c) { return c.single ? 2e-7L : 5e-16L; }

Scalars scaled_reference(const Case& c, const Scalars& x, uint32_t flag) {
    Scalars want = c.reference(x);
    for (LD& v : want) v *= c.scale(flag);
    return want;
}

TEST(Codelets, MatchTheReferenceForEveryFlag) {
    std::map<std::string, LD> worst;  // by family and precision
    for (const Case& c : all_cases()) {
        for (uint32_t flag : kFlags) {
            Random rng(97u * static_cast<uint64_t>(c.n) + flag);
            const Scalars x = rng.scalars(static_cast<size_t>(c.in), c.single);
            Scalars y;
            ASSERT_EQ(c.run(x, y, flag), ZAM_STS_OK) << c.name;
            const LD err = relative_rms(y, scaled_reference(c, x, flag));
            EXPECT_LE(err, rms_bound(c)) << c.name << " flag " << flag;
            const std::string family = c.name.substr(0, c.name.find('_', 11)) + (c.single ? " 32" : " 64");
            worst[family] = std::max(worst[family], err);
        }
    }
    for (const auto& [family, err] : worst) std::printf("worst relative RMS error %-24s %.3Le\n", family.c_str(), err);
}

// Null pointers are refused first, then bad flags, and nothing is written.
TEST(Codelets, RejectNullPointersFirstAndBadFlagsWithoutWriting) {
    for (const Case& c : all_cases()) {
        const size_t bytes = static_cast<size_t>(c.out) * (c.single ? 4 : 8);
        std::vector<unsigned char> src(static_cast<size_t>(c.in) * 8, 0), dst(bytes, 0xA5);
        const auto untouched = dst;
        for (uint32_t flag : {ZAM_DIV_BY_SQRTN, 0u, 5u, 0xFFFFFFFFu}) {
            EXPECT_EQ(c.call(nullptr, dst.data(), flag), ZAM_STS_NULL_PTR_ERR) << c.name;
            EXPECT_EQ(c.call(src.data(), nullptr, flag), ZAM_STS_NULL_PTR_ERR) << c.name;
            EXPECT_EQ(c.call(nullptr, nullptr, flag), ZAM_STS_NULL_PTR_ERR) << c.name;
        }
        for (uint32_t flag : kBadFlags) EXPECT_EQ(c.call(src.data(), dst.data(), flag), ZAM_STS_FLAG_ERR) << c.name << ' ' << flag;
        EXPECT_EQ(dst, untouched) << c.name << " wrote on failure";
    }
}

// Every input is read before any output is written: the source may be the
// destination (an array large enough for both), with bit-identical results.
TEST(Codelets, InPlaceEqualsOutOfPlaceBitwise) {
    for (const Case& c : all_cases()) {
        for (uint32_t flag : kFlags) {
            Random rng(13u * static_cast<uint64_t>(c.n) + flag);
            const Scalars x = rng.scalars(static_cast<size_t>(c.in), c.single);
            Scalars y;
            ASSERT_EQ(c.run(x, y, flag), ZAM_STS_OK);
            const size_t len = static_cast<size_t>(std::max(c.in, c.out));
            if (c.single) {
                std::vector<float> buf(len, 0.0f);
                std::copy(x.begin(), x.end(), buf.begin());
                ASSERT_EQ(c.call(buf.data(), buf.data(), flag), ZAM_STS_OK);
                EXPECT_TRUE(std::equal(y.begin(), y.end(), buf.begin())) << c.name << " flag " << flag;
            } else {
                std::vector<double> buf(len, 0.0);
                std::copy(x.begin(), x.end(), buf.begin());
                ASSERT_EQ(c.call(buf.data(), buf.data(), flag), ZAM_STS_OK);
                EXPECT_TRUE(std::equal(y.begin(), y.end(), buf.begin())) << c.name << " flag " << flag;
            }
        }
    }
}

// An impulse at the first input passes through every factorisation unchanged
// (sums with zeros, products of zeros), so each output is exactly the scale
// literal of the flag, or an exact zero.
TEST(Codelets, ImpulseGivesTheScaleLiteralsExactly) {
    for (const Case& c : all_cases()) {
        Scalars x(static_cast<size_t>(c.in), 0);
        x[0] = 1;
        const Scalars ref = c.reference(x);
        for (uint32_t flag : kFlags) {
            Scalars y;
            ASSERT_EQ(c.run(x, y, flag), ZAM_STS_OK);
            for (size_t i = 0; i < y.size(); ++i) {
                const LD want = std::fabs(ref[i]) > 0.5L ? c.scale(flag) : 0;
                EXPECT_EQ(y[i], want) << c.name << " flag " << flag << " output " << i;
            }
        }
    }
}

// A transform followed by its inverse (Hartley: itself) with the same flag
// gives N * s * s' times the input: the input itself for the flags 1, 2 and 4
// of the DFTs and 4 of Hartley, N times it for 8.
TEST(Codelets, TransformThenInverseRestoresTheInput) {
    for (const Case& c : all_cases()) {
        if (!c.inverse) continue;
        Random rng(7u * static_cast<uint64_t>(c.n));
        const Scalars x = rng.scalars(static_cast<size_t>(c.in), c.single);
        for (uint32_t flag : kFlags) {
            Scalars y, z;
            ASSERT_EQ(c.run(x, y, flag), ZAM_STS_OK);
            ASSERT_EQ(c.inverse->run(y, z, flag), ZAM_STS_OK);
            Scalars want = x;
            for (LD& v : want) v *= c.n * c.scale(flag) * c.inverse->scale(flag);
            EXPECT_LE(relative_rms(z, want), 2 * rms_bound(c)) << c.name << " flag " << flag;
        }
    }
}

} // namespace
