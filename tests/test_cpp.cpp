// The C++ layer (zamgen.hpp): every family at compile-time and run-time
// lengths gives the C codelet's bits, spans of the wrong size are refused
// before anything is written, the Walsh-Hadamard work span, and the DCT-IV
// owner's life cycle.
//
// Out-of-range sizes do not compile, so they are not tested here:
// dft_forward<65>(...), real_forward<1, layout::ccs>(...), wht<14>(...) and a
// CCS destination of N elements for real_forward<N, layout::ccs> match no
// function.
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
    std::vector<T> v(count);
    const auto r = zt::Random(seed).reals<double>(2 * count);
    for (size_t i = 0; i < count; ++i)
        if constexpr (std::is_floating_point_v<T>) v[i] = static_cast<T>(r[i]);
        else v[i] = T(static_cast<typename T::value_type>(r[2 * i]), static_cast<typename T::value_type>(r[2 * i + 1]));
    return v;
}

template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

template <size_t E, class T>
std::span<const T, E> in(const std::vector<T>& v) { return std::span<const T, E>(v.data(), E); }
template <size_t E, class T>
std::span<T, E> out(std::vector<T>& v) { return std::span<T, E>(v.data(), E); }

// The C codelet `name`, the C++ call at compile-time length and the one at
// run-time length, on the same input: status ok and the same bits.
template <class In, class Out, class C, class Fixed, class Dynamic>
void expect_same(const std::string& name, size_t n_in, size_t n_out, C c, Fixed fixed, Dynamic dynamic) {
    SCOPED_TRACE(name);
    const std::vector<In> x = values<In>(n_in, n_in * 31 + n_out);
    for (scale s : kScales) {
        std::vector<Out> want(n_out), a(n_out), b(n_out);
        ASSERT_EQ(c(x.data(), want.data(), static_cast<uint32_t>(s)), ZAM_STS_OK);
        EXPECT_EQ(fixed(x, a, s), status::ok);
        EXPECT_EQ(dynamic(x, b, s), status::ok);
        EXPECT_TRUE(same_bits(a, want) && same_bits(b, want)) << "scale " << static_cast<uint32_t>(s);
    }
}

template <class T, size_t N, layout L>
void check_real(const std::string& suffix) {
    constexpr size_t M = packed_size(L, N);
    const std::string name = L == layout::ccs ? "CCS" : L == layout::pack ? "Pack" : "Perm";
    const std::string fwd = "zamgDFTFwd_RTo" + name + suffix, inv = "zamgDFTInv_" + name + "ToR" + suffix;
    expect_same<T, T>(fwd, N, M, zt::find_case(fwd).call,
        [](auto& x, auto& y, scale s) { return real_forward<N, L>(in<N>(x), out<M>(y), s); },
        [](auto& x, auto& y, scale s) { return real_forward<L>(std::span<const T>(x), std::span<T>(y), s); });
    expect_same<T, T>(inv, M, N, zt::find_case(inv).call,
        [](auto& x, auto& y, scale s) { return real_inverse<N, L>(in<M>(x), out<N>(y), s); },
        [](auto& x, auto& y, scale s) { return real_inverse<L>(std::span<const T>(x), std::span<T>(y), s); });
}

template <class T, size_t N>
void check_length() {
    using C = std::complex<T>;
    const std::string suffix = "_" + std::to_string(N) + (std::is_same_v<T, float> ? "_32f" : "_64f");
    const std::string fwd = "zamgDFTFwd_CToC" + suffix + "c", inv = "zamgDFTInv_CToC" + suffix + "c",
                      dht = "zamgHartley" + suffix;
    expect_same<C, C>(fwd, N, N, zt::find_case(fwd).call,
        [](auto& x, auto& y, scale s) { return dft_forward<N>(in<N>(x), out<N>(y), s); },
        [](auto& x, auto& y, scale s) { return dft_forward(std::span<const C>(x), std::span<C>(y), s); });
    expect_same<C, C>(inv, N, N, zt::find_case(inv).call,
        [](auto& x, auto& y, scale s) { return dft_inverse<N>(in<N>(x), out<N>(y), s); },
        [](auto& x, auto& y, scale s) { return dft_inverse(std::span<const C>(x), std::span<C>(y), s); });
    expect_same<T, T>(dht, N, N, zt::find_case(dht).call,
        [](auto& x, auto& y, scale s) { return hartley<N>(in<N>(x), out<N>(y), s); },
        [](auto& x, auto& y, scale s) { return hartley(std::span<const T>(x), std::span<T>(y), s); });
    check_real<T, N, layout::ccs>(suffix);
    check_real<T, N, layout::pack>(suffix);
    check_real<T, N, layout::perm>(suffix);
}

