/* Calls a codelet, a length dispatcher and the allocator, and checks results
 * that are exact in floating point: the DFT of an impulse. */
#include "zamcore.h"
#include "zamgen.h"

#include <stdio.h>

static int failures = 0;

static void expect(int ok, const char* what)
{
    if (!ok) {
        printf("FAILED: %s\n", what);
        ++failures;
    }
}

int main(void)
{
    /* x = delta[n-1] of 4 points: y[k] = exp(-2 pi i k / 4) = 1, -i, -1, i. */
    const Zam32fc x4[4] = {{0, 0}, {1, 0}, {0, 0}, {0, 0}};
    const Zam32fc y4[4] = {{1, 0}, {0, -1}, {-1, 0}, {0, 1}};
    Zam32fc out4[4];
    expect(zamgDFTFwd_CToC_4_32fc(x4, out4, ZAM_NODIV_BY_ANY) == ZAM_STS_OK, "codelet status");
    for (int k = 0; k < 4; ++k)
        expect(out4[k].re == y4[k].re && out4[k].im == y4[k].im, "codelet result");

    /* x = delta[n] of 8 points, divided by N: every output 1/8. */
    Zam64fc* x8 = (Zam64fc*)zamMalloc(8 * sizeof(Zam64fc));
    Zam64fc out8[8];
    expect(x8 != NULL, "zamMalloc");
    if (x8) {
        for (int n = 0; n < 8; ++n) x8[n].re = x8[n].im = 0;
        x8[0].re = 1;
        expect(zamgDFTFwd_CToC_64fc(x8, out8, 8, ZAM_DIV_FWD_BY_N) == ZAM_STS_OK, "dispatcher status");
        for (int k = 0; k < 8; ++k) expect(out8[k].re == 0.125 && out8[k].im == 0, "dispatcher result");
        zamFree(x8);
    }
    expect(zamgDFTFwd_CToC_64fc(out8, out8, 65, ZAM_DIV_FWD_BY_N) == ZAM_STS_SIZE_ERR, "dispatcher length check");
    expect(zamgenGetLibVersion()->major == 6, "version");

    printf("C consumer: %s\n", failures ? "FAILED" : "ok");
    return failures != 0;
}
