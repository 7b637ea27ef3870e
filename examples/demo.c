/* zamgen demo: prints the version record, transforms an example signal with a
 * few codelets and shows the spectra and the round-trip errors. */
#include "zamgen.h"

#include <math.h>
#include <stdio.h>

#define PI 3.14159265358979323846

static void print_version(void)
{
    const ZamLibVersion* v = zamgenGetLibVersion();
    printf("%s %d.%d (build %d, %d), target \"%s\", version \"%s\", built %s\n\n", v->name,
           v->major, v->minor, v->build, v->build2, v->targetCode, v->version, v->buildDate);
}

/* Two tones: bins 3 (amplitude 1) and 5 (amplitude 0.5, phase 90 degrees). */
static void make_signal(int n, Zam64fc* x)
{
    for (int k = 0; k < n; ++k) {
        const double a = 2.0 * PI * 3.0 * k / n, b = 2.0 * PI * 5.0 * k / n;
        x[k].re = cos(a) - 0.5 * sin(b);
        x[k].im = sin(a) + 0.5 * cos(b);
    }
}

/* Rounding noise printed as zero, without a sign. */
static double clean(double v) { return fabs(v) < 5e-10 ? 0.0 : v; }

static void print_spectrum(const char* title, int n, const Zam64fc* y)
{
    printf("%s\n", title);
    for (int k = 0; k < n; ++k) {
        const double mag = hypot(y[k].re, y[k].im);
        if (mag > 1e-9) printf("  bin %2d: %+.6f %+.6fi  |y| = %.6f\n", k, clean(y[k].re), clean(y[k].im), mag);
    }
    printf("  (all other bins below 1e-9)\n\n");
}

typedef ZamStatus (*Cx32Fn)(const Zam32fc*, Zam32fc*, uint32_t);
typedef ZamStatus (*Cx64Fn)(const Zam64fc*, Zam64fc*, uint32_t);

/* Forward then inverse with the same flag; the largest difference from the input. */
static void round_trip(int n, Cx32Fn f32, Cx32Fn i32, Cx64Fn f64, Cx64Fn i64)
{
    Zam64fc x[64], y[64], z[64];
    Zam32fc xs[64], ys[64], zs[64];
    make_signal(n, x);
    for (int k = 0; k < n; ++k) {
        xs[k].re = (float)x[k].re;
        xs[k].im = (float)x[k].im;
    }
    const uint32_t flags[3] = {ZAM_DIV_FWD_BY_N, ZAM_DIV_INV_BY_N, ZAM_DIV_BY_SQRTN};
    for (int f = 0; f < 3; ++f) {
        double e32 = 0.0, e64 = 0.0;
        f64(x, y, flags[f]);
        i64(y, z, flags[f]);
        f32(xs, ys, flags[f]);
        i32(ys, zs, flags[f]);
        for (int k = 0; k < n; ++k) {
            e64 = fmax(e64, hypot(z[k].re - x[k].re, z[k].im - x[k].im));
            e32 = fmax(e32, hypot(zs[k].re - xs[k].re, zs[k].im - xs[k].im));
        }
        printf("  N = %2d, flag %u: max |x - inv(fwd(x))| = %.2e (32fc), %.2e (64fc)\n", n,
               flags[f], e32, e64);
    }
}

