// Real codelets: the layouts and their index table, exact zeros, the unread
// positions of CCS, identical odd-length Pack and Perm, and the members whose
// arithmetic is fixed exactly.
#include "support.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace {

using namespace zt;

template <class R>
CodeletFn<R> forward(const RealCodelets& e, Layout l) {
    if constexpr (std::is_same_v<R, float>) return e.fwd32[l];
    else return e.fwd64[l];
}
template <class R>
CodeletFn<R> inverse(const RealCodelets& e, Layout l) {
    if constexpr (std::is_same_v<R, float>) return e.inv32[l];
    else return e.inv64[l];
}

// The half spectrum X[0..n/2] of x (exponent -1), in long double.
std::vector<CLD> half_spectrum(const std::vector<LD>& x) {
    std::vector<CLD> z(x.begin(), x.end());
    std::vector<CLD> y = reference_dft(z, -1);
    y.resize(x.size() / 2 + 1);
    return y;
}

// A half spectrum stored in a layout (the zero imaginary parts of CCS included).
template <class V>
std::vector<V> pack(Layout l, int n, const std::vector<CLD>& X) {
    std::vector<V> a(static_cast<size_t>(packed_size(l, n)), V(0));
    for (int k = 0; 2 * k <= n; ++k) {
        a[static_cast<size_t>(re_index(l, n, k))] = static_cast<V>(X[static_cast<size_t>(k)].real());
        if (k > 0 && 2 * k != n) a[static_cast<size_t>(im_index(l, n, k))] = static_cast<V>(X[static_cast<size_t>(k)].imag());
    }
    return a;
}

template <class R>
std::vector<CLD> random_half(int n, uint64_t seed) {
    Random rng(seed);
    std::vector<CLD> X(static_cast<size_t>(n / 2 + 1));
    for (int k = 0; 2 * k <= n; ++k) {
        const R re = static_cast<R>(rng.next()), im = static_cast<R>(rng.next());
        X[static_cast<size_t>(k)] = CLD(re, (k > 0 && 2 * k != n) ? im : R(0));
    }
    return X;
}

