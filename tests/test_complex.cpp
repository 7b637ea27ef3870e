// The complex DFT codelets: accuracy against a long-double reference, the
// status contract, round trips, in-place use, the scale literals and the
// members whose arithmetic is fixed exactly.
#include "support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {

using namespace zt;

template <class C>
struct Traits;
template <>
struct Traits<Zam32fc> {
    using R = float;
    // Relative RMS error bound: about four units of float rounding (2^-24).
    static constexpr LD kRms = 2.5e-7L;
    static constexpr const char* kName = "32fc";
};
template <>
struct Traits<Zam64fc> {
    using R = double;
    static constexpr LD kRms = 5e-16L;
    static constexpr const char* kName = "64fc";
};

template <class C>
CodeletFn<C> codelet(const ComplexCodelets& e, int sign) {
    if constexpr (std::is_same_v<C, Zam32fc>) return sign < 0 ? e.fwd32 : e.inv32;
    else return sign < 0 ? e.fwd64 : e.inv64;
}

template <class C>
std::vector<C> random_signal(int n, uint64_t seed) {
    Random rng(seed);
    std::vector<C> x(static_cast<size_t>(n));
    for (C& v : x) {
        v.re = static_cast<typename Traits<C>::R>(rng.next());
        v.im = static_cast<typename Traits<C>::R>(rng.next());
    }
    return x;
}

template <class C>
std::vector<CLD> widen(const std::vector<C>& x) {
    std::vector<CLD> y(x.size());
    for (size_t i = 0; i < x.size(); ++i) y[i] = CLD(x[i].re, x[i].im);
    return y;
}

// Fills a destination with a pattern no codelet would produce.
template <class C>
std::vector<C> sentinel(int n) {
    std::vector<C> d(static_cast<size_t>(n));
    std::memset(d.data(), 0xA5, d.size() * sizeof(C));
    return d;
}

template <class C>
void check_accuracy(LD& worst) {
    for (const ComplexCodelets& e : complex_codelets()) {
        for (int sign : {-1, +1}) {
            for (uint32_t flag : kFlags) {
                const auto x = random_signal<C>(e.n, 1000u * static_cast<uint64_t>(e.n) + flag);
                std::vector<C> y(x.size());
                ASSERT_EQ(codelet<C>(e, sign)(x.data(), y.data(), flag), ZAM_STS_OK);
                const LD s = expected_scale<typename Traits<C>::R>(e.n, flag, sign);
                std::vector<CLD> ref = reference_dft(widen(x), sign);
                for (CLD& v : ref) v *= s;
                const LD err = relative_rms(widen(y), ref);
                worst = std::max(worst, err);
                EXPECT_LE(err, Traits<C>::kRms)
                    << "N = " << e.n << (sign < 0 ? " forward " : " inverse ") << Traits<C>::kName
                    << " flag " << flag;
            }
        }
    }
}

TEST(ComplexCodelets, MatchTheReferenceForEveryLengthDirectionAndFlag) {
    LD worst32 = 0, worst64 = 0;
    check_accuracy<Zam32fc>(worst32);
    check_accuracy<Zam64fc>(worst64);
    std::printf("worst relative RMS error: 32fc %.3Le, 64fc %.3Le\n", worst32, worst64);
}

template <class C>
void check_statuses() {
    for (const ComplexCodelets& e : complex_codelets()) {
        for (int sign : {-1, +1}) {
            const auto fn = codelet<C>(e, sign);
            const auto x = random_signal<C>(e.n, 7);
            const auto untouched = sentinel<C>(e.n);
            auto d = untouched;
            for (uint32_t flag : {ZAM_DIV_FWD_BY_N, 0u, 3u, 0xFFFFFFFFu}) {
                EXPECT_EQ(fn(nullptr, d.data(), flag), ZAM_STS_NULL_PTR_ERR) << e.n;
                EXPECT_EQ(fn(x.data(), nullptr, flag), ZAM_STS_NULL_PTR_ERR) << e.n;
                EXPECT_EQ(fn(nullptr, nullptr, flag), ZAM_STS_NULL_PTR_ERR) << e.n;
            }
            for (uint32_t flag : kBadFlags)
                EXPECT_EQ(fn(x.data(), d.data(), flag), ZAM_STS_FLAG_ERR) << e.n << " flag " << flag;
            EXPECT_TRUE(bitwise_equal(d, untouched)) << "N = " << e.n << " wrote on failure";
        }
    }
}

