// The length dispatchers: every length forwards to the codelet of that
// length, a bad length is refused before anything else, and the codelet's
// own checks follow.
#include "support.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <functional>

namespace {

using namespace zt;

template <class T>
using Dispatcher = ZamStatus (*)(const T*, T*, int32_t, uint32_t);

template <class T>
using Scalar = std::conditional_t<std::is_same_v<T, Zam32fc> || std::is_same_v<T, Zam32f>, float, double>;

// One family: its dispatcher, the codelet of each length and the element
// counts of source and destination for a length.
template <class T>
struct Family {
    std::string name;
    Dispatcher<T> dispatcher;
    std::function<CodeletFn<T>(int)> codelet;
    std::function<int(int)> in, out;
};

int same(int n) { return n; }
int ccs(int n) { return packed_size(kCCS, n); }
size_t at(int n) { return static_cast<size_t>(n - 2); }

template <class T>
void check_family(const Family<T>& f) {
    constexpr size_t scalars = sizeof(T) / sizeof(Scalar<T>);
    for (int n = 2; n <= 64; ++n) {
        Random rng(static_cast<uint64_t>(n));
        const auto values = rng.reals<Scalar<T>>(scalars * static_cast<size_t>(f.in(n)));
        std::vector<T> x(static_cast<size_t>(f.in(n)));
        std::memcpy(x.data(), values.data(), values.size() * sizeof(Scalar<T>));
        for (uint32_t flag : kFlags) {
            std::vector<T> a(static_cast<size_t>(f.out(n))), b(a.size());
            ASSERT_EQ(f.dispatcher(x.data(), a.data(), n, flag), ZAM_STS_OK) << f.name << ' ' << n;
            ASSERT_EQ(f.codelet(n)(x.data(), b.data(), flag), ZAM_STS_OK) << f.name << ' ' << n;
            EXPECT_TRUE(bitwise_equal(a, b)) << f.name << ' ' << n;
        }
        std::vector<T> d(static_cast<size_t>(f.out(n)));
        EXPECT_EQ(f.dispatcher(x.data(), d.data(), n, 3u), ZAM_STS_FLAG_ERR) << f.name;
        EXPECT_EQ(f.dispatcher(nullptr, d.data(), n, 3u), ZAM_STS_NULL_PTR_ERR) << f.name;
    }
    // A bad length wins over null pointers and bad flags.
    for (int32_t len : {1, 0, -1, 65, 66, 1000, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(f.dispatcher(nullptr, nullptr, len, ZAM_DIV_FWD_BY_N), ZAM_STS_SIZE_ERR) << f.name << ' ' << len;
        EXPECT_EQ(f.dispatcher(nullptr, nullptr, len, 0u), ZAM_STS_SIZE_ERR) << f.name << ' ' << len;
    }
}

TEST(Dispatchers, ComplexFamilies) {
    const auto& c = complex_codelets();
    check_family<Zam32fc>({"zamgDFTFwd_CToC_32fc", zamgDFTFwd_CToC_32fc, [&](int n) { return c[at(n)].fwd32; }, same, same});
    check_family<Zam32fc>({"zamgDFTInv_CToC_32fc", zamgDFTInv_CToC_32fc, [&](int n) { return c[at(n)].inv32; }, same, same});
    check_family<Zam64fc>({"zamgDFTFwd_CToC_64fc", zamgDFTFwd_CToC_64fc, [&](int n) { return c[at(n)].fwd64; }, same, same});
    check_family<Zam64fc>({"zamgDFTInv_CToC_64fc", zamgDFTInv_CToC_64fc, [&](int n) { return c[at(n)].inv64; }, same, same});
}

TEST(Dispatchers, RealFamilies) {
    const auto& r = real_codelets();
    const Dispatcher<Zam32f> f32[] = {zamgDFTFwd_RToCCS_32f, zamgDFTFwd_RToPack_32f, zamgDFTFwd_RToPerm_32f};
    const Dispatcher<Zam64f> f64[] = {zamgDFTFwd_RToCCS_64f, zamgDFTFwd_RToPack_64f, zamgDFTFwd_RToPerm_64f};
    const Dispatcher<Zam32f> i32[] = {zamgDFTInv_CCSToR_32f, zamgDFTInv_PackToR_32f, zamgDFTInv_PermToR_32f};
    const Dispatcher<Zam64f> i64[] = {zamgDFTInv_CCSToR_64f, zamgDFTInv_PackToR_64f, zamgDFTInv_PermToR_64f};
    for (Layout l : kLayouts) {
        const std::function<int(int)> packed = l == kCCS ? ccs : same;
        const std::string name = layout_name(l);
        check_family<Zam32f>({"forward 32f " + name, f32[l], [&](int n) { return r[at(n)].fwd32[l]; }, same, packed});
        check_family<Zam64f>({"forward 64f " + name, f64[l], [&](int n) { return r[at(n)].fwd64[l]; }, same, packed});
        check_family<Zam32f>({"inverse 32f " + name, i32[l], [&](int n) { return r[at(n)].inv32[l]; }, packed, same});
        check_family<Zam64f>({"inverse 64f " + name, i64[l], [&](int n) { return r[at(n)].inv64[l]; }, packed, same});
    }
}

TEST(Dispatchers, HartleyFamilies) {
    const auto& h = hartley_codelets();
    check_family<Zam32f>({"zamgHartley_32f", zamgHartley_32f, [&](int n) { return h[at(n)].h32; }, same, same});
    check_family<Zam64f>({"zamgHartley_64f", zamgHartley_64f, [&](int n) { return h[at(n)].h64; }, same, same});
}

} // namespace
