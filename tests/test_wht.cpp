// The Walsh-Hadamard transforms, orders 1 to 13, both precisions, every flag:
// the definition, the work buffer (caller's, exactly sized and guarded, or
// none), in place, the order entries and the size queries.
#include "support.hpp"
#include "wht/passes.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdint>

namespace {

using namespace zt;

template <class T>
using WhtFn = ZamStatus (*)(const T*, T*, uint32_t, uint8_t*);

template <class T>
struct Orders {
    WhtFn<T> codelet[14] = {};
    ZamStatus (*entry)(const T*, T*, int32_t, uint32_t, uint8_t*);
    ZamStatus (*size)(int32_t, int32_t*);
};

template <class T>
const Orders<T>& orders() {
    static const Orders<T> o = [] {
        Orders<T> o{};
#define ZAM_WHT(name, type, order) \
    if constexpr (std::is_same_v<T, type>) o.codelet[order] = name;
#include "registry.inc"
        if constexpr (std::is_same_v<T, float>) o.entry = zamgWHT_32f, o.size = zamgWHTGetBufferSize_32f;
        else o.entry = zamgWHT_64f, o.size = zamgWHTGetBufferSize_64f;
        return o;
    }();
    return o;
}

// y[k] = sum_n (-1)^popcount(k & n) x[n], summed exactly for integer inputs.
std::vector<int64_t> definition(const std::vector<int64_t>& x) {
    std::vector<int64_t> y(x.size());
    for (size_t k = 0; k < x.size(); ++k)
        for (size_t n = 0; n < x.size(); ++n) y[k] += std::popcount(k & n) % 2 ? -x[n] : x[n];
    return y;
}

template <class T>
void check_orders() {
    const Orders<T>& o = orders<T>();
    LD worst = 0;
    for (int order = 1; order <= 13; ++order) {
        const size_t n = size_t{1} << order;
        int32_t bytes = -1;
        ASSERT_EQ(o.size(order, &bytes), ZAM_STS_OK);
        ASSERT_EQ(bytes, order < 8 ? 0 : static_cast<int32_t>(sizeof(T) * (n + (order == 12 ? 256 : order == 13 ? 1024 : 0))));
        GuardedBytes buffer(static_cast<size_t>(bytes));
        // Small integers: every sum is exact, and each output one rounding by s.
        Random rng(static_cast<uint64_t>(order));
        std::vector<int64_t> xi(n);
        for (int64_t& v : xi) v = static_cast<int64_t>(rng.next() * 1000);
        const std::vector<int64_t> exact = definition(xi);
        const std::vector<T> x(xi.begin(), xi.end());
        for (uint32_t flag : kFlags) {
            const T s = expected_scale<T>(static_cast<int>(n), flag, 0);
            std::vector<T> want(n), y(n, T(7)), z(n, T(7)), e(n);
            for (size_t k = 0; k < n; ++k) want[k] = static_cast<T>(exact[k]) * s;
            ASSERT_EQ(o.codelet[order](x.data(), y.data(), flag, bytes ? buffer.data() : nullptr), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(y, want)) << "order " << order << " flag " << flag;
            // No buffer: one is taken for the call; same bits.
            ASSERT_EQ(o.codelet[order](x.data(), z.data(), flag, nullptr), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(z, want)) << "order " << order << " without a buffer";
            // In place, and through the order entry.
            z = x;
            ASSERT_EQ(o.codelet[order](z.data(), z.data(), flag, bytes ? buffer.data() : nullptr), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(z, want)) << "order " << order << " in place";
            ASSERT_EQ(o.entry(x.data(), e.data(), order, flag, nullptr), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(e, want)) << "order " << order << " entry";
        }
        // Random values against a long-double reference, then back again:
        // 4 and 4, or 8 and then either divide-by-N flag, restore the input.
        const std::vector<T> r = rng.reals<T>(n);
        Scalars ref(r.begin(), r.end());
        for (size_t h = 1; h < n; h *= 2)
            for (size_t i = 0; i < n; i += 2 * h)
                for (size_t j = i; j < i + h; ++j) {
                    const LD a = ref[j], b = ref[j + h];
                    ref[j] = a + b;
                    ref[j + h] = a - b;
                }
        std::vector<T> y(n), back(n);
        ASSERT_EQ(o.codelet[order](r.data(), y.data(), ZAM_NODIV_BY_ANY, nullptr), ZAM_STS_OK);
        const LD err = relative_rms(Scalars(y.begin(), y.end()), ref);
        EXPECT_LE(err, sizeof(T) == 4 ? 4e-7L : 8e-16L) << order;
        worst = std::max(worst, err);
        for (auto [first, second] : {std::pair{ZAM_DIV_BY_SQRTN, ZAM_DIV_BY_SQRTN}, {ZAM_NODIV_BY_ANY, ZAM_DIV_FWD_BY_N},
                                     {ZAM_NODIV_BY_ANY, ZAM_DIV_INV_BY_N}}) {
            ASSERT_EQ(o.codelet[order](r.data(), y.data(), first, nullptr), ZAM_STS_OK);
            ASSERT_EQ(o.codelet[order](y.data(), back.data(), second, nullptr), ZAM_STS_OK);
            EXPECT_LE(relative_rms(Scalars(back.begin(), back.end()), Scalars(r.begin(), r.end())),
                      sizeof(T) == 4 ? 1e-6L : 2e-15L) << order;
        }
    }
    std::printf("worst relative RMS error of the Walsh-Hadamard transform, %s: %.3Le\n", sizeof(T) == 4 ? "32f" : "64f", worst);
}

TEST(Wht, EveryOrderFollowsTheDefinitionWithAndWithoutBuffer) {
    check_orders<float>();
    check_orders<double>();
}

template <class T>
void check_statuses() {
    const Orders<T>& o = orders<T>();
    std::vector<T> src(8192, T(1)), dst(8192, T(3));
    const std::vector<T> untouched = dst;
    for (int order = 1; order <= 13; ++order) {
        EXPECT_EQ(o.codelet[order](nullptr, dst.data(), 0u, nullptr), ZAM_STS_NULL_PTR_ERR);
        EXPECT_EQ(o.codelet[order](src.data(), nullptr, ZAM_NODIV_BY_ANY, nullptr), ZAM_STS_NULL_PTR_ERR);
        for (uint32_t flag : kBadFlags) {
            EXPECT_EQ(o.codelet[order](src.data(), dst.data(), flag, nullptr), ZAM_STS_FLAG_ERR) << order;
            EXPECT_EQ(o.entry(src.data(), dst.data(), order, flag, nullptr), ZAM_STS_FLAG_ERR) << order;
        }
        EXPECT_EQ(o.entry(nullptr, dst.data(), order, ZAM_NODIV_BY_ANY, nullptr), ZAM_STS_NULL_PTR_ERR);
    }
    EXPECT_EQ(dst, untouched);
    // A bad order wins over everything, and leaves the size alone.
    for (int32_t order : {0, -1, 14, 15, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(o.entry(nullptr, nullptr, order, 0u, nullptr), ZAM_STS_SIZE_ERR) << order;
        int32_t size = 12345;
        EXPECT_EQ(o.size(order, &size), ZAM_STS_SIZE_ERR) << order;
        EXPECT_EQ(size, 12345);
    }
}

TEST(Wht, StatusesComeInOrderAndNothingIsWrittenOnFailure) {
    check_statuses<float>();
    check_statuses<double>();
}

TEST(Wht, OrderOneWithSqrtFlagIsTheScaledButterfly) {
    const float x[2] = {3.0f, 1.5f};
    float y[2];
    ASSERT_EQ(zamgWHT_1_32f(x, y, ZAM_DIV_BY_SQRTN, nullptr), ZAM_STS_OK);
    EXPECT_EQ(y[0], 4.5f * 0.70710677f);
    EXPECT_EQ(y[1], 1.5f * 0.70710677f);
}

} // namespace

namespace {

// Every vector path this processor runs gives the scalar passes' bits, for
// orders 8 to 13 in both precisions and the scale of every flag, in place too
// (source and destination the same array, as the exported functions allow);
// and the exported functions (the widest path) give them with the caller's
// buffer and without one.
template <class T>
void expect_paths_match_scalar()
{
    const Orders<T>& o = orders<T>();
    for (int order = 8; order <= 13; ++order) {
        const size_t n = size_t{1} << order;
        std::vector<T> work(n + 1024);
        int32_t bytes = 0;
        ASSERT_EQ(o.size(order, &bytes), ZAM_STS_OK);
        GuardedBytes buffer(static_cast<size_t>(bytes));
        for (const std::vector<T>& x : zt::path_inputs<T>(n, uint64_t(order)))
            for (uint32_t flag : kFlags) {
                const T s = expected_scale<T>(static_cast<int>(n), flag, 0);
                std::vector<T> want(n), got(n);
                zam::wht::run_passes(zam::Path::Scalar, order, x.data(), want.data(), s, work.data());
                for (zam::Path p : {zam::Path::Sse2, zam::Path::Avx2, zam::Path::Avx512}) {
                    if (!zam::path_supported(p)) continue;
                    // A path that says it needs no work buffer gets none.
                    T* const w = zam::wht::uses_work(p) ? work.data() : nullptr;
                    zam::wht::run_passes(p, order, x.data(), got.data(), s, w);
                    EXPECT_TRUE(zt::same_results(got, want)) << "order " << order << ", path " << int(p);
                    got = x;
                    zam::wht::run_passes(p, order, got.data(), got.data(), s, w);
                    EXPECT_TRUE(zt::same_results(got, want)) << "in place, order " << order << ", path " << int(p);
                }
                for (uint8_t* b : {buffer.data(), static_cast<uint8_t*>(nullptr)}) {
                    ASSERT_EQ(o.codelet[order](x.data(), got.data(), flag, b), ZAM_STS_OK);
                    EXPECT_TRUE(zt::same_results(got, want)) << "order " << order << (b ? "" : " without a buffer");
                }
            }
    }
}

TEST(Wht, EveryVectorPathGivesTheScalarBits)
{
    std::printf("Walsh-Hadamard vector paths compared with the scalar one: sse2%s%s\n",
                zam::path_supported(zam::Path::Avx2) ? ", avx2" : "", zam::path_supported(zam::Path::Avx512) ? ", avx512" : "");
    expect_paths_match_scalar<float>();
    expect_paths_match_scalar<double>();
}

} // namespace