TEST(ComplexCodelets, RejectNullPointersFirstAndBadFlagsWithoutWriting) {
    check_statuses<Zam32fc>();
    check_statuses<Zam64fc>();
}

template <class C>
void check_round_trips() {
    for (const ComplexCodelets& e : complex_codelets()) {
        const auto x = random_signal<C>(e.n, 99u + static_cast<uint64_t>(e.n));
        for (uint32_t flag : kFlags) {
            std::vector<C> y(x.size()), z(x.size());
            ASSERT_EQ(codelet<C>(e, -1)(x.data(), y.data(), flag), ZAM_STS_OK);
            ASSERT_EQ(codelet<C>(e, +1)(y.data(), z.data(), flag), ZAM_STS_OK);
            std::vector<CLD> want = widen(x);
            if (flag == ZAM_NODIV_BY_ANY)
                for (CLD& v : want) v *= static_cast<LD>(e.n);
            EXPECT_LE(relative_rms(widen(z), want), 2 * Traits<C>::kRms)
                << "N = " << e.n << " flag " << flag << ' ' << Traits<C>::kName;
        }
    }
}

TEST(ComplexCodelets, ForwardThenInverseRestoresTheInput) {
    check_round_trips<Zam32fc>();
    check_round_trips<Zam64fc>();
}

template <class C>
void check_in_place() {
    for (const ComplexCodelets& e : complex_codelets()) {
        for (int sign : {-1, +1}) {
            for (uint32_t flag : kFlags) {
                const auto x = random_signal<C>(e.n, 5u + flag);
                std::vector<C> y(x.size());
                auto inplace = x;
                ASSERT_EQ(codelet<C>(e, sign)(x.data(), y.data(), flag), ZAM_STS_OK);
                ASSERT_EQ(codelet<C>(e, sign)(inplace.data(), inplace.data(), flag), ZAM_STS_OK);
                EXPECT_TRUE(bitwise_equal(y, inplace)) << "N = " << e.n << " flag " << flag;
            }
        }
    }
}

TEST(ComplexCodelets, InPlaceEqualsOutOfPlaceBitwise) {
    check_in_place<Zam32fc>();
    check_in_place<Zam64fc>();
}

// An impulse at x[0] passes through every factorisation unchanged, so each
// output is exactly the scale literal the flag selects.
template <class C>
void check_impulse_and_constant() {
    using R = typename Traits<C>::R;
    for (const ComplexCodelets& e : complex_codelets()) {
        for (int sign : {-1, +1}) {
            for (uint32_t flag : kFlags) {
                const R s = expected_scale<R>(e.n, flag, sign);
                std::vector<C> x(static_cast<size_t>(e.n), C{0, 0}), y(x.size());
                x[0].re = 1;
                ASSERT_EQ(codelet<C>(e, sign)(x.data(), y.data(), flag), ZAM_STS_OK);
                for (const C& v : y) {
                    EXPECT_EQ(v.re, s) << "N = " << e.n << " flag " << flag;
                    EXPECT_EQ(v.im, R(0)) << "N = " << e.n << " flag " << flag;
                }
                for (C& v : x) v = C{1, 0};
                ASSERT_EQ(codelet<C>(e, sign)(x.data(), y.data(), flag), ZAM_STS_OK);
                const LD tol = 8 * std::numeric_limits<R>::epsilon() * e.n * s;
                EXPECT_NEAR(y[0].re, static_cast<LD>(e.n) * s, tol);
                for (size_t k = 1; k < y.size(); ++k) {
                    EXPECT_NEAR(y[k].re, 0, tol) << "N = " << e.n << " k = " << k;
                    EXPECT_NEAR(y[k].im, 0, tol) << "N = " << e.n << " k = " << k;
                }
            }
        }
    }
}

TEST(ComplexCodelets, ImpulseGivesTheScaleLiteralAndConstantGivesOnlyBinZero) {
    check_impulse_and_constant<Zam32fc>();
    check_impulse_and_constant<Zam64fc>();
}

