// zamgen-accuracy: the error of every family, length and precision against a
// long-double reference, beside FFTW's error on the same input in the same
// precision.  Writes a TSV on stdout:
//
//   family  precision  n  ours_rel_rms  fftw_rel_rms  ours_max_rel  fftw_max_rel
//
// rel_rms is ||y - y_ref||_2 / ||y_ref||_2 over all inputs of a row together,
// max_rel the largest max_i |y_i - ref_i| / max_i |ref_i| of one input; both
// over the scalars (real and imaginary parts apart).  The fftw columns are
// empty where FFTW has no such transform (Walsh-Hadamard).  Every transform
// runs unscaled (ZAM_NODIV_BY_ANY); FFTW's REDFT11 is twice our DCT-IV and is
// halved, which is exact.  FFTW plans with FFTW_ESTIMATE, so its plan, and the
// table, do not depend on timings.
//
// The real transforms are measured in the CCS layout: the Pack and Perm
// codelets give the same values in other places, which this program checks
// bit for bit (a difference is reported on stderr and fails the run).
//
// References: direct sums in long double with twiddles cos/sin(2 pi m / L) of
// integer m reduced modulo L; above 4096 points the Walsh-Hadamard butterflies
// and a DCT-IV through a long-double FFT of N/2 points, both checked against
// the direct sums at 4096 points (stderr).
#include "zamgen.h"

#include "fftw_api.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

