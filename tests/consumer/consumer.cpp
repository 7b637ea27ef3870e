// Calls a codelet, a length dispatcher and the allocator from C++, and checks
// results that are exact in floating point: the DFT of an impulse.
#include "zamcore.h"
#include "zamgen.h"

#include <array>
#include <cstdio>

int main()
{
    int failures = 0;
    auto expect = [&](bool ok, const char* what) {
        if (!ok) {
            std::printf("FAILED: %s\n", what);
            ++failures;
        }
    };

    // x = delta[n-2] of 4 points: y[k] = exp(-2 pi i 2k / 4) = (-1)^k.
    std::array<Zam64fc, 4> x4{}, out4{};
    x4[2].re = 1;
    expect(zamgDFTFwd_CToC_4_64fc(x4.data(), out4.data(), ZAM_NODIV_BY_ANY) == ZAM_STS_OK, "codelet status");
    for (int k = 0; k < 4; ++k) expect(out4[k].re == (k % 2 ? -1 : 1) && out4[k].im == 0, "codelet result");

    // x = delta[n] of 16 points, inverse divided by N: every output 1/16.
    auto* x16 = static_cast<Zam32fc*>(zamMalloc(16 * sizeof(Zam32fc)));
    std::array<Zam32fc, 16> out16{};
    expect(x16 != nullptr, "zamMalloc");
    if (x16) {
        for (int n = 0; n < 16; ++n) x16[n] = Zam32fc{n == 0 ? 1.0f : 0.0f, 0.0f};
        expect(zamgDFTInv_CToC_32fc(x16, out16.data(), 16, ZAM_DIV_INV_BY_N) == ZAM_STS_OK, "dispatcher status");
        for (const Zam32fc& y : out16) expect(y.re == 0.0625f && y.im == 0, "dispatcher result");
        zamFree(x16);
    }
    expect(zamgDFTInv_CToC_32fc(nullptr, nullptr, 1, ZAM_DIV_INV_BY_N) == ZAM_STS_SIZE_ERR, "dispatcher length check");
    expect(zamgenGetLibVersion()->major == 6, "version");

    std::printf("C++ consumer: %s\n", failures ? "FAILED" : "ok");
    return failures != 0;
}