// An impulse at any position p gives y[k] = s * exp(-+2 pi i p k / N): every
// index map (prime-factor, Rader permutations, Cooley-Tukey) only reorders work.
template <class C>
void check_impulses() {
    using R = typename Traits<C>::R;
    for (const ComplexCodelets& e : complex_codelets()) {
        for (int sign : {-1, +1}) {
            for (int p = 0; p < e.n; ++p) {
                std::vector<C> x(static_cast<size_t>(e.n), C{0, 0}), y(x.size());
                x[static_cast<size_t>(p)].re = 1;
                ASSERT_EQ(codelet<C>(e, sign)(x.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
                for (int k = 0; k < e.n; ++k) {
                    const CLD w = root_of_unity(static_cast<long>(p) * k, e.n, sign);
                    const LD tol = 8 * std::numeric_limits<R>::epsilon();
                    const C& v = y[static_cast<size_t>(k)];
                    ASSERT_NEAR(v.re, w.real(), tol) << "N = " << e.n << " p = " << p << " k = " << k;
                    ASSERT_NEAR(v.im, w.imag(), tol) << "N = " << e.n << " p = " << p << " k = " << k;
                }
            }
        }
    }
}

TEST(ComplexCodelets, ImpulsesAnywhereGiveTheRootsOfUnity) {
    check_impulses<Zam32fc>();
    check_impulses<Zam64fc>();
}

// ---- Members whose arithmetic is fixed exactly ---------------------------

template <class C>
void check_length_two_and_four() {
    using R = typename Traits<C>::R;
    for (int trial = 0; trial < 50; ++trial) {
        auto x = random_signal<C>(4, 500u + static_cast<uint64_t>(trial));
        std::vector<C> y(4);
        const auto& two = complex_codelets()[0];
        ASSERT_EQ(two.n, 2);
        ASSERT_EQ(codelet<C>(two, -1)(x.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
        EXPECT_EQ(y[0].re, x[0].re + x[1].re);
        EXPECT_EQ(y[0].im, x[0].im + x[1].im);
        EXPECT_EQ(y[1].re, x[0].re - x[1].re);
        EXPECT_EQ(y[1].im, x[0].im - x[1].im);

        const auto& four = complex_codelets()[2];
        ASSERT_EQ(four.n, 4);
        for (int sign : {-1, +1}) {
            for (uint32_t flag : kFlags) {
                const R s = expected_scale<R>(4, flag, sign);
                ASSERT_EQ(codelet<C>(four, sign)(x.data(), y.data(), flag), ZAM_STS_OK);
                const C a{x[0].re + x[2].re, x[0].im + x[2].im}, b{x[0].re - x[2].re, x[0].im - x[2].im};
                const C c{x[1].re + x[3].re, x[1].im + x[3].im}, d{x[1].re - x[3].re, x[1].im - x[3].im};
                // forward: y1 = b - i*d, inverse: y1 = b + i*d
                const R sg = static_cast<R>(sign);
                EXPECT_EQ(y[0].re, (a.re + c.re) * s);
                EXPECT_EQ(y[0].im, (a.im + c.im) * s);
                EXPECT_EQ(y[2].re, (a.re - c.re) * s);
                EXPECT_EQ(y[2].im, (a.im - c.im) * s);
                EXPECT_EQ(y[1].re, (sign < 0 ? b.re + d.im : b.re - d.im) * s);
                EXPECT_EQ(y[1].im, (sign < 0 ? b.im - d.re : b.im + d.re) * s);
                EXPECT_EQ(y[3].re, (sign < 0 ? b.re - d.im : b.re + d.im) * s);
                EXPECT_EQ(y[3].im, (sign < 0 ? b.im + d.re : b.im - d.re) * s);
                (void)sg;
            }
        }
    }
}

TEST(ComplexCodeletsExact, LengthsTwoAndFourAreSumsAndDifferences) {
    check_length_two_and_four<Zam32fc>();
    check_length_two_and_four<Zam64fc>();
}

// N = 3 in single precision: the cosine part x0 - 0.5*(x1 + x2) is one double
// expression rounded once, the sine part one double product rounded once.
TEST(ComplexCodeletsExact, LengthThreeSinglePrecisionRoundsEachPartOnce) {
    const auto& three = complex_codelets()[1];
    ASSERT_EQ(three.n, 3);
    for (int trial = 0; trial < 200; ++trial) {
        auto x = random_signal<Zam32fc>(3, 900u + static_cast<uint64_t>(trial));
        std::vector<Zam32fc> y(3);
        for (uint32_t flag : kFlags) {
            ASSERT_EQ(three.fwd32(x.data(), y.data(), flag), ZAM_STS_OK);
            const float s = expected_scale<float>(3, flag, -1);
            const float sum = x[1].re + x[2].re;
            const float cosine = static_cast<float>(static_cast<double>(x[0].re) - 0.5 * sum);
            const float sine = static_cast<float>(0.8660254037844386 * static_cast<double>(x[1].im - x[2].im));
            EXPECT_EQ(y[1].re, (cosine + sine) * s);
            EXPECT_EQ(y[2].re, (cosine - sine) * s);
        }
    }
}

} // namespace