int main(void)
{
    print_version();

    Zam64fc x[64], y[64];
    make_signal(16, x);
    zamgDFTFwd_CToC_16_64fc(x, y, ZAM_DIV_FWD_BY_N);
    print_spectrum("zamgDFTFwd_CToC_16_64fc of two tones (bins 3 and 5), flag ZAM_DIV_FWD_BY_N:", 16, y);

    make_signal(47, x);
    zamgDFTFwd_CToC_47_64fc(x, y, ZAM_NODIV_BY_ANY);
    print_spectrum("zamgDFTFwd_CToC_47_64fc of the same tones, flag ZAM_NODIV_BY_ANY:", 47, y);

    /* Real input: the half spectrum in the CCS layout, and back. */
    {
        Zam64f r[12], spec[14], back[12];
        for (int k = 0; k < 12; ++k) r[k] = cos(2.0 * PI * 2.0 * k / 12) + 0.25;
        zamgDFTFwd_RToCCS_12_64f(r, spec, ZAM_DIV_FWD_BY_N);
        printf("zamgDFTFwd_RToCCS_12_64f of 0.25 + cos(2 pi 2 k / 12), flag ZAM_DIV_FWD_BY_N:\n ");
        for (int k = 0; k < 14; ++k) printf(" %.3f", clean(spec[k]));
        zamgDFTInv_CCSToR_12_64f(spec, back, ZAM_DIV_FWD_BY_N);
        double err = 0.0;
        for (int k = 0; k < 12; ++k) err = fmax(err, fabs(back[k] - r[k]));
        printf("\n  zamgDFTInv_CCSToR_12_64f restores it: max error %.2e\n\n", err);
    }

    /* Hartley: its own inverse up to N. */
    {
        const Zam32f h[6] = {1.0f, 2.0f, 0.0f, -1.0f, 0.5f, 3.0f};
        Zam32f y6[6], z6[6];
        zamgHartley_6_32f(h, y6, ZAM_NODIV_BY_ANY);
        zamgHartley_6_32f(y6, z6, ZAM_DIV_FWD_BY_N);
        printf("zamgHartley_6_32f of (1, 2, 0, -1, 0.5, 3):\n ");
        for (int k = 0; k < 6; ++k) printf(" %.4f", y6[k]);
        printf("\n  applied again with ZAM_DIV_FWD_BY_N:\n ");
        for (int k = 0; k < 6; ++k) printf(" %.4f", z6[k]);
        printf("\n\n");
    }

    /* Dispatchers: the length chosen at run time. */
    {
        Zam32fc c[64], d[64];
        for (int k = 0; k < 64; ++k) {
            c[k].re = (float)(k % 7);
            c[k].im = 0.0f;
        }
        printf("Dispatchers (length at run time):\n");
        const int32_t lens[4] = {2, 37, 64, 65};
        for (int i = 0; i < 4; ++i) {
            const ZamStatus st = zamgDFTFwd_CToC_32fc(c, d, lens[i], ZAM_NODIV_BY_ANY);
            if (st == ZAM_STS_OK)
                printf("  zamgDFTFwd_CToC_32fc, length %2d: status %d, y[0] = %.1f\n", lens[i], st, d[0].re);
            else
                printf("  zamgDFTFwd_CToC_32fc, length %2d: status %d (ZAM_STS_SIZE_ERR)\n", lens[i], st);
        }
        printf("\n");
    }

    /* Walsh-Hadamard: order 3 in natural order, and order 10 with the work
     * buffer the size query asks for, applied twice to come back. */
    {
        const float w[8] = {1, 0, 1, 0, 0, 1, 0, 1};
        float hw[8];
        zamgWHT_3_32f(w, hw, ZAM_NODIV_BY_ANY, NULL);
        printf("zamgWHT_3_32f of (1, 0, 1, 0, 0, 1, 0, 1):\n ");
        for (int k = 0; k < 8; ++k) printf(" %.0f", hw[k]);
        static double big[1024], once[1024], twice[1024];
        static uint8_t work[8192];
        int32_t bytes = 0;
        zamgWHTGetBufferSize_64f(10, &bytes);
        for (int k = 0; k < 1024; ++k) big[k] = sin(0.01 * k * k);
        zamgWHT_64f(big, once, 10, ZAM_DIV_BY_SQRTN, work);
        zamgWHT_64f(once, twice, 10, ZAM_DIV_BY_SQRTN, work);
        double err = 0.0;
        for (int k = 0; k < 1024; ++k) err = fmax(err, fabs(twice[k] - big[k]));
        printf("\n  order 10 (buffer of %d bytes), twice with ZAM_DIV_BY_SQRTN: max error %.2e\n\n", bytes, err);
    }

    /* DCT-IV: a specification in a buffer of our own (32-byte aligned, so the
     * specification starts exactly 64 bytes in), applied twice and scaled by
     * 2/N to come back. */
    {
        enum { N = 256 };
        uint32_t bytes = 0;
        zamgDCT4GetSize_32f(N, &bytes);
        static uint8_t raw[4096 + 32];
        uint8_t* area = raw + (32 - (uintptr_t)raw % 32) % 32;
        ZamDCT4Spec_32f* spec = NULL;
        const ZamStatus st = bytes <= 4096 ? zamgDCT4Init_32f(&spec, N, area) : ZAM_STS_SIZE_ERR;
        static float a[N], b[N], c[N];
        for (int k = 0; k < N; ++k) a[k] = (float)cos(0.05 * k) * (k < N / 2 ? 1.0f : -0.5f);
        zamgDCT4_32f(a, b, spec);
        zamgDCT4_32f(b, c, spec);
        float err = 0.0f;
        for (int k = 0; k < N; ++k) err = fmaxf(err, fabsf(c[k] * (2.0f / N) - a[k]));
        printf("zamgDCT4_32f, N = %d (specification of %u bytes, status %d): twice times 2/N, max error %.2e\n\n",
               N, bytes, st, err);
    }

    printf("Round trips, forward then inverse with the same flag:\n");
    round_trip(8, zamgDFTFwd_CToC_8_32fc, zamgDFTInv_CToC_8_32fc, zamgDFTFwd_CToC_8_64fc,
               zamgDFTInv_CToC_8_64fc);
    round_trip(23, zamgDFTFwd_CToC_23_32fc, zamgDFTInv_CToC_23_32fc, zamgDFTFwd_CToC_23_64fc,
               zamgDFTInv_CToC_23_64fc);
    round_trip(64, zamgDFTFwd_CToC_64_32fc, zamgDFTInv_CToC_64_32fc, zamgDFTFwd_CToC_64_64fc,
               zamgDFTInv_CToC_64_64fc);
    return 0;
}
