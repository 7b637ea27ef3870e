/* Compiled as C: the public headers are valid C, and the library is callable
 * from C.  Returns 0 when every check passes, else the number of the check. */
#include "zamcore.h"
#include "zamgen.h"

#include <stdint.h>
#include <string.h>

int zt_c_api_check(void)
{
    const ZamLibVersion* v = zamgenGetLibVersion();
    if (v == NULL || v->major != 6 || strcmp(v->name, "zamgenmx-6.1.dll") != 0) return 1;

    Zam32fc x[8], y[8];
    memset(x, 0, sizeof x);
    x[0].re = 1.0f;
    if (zamgDFTFwd_CToC_8_32fc(x, y, ZAM_DIV_FWD_BY_N) != ZAM_STS_OK) return 2;
    for (int k = 0; k < 8; ++k)
        if (y[k].re != 0.125f || y[k].im != 0.0f) return 3;
    if (zamgDFTInv_CToC_8_32fc(NULL, y, ZAM_DIV_FWD_BY_N) != ZAM_STS_NULL_PTR_ERR) return 4;
    if (zamgDFTInv_CToC_8_32fc(x, y, 3u) != ZAM_STS_FLAG_ERR) return 5;

    Zam64f r[6] = {1, 2, 3, 4, 5, 6}, spec[8], h[6];
    if (zamgDFTFwd_RToCCS_64f(r, spec, 6, ZAM_NODIV_BY_ANY) != ZAM_STS_OK || spec[0] != 21.0) return 8;
    if (zamgDFTFwd_RToCCS_64f(r, spec, 65, ZAM_NODIV_BY_ANY) != ZAM_STS_SIZE_ERR) return 9;
    if (zamgHartley_6_64f(r, h, ZAM_NODIV_BY_ANY) != ZAM_STS_OK || h[0] != 21.0) return 10;

    Zam64fc* p = (Zam64fc*)zamMalloc(64 * sizeof(Zam64fc));
    if (p == NULL || ((uintptr_t)p % 64) != 0) return 6;
    zamFree(p);
    zamFree(NULL);
    if (zamMalloc(0) != NULL) return 7;

    ZamDCT4Spec_32f* d4 = NULL;
    Zam32f dx[2] = {1.0f, 0.0f}, dy[2];
    uint32_t d4size = 0;
    if (zamgDCT4GetSize_32f(2, &d4size) != ZAM_STS_OK || d4size != 256) return 11;
    if (zamgDCT4InitAlloc_32f(&d4, 2) != ZAM_STS_OK) return 12;
    if (zamgDCT4_32f(dx, dy, d4) != ZAM_STS_OK || dy[0] != 0.9238795f || dy[1] != 0.38268343f) return 13;
    if (zamgDCT4Free_32f(d4) != ZAM_STS_OK) return 14;
    return 0;
}