template <class T, int Order>
void check_order() {
    const std::string name = "zamgWHT_" + std::to_string(Order) + (std::is_same_v<T, float> ? "_32f" : "_64f");
    const auto& c = *std::find_if(zt::wht_cases().begin(), zt::wht_cases().end(), [&](auto& w) { return w.name == name; });
    constexpr size_t n = wht_points(Order);
    std::vector<std::byte> work(wht_work_size<T>(Order));
    for (bool own_work : {false, true}) {
        std::span<std::byte> w = own_work ? std::span<std::byte>(work) : std::span<std::byte>();
        expect_same<T, T>(name, n, n, [&](const T* x, T* y, uint32_t f) { return c.call(x, y, f, nullptr); },
            [&](auto& x, auto& y, scale s) { return wht<Order>(in<n>(x), out<n>(y), s, w); },
            [&](auto& x, auto& y, scale s) { return wht(std::span<const T>(x), std::span<T>(y), s, w); });
    }
    if (work.empty()) return;
    // One byte short: refused, with destination and work untouched.
    std::vector<T> x(n, T(1)), y(n, T(kSentinel));
    std::vector<std::byte> short_work(work.size() - 1, std::byte{0x5a});
    EXPECT_EQ(wht<Order>(in<n>(x), out<n>(y), scale::none, short_work), status::size_error);
    EXPECT_EQ(wht(std::span<const T>(x), std::span<T>(y), scale::none, short_work), status::size_error);
    EXPECT_TRUE(std::all_of(y.begin(), y.end(), [](T v) { return v == T(kSentinel); }));
    EXPECT_TRUE(std::all_of(short_work.begin(), short_work.end(), [](std::byte b) { return b == std::byte{0x5a}; }));
}

template <class T>
void check_precision() {
    check_length<T, 2>(), check_length<T, 7>(), check_length<T, 16>(), check_length<T, 45>(), check_length<T, 64>();
    check_order<T, 1>(), check_order<T, 7>(), check_order<T, 8>(), check_order<T, 13>();
}

TEST(Cpp, SameBitsAsTheCodeletsAtCompileAndRunTimeLengths) {
    check_precision<float>();
    check_precision<double>();
}

// Every run-time entry with a length out of range or a span one element off
// for its length: size_error, and the destination keeps its contents.
template <class T>
void check_sizes() {
    using C = std::complex<T>;
    const std::vector<T> src(16400, T(1));
    const std::vector<C> csrc(100, C(1));
    std::vector<T> buf(16400, T(kSentinel));
    std::vector<C> cbuf(100, C(kSentinel));
    // The spans' sizes are all that is looked at: none is read or written.
    auto rs = [&](size_t k) { return std::span<const T>(src.data(), k); };
    auto rd = [&](size_t k) { return std::span<T>(buf.data(), k); };
    auto cs = [&](size_t k) { return std::span<const C>(csrc.data(), k); };
    auto cd = [&](size_t k) { return std::span<C>(cbuf.data(), k); };
    constexpr size_t kPastInt32 = (size_t{1} << 32) + 16;  // its low 32 bits are a valid length
    for (size_t n : {size_t{0}, size_t{1}, size_t{65}, kPastInt32}) {
        SCOPED_TRACE(n);
        EXPECT_EQ(dft_forward(cs(n), cd(n), scale::none), status::size_error);
        EXPECT_EQ(dft_inverse(cs(n), cd(n), scale::none), status::size_error);
        EXPECT_EQ(hartley(rs(n), rd(n), scale::none), status::size_error);
        EXPECT_EQ(real_forward<layout::ccs>(rs(n), rd(packed_size(layout::ccs, n)), scale::none), status::size_error);
        EXPECT_EQ(real_inverse<layout::perm>(rs(n), rd(n), scale::none), status::size_error);
    }
    for (size_t d : {size_t{0}, size_t{2}}) {  // one element short, one too many
        SCOPED_TRACE(d);
        EXPECT_EQ(dft_forward(cs(16), cd(15 + d), scale::none), status::size_error);
        EXPECT_EQ(dft_inverse(cs(15 + d), cd(16), scale::none), status::size_error);
        EXPECT_EQ(hartley(rs(16), rd(15 + d), scale::none), status::size_error);
        EXPECT_EQ(wht(rs(16), rd(15 + d), scale::none), status::size_error);
        EXPECT_EQ(real_forward<layout::ccs>(rs(16), rd(17 + d), scale::none), status::size_error);
        EXPECT_EQ(real_forward<layout::pack>(rs(15), rd(14 + d), scale::none), status::size_error);
        EXPECT_EQ(real_inverse<layout::ccs>(rs(15 + d), rd(15), scale::none), status::size_error);  // 15 needs 16
        EXPECT_EQ(real_inverse<layout::perm>(rs(15 + d), rd(16), scale::none), status::size_error);
    }
    // Walsh-Hadamard: 2, 4, ..., 8192 points only.
    for (size_t n : {size_t{0}, size_t{1}, size_t{12}, size_t{16384}, size_t{1} << 33, kPastInt32})
        EXPECT_EQ(wht(rs(n), rd(n), scale::none), status::size_error) << n;
    EXPECT_TRUE(std::all_of(buf.begin(), buf.end(), [](T v) { return v == T(kSentinel); }));
    EXPECT_TRUE(std::all_of(cbuf.begin(), cbuf.end(), [](C v) { return v == C(kSentinel); }));
}

