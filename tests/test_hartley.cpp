// The Hartley codelets: accuracy, self-inverse round trips, in-place use,
// statuses and the networks whose arithmetic is fixed.
#include "support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {

using namespace zt;

template <class R>
CodeletFn<R> hartley(const HartleyCodelets& e) {
    if constexpr (std::is_same_v<R, float>) return e.h32;
    else return e.h64;
}

template <class R>
constexpr LD kRms = std::is_same_v<R, float> ? 2.5e-7L : 5e-16L;

// y[k] = sum x[n] (cos + sin)(2 pi n k / N), in long double.
std::vector<LD> reference_hartley(const std::vector<LD>& x) {
    const long n = static_cast<long>(x.size());
    std::vector<LD> y(x.size());
    for (long k = 0; k < n; ++k) {
        LD acc = 0;
        for (long j = 0; j < n; ++j) {
            const CLD w = root_of_unity(j * k, n, +1);
            acc += x[static_cast<size_t>(j)] * (w.real() + w.imag());
        }
        y[static_cast<size_t>(k)] = acc;
    }
    return y;
}

template <class R>
LD rel_rms(const std::vector<R>& got, const std::vector<LD>& want) {
    LD num = 0, den = 0;
    for (size_t i = 0; i < want.size(); ++i) {
        num += (got[i] - want[i]) * (got[i] - want[i]);
        den += want[i] * want[i];
    }
    return std::sqrt(num / den);
}

template <class R>
void check_accuracy(LD& worst) {
    for (const HartleyCodelets& e : hartley_codelets()) {
        for (uint32_t flag : kFlags) {
            Random rng(41u * static_cast<uint64_t>(e.n) + flag);
            const auto x = rng.reals<R>(static_cast<size_t>(e.n));
            std::vector<R> y(x.size());
            ASSERT_EQ(hartley<R>(e)(x.data(), y.data(), flag), ZAM_STS_OK);
            std::vector<LD> want = reference_hartley(std::vector<LD>(x.begin(), x.end()));
            for (LD& v : want) v *= static_cast<LD>(expected_scale<R>(e.n, flag, 0));
            const LD err = rel_rms(y, want);
            worst = std::max(worst, err);
            EXPECT_LE(err, kRms<R>) << "N = " << e.n << " flag " << flag;
        }
    }
}

TEST(HartleyCodelets, MatchTheReferenceForEveryLengthAndFlag) {
    LD w32 = 0, w64 = 0;
    check_accuracy<float>(w32);
    check_accuracy<double>(w64);
    std::printf("worst relative RMS error: 32f %.3Le, 64f %.3Le\n", w32, w64);
}

// The transform is its own inverse up to N: 4 then 4, 8 then 1, 8 then 2.
template <class R>
void check_self_inverse() {
    const std::pair<uint32_t, uint32_t> pairs[] = {{ZAM_DIV_BY_SQRTN, ZAM_DIV_BY_SQRTN},
                                                   {ZAM_NODIV_BY_ANY, ZAM_DIV_FWD_BY_N},
                                                   {ZAM_NODIV_BY_ANY, ZAM_DIV_INV_BY_N}};
    for (const HartleyCodelets& e : hartley_codelets()) {
        Random rng(43u * static_cast<uint64_t>(e.n));
        const auto x = rng.reals<R>(static_cast<size_t>(e.n));
        for (auto [f1, f2] : pairs) {
            std::vector<R> y(x.size()), z(x.size());
            ASSERT_EQ(hartley<R>(e)(x.data(), y.data(), f1), ZAM_STS_OK);
            ASSERT_EQ(hartley<R>(e)(y.data(), z.data(), f2), ZAM_STS_OK);
            EXPECT_LE(rel_rms(z, std::vector<LD>(x.begin(), x.end())), 2 * kRms<R>) << "N = " << e.n;
        }
    }
}

TEST(HartleyCodelets, AreTheirOwnInverse) {
    check_self_inverse<float>();
    check_self_inverse<double>();
}

template <class R>
void check_in_place_and_statuses() {
    for (const HartleyCodelets& e : hartley_codelets()) {
        Random rng(47u * static_cast<uint64_t>(e.n));
        const auto x = rng.reals<R>(static_cast<size_t>(e.n));
        for (uint32_t flag : kFlags) {
            std::vector<R> y(x.size());
            auto buf = x;
            ASSERT_EQ(hartley<R>(e)(x.data(), y.data(), flag), ZAM_STS_OK);
            ASSERT_EQ(hartley<R>(e)(buf.data(), buf.data(), flag), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(buf, y)) << "N = " << e.n;
        }
        std::vector<R> d(x.size());
        std::memset(d.data(), 0xA5, d.size() * sizeof(R));
        const auto untouched = d;
        for (uint32_t flag : {ZAM_NODIV_BY_ANY, 0u, 16u}) {
            EXPECT_EQ(hartley<R>(e)(nullptr, d.data(), flag), ZAM_STS_NULL_PTR_ERR);
            EXPECT_EQ(hartley<R>(e)(x.data(), nullptr, flag), ZAM_STS_NULL_PTR_ERR);
        }
        for (uint32_t flag : kBadFlags) EXPECT_EQ(hartley<R>(e)(x.data(), d.data(), flag), ZAM_STS_FLAG_ERR);
        EXPECT_TRUE(bitwise_equal(d, untouched)) << "N = " << e.n;
    }
}

