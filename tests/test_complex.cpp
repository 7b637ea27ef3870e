// Complex codelets: impulses at every position (every index map only reorders
// work) and the members whose arithmetic is fixed exactly.
#include "support.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace zt;

// An impulse at position p gives y[k] = exp(-+2 pi i p k / N) for every k.
template <class C, class R>
void check_impulses(CodeletFn<C> ComplexCodelets::*fn, int sign) {
    for (const ComplexCodelets& e : complex_codelets()) {
        for (int p = 0; p < e.n; ++p) {
            std::vector<C> x(static_cast<size_t>(e.n), C{0, 0}), y(x.size());
            x[static_cast<size_t>(p)].re = 1;
            ASSERT_EQ((e.*fn)(x.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
            for (int k = 0; k < e.n; ++k) {
                const CLD w = root_of_unity(static_cast<long>(p) * k, e.n, sign);
                const LD tol = 8 * std::numeric_limits<R>::epsilon();
                ASSERT_NEAR(y[static_cast<size_t>(k)].re, w.real(), tol) << "N = " << e.n << " p = " << p << " k = " << k;
                ASSERT_NEAR(y[static_cast<size_t>(k)].im, w.imag(), tol) << "N = " << e.n << " p = " << p << " k = " << k;
            }
        }
    }
}

// A constant input of ones gives N at bin 0 and zeros elsewhere (to rounding).
template <class C, class R>
void check_constant(CodeletFn<C> ComplexCodelets::*fn) {
    for (const ComplexCodelets& e : complex_codelets()) {
        std::vector<C> x(static_cast<size_t>(e.n), C{1, 0}), y(x.size());
        ASSERT_EQ((e.*fn)(x.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
        const LD tol = 4 * e.n * std::numeric_limits<R>::epsilon();
        EXPECT_NEAR(y[0].re, e.n, tol) << "N = " << e.n;
        for (const C& v : y) EXPECT_NEAR(v.im, 0, tol) << "N = " << e.n;
        for (size_t k = 1; k < y.size(); ++k) EXPECT_NEAR(y[k].re, 0, tol) << "N = " << e.n << " k = " << k;
    }
}

TEST(ComplexCodelets, ConstantInputGivesOnlyBinZero) {
    check_constant<Zam32fc, float>(&ComplexCodelets::fwd32);
    check_constant<Zam32fc, float>(&ComplexCodelets::inv32);
    check_constant<Zam64fc, double>(&ComplexCodelets::fwd64);
    check_constant<Zam64fc, double>(&ComplexCodelets::inv64);
}

TEST(ComplexCodelets, ImpulsesAnywhereGiveTheRootsOfUnity) {
    check_impulses<Zam32fc, float>(&ComplexCodelets::fwd32, -1);
    check_impulses<Zam32fc, float>(&ComplexCodelets::inv32, +1);
    check_impulses<Zam64fc, double>(&ComplexCodelets::fwd64, -1);
    check_impulses<Zam64fc, double>(&ComplexCodelets::inv64, +1);
}

// N = 2 with flag 8 is x0 + x1, x0 - x1; N = 4 is sums and differences, y1 =
// (x0 - x2) -+ i (x1 - x3), each output times s.
template <class C, class R>
void check_two_and_four(CodeletFn<C> two_fwd, CodeletFn<C> four_fwd, CodeletFn<C> four_inv) {
    for (int trial = 0; trial < 50; ++trial) {
        Random rng(500u + static_cast<uint64_t>(trial));
        const auto v = rng.reals<R>(8);
        std::vector<C> x{{v[0], v[1]}, {v[2], v[3]}, {v[4], v[5]}, {v[6], v[7]}}, y(4);
        ASSERT_EQ(two_fwd(x.data(), y.data(), ZAM_NODIV_BY_ANY), ZAM_STS_OK);
        EXPECT_EQ(y[0].re, x[0].re + x[1].re);
        EXPECT_EQ(y[0].im, x[0].im + x[1].im);
        EXPECT_EQ(y[1].re, x[0].re - x[1].re);
        EXPECT_EQ(y[1].im, x[0].im - x[1].im);
        for (int sign : {-1, +1}) {
            for (uint32_t flag : kFlags) {
                const R s = expected_scale<R>(4, flag, sign);
                ASSERT_EQ((sign < 0 ? four_fwd : four_inv)(x.data(), y.data(), flag), ZAM_STS_OK);
                const C a{x[0].re + x[2].re, x[0].im + x[2].im}, b{x[0].re - x[2].re, x[0].im - x[2].im};
                const C c{x[1].re + x[3].re, x[1].im + x[3].im}, d{x[1].re - x[3].re, x[1].im - x[3].im};
                EXPECT_EQ(y[0].re, (a.re + c.re) * s);
                EXPECT_EQ(y[0].im, (a.im + c.im) * s);
                EXPECT_EQ(y[2].re, (a.re - c.re) * s);
                EXPECT_EQ(y[2].im, (a.im - c.im) * s);
                EXPECT_EQ(y[1].re, (sign < 0 ? b.re + d.im : b.re - d.im) * s);
                EXPECT_EQ(y[1].im, (sign < 0 ? b.im - d.re : b.im + d.re) * s);
                EXPECT_EQ(y[3].re, (sign < 0 ? b.re - d.im : b.re + d.im) * s);
                EXPECT_EQ(y[3].im, (sign < 0 ? b.im + d.re : b.im - d.re) * s);
            }
        }
    }
}

TEST(ComplexCodeletsExact, LengthsTwoAndFourAreSumsAndDifferences) {
    check_two_and_four<Zam32fc, float>(zamgDFTFwd_CToC_2_32fc, zamgDFTFwd_CToC_4_32fc, zamgDFTInv_CToC_4_32fc);
    check_two_and_four<Zam64fc, double>(zamgDFTFwd_CToC_2_64fc, zamgDFTFwd_CToC_4_64fc, zamgDFTInv_CToC_4_64fc);
}

// N = 3 in single precision: the cosine part x0 - 0.5*(x1 + x2) is one double
// expression rounded once, the sine part one double product rounded once.
TEST(ComplexCodeletsExact, LengthThreeSinglePrecisionRoundsEachPartOnce) {
    for (int trial = 0; trial < 200; ++trial) {
        Random rng(900u + static_cast<uint64_t>(trial));
        const auto v = rng.reals<float>(6);
        const std::vector<Zam32fc> x{{v[0], v[1]}, {v[2], v[3]}, {v[4], v[5]}};
        std::vector<Zam32fc> y(3);
        for (uint32_t flag : kFlags) {
            ASSERT_EQ(zamgDFTFwd_CToC_3_32fc(x.data(), y.data(), flag), ZAM_STS_OK);
            const float s = expected_scale<float>(3, flag, -1);
            const float cosine = static_cast<float>(static_cast<double>(x[0].re) - 0.5 * (x[1].re + x[2].re));
            const float sine = static_cast<float>(0.8660254037844386 * static_cast<double>(x[1].im - x[2].im));
            EXPECT_EQ(y[1].re, (cosine + sine) * s);
            EXPECT_EQ(y[2].re, (cosine - sine) * s);
        }
    }
}

} // namespace