TEST(Cpp, WrongSizesAreRefusedBeforeAnythingIsWritten) {
    check_sizes<float>();
    check_sizes<double>();
}

// In place: a forward real transform over an array with room for its whole
// output, the inverse back over the same array; a CCS destination of only N
// elements is refused.
TEST(Cpp, InPlace) {
    const std::vector<double> x = values<double>(16, 5);
    std::vector<double> a(18), b = x;
    b.resize(18);
    const std::span<const double> head(b.data(), 16);
    const auto fwd = scale::forward_by_n;
    ASSERT_EQ((real_forward<16, layout::ccs>(in<16>(x), out<18>(a), fwd)), status::ok);
    EXPECT_EQ(real_forward<layout::ccs>(head, std::span<double>(b.data(), 16), fwd), status::size_error);
    ASSERT_EQ(real_forward<layout::ccs>(head, std::span<double>(b), fwd), status::ok);
    EXPECT_TRUE(same_bits(a, b));
    ASSERT_EQ((real_inverse<16, layout::ccs>(in<18>(b), out<16>(b), fwd)), status::ok);
    for (size_t i = 0; i < 16; ++i) EXPECT_NEAR(b[i], x[i], 1e-14);
}

template <class T>
void check_dct4() {
    const auto& c = zt::dct4_api(std::is_same_v<T, float>);
    for (size_t n : {16, 256}) {
        SCOPED_TRACE(n);
        const std::vector<T> x = values<T>(n, n);
        std::vector<T> want(n), y(n);
        void* spec = nullptr;
        ASSERT_EQ(c.init_alloc(&spec, static_cast<int32_t>(n)), ZAM_STS_OK);
        ASSERT_EQ(c.run(x.data(), want.data(), spec), ZAM_STS_OK);
        ASSERT_EQ(c.free(spec), ZAM_STS_OK);

        dct4<T> a;
        ASSERT_EQ(dct4<T>::create(n, a), status::ok);
        EXPECT_EQ(a.size(), n);
        dct4<T> b = std::move(a);  // a is empty now
        EXPECT_TRUE(a.empty());
        EXPECT_EQ(a.size(), 0u);
        EXPECT_EQ(a(x, y), status::null_pointer_error);
        EXPECT_EQ(b(x, y), status::ok);
        EXPECT_TRUE(same_bits(y, want));
        a = std::move(b);  // and back
        std::fill(y.begin(), y.end(), T(kSentinel));
        EXPECT_EQ(b(x, y), status::null_pointer_error);
        EXPECT_EQ(a(std::span<const T>(x).first(n - 1), y), status::size_error);
        EXPECT_TRUE(std::all_of(y.begin(), y.end(), [](T v) { return v == T(kSentinel); }));
        y = x;  // in place
        EXPECT_EQ(a(y, y), status::ok);
        EXPECT_TRUE(same_bits(y, want));
        // A failed create leaves the object as it was.
        for (size_t bad : {size_t{0}, size_t{12}, size_t{1} << 28, (size_t{1} << 32) + 16})
            EXPECT_EQ(dct4<T>::create(bad, a), status::size_error) << bad;
        EXPECT_EQ(a.size(), n);
        EXPECT_EQ(dct4<T>::create(8, a), status::ok);  // replaces (and frees) the old one
        EXPECT_EQ(a.size(), 8u);
    }
}

TEST(Cpp, Dct4OwnerLifeCycle) {
    check_dct4<float>();
    check_dct4<double>();
}

} // namespace
