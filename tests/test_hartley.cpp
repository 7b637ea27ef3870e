// Hartley codelets: the networks whose arithmetic is fixed exactly.
#include "support.hpp"

#include <gtest/gtest.h>


namespace {

using namespace zt;

template <class R>
CodeletFn<R> hartley(const HartleyCodelets& e) {
    if constexpr (std::is_same_v<R, float>) return e.h32;
    else return e.h64;
}

// Unscaled, then divided by N (either divide-by-N flag): the input again.
TEST(HartleyCodelets, UnscaledThenDividedByNRestoresTheInput) {
    for (const HartleyCodelets& e : hartley_codelets()) {
        Random rng(43u * static_cast<uint64_t>(e.n));
        const auto x = rng.reals<double>(static_cast<size_t>(e.n));
        for (uint32_t second : {ZAM_DIV_FWD_BY_N, ZAM_DIV_INV_BY_N}) {
            std::vector<double> y(x.size()), z(x.size());
            ASSERT_EQ(e.h64(x.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
            ASSERT_EQ(e.h64(y.data(), z.data(), second), ZAM_STS_OK);
            for (size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(z[i], x[i], 1e-14) << "N = " << e.n;
        }
    }
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
