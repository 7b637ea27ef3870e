// zamgen.hpp: the C++20 interface of zamgen, header-only over the C functions
// of zamgen.h.  Nothing here throws, allocates or needs RTTI.
//
//   zamgen::dft_forward<16>(src, dst, zamgen::scale::forward_by_n)
//       the length is a template argument: the codelet of 16 points is chosen
//       at compile time and called directly (spans of static extent);
//   zamgen::dft_forward(src, dst, zamgen::scale::forward_by_n)
//       the length is src.size(), taken at run time by the length dispatcher.
//
// Element types are float and double, std::complex<float|double> for the
// complex DFT.  Every call returns a zamgen::status.  A run-time call whose
// spans do not fit the transform's length and layout returns
// status::size_error before the library is called, so nothing is written.
// Source and destination are either disjoint or start at the same element
// (in place); a forward real transform in place needs a destination span
// over the whole packed output.
#ifndef ZAMGEN_HPP
#define ZAMGEN_HPP

#include "zamgen.h"
#include "zamgen_table.hpp"

#include <bit>
#include <complex>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

namespace zamgen {

enum class status : std::int32_t {
    ok = ZAM_STS_OK,
    context_error = ZAM_STS_CONTEXT_ERR,         // a DCT-IV specification holds no valid plan
    size_error = ZAM_STS_SIZE_ERR,               // a length, order or span size that does not fit
    null_pointer_error = ZAM_STS_NULL_PTR_ERR,   // a null array, or an empty dct4
    flag_error = ZAM_STS_FLAG_ERR,               // a scale that is none of the four below
};

constexpr std::string_view to_string(status s) noexcept {
    switch (s) {
    case status::ok: return "ok";
    case status::context_error: return "context error";
    case status::size_error: return "size error";
    case status::null_pointer_error: return "null pointer error";
    case status::flag_error: return "flag error";
    }
    return "unknown status";
}

// The scale factor of every output.  For the Hartley and Walsh-Hadamard
// transforms, which are their own inverses, forward_by_n and inverse_by_n
// both divide by N.
enum class scale : std::uint32_t {
    forward_by_n = ZAM_DIV_FWD_BY_N,  // forward by 1/N, inverse by 1
    inverse_by_n = ZAM_DIV_INV_BY_N,  // forward by 1, inverse by 1/N
    by_sqrt_n = ZAM_DIV_BY_SQRTN,     // both by 1/sqrt(N)
    none = ZAM_NODIV_BY_ANY,          // both by 1
};

// The layouts of the half spectrum of a real DFT (see zamgen.h).
enum class layout { ccs, pack, perm };

// Elements of the half spectrum of n real samples: CCS n+2 (even n) or n+1
// (odd n), Pack and Perm n.
constexpr std::size_t packed_size(layout l, std::size_t n) noexcept { return l == layout::ccs ? n + 2 - n % 2 : n; }

// Points of the Walsh-Hadamard transform of an order.
constexpr std::size_t wht_points(int order) noexcept { return std::size_t{1} << order; }

namespace detail {

template <class T>
concept precision = std::same_as<T, float> || std::same_as<T, double>;

// The C element type of a C++ one: float and double are the same types;
// std::complex<T> is laid out as T[2] (real part, then imaginary part), which
// is the layout of Zam32fc and Zam64fc, so its arrays are passed as theirs.
template <class T>
struct c_element { using type = T; };
template <>
struct c_element<std::complex<float>> { using type = Zam32fc; };
template <>
struct c_element<std::complex<double>> { using type = Zam64fc; };
template <class T>
using c_element_t = typename c_element<std::remove_const_t<T>>::type;

static_assert(sizeof(std::complex<float>) == sizeof(Zam32fc) && alignof(std::complex<float>) >= alignof(Zam32fc));
static_assert(sizeof(std::complex<double>) == sizeof(Zam64fc) && alignof(std::complex<double>) >= alignof(Zam64fc));

template <class T>
auto c_ptr(T* p) noexcept {
    using C = std::conditional_t<std::is_const_v<T>, const c_element_t<T>, c_element_t<T>>;
    return reinterpret_cast<C*>(p);  // the same type, or std::complex as its C twin (above)
}

template <class Family, class T>
using codelets = generated::codelets<Family, c_element_t<T>>;

// N is a size (length, or order) of a codelet of the family.
template <class Family, class T, std::size_t N>
concept codelet_size = N >= std::size_t(codelets<Family, T>::first) && N <= std::size_t(codelets<Family, T>::last);

template <layout L>
using real_forward_family =
    std::conditional_t<L == layout::ccs, generated::DFTFwd_RToCCS,
                       std::conditional_t<L == layout::pack, generated::DFTFwd_RToPack, generated::DFTFwd_RToPerm>>;
template <layout L>
using real_inverse_family =
    std::conditional_t<L == layout::ccs, generated::DFTInv_CCSToR,
                       std::conditional_t<L == layout::pack, generated::DFTInv_PackToR, generated::DFTInv_PermToR>>;

// The codelet of size N, chosen at compile time.
template <class Family, std::size_t N, class T>
[[nodiscard]] inline status fixed(const T* src, T* dst, scale s) noexcept {
    constexpr auto codelet = codelets<Family, T>::table[N];
    return static_cast<status>(codelet(c_ptr(src), c_ptr(dst), static_cast<std::uint32_t>(s)));
}

// The family's length dispatcher for n points, when src holds `in` and dst
// `out` elements; any other sizes, or an n outside the family's lengths
// (however large), return size_error without a call.
template <class Family, class T>
[[nodiscard]] inline status dispatch(std::span<const T> src, std::span<T> dst, std::size_t n, std::size_t in,
                                     std::size_t out, scale s) noexcept {
    using C = codelets<Family, T>;
    if (n < std::size_t(C::first) || n > std::size_t(C::last) || src.size() != in || dst.size() != out)
        return status::size_error;
    return static_cast<status>(C::dispatcher(c_ptr(src.data()), c_ptr(dst.data()), static_cast<std::int32_t>(n),
                                             static_cast<std::uint32_t>(s)));
}

// The hand-written C functions of one precision.
template <class T>
struct c_api;
template <>
struct c_api<float> {
    using dct4_spec = ZamDCT4Spec_32f;
    static ZamStatus wht_buffer_size(std::int32_t order, std::int32_t* bytes) noexcept {
        return zamgWHTGetBufferSize_32f(order, bytes);
    }
    static ZamStatus dct4_init(dct4_spec** spec, std::int32_t n) noexcept { return zamgDCT4InitAlloc_32f(spec, n); }
    static ZamStatus dct4_free(dct4_spec* spec) noexcept { return zamgDCT4Free_32f(spec); }
    static ZamStatus dct4(const float* src, float* dst, const dct4_spec* spec) noexcept {
        return zamgDCT4_32f(src, dst, spec);
    }
};
template <>
struct c_api<double> {
    using dct4_spec = ZamDCT4Spec_64f;
    static ZamStatus wht_buffer_size(std::int32_t order, std::int32_t* bytes) noexcept {
        return zamgWHTGetBufferSize_64f(order, bytes);
    }
    static ZamStatus dct4_init(dct4_spec** spec, std::int32_t n) noexcept { return zamgDCT4InitAlloc_64f(spec, n); }
    static ZamStatus dct4_free(dct4_spec* spec) noexcept { return zamgDCT4Free_64f(spec); }
    static ZamStatus dct4(const double* src, double* dst, const dct4_spec* spec) noexcept {
        return zamgDCT4_64f(src, dst, spec);
    }
};

// Orders below this one need no work buffer and ignore it (zamgen.h).
inline constexpr int first_buffered_order = 8;

}  // namespace detail

// Bytes of work buffer the Walsh-Hadamard transform of an order needs: 0 for
// orders 1 to 7 and outside 1..13.
template <detail::precision T>
[[nodiscard]] inline std::size_t wht_work_size(int order) noexcept {
    std::int32_t bytes = 0;
    return detail::c_api<T>::wht_buffer_size(order, &bytes) == ZAM_STS_OK ? static_cast<std::size_t>(bytes) : 0;
}

namespace detail {

// The Walsh-Hadamard transform of 2^Order points, or at run time of
// src.size() points (2, 4, ..., 8192), with the caller's work buffer (an empty
// span lets the library allocate one) unless it is too small.
template <int Order, class T>
[[nodiscard]] inline status wht(const T* src, T* dst, scale s, std::span<std::byte> work) noexcept {
    if constexpr (Order >= first_buffered_order)
        if (!work.empty() && work.size() < wht_work_size<T>(Order)) return status::size_error;
    auto* buffer = work.empty() ? nullptr : reinterpret_cast<std::uint8_t*>(work.data());
    constexpr auto codelet = codelets<generated::WHT, T>::table[Order];
    return static_cast<status>(codelet(src, dst, static_cast<std::uint32_t>(s), buffer));
}

template <class T>
[[nodiscard]] inline status wht(std::span<const T> src, std::span<T> dst, scale s, std::span<std::byte> work) noexcept {
    using C = codelets<generated::WHT, T>;
    const std::size_t n = src.size();
    if (!std::has_single_bit(n) || n < wht_points(C::first) || n > wht_points(C::last) || dst.size() != n)
        return status::size_error;
    const int order = std::countr_zero(n);
    if (!work.empty() && order >= first_buffered_order && work.size() < wht_work_size<T>(order))
        return status::size_error;
    auto* buffer = work.empty() ? nullptr : reinterpret_cast<std::uint8_t*>(work.data());
    return static_cast<status>(C::dispatcher(src.data(), dst.data(), order, static_cast<std::uint32_t>(s), buffer));
}

}  // namespace detail

// ---- Compile-time lengths -------------------------------------------------
// N is a length of the family (2 to 64) and Order 1 to 13; any other value
// leaves no function to call, a compile error.

template <std::size_t N>
    requires detail::codelet_size<generated::DFTFwd_CToC, std::complex<float>, N>
[[nodiscard]] inline status dft_forward(std::span<const std::complex<float>, N> src,
                                        std::span<std::complex<float>, N> dst, scale s) noexcept {
    return detail::fixed<generated::DFTFwd_CToC, N>(src.data(), dst.data(), s);
}
template <std::size_t N>
    requires detail::codelet_size<generated::DFTFwd_CToC, std::complex<double>, N>
[[nodiscard]] inline status dft_forward(std::span<const std::complex<double>, N> src,
                                        std::span<std::complex<double>, N> dst, scale s) noexcept {
    return detail::fixed<generated::DFTFwd_CToC, N>(src.data(), dst.data(), s);
}
template <std::size_t N>
    requires detail::codelet_size<generated::DFTInv_CToC, std::complex<float>, N>
[[nodiscard]] inline status dft_inverse(std::span<const std::complex<float>, N> src,
                                        std::span<std::complex<float>, N> dst, scale s) noexcept {
    return detail::fixed<generated::DFTInv_CToC, N>(src.data(), dst.data(), s);
}
template <std::size_t N>
    requires detail::codelet_size<generated::DFTInv_CToC, std::complex<double>, N>
[[nodiscard]] inline status dft_inverse(std::span<const std::complex<double>, N> src,
                                        std::span<std::complex<double>, N> dst, scale s) noexcept {
    return detail::fixed<generated::DFTInv_CToC, N>(src.data(), dst.data(), s);
}

// N real samples to their half spectrum in layout L.
template <std::size_t N, layout L>
    requires detail::codelet_size<detail::real_forward_family<L>, float, N>
[[nodiscard]] inline status real_forward(std::span<const float, N> src, std::span<float, packed_size(L, N)> dst,
                                         scale s) noexcept {
    return detail::fixed<detail::real_forward_family<L>, N>(src.data(), dst.data(), s);
}
template <std::size_t N, layout L>
    requires detail::codelet_size<detail::real_forward_family<L>, double, N>
[[nodiscard]] inline status real_forward(std::span<const double, N> src, std::span<double, packed_size(L, N)> dst,
                                         scale s) noexcept {
    return detail::fixed<detail::real_forward_family<L>, N>(src.data(), dst.data(), s);
}

// A half spectrum in layout L back to N real samples.
template <std::size_t N, layout L>
    requires detail::codelet_size<detail::real_inverse_family<L>, float, N>
[[nodiscard]] inline status real_inverse(std::span<const float, packed_size(L, N)> src, std::span<float, N> dst,
                                         scale s) noexcept {
    return detail::fixed<detail::real_inverse_family<L>, N>(src.data(), dst.data(), s);
}
template <std::size_t N, layout L>
    requires detail::codelet_size<detail::real_inverse_family<L>, double, N>
[[nodiscard]] inline status real_inverse(std::span<const double, packed_size(L, N)> src, std::span<double, N> dst,
                                         scale s) noexcept {
    return detail::fixed<detail::real_inverse_family<L>, N>(src.data(), dst.data(), s);
}

template <std::size_t N>
    requires detail::codelet_size<generated::Hartley, float, N>
[[nodiscard]] inline status hartley(std::span<const float, N> src, std::span<float, N> dst, scale s) noexcept {
    return detail::fixed<generated::Hartley, N>(src.data(), dst.data(), s);
}
template <std::size_t N>
    requires detail::codelet_size<generated::Hartley, double, N>
[[nodiscard]] inline status hartley(std::span<const double, N> src, std::span<double, N> dst, scale s) noexcept {
    return detail::fixed<generated::Hartley, N>(src.data(), dst.data(), s);
}

// The Walsh-Hadamard transform of 2^Order points.  Orders 8 to 13 use a work
// buffer of wht_work_size<T>(Order) bytes: an empty `work` lets the call
// allocate one, a shorter one returns size_error.
template <int Order>
    requires(Order >= 0 && detail::codelet_size<generated::WHT, float, static_cast<std::size_t>(Order)>)
[[nodiscard]] inline status wht(std::span<const float, wht_points(Order)> src, std::span<float, wht_points(Order)> dst,
                                scale s, std::span<std::byte> work = {}) noexcept {
    return detail::wht<Order>(src.data(), dst.data(), s, work);
}
template <int Order>
    requires(Order >= 0 && detail::codelet_size<generated::WHT, double, static_cast<std::size_t>(Order)>)
[[nodiscard]] inline status wht(std::span<const double, wht_points(Order)> src,
                                std::span<double, wht_points(Order)> dst, scale s,
                                std::span<std::byte> work = {}) noexcept {
    return detail::wht<Order>(src.data(), dst.data(), s, work);
}

// ---- Run-time lengths -----------------------------------------------------
// The length is src.size() (dst.size() for a real inverse, whose source is
// the packed spectrum); the other span must have the size that length gives.

[[nodiscard]] inline status dft_forward(std::span<const std::complex<float>> src, std::span<std::complex<float>> dst,
                                        scale s) noexcept {
    return detail::dispatch<generated::DFTFwd_CToC>(src, dst, src.size(), src.size(), src.size(), s);
}
[[nodiscard]] inline status dft_forward(std::span<const std::complex<double>> src, std::span<std::complex<double>> dst,
                                        scale s) noexcept {
    return detail::dispatch<generated::DFTFwd_CToC>(src, dst, src.size(), src.size(), src.size(), s);
}
[[nodiscard]] inline status dft_inverse(std::span<const std::complex<float>> src, std::span<std::complex<float>> dst,
                                        scale s) noexcept {
    return detail::dispatch<generated::DFTInv_CToC>(src, dst, src.size(), src.size(), src.size(), s);
}
[[nodiscard]] inline status dft_inverse(std::span<const std::complex<double>> src, std::span<std::complex<double>> dst,
                                        scale s) noexcept {
    return detail::dispatch<generated::DFTInv_CToC>(src, dst, src.size(), src.size(), src.size(), s);
}

template <layout L>
[[nodiscard]] inline status real_forward(std::span<const float> src, std::span<float> dst, scale s) noexcept {
    return detail::dispatch<detail::real_forward_family<L>>(src, dst, src.size(), src.size(),
                                                            packed_size(L, src.size()), s);
}
template <layout L>
[[nodiscard]] inline status real_forward(std::span<const double> src, std::span<double> dst, scale s) noexcept {
    return detail::dispatch<detail::real_forward_family<L>>(src, dst, src.size(), src.size(),
                                                            packed_size(L, src.size()), s);
}
template <layout L>
[[nodiscard]] inline status real_inverse(std::span<const float> src, std::span<float> dst, scale s) noexcept {
    return detail::dispatch<detail::real_inverse_family<L>>(src, dst, dst.size(), packed_size(L, dst.size()),
                                                            dst.size(), s);
}
template <layout L>
[[nodiscard]] inline status real_inverse(std::span<const double> src, std::span<double> dst, scale s) noexcept {
    return detail::dispatch<detail::real_inverse_family<L>>(src, dst, dst.size(), packed_size(L, dst.size()),
                                                            dst.size(), s);
}

[[nodiscard]] inline status hartley(std::span<const float> src, std::span<float> dst, scale s) noexcept {
    return detail::dispatch<generated::Hartley>(src, dst, src.size(), src.size(), src.size(), s);
}
[[nodiscard]] inline status hartley(std::span<const double> src, std::span<double> dst, scale s) noexcept {
    return detail::dispatch<generated::Hartley>(src, dst, src.size(), src.size(), src.size(), s);
}

// The order is log2(src.size()): a size that is not 2, 4, ..., 8192 is a size_error.
[[nodiscard]] inline status wht(std::span<const float> src, std::span<float> dst, scale s,
                                std::span<std::byte> work = {}) noexcept {
    return detail::wht(src, dst, s, work);
}
[[nodiscard]] inline status wht(std::span<const double> src, std::span<double> dst, scale s,
                                std::span<std::byte> work = {}) noexcept {
    return detail::wht(src, dst, s, work);
}

// ---- DCT-IV ----------------------------------------------------------------
// Owns a specification for one power-of-two length (2 to 2^27 in float, 2^26
// in double) in memory from zamMalloc, released on destruction.  Move-only;
// a default-constructed or moved-from dct4 is empty, and calling it returns
// null_pointer_error, as the C function does for a null specification.  For
// lengths of 64 and more a call writes the specification's scratch vector:
// give each thread a dct4 of its own.  Unnormalised: applying it twice
// multiplies by N/2.
template <detail::precision T>
class dct4 {
public:
    dct4() noexcept = default;
    dct4(dct4&& other) noexcept
        : spec_(std::exchange(other.spec_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    dct4& operator=(dct4&& other) noexcept {
        if (this != &other) {
            reset();
            spec_ = std::exchange(other.spec_, nullptr);
            size_ = std::exchange(other.size_, 0);
        }
        return *this;
    }
    dct4(const dct4&) = delete;
    dct4& operator=(const dct4&) = delete;
    ~dct4() { reset(); }

    // Makes `out` the transform of `length` points (releasing what it held);
    // on failure returns the library's status (size_error for a length that
    // is not a power of two in range) and leaves `out` as it was.
    [[nodiscard]] static status create(std::size_t length, dct4& out) noexcept {
        if (length > std::size_t(std::numeric_limits<std::int32_t>::max())) return status::size_error;
        spec* made = nullptr;
        const auto st = static_cast<status>(api::dct4_init(&made, static_cast<std::int32_t>(length)));
        if (st == status::ok) {
            out.reset();
            out.spec_ = made;
            out.size_ = length;
        }
        return st;
    }

    // The length; 0 when empty.
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return spec_ == nullptr; }

    // dst = DCT-IV(src); both spans of size() elements, possibly the same.
    [[nodiscard]] status operator()(std::span<const T> src, std::span<T> dst) noexcept {
        if (!spec_) return status::null_pointer_error;
        if (src.size() != size_ || dst.size() != size_) return status::size_error;
        return static_cast<status>(api::dct4(src.data(), dst.data(), spec_));
    }

private:
    using api = detail::c_api<T>;
    using spec = typename api::dct4_spec;

    void reset() noexcept {
        if (spec_) (void)api::dct4_free(std::exchange(spec_, nullptr));
        size_ = 0;
    }

    spec* spec_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace zamgen

#endif  // ZAMGEN_HPP
