// zamgen-example-cpp: the C++ interface (zamgen.hpp) in a few calls.
#include "zamgen.hpp"

#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>
#include <string_view>
#include <vector>

namespace {

void print(const char* what, zamgen::status s) {
    const std::string_view text = zamgen::to_string(s);
    std::printf("%s: %.*s\n", what, int(text.size()), text.data());
}

bool check(zamgen::status s, const char* what) {
    if (s != zamgen::status::ok) print(what, s);
    return s == zamgen::status::ok;
}

} // namespace

int main() {
    using zamgen::scale;

    // A complex DFT of 16 points and back, the length fixed at compile time:
    // the codelet of 16 points is called directly.
    std::array<std::complex<float>, 16> x{}, spectrum{}, back{};
    for (std::size_t n = 0; n < x.size(); ++n)
        x[n] = std::polar(1.0f, 2.0f * std::numbers::pi_v<float> * 3.0f * float(n) / 16.0f);  // frequency 3
    if (!check(zamgen::dft_forward<16>(x, spectrum, scale::forward_by_n), "dft_forward") ||
        !check(zamgen::dft_inverse<16>(spectrum, back, scale::forward_by_n), "dft_inverse"))
        return 1;
    float error = 0.0f;
    for (std::size_t n = 0; n < x.size(); ++n) error = std::fmax(error, std::abs(back[n] - x[n]));
    std::printf("complex DFT of 16 points: bin 3 = %.3f%+.3fi, round trip error %.1e\n", spectrum[3].real(),
                spectrum[3].imag(), double(error));

    // A real DFT whose length is known only at run time, to the CCS layout
    // (N + 2 elements for even N).
    const std::size_t length = 12;
    std::vector<double> samples(length), half(zamgen::packed_size(zamgen::layout::ccs, length));
    for (std::size_t n = 0; n < length; ++n) samples[n] = std::cos(2.0 * std::numbers::pi * 2.0 * double(n) / 12.0);
    if (!check(zamgen::real_forward<zamgen::layout::ccs>(samples, half, scale::none), "real_forward")) return 1;
    std::printf("real DFT of %zu points, CCS: R[2] = %.3f, I[2] = %.3f\n", length, half[4], half[5]);
    // A destination of the wrong size is refused before anything is written.
    std::vector<double> small(length);
    print("the same into 12 elements", zamgen::real_forward<zamgen::layout::ccs>(samples, small, scale::none));

    // A DCT-IV of 1024 points: the object owns its specification and frees
    // it when it goes out of scope.
    zamgen::dct4<float> dct;
    if (!check(zamgen::dct4<float>::create(1024, dct), "dct4::create")) return 1;
    std::vector<float> signal(dct.size()), coefficients(dct.size()), restored(dct.size());
    for (std::size_t n = 0; n < signal.size(); ++n) signal[n] = float(n % 7) - 3.0f;
    if (!check(dct(signal, coefficients), "dct4") || !check(dct(coefficients, restored), "dct4")) return 1;
    error = 0.0f;
    for (std::size_t n = 0; n < signal.size(); ++n)
        error = std::fmax(error, std::fabs(restored[n] * 2.0f / float(dct.size()) - signal[n]));
    std::printf("DCT-IV of %zu points, applied twice and scaled by 2/N: error %.1e\n", dct.size(), double(error));
    return 0;
}
