// The C++ layer (zamgen.hpp): the codelets' bits at compile-time and run-time
// lengths, spans of the wrong size refused before anything is written, the
// Walsh-Hadamard work span, the DCT-IV owner's life cycle.  Sizes out of range
// at compile time match no function (dft_forward<65>, wht<14>, a CCS
// destination of N elements for real_forward<N, layout::ccs>): not tested here.
#include "support.hpp"
#include "zamgen.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>

namespace zamgen {
void PrintTo(status s, std::ostream* os) { *os << to_string(s); }
} // namespace zamgen

namespace {

using namespace zamgen;

constexpr scale kScales[] = {scale::forward_by_n, scale::inverse_by_n, scale::by_sqrt_n, scale::none};
constexpr float kSentinel = 1234.5f;

template <class T>
std::vector<T> values(size_t count, uint64_t seed) {
    using R = decltype(std::real(T{}));  // the scalar of T
    const std::vector<R> r = zt::Random(seed).reals<R>(count * sizeof(T) / sizeof(R));
    std::vector<T> v(count);
    std::memcpy(static_cast<void*>(v.data()), r.data(), count * sizeof(T));
    return v;
}

template <class T>
bool all_are(const std::vector<T>& v, T value) { return std::ranges::all_of(v, [&](T e) { return e == value; }); }
// Every status of the list is size_error (both lists are printed when not).
void expect_size_errors(const std::vector<status>& s) {
    EXPECT_EQ(s, std::vector<status>(s.size(), status::size_error));
}

template <size_t E, class T>
std::span<const T, E> in(const std::vector<T>& v) { return std::span<const T, E>(v.data(), E); }
template <size_t E, class T>
std::span<T, E> out(std::vector<T>& v) { return std::span<T, E>(v.data(), E); }

// A call on nx scalars R into ny, at one scale.
template <class R>
using Call = std::function<status(const R* x, R* y, scale s)>;

// The C codelet `name` (with a null work buffer), the C++ call at compile-time
// length and the one at run-time length, on the same input and every scale:
// status ok and the same bits.  Only this part is compiled per precision, not
// per length and function, which keeps the file quick to build.
template <class R>
void expect_same_bits(const std::string& name, size_t nx, size_t ny, uint64_t seed, const Call<R>& fixed,
                      const Call<R>& dynamic) {
    SCOPED_TRACE(name);
    std::function<ZamStatus(const void*, void*, uint32_t)> c;
    for (const zt::WhtCase& w : zt::wht_cases())
        if (w.name == name) c = [&w](const void* x, void* y, uint32_t f) { return w.call(x, y, f, nullptr); };
    if (!c) c = zt::find_case(name).call;
    const std::vector<R> x = zt::Random(seed).reals<R>(nx);
    for (scale s : kScales) {
        std::vector<R> want(ny), a(ny), b(ny);
        ASSERT_EQ(c(x.data(), want.data(), static_cast<uint32_t>(s)), ZAM_STS_OK);
        EXPECT_EQ(fixed(x.data(), a.data(), s), status::ok);
        EXPECT_EQ(dynamic(x.data(), b.data(), s), status::ok);
        EXPECT_TRUE(zt::bitwise_equal(a, want) && zt::bitwise_equal(b, want)) << "scale " << static_cast<uint32_t>(s);
    }
}

// The same with the C++ calls on NIn elements In to NOut elements Out: static
// spans for `fixed`, dynamic ones for `dynamic`.
template <class In, size_t NIn, class Out, size_t NOut>
void expect_same(const std::string& name, auto fixed, auto dynamic) {
    using R = decltype(std::real(In{}));
    auto x = [](const R* p) { return std::span<const In, NIn>(reinterpret_cast<const In*>(p), NIn); };
    auto y = [](R* p) { return std::span<Out, NOut>(reinterpret_cast<Out*>(p), NOut); };
    expect_same_bits<R>(
        name, NIn * sizeof(In) / sizeof(R), NOut * sizeof(Out) / sizeof(R), NIn * 31 + NOut,
        [&](const R* p, R* q, scale s) { return fixed(x(p), y(q), s); },
        [&](const R* p, R* q, scale s) { return dynamic(std::span<const In>(x(p)), std::span<Out>(y(q)), s); });
}

// A call of x, y and s, the arguments expect_same passes.
#define CALL(...) [&](auto x, auto y, scale s) { return __VA_ARGS__; }

template <class T, size_t N, layout L>
void check_real(const std::string& sfx) {
    constexpr size_t M = packed_size(L, N);
    const std::string name = L == layout::ccs ? "CCS" : L == layout::pack ? "Pack" : "Perm";
    const std::string fwd = "zamgDFTFwd_RTo" + name + sfx, inv = "zamgDFTInv_" + name + "ToR" + sfx;
    expect_same<T, N, T, M>(fwd, CALL(real_forward<N, L>(x, y, s)), CALL(real_forward<L>(x, y, s)));
    expect_same<T, M, T, N>(inv, CALL(real_inverse<N, L>(x, y, s)), CALL(real_inverse<L>(x, y, s)));
}

template <class T, size_t N>
void check_length() {
    using C = std::complex<T>;
    const std::string sfx = "_" + std::to_string(N) + (std::is_same_v<T, float> ? "_32f" : "_64f");
    expect_same<C, N, C, N>("zamgDFTFwd_CToC" + sfx + "c", CALL(dft_forward<N>(x, y, s)), CALL(dft_forward(x, y, s)));
    expect_same<C, N, C, N>("zamgDFTInv_CToC" + sfx + "c", CALL(dft_inverse<N>(x, y, s)), CALL(dft_inverse(x, y, s)));
    expect_same<T, N, T, N>("zamgHartley" + sfx, CALL(hartley<N>(x, y, s)), CALL(hartley(x, y, s)));
    check_real<T, N, layout::ccs>(sfx), check_real<T, N, layout::pack>(sfx), check_real<T, N, layout::perm>(sfx);
}

// Also with the caller's work buffer, and one a byte short: refused, with
// destination and work untouched.
template <class T, int Order>
void check_order() {
    constexpr size_t n = wht_points(Order);
    std::vector<std::byte> work(wht_work_size<T>(Order));
    for (std::span<std::byte> w : {std::span<std::byte>(), std::span<std::byte>(work)})
        expect_same<T, n, T, n>("zamgWHT_" + std::to_string(Order) + (std::is_same_v<T, float> ? "_32f" : "_64f"),
                                CALL(wht<Order>(x, y, s, w)), CALL(wht(x, y, s, w)));
    if (work.empty()) return;
    std::vector<T> x(n, T(1)), y(n, T(kSentinel));
    std::vector<std::byte> short_work(work.size() - 1, std::byte{0x5a});
    expect_size_errors({wht<Order>(in<n>(x), out<n>(y), scale::none, short_work),
                        wht(std::span<const T>(x), std::span<T>(y), scale::none, short_work)});
    EXPECT_TRUE(all_are(y, T(kSentinel)) && all_are(short_work, std::byte{0x5a}));
}

template <class T>
void check_precision() {
    check_length<T, 2>(), check_length<T, 7>(), check_length<T, 16>(), check_length<T, 45>(), check_length<T, 64>();
    check_order<T, 1>(), check_order<T, 7>(), check_order<T, 8>(), check_order<T, 13>();
}

TEST(Cpp, SameBitsAsTheCodeletsAtCompileAndRunTimeLengths) { check_precision<float>(), check_precision<double>(); }

// Run-time calls with a length out of range or a span one element off for
// its length: size_error, and the destinations keep their contents.
template <class T>
void check_sizes() {
    using C = std::complex<T>;
    const std::vector<T> src(16400, T(1));
    const std::vector<C> csrc(100, C(1));
    std::vector<T> buf(16400, T(kSentinel));
    std::vector<C> cbuf(100, C(kSentinel));
    // Only the spans' sizes are looked at: nothing is read or written.
    auto rs = [&](size_t k) { return std::span<const T>(src.data(), k); };
    auto rd = [&](size_t k) { return std::span<T>(buf.data(), k); };
    auto cs = [&](size_t k) { return std::span<const C>(csrc.data(), k); };
    auto cd = [&](size_t k) { return std::span<C>(cbuf.data(), k); };
    const scale s = scale::none;
    const size_t past_int32 = (size_t{1} << 32) + 16;  // its low 32 bits are a valid length
    for (size_t n : {size_t{0}, size_t{1}, size_t{65}, past_int32})
        expect_size_errors({dft_forward(cs(n), cd(n), s), real_inverse<layout::perm>(rs(n), rd(n), s)});
    for (size_t n : {size_t{0}, size_t{1}, size_t{12}, size_t{16384}, size_t{1} << 33, past_int32})
        expect_size_errors({wht(rs(n), rd(n), s)});
    for (size_t d : {size_t{0}, size_t{2}})  // one element short, one too many
        expect_size_errors({dft_forward(cs(16), cd(15 + d), s), dft_inverse(cs(15 + d), cd(16), s),
                            hartley(rs(16), rd(15 + d), s), wht(rs(16), rd(15 + d), s),
                            real_forward<layout::ccs>(rs(16), rd(17 + d), s),
                            real_forward<layout::pack>(rs(15), rd(14 + d), s),
                            real_inverse<layout::ccs>(rs(15 + d), rd(15), s),  // 15 points from 16
                            real_inverse<layout::perm>(rs(15 + d), rd(16), s)});
    EXPECT_TRUE(all_are(buf, T(kSentinel)) && all_are(cbuf, C(kSentinel)));
}

TEST(Cpp, WrongSizesAreRefusedBeforeAnythingIsWritten) { check_sizes<float>(), check_sizes<double>(); }

// A forward real transform in place needs a destination over its whole output.
TEST(Cpp, RealForwardInPlace) {
    const std::vector<double> x = values<double>(16, 5);
    std::vector<double> want(18), y = x;
    y.resize(18);
    ASSERT_EQ((real_forward<16, layout::ccs>(in<16>(x), out<18>(want), scale::none)), status::ok);
    expect_size_errors({real_forward<layout::ccs>(in<16>(y), out<16>(y), scale::none)});
    EXPECT_EQ(real_forward<layout::ccs>(in<16>(y), std::span<double>(y), scale::none), status::ok);
    EXPECT_TRUE(zt::bitwise_equal(y, want));
}

// Create, move out and back, call, refuse, replace, destroy; the results are
// the C functions'.
template <class T>
void check_dct4(size_t n) {
    const auto& c = zt::dct4_api(std::is_same_v<T, float>);
    const std::vector<T> x = values<T>(n, n);
    std::vector<T> want(n), y(n, T(kSentinel));
    void* spec = nullptr;
    ASSERT_EQ(c.init_alloc(&spec, static_cast<int32_t>(n)), ZAM_STS_OK);
    ASSERT_EQ(c.run(x.data(), want.data(), spec), ZAM_STS_OK);
    ASSERT_EQ(c.free(spec), ZAM_STS_OK);

    dct4<T> a;
    ASSERT_EQ(dct4<T>::create(n, a), status::ok);
    dct4<T> b = std::move(a);
    EXPECT_TRUE(a.empty() && a.size() == 0 && b.size() == n);
    EXPECT_EQ(a(x, y), status::null_pointer_error);
    expect_size_errors({b(std::span<const T>(x).first(n - 1), y), dct4<T>::create(0, b), dct4<T>::create(12, b),
                        dct4<T>::create(size_t{1} << 28, b), dct4<T>::create((size_t{1} << 32) + 16, b)});
    EXPECT_TRUE(b.size() == n && all_are(y, T(kSentinel)));  // failed creates leave b as it was
    a = std::move(b);
    EXPECT_EQ(b(x, y), status::null_pointer_error);
    EXPECT_EQ(a(x, y), status::ok);
    EXPECT_TRUE(zt::bitwise_equal(y, want));
    EXPECT_EQ(dct4<T>::create(8, a), status::ok);  // frees the old one
    EXPECT_EQ(a.size(), 8u);
}

TEST(Cpp, Dct4OwnerLifeCycle) {
    for (size_t n : {16, 256}) check_dct4<float>(n), check_dct4<double>(n);
}

} // namespace
