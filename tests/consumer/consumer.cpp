// Uses the C++ layer (zamgen.hpp) as an application would: a codelet chosen at
// compile time, a run-time length through the dispatcher, a DCT-IV owner, the
// allocator; checks results that are exact in floating point.
#include "zamcore.h"
#include "zamgen.hpp"

#include <array>
#include <complex>
#include <cstdio>
#include <span>

int main()
{
    int failures = 0;
    auto expect = [&](bool ok, const char* what) {
        if (!ok) {
            std::printf("FAILED: %s\n", what);
            ++failures;
        }
    };
    using zamgen::scale;
    using zamgen::status;

    // x = delta[n-2] of 4 points: y[k] = exp(-2 pi i 2k / 4) = (-1)^k.
    std::array<std::complex<double>, 4> x4{}, y4{};
    x4[2] = 1.0;
    expect(zamgen::dft_forward<4>(x4, y4, scale::none) == status::ok, "codelet status");
    for (int k = 0; k < 4; ++k) expect(y4[k] == std::complex<double>(k % 2 ? -1 : 1, 0), "codelet result");

    // x = delta[n] of 16 points, inverse divided by N: every output 1/16.
    auto* raw = static_cast<std::complex<float>*>(zamMalloc(16 * sizeof(std::complex<float>)));
    expect(raw != nullptr, "zamMalloc");
    if (raw) {
        std::span<std::complex<float>> x16(raw, 16);
        std::array<std::complex<float>, 16> y16{};
        for (auto& v : x16) v = 0.0f;
        x16[0] = 1.0f;
        expect(zamgen::dft_inverse(std::span<const std::complex<float>>(x16), std::span(y16), scale::inverse_by_n) ==
                   status::ok,
               "dispatcher status");
        for (const auto& y : y16) expect(y == std::complex<float>(0.0625f, 0), "dispatcher result");
        // A destination of the wrong size is refused before anything is written.
        expect(zamgen::dft_inverse(std::span<const std::complex<float>>(x16), std::span(y16).first(15),
                                   scale::inverse_by_n) == status::size_error,
               "size check");
        zamFree(raw);
    }

    // A DCT-IV owner: made, called, released at the end of the scope.
    zamgen::dct4<double> dct;
    expect(zamgen::dct4<double>::create(16, dct) == status::ok && dct.size() == 16, "dct4 create");
    std::array<double, 16> in{}, out{};
    expect(dct(in, out) == status::ok, "dct4 call");
    for (double v : out) expect(v == 0, "dct4 of zeros");

    expect(zamgenGetLibVersion()->major == 6, "version");
    std::printf("C++ consumer: %s\n", failures ? "FAILED" : "ok");
    return failures != 0;
}