TEST(HartleyCodelets, InPlaceAndStatuses) {
    check_in_place_and_statuses<float>();
    check_in_place_and_statuses<double>();
}

// ---- The networks whose arithmetic is fixed --------------------------------

template <class R>
std::vector<R> small_network(const std::vector<R>& x, R s) {
    const size_t n = x.size();
    std::vector<R> y(n);
    auto w = [](R v) { return static_cast<double>(v); };
    if (n == 2) {
        y = {(x[0] + x[1]) * s, (x[0] - x[1]) * s};
    } else if (n == 3) {
        const R a = x[1] + x[2];
        const R t = static_cast<R>(w(x[0]) - w(a) * 0.5), u = static_cast<R>(w(x[1] - x[2]) * 0.8660254037844386);
        y = {(x[0] + a) * s, (t + u) * s, (t - u) * s};
    } else if (n == 4) {
        y = {((x[1] + x[3]) + (x[0] + x[2])) * s, ((x[1] - x[3]) + (x[0] - x[2])) * s,
             ((x[0] + x[2]) - (x[1] + x[3])) * s, ((x[0] - x[2]) - (x[1] - x[3])) * s};
    } else {
        const R e = x[0] + x[4], f = x[0] - x[4], g = x[2] + x[6], h = x[2] - x[6];
        const R p = x[1] + x[5], q = x[3] + x[7];
        const R r = static_cast<R>(0.7071067811865476 * w(x[1] - x[5]));
        const R v = static_cast<R>(0.7071067811865476 * w(x[3] - x[7]));
        const R d = r - v, c = r + v;
        y[0] = ((e + g) + (p + q)) * s;
        y[4] = ((e + g) - (p + q)) * s;
        y[2] = ((e - g) + (p - q)) * s;
        y[6] = ((e - g) - (p - q)) * s;
        y[1] = ((f + d) + (h + c)) * s;
        y[7] = ((f + d) - (h + c)) * s;
        y[3] = ((f - d) - (h - c)) * s;
        y[5] = ((f - d) + (h - c)) * s;
    }
    return y;
}

template <class R>
void check_small_networks() {
    for (size_t n : {2u, 3u, 4u, 8u}) {
        const HartleyCodelets& e = hartley_codelets()[n - 2];
        for (int trial = 0; trial < 100; ++trial) {
            Random rng(300u * static_cast<uint64_t>(trial) + n);
            const auto x = rng.reals<R>(n);
            for (uint32_t flag : kFlags) {
                std::vector<R> y(n);
                ASSERT_EQ(hartley<R>(e)(x.data(), y.data(), flag), ZAM_STS_OK);
                EXPECT_TRUE(bitwise_equal(y, small_network(x, expected_scale<R>(static_cast<int>(n), flag, 0))))
                    << "N = " << n << " flag " << flag;
            }
        }
    }
}

TEST(HartleyCodeletsExact, LengthsTwoThreeFourAndEightFollowTheirNetworks) {
    check_small_networks<float>();
    check_small_networks<double>();
}

TEST(HartleyCodeletsExact, LengthThreeUnitInputs) {
    const HartleyCodelets& e = hartley_codelets()[1];
    std::vector<double> y(3);
    const std::vector<double> x0{1, 0, 0}, x1{0, 1, 0};
    ASSERT_EQ(e.h64(x0.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
    EXPECT_EQ(y, (std::vector<double>{1, 1, 1}));
    ASSERT_EQ(e.h64(x1.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
    EXPECT_NEAR(y[0], 1.0, 1e-15);
    EXPECT_NEAR(y[1], 0.3660254037844386, 1e-15);
    EXPECT_NEAR(y[2], -1.3660254037844386, 1e-15);
}

// Length 2 computes what the order-1 Walsh-Hadamard transform computes: a
// butterfly, with the same flag handling.
TEST(HartleyCodeletsExact, LengthTwoIsTheButterfly) {
    const HartleyCodelets& e = hartley_codelets()[0];
    const std::vector<float> x{3.0f, 1.0f};
    std::vector<float> y(2);
    ASSERT_EQ(e.h32(x.data(), y.data(), ZAM_DIV_BY_SQRTN), ZAM_STS_OK);
    EXPECT_EQ(y[0], 4.0f * 0.70710677f);
    EXPECT_EQ(y[1], 2.0f * 0.70710677f);
}

} // namespace