namespace {

using LD = long double;
using Vec = std::vector<LD>;
constexpr LD kPi = 3.141592653589793238462643383279502884L;
constexpr int kInputs = 4;        // random inputs per row
constexpr int kDirectLimit = 4096; // longest transform summed directly
bool g_failed = false;

// cos and sin of 2 pi m / L, m = 0..L-1.  Each is computed in the first
// octant and carried by symmetry, so the table is exactly symmetric and the
// quarter turns are exact (sin pi is 0, not 1e-20).
struct Circle {
    explicit Circle(size_t len) : cos(len), sin(len) {
        const LD l = static_cast<LD>(len);
        for (size_t m = 0; m < len; ++m) {
            const size_t q = 4 * m / len, r = 4 * m % len;  // 2 pi m / L = (pi / 2)(q + r / L)
            LD c, s;
            if (2 * r <= len) {
                c = cosl(kPi / 2 * static_cast<LD>(r) / l);
                s = sinl(kPi / 2 * static_cast<LD>(r) / l);
            } else {
                c = sinl(kPi / 2 * static_cast<LD>(len - r) / l);
                s = cosl(kPi / 2 * static_cast<LD>(len - r) / l);
            }
            const LD turns[4][2] = {{c, s}, {-s, c}, {-c, -s}, {s, -c}};
            cos[m] = turns[q][0];
            sin[m] = turns[q][1];
        }
    }
    Vec cos, sin;
};

// Uniform scalars in [-1, 1) with as many random bits as the element type's
// significand, straight from the integer generator: the same inputs everywhere.
template <class T>
std::vector<T> random_input(std::mt19937_64& gen, size_t count) {
    constexpr int bits = std::numeric_limits<T>::digits;
    std::vector<T> v(count);
    for (auto& x : v)
        x = static_cast<T>(static_cast<LD>(static_cast<int64_t>(gen() >> (64 - bits)) - (int64_t{1} << (bits - 1))) /
                           static_cast<LD>(int64_t{1} << (bits - 1)));
    return v;
}

template <class T>
Vec widen(const std::vector<T>& v) { return Vec(v.begin(), v.end()); }

// Errors of one row, summed over its inputs.
struct Error {
    LD err2 = 0, ref2 = 0, max_rel = 0;
    void add(const Vec& y, const Vec& ref) {
        LD emax = 0, rmax = 0;
        for (size_t i = 0; i < ref.size(); ++i) {
            const LD e = y[i] - ref[i];
            err2 += e * e;
            ref2 += ref[i] * ref[i];
            emax = std::max(emax, fabsl(e));
            rmax = std::max(rmax, fabsl(ref[i]));
        }
        max_rel = std::max(max_rel, emax / rmax);
    }
    double rms() const { return static_cast<double>(sqrtl(err2 / ref2)); }
};

// ---- References --------------------------------------------------------------

// y[k] = sum_n x[n] e^{sign 2 pi i n k / N}, complex values interleaved.
Vec dft(const Vec& x, int n, int sign) {
    const Circle w(static_cast<size_t>(n));
    Vec y(2 * static_cast<size_t>(n));
    for (int k = 0; k < n; ++k) {
        LD re = 0, im = 0;
        for (int j = 0; j < n; ++j) {
            const size_t m = static_cast<size_t>(j) * static_cast<size_t>(k) % static_cast<size_t>(n);
            const LD c = w.cos[m], s = sign * w.sin[m];
            re += x[2 * j] * c - x[2 * j + 1] * s;
            im += x[2 * j] * s + x[2 * j + 1] * c;
        }
        y[2 * k] = re;
        y[2 * k + 1] = im;
    }
    return y;
}

Vec real_forward(const Vec& x, int n) {
    Vec c(2 * x.size());
    for (size_t i = 0; i < x.size(); ++i) c[2 * i] = x[i];
    Vec y = dft(c, n, -1);
    y.resize(static_cast<size_t>(n / 2 + 1) * 2);  // the CCS half spectrum
    return y;
}

// The real signal of the conjugate-symmetric spectrum whose half is `h` (CCS).
Vec real_inverse(const Vec& h, int n) {
    Vec full(2 * static_cast<size_t>(n));
    for (int k = 0; k <= n / 2; ++k) {
        full[2 * k] = h[2 * k];
        full[2 * k + 1] = h[2 * k + 1];
        if (k > 0 && 2 * k != n) {
            full[2 * (n - k)] = h[2 * k];
            full[2 * (n - k) + 1] = -h[2 * k + 1];
        }
    }
    const Vec y = dft(full, n, +1);
    Vec r(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) r[i] = y[2 * i];
    return r;
}

Vec hartley(const Vec& x, int n) {
    const Circle w(static_cast<size_t>(n));
    Vec y(static_cast<size_t>(n));
    for (int k = 0; k < n; ++k)
        for (int j = 0; j < n; ++j) {
            const size_t m = static_cast<size_t>(j) * static_cast<size_t>(k) % static_cast<size_t>(n);
            y[k] += x[j] * (w.cos[m] + w.sin[m]);
        }
    return y;
}

Vec wht_direct(const Vec& x) {
    const size_t n = x.size();
    Vec y(n);
    for (size_t k = 0; k < n; ++k)
        for (size_t j = 0; j < n; ++j) y[k] += std::popcount(k & j) % 2 ? -x[j] : x[j];
    return y;
}

Vec wht_fast(Vec x) {
    for (size_t h = 1; h < x.size(); h *= 2)
        for (size_t i = 0; i < x.size(); i += 2 * h)
            for (size_t j = i; j < i + h; ++j) {
                const LD a = x[j], b = x[j + h];
                x[j] = a + b;
                x[j + h] = a - b;
            }
    return x;
}

Vec wht(const Vec& x) { return x.size() <= kDirectLimit ? wht_direct(x) : wht_fast(x); }

// y[k] = sum_n x[n] cos(pi/N (n + 1/2)(k + 1/2)) = sum_n x[n] cos(2 pi (2n+1)(2k+1) / 8N);
// N is a power of two, so the index is reduced by a mask.
Vec dct4_direct(const Vec& x, const Circle& w) {
    const size_t n = x.size(), mask = 8 * n - 1;
    Vec y(n);
    for (size_t k = 0; k < n; ++k) {
        LD s = 0;
        for (size_t j = 0; j < n; ++j) s += x[j] * w.cos[(2 * j + 1) * (2 * k + 1) & mask];
        y[k] = s;
    }
    return y;
}

// The same through a complex FFT of M = N/2 points: t[j] = (x[2j] + i x[N-1-2j])
// e^{-i pi (4j+1) / 4N}, T = FFT(t), u[k] = T[k] e^{-i pi k / N}; then
// y[2k] = Re u[k] and y[N-1-2k] = -Im u[k].  Every twiddle is read from the
// table of 8N points; the FFT is radix 2 with log2(M) rounding steps per output.
Vec dct4_fast(const Vec& x, const Circle& w) {
    using C = std::complex<LD>;
    const size_t n = x.size(), m = n / 2, len = 8 * n;
    auto root = [&](size_t i) { return C(w.cos[i % len], -w.sin[i % len]); };  // e^{-2 pi i i / 8N}
    std::vector<C> t(m);
    for (size_t j = 0; j < m; ++j) t[j] = C(x[2 * j], x[n - 1 - 2 * j]) * root(4 * j + 1);
    for (size_t i = 1, j = 0; i < m; ++i) {  // bit reversal
        size_t bit = m >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(t[i], t[j]);
    }
    for (size_t h = 1; h < m; h *= 2)
        for (size_t i = 0; i < m; i += 2 * h)
            for (size_t j = 0; j < h; ++j) {
                const C b = t[i + j + h] * root(j * (len / (2 * h)));  // e^{-2 pi i j / 2h}
                t[i + j + h] = t[i + j] - b;
                t[i + j] += b;
            }
    Vec y(n);
    for (size_t k = 0; k < m; ++k) {
        const C u = t[k] * root(4 * k);
        y[2 * k] = u.real();
        y[n - 1 - 2 * k] = -u.imag();
    }
    return y;
}

Vec dct4(const Vec& x) {
    const Circle w(8 * x.size());
    return x.size() <= kDirectLimit ? dct4_direct(x, w) : dct4_fast(x, w);
}

// ---- FFTW -------------------------------------------------------------------

// One FFTW plan on its own buffers of `in` and `out` scalars.
template <class T>
class Peer {
public:
    using F = Fftw<T>;
    using Maker = std::function<typename F::Plan(T*, T*)>;
    Peer(size_t in, size_t out, const Maker& make, T factor = 1)
        : in_(static_cast<T*>(F::alloc(in * sizeof(T)))), out_(static_cast<T*>(F::alloc(out * sizeof(T)))),
          n_in_(in), n_out_(out), factor_(factor), plan_(make(in_, out_)) {}
    ~Peer() {
        F::destroy(plan_);
        F::release(in_);
        F::release(out_);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    std::vector<T> operator()(const std::vector<T>& x) {
        std::copy(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(n_in_), in_);
        F::execute(plan_);
        std::vector<T> y(out_, out_ + n_out_);
        for (auto& v : y) v *= factor_;
        return y;
    }

private:
    T* in_;
    T* out_;
    size_t n_in_, n_out_;
    T factor_;
    typename F::Plan plan_;
};

template <class T>
const char* precision() { return sizeof(T) == 4 ? "32f" : "64f"; }

// Measures one row: kInputs inputs of `in` scalars (prepared by `fix`, e.g. a
// spectrum's imaginary parts that must be zero), our call, FFTW's if any.
template <class T>
void row(const char* family, int n, size_t in, size_t out, std::mt19937_64& gen,
         const std::function<Vec(const Vec&)>& reference, const std::function<void(const T*, T*)>& ours,
         Peer<T>* peer, const std::function<void(std::vector<T>&)>& fix = {}) {
    Error e_ours, e_fftw;
    for (int i = 0; i < kInputs; ++i) {
        std::vector<T> x = random_input<T>(gen, in);
        if (fix) fix(x);
        const Vec ref = reference(widen(x));
        std::vector<T> y(out);
        ours(x.data(), y.data());
        e_ours.add(widen(y), ref);
        if (peer) e_fftw.add(widen((*peer)(x)), ref);
    }
    if (peer)
        std::printf("%s\t%s\t%d\t%.3e\t%.3e\t%.3e\t%.3e\n", family, precision<T>(), n, e_ours.rms(), e_fftw.rms(),
                    static_cast<double>(e_ours.max_rel), static_cast<double>(e_fftw.max_rel));
    else
        std::printf("%s\t%s\t%d\t%.3e\t\t%.3e\t\n", family, precision<T>(), n, e_ours.rms(),
                    static_cast<double>(e_ours.max_rel));
}

// ---- Families ---------------------------------------------------------------

template <class T>
using Dispatcher = ZamStatus (*)(const T*, T*, int32_t, uint32_t);

template <class T, class C>
void complex_family(std::mt19937_64& gen, Dispatcher<C> fwd, Dispatcher<C> inv) {
    using X = typename Fftw<T>::Complex;
    for (int sign : {-1, +1}) {
        const auto call = sign < 0 ? fwd : inv;
        for (int n = 2; n <= 64; ++n) {
            const size_t s = 2 * static_cast<size_t>(n);
            Peer<T> peer(s, s, [&](T* i, T* o) {
                return Fftw<T>::dft_1d(n, reinterpret_cast<X*>(i), reinterpret_cast<X*>(o), sign, FFTW_ESTIMATE);
            });
            row<T>(sign < 0 ? "complex_fwd" : "complex_inv", n, s, s, gen,
                   [&](const Vec& x) { return dft(x, n, sign); },
                   [&](const T* x, T* y) {
                       call(reinterpret_cast<const C*>(x), reinterpret_cast<C*>(y), n, ZAM_NODIV_BY_ANY);
                   },
                   &peer);
        }
    }
}

// Where the Pack and Perm layouts keep R[k] (k = 0..N/2); I[k] follows it for 0 < k < N/2.
int re_index(bool perm, int n, int k) {
    if (k == 0) return 0;
    if (2 * k == n) return perm ? 1 : n - 1;
    return perm && n % 2 == 0 ? 2 * k : 2 * k - 1;
}

// CCS to Pack or Perm: the same numbers, the ones that are always zero left out.
template <class T>
std::vector<T> repack(const std::vector<T>& ccs, bool perm, int n) {
    std::vector<T> p(static_cast<size_t>(n));
    for (int k = 0; k <= n / 2; ++k) {
        p[re_index(perm, n, k)] = ccs[2 * k];
        if (k > 0 && 2 * k != n) p[re_index(perm, n, k) + 1] = ccs[2 * k + 1];
    }
    return p;
}

template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

// The Pack and Perm codelets against the CCS ones: forward results repacked,
// and inverses of the repacked spectrum, bit for bit.
template <class T>
void check_layouts(int n, const std::vector<T>& x, const std::vector<T>& spectrum, Dispatcher<T> ccs_fwd,
                   Dispatcher<T> ccs_inv, const Dispatcher<T> fwd[2], const Dispatcher<T> inv[2]) {
    const size_t ccs_len = static_cast<size_t>(n / 2 + 1) * 2, len = static_cast<size_t>(n);
    std::vector<T> ref(ccs_len), ref_inv(len), y(len), z(len);
    ccs_fwd(x.data(), ref.data(), n, ZAM_NODIV_BY_ANY);
    ccs_inv(spectrum.data(), ref_inv.data(), n, ZAM_NODIV_BY_ANY);
    for (int perm = 0; perm < 2; ++perm) {
        fwd[perm](x.data(), y.data(), n, ZAM_NODIV_BY_ANY);
        inv[perm](repack(spectrum, perm, n).data(), z.data(), n, ZAM_NODIV_BY_ANY);
        if (!same_bits(y, repack(ref, perm, n)) || !same_bits(z, ref_inv)) {
            std::fprintf(stderr, "zamgen-accuracy: %s %s, N = %d differs from CCS\n", perm ? "Perm" : "Pack",
                         precision<T>(), n);
            g_failed = true;
        }
    }
}

template <class T>
void real_family(std::mt19937_64& gen, Dispatcher<T> fwd, Dispatcher<T> inv, const Dispatcher<T> other_fwd[2],
                 const Dispatcher<T> other_inv[2]) {
    using X = typename Fftw<T>::Complex;
    // A half spectrum: the imaginary parts of bin 0 and (even N) bin N/2 are zero.
    auto half_spectrum = [](int n) {
        return [n](std::vector<T>& h) {
            h[1] = 0;
            if (n % 2 == 0) h[static_cast<size_t>(n) + 1] = 0;
        };
    };
    for (int n = 2; n <= 64; ++n) {
        const size_t ccs = static_cast<size_t>(n / 2 + 1) * 2, len = static_cast<size_t>(n);
        Peer<T> peer(len, ccs, [&](T* i, T* o) { return Fftw<T>::r2c_1d(n, i, reinterpret_cast<X*>(o), FFTW_ESTIMATE); });
        row<T>("real_fwd_ccs", n, len, ccs, gen, [&](const Vec& x) { return real_forward(x, n); },
               [&](const T* x, T* y) { fwd(x, y, n, ZAM_NODIV_BY_ANY); }, &peer);
    }
    for (int n = 2; n <= 64; ++n) {
        const size_t ccs = static_cast<size_t>(n / 2 + 1) * 2, len = static_cast<size_t>(n);
        Peer<T> peer(ccs, len, [&](T* i, T* o) { return Fftw<T>::c2r_1d(n, reinterpret_cast<X*>(i), o, FFTW_ESTIMATE); });
        row<T>("real_inv_ccs", n, ccs, len, gen, [&](const Vec& h) { return real_inverse(h, n); },
               [&](const T* h, T* y) { inv(h, y, n, ZAM_NODIV_BY_ANY); }, &peer, half_spectrum(n));
        std::vector<T> x = random_input<T>(gen, len), h = random_input<T>(gen, ccs);
        half_spectrum(n)(h);
        check_layouts<T>(n, x, h, fwd, inv, other_fwd, other_inv);
    }
}

template <class T>
void hartley_family(std::mt19937_64& gen, Dispatcher<T> call) {
    for (int n = 2; n <= 64; ++n) {
        const size_t len = static_cast<size_t>(n);
        Peer<T> peer(len, len, [&](T* i, T* o) { return Fftw<T>::r2r_1d(n, i, o, FFTW_DHT, FFTW_ESTIMATE); });
        row<T>("hartley", n, len, len, gen, [&](const Vec& x) { return hartley(x, n); },
               [&](const T* x, T* y) { call(x, y, n, ZAM_NODIV_BY_ANY); }, &peer);
    }
}

template <class T>
void wht_family(std::mt19937_64& gen, ZamStatus (*call)(const T*, T*, int32_t, uint32_t, uint8_t*),
                ZamStatus (*buffer_size)(int32_t, int32_t*)) {
    for (int order = 1; order <= 13; ++order) {
        const size_t len = size_t{1} << order;
        int32_t bytes = 0;
        buffer_size(order, &bytes);
        std::vector<uint8_t> work(static_cast<size_t>(bytes));
        row<T>("wht", static_cast<int>(len), len, len, gen, wht,
               [&](const T* x, T* y) { call(x, y, order, ZAM_NODIV_BY_ANY, work.data()); }, nullptr);
    }
}

template <class T, class S>
void dct4_family(std::mt19937_64& gen, ZamStatus (*init)(S**, int32_t), ZamStatus (*call)(const T*, T*, const S*),
                 ZamStatus (*release)(S*)) {
    for (int n = 2; n <= 65536; n *= 2) {
        const size_t len = static_cast<size_t>(n);
        S* spec = nullptr;
        if (init(&spec, n) != ZAM_STS_OK) {
            std::fprintf(stderr, "zamgen-accuracy: no DCT-IV specification for N = %d\n", n);
            g_failed = true;
            continue;
        }
        Peer<T> peer(len, len, [&](T* i, T* o) { return Fftw<T>::r2r_1d(n, i, o, FFTW_REDFT11, FFTW_ESTIMATE); },
                     T(0.5));
        row<T>("dct4", n, len, len, gen, dct4, [&](const T* x, T* y) { call(x, y, spec); }, &peer);
        release(spec);
    }
}

// The fast references against the direct sums at the longest direct length.
void check_references() {
    std::mt19937_64 gen(7);
    const Vec x = widen(random_input<double>(gen, kDirectLimit));
    const Circle w(8 * x.size());
    Error dct, walsh;
    dct.add(dct4_fast(x, w), dct4_direct(x, w));
    walsh.add(wht_fast(x), wht_direct(x));
    std::fprintf(stderr, "zamgen-accuracy: fast references at N = %d against the direct sums: "
                 "DCT-IV %.1e, Walsh-Hadamard %.1e (relative RMS)\n", kDirectLimit, dct.rms(), walsh.rms());
    if (dct.rms() > 1e-17 || walsh.rms() > 1e-17) g_failed = true;
}

} // namespace

int main() {
    std::fprintf(stderr, "zamgen-accuracy: %s, peer %s, %d inputs per row\n", zamgenGetLibVersion()->version,
                 fftw_version, kInputs);
    check_references();
    std::printf("family\tprecision\tn\tours_rel_rms\tfftw_rel_rms\tours_max_rel\tfftw_max_rel\n");
    std::mt19937_64 gen(20260101);
    complex_family<float, Zam32fc>(gen, zamgDFTFwd_CToC_32fc, zamgDFTInv_CToC_32fc);
    complex_family<double, Zam64fc>(gen, zamgDFTFwd_CToC_64fc, zamgDFTInv_CToC_64fc);
    const Dispatcher<float> fwd32[2] = {zamgDFTFwd_RToPack_32f, zamgDFTFwd_RToPerm_32f};
    const Dispatcher<float> inv32[2] = {zamgDFTInv_PackToR_32f, zamgDFTInv_PermToR_32f};
    const Dispatcher<double> fwd64[2] = {zamgDFTFwd_RToPack_64f, zamgDFTFwd_RToPerm_64f};
    const Dispatcher<double> inv64[2] = {zamgDFTInv_PackToR_64f, zamgDFTInv_PermToR_64f};
    real_family<float>(gen, zamgDFTFwd_RToCCS_32f, zamgDFTInv_CCSToR_32f, fwd32, inv32);
    real_family<double>(gen, zamgDFTFwd_RToCCS_64f, zamgDFTInv_CCSToR_64f, fwd64, inv64);
    hartley_family<float>(gen, zamgHartley_32f);
    hartley_family<double>(gen, zamgHartley_64f);
    wht_family<float>(gen, zamgWHT_32f, zamgWHTGetBufferSize_32f);
    wht_family<double>(gen, zamgWHT_64f, zamgWHTGetBufferSize_64f);
    dct4_family<float>(gen, zamgDCT4InitAlloc_32f, zamgDCT4_32f, zamgDCT4Free_32f);
    dct4_family<double>(gen, zamgDCT4InitAlloc_64f, zamgDCT4_64f, zamgDCT4Free_64f);
    return g_failed ? 1 : 0;
}