// CCS's imaginary parts of the real bins are exact +0.0, and an all-zero
// input gives only +0.0 in every layout (negated parts are 0.0 - v, never -v).
template <class R>
void check_zeros() {
    for (const RealCodelets& e : real_codelets()) {
        Random rng(5u * static_cast<uint64_t>(e.n));
        const auto x = rng.reals<R>(static_cast<size_t>(e.n));
        std::vector<R> ccs(static_cast<size_t>(packed_size(kCCS, e.n)));
        ASSERT_EQ(forward<R>(e, kCCS)(x.data(), ccs.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
        const R zero = 0;
        EXPECT_EQ(std::memcmp(&ccs[1], &zero, sizeof(R)), 0) << e.n;
        if (e.n % 2 == 0) {
            EXPECT_EQ(std::memcmp(&ccs[static_cast<size_t>(e.n + 1)], &zero, sizeof(R)), 0) << e.n;
        }
        const std::vector<R> zeros(static_cast<size_t>(e.n), R(0));
        for (Layout l : kLayouts) {
            std::vector<R> y(static_cast<size_t>(packed_size(l, e.n)), R(1));
            ASSERT_EQ(forward<R>(e, l)(zeros.data(), y.data(), ZAM_DIV_FWD_BY_N), ZAM_STS_OK);
            const std::vector<R> all_zero(y.size(), R(0));
            EXPECT_TRUE(bitwise_equal(y, all_zero)) << layout_name(l) << ' ' << e.n << ": a -0.0 or non-zero";
        }
    }
}

TEST(RealCodelets, ZerosArePositive) {
    check_zeros<float>();
    check_zeros<double>();
}

TEST(RealCodelets, IndexTableOfFourFiveAndEight) {
    // Input whose spectrum has distinct parts; positions per layout as listed
    // in the header ('r' = R[k], 'i' = I[k], '0' = stored zero).
    struct Row {
        int n;
        Layout l;
        const char* cells;
    };
    const Row rows[] = {
        {4, kCCS, "r0 0 r1 i1 r2 0"}, {4, kPack, "r0 r1 i1 r2"}, {4, kPerm, "r0 r2 r1 i1"},
        {5, kCCS, "r0 0 r1 i1 r2 i2"}, {5, kPack, "r0 r1 i1 r2 i2"}, {5, kPerm, "r0 r1 i1 r2 i2"},
        {8, kCCS, "r0 0 r1 i1 r2 i2 r3 i3 r4 0"}, {8, kPack, "r0 r1 i1 r2 i2 r3 i3 r4"},
        {8, kPerm, "r0 r4 r1 i1 r2 i2 r3 i3"},
    };
    for (const Row& row : rows) {
        const RealCodelets& e = real_codelets()[static_cast<size_t>(row.n - 2)];
        std::vector<double> x(static_cast<size_t>(row.n));
        for (int i = 0; i < row.n; ++i) x[static_cast<size_t>(i)] = 1.0 + i * i;
        std::vector<double> y(static_cast<size_t>(packed_size(row.l, row.n)));
        ASSERT_EQ(e.fwd64[row.l](x.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
        const std::vector<CLD> X = half_spectrum(std::vector<LD>(x.begin(), x.end()));
        std::istringstream cells(row.cells);
        std::string cell;
        for (size_t i = 0; cells >> cell; ++i) {
            ASSERT_LT(i, y.size());
            LD want = 0;
            if (cell[0] == 'r') want = X[static_cast<size_t>(cell[1] - '0')].real();
            if (cell[0] == 'i') want = X[static_cast<size_t>(cell[1] - '0')].imag();
            EXPECT_NEAR(y[i], want, 1e-12) << layout_name(row.l) << ' ' << row.n << " element " << i;
        }
    }
}

TEST(RealCodelets, OddLengthPackAndPermAreIdentical) {
    for (const RealCodelets& e : real_codelets()) {
        if (e.n % 2 == 0) continue;
        Random rng(11u * static_cast<uint64_t>(e.n));
        const auto x = rng.reals<float>(static_cast<size_t>(e.n));
        for (uint32_t flag : kFlags) {
            std::vector<float> a(x.size()), b(x.size()), c(x.size()), d(x.size());
            ASSERT_EQ(e.fwd32[kPack](x.data(), a.data(), flag), ZAM_STS_OK);
            ASSERT_EQ(e.fwd32[kPerm](x.data(), b.data(), flag), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(a, b)) << e.n;
            ASSERT_EQ(e.inv32[kPack](a.data(), c.data(), flag), ZAM_STS_OK);
            ASSERT_EQ(e.inv32[kPerm](a.data(), d.data(), flag), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(c, d)) << e.n;
        }
    }
}

// The CCS inverse never reads element 1 nor (even N) element N+1.
template <class R>
void check_unread_positions() {
    for (const RealCodelets& e : real_codelets()) {
        const auto H = random_half<R>(e.n, 3u * static_cast<uint64_t>(e.n));
        auto clean = pack<R>(kCCS, e.n, H);
        auto dirty = clean;
        dirty[1] = std::numeric_limits<R>::quiet_NaN();
        if (e.n % 2 == 0) dirty[static_cast<size_t>(e.n + 1)] = std::numeric_limits<R>::quiet_NaN();
        for (uint32_t flag : kFlags) {
            std::vector<R> a(static_cast<size_t>(e.n)), b(a.size());
            ASSERT_EQ(inverse<R>(e, kCCS)(clean.data(), a.data(), flag), ZAM_STS_OK);
            ASSERT_EQ(inverse<R>(e, kCCS)(dirty.data(), b.data(), flag), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(a, b)) << e.n;
        }
    }
}

TEST(RealCodelets, CcsInverseIgnoresTheZeroImaginaryParts) {
    check_unread_positions<float>();
    check_unread_positions<double>();
}

// ---- Members whose arithmetic is fixed exactly ---------------------------
//
// The formulas as the library defines them, evaluated here step by step in
// the element type R, with W = double where a value is formed in double.

using W = double;
constexpr W kC5 = 0.30901699437494745, kC5b = 0.8090169943749475, kS5 = 0.9510565162951535,
            kS5b = 0.5877852522924731, kH3 = 0.8660254037844386, kSqrt3 = 1.7320508075688772,
            kH = 0.7071067811865476;

// Forward: R[k], I[k] (I of real bins left 0).
template <class R>
void small_forward(int n, const std::vector<R>& x, R s, std::vector<R>& re, std::vector<R>& im) {
    re.assign(static_cast<size_t>(n / 2 + 1), R(0));
    im = re;
    auto w = [](R v) { return static_cast<W>(v); };
    switch (n) {
    case 2:
        re[0] = (x[0] + x[1]) * s;
        re[1] = (x[0] - x[1]) * s;
        break;
    case 3: {
        const R a = x[1] + x[2];
        re[0] = (x[0] + a) * s;
        re[1] = static_cast<R>((w(x[0]) - 0.5 * w(a)) * w(s));
        im[1] = static_cast<R>(0.0 - w(s) * (w(x[1] - x[2]) * kH3));
        break;
    }
    case 4: {
        const R a = x[0] + x[2], b = x[1] + x[3];
        re[0] = (a + b) * s;
        re[2] = (a - b) * s;
        re[1] = (x[0] - x[2]) * s;
        im[1] = R(0) - (x[1] - x[3]) * s;
        break;
    }
    case 5: {
        const R a = x[1] + x[4], b = x[2] + x[3], c = x[1] - x[4], d = x[3] - x[2];
        re[0] = (a + b + x[0]) * s;
        re[1] = static_cast<R>((kC5 * w(a) - kC5b * w(b) + w(x[0])) * w(s));
        re[2] = static_cast<R>((w(x[0]) - kC5b * w(a) + kC5 * w(b)) * w(s));
        im[1] = static_cast<R>((kS5b * w(d) - kS5 * w(c)) * w(s));
        im[2] = static_cast<R>(0.0 - w(s) * (kS5b * w(c) + kS5 * w(d)));
        break;
    }
    case 6: {
        const R p = x[2] + x[4], q = x[5] + x[1];
        const R e = x[0] + p, f = static_cast<R>(w(x[0]) - 0.5 * w(p)), g = static_cast<R>(kH3 * w(x[2] - x[4]));
        const R h = x[3] + q, k = static_cast<R>(w(x[3]) - 0.5 * w(q)), m = static_cast<R>(kH3 * w(x[5] - x[1]));
        re[0] = (e + h) * s;
        re[3] = (e - h) * s;
        re[1] = (f - k) * s;
        re[2] = (f + k) * s;
        im[1] = R(0) - (g - m) * s;
        im[2] = (g + m) * s;
        break;
    }
    case 8: {
        const R a0 = x[0] + x[4], d0 = x[0] - x[4], a1 = x[1] + x[5], d1 = x[1] - x[5];
        const R a2 = x[2] + x[6], d2 = x[2] - x[6], a3 = x[3] + x[7], d3 = x[3] - x[7];
        re[0] = ((a0 + a2) + (a1 + a3)) * s;
        re[4] = ((a0 + a2) - (a1 + a3)) * s;
        re[2] = (a0 - a2) * s;
        im[2] = R(0) - (a1 - a3) * s;
        const R p = static_cast<R>(kH * w(d1)), q = static_cast<R>(kH * w(d3));
        const R u = p - q, v = p + q;
        re[1] = (d0 + u) * s;
        re[3] = (d0 - u) * s;
        im[1] = R(0) - (d2 + v) * s;
        im[3] = R(0) - s * (v - d2);
        break;
    }
    default:
        FAIL() << n;
    }
}

template <class R>
std::vector<R> small_inverse(int n, const std::vector<R>& re, const std::vector<R>& im, R s) {
    std::vector<R> x(static_cast<size_t>(n));
    auto w = [](R v) { return static_cast<W>(v); };
    switch (n) {
    case 2:
        x[0] = (re[0] + re[1]) * s;
        x[1] = (re[0] - re[1]) * s;
        break;
    case 3: {
        const R t = R(2) * re[1];
        x[0] = (t + re[0]) * s;
        const R u = static_cast<R>(w(re[0]) - 0.5 * w(t)), v = static_cast<R>(kSqrt3 * w(im[1]));
        x[1] = (u - v) * s;
        x[2] = (u + v) * s;
        break;
    }
    case 4: {
        const R p = R(2) * re[1], q = R(2) * im[1];
        x[0] = (re[0] + re[2] + p) * s;
        x[2] = (re[0] + re[2] - p) * s;
        x[1] = (re[0] - re[2] - q) * s;
        x[3] = (re[0] - re[2] + q) * s;
        break;
    }
    case 5: {
        const R r1 = R(2) * re[1], i1 = R(2) * im[1], r2 = R(2) * re[2], i2 = R(2) * im[2];
        x[0] = (r1 + r2 + re[0]) * s;
        const R c1 = static_cast<R>(w(re[0]) + kC5 * w(r1) - kC5b * w(r2));
        const R c2 = static_cast<R>(w(re[0]) - kC5b * w(r1) + kC5 * w(r2));
        const R d1 = static_cast<R>(kS5 * w(i1) + kS5b * w(i2));
        const R d2 = static_cast<R>(kS5b * w(i1) - kS5 * w(i2));
        x[1] = (c1 - d1) * s;
        x[4] = (c1 + d1) * s;
        x[2] = (c2 - d2) * s;
        x[3] = (c2 + d2) * s;
        break;
    }
    default:
        ADD_FAILURE() << n;
    }
    return x;
}

template <class R>
void check_small_members() {
    for (int trial = 0; trial < 100; ++trial) {
        for (int n : {2, 3, 4, 5, 6, 8}) {
            const RealCodelets& e = real_codelets()[static_cast<size_t>(n - 2)];
            Random rng(1000u * static_cast<uint64_t>(trial) + static_cast<uint64_t>(n));
            const auto x = rng.reals<R>(static_cast<size_t>(n));
            for (uint32_t flag : kFlags) {
                std::vector<R> re, im;
                small_forward<R>(n, x, expected_scale<R>(n, flag, -1), re, im);
                for (Layout l : kLayouts) {
                    std::vector<R> y(static_cast<size_t>(packed_size(l, n)));
                    ASSERT_EQ(forward<R>(e, l)(x.data(), y.data(), flag), ZAM_STS_OK);
                    for (int k = 0; 2 * k <= n; ++k) {
                        EXPECT_EQ(y[static_cast<size_t>(re_index(l, n, k))], re[static_cast<size_t>(k)]) << "N = " << n << " R" << k;
                        if (k > 0 && 2 * k != n) {
                            EXPECT_EQ(y[static_cast<size_t>(im_index(l, n, k))], im[static_cast<size_t>(k)]) << "N = " << n << " I" << k;
                        }
                    }
                }
                if (n > 5) continue;
                const auto H = random_half<R>(n, 2000u * static_cast<uint64_t>(trial) + static_cast<uint64_t>(n));
                std::vector<R> hre, him;
                for (const CLD& v : H) {
                    hre.push_back(static_cast<R>(v.real()));
                    him.push_back(static_cast<R>(v.imag()));
                }
                const auto want = small_inverse<R>(n, hre, him, expected_scale<R>(n, flag, +1));
                for (Layout l : kLayouts) {
                    const auto in = pack<R>(l, n, H);
                    std::vector<R> z(static_cast<size_t>(n));
                    ASSERT_EQ(inverse<R>(e, l)(in.data(), z.data(), flag), ZAM_STS_OK);
                    EXPECT_TRUE(bitwise_equal(z, want)) << "inverse N = " << n << ' ' << layout_name(l);
                }
            }
        }
    }
}

TEST(RealCodeletsExact, SmallMembersFollowTheirFormulas) {
    check_small_members<float>();
    check_small_members<double>();
}

} // namespace
