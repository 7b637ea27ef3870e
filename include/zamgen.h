/*
 * zamgen: fixed-size signal transforms.
 *
 * Every transform is a flat C function that takes a source array, a
 * destination array (which may be the same array) and a scaling flag, and
 * returns a status code.  Nothing is allocated, no state is kept and every
 * function may be called from any number of threads at once on distinct
 * destinations.
 *
 * Names: zamg + transform and direction + _<N> (the fixed length) + element
 * type, for example zamgDFTFwd_CToC_16_32fc.  The element types are
 *
 *   32f   float                          64f   double
 *   32fc  float re, float im (8 bytes)   64fc  double re, double im (16 bytes)
 *
 * Contract of every codelet zamg..._<N>_<type>(src, dst, flag):
 *   1. src or dst null            -> ZAM_STS_NULL_PTR_ERR, nothing read or written;
 *   2. flag not 1, 2, 4 or 8      -> ZAM_STS_FLAG_ERR, nothing read or written;
 *   3. otherwise the whole input is read, the transform computed, every
 *      output multiplied by the scale factor s and stored; ZAM_STS_OK.
 *
 * The forward DFT uses exp(-2*pi*i*n*k/N), the inverse exp(+2*pi*i*n*k/N):
 *   y[k] = s * sum_n x[n] * exp(-+2*pi*i*n*k/N).
 *
 * This header is valid C99 and C++.
 */
#ifndef ZAMGEN_H
#define ZAMGEN_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32) || defined(__CYGWIN__)
#  if defined(ZAMGEN_BUILDING)
#    define ZAMGEN_API __declspec(dllexport)
#  elif defined(ZAMGEN_STATIC)
#    define ZAMGEN_API
#  else
#    define ZAMGEN_API __declspec(dllimport)
#  endif
#elif defined(__GNUC__)
#  define ZAMGEN_API __attribute__((visibility("default")))
#else
#  define ZAMGEN_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Element types ------------------------------------------------------ */

typedef float Zam32f;
typedef double Zam64f;
typedef struct Zam32fc { Zam32f re; Zam32f im; } Zam32fc;
typedef struct Zam64fc { Zam64f re; Zam64f im; } Zam64fc;

/* ---- Status codes ------------------------------------------------------- */

typedef int32_t ZamStatus;

#define ZAM_STS_OK             0   /* the destination holds the result */
#define ZAM_STS_CONTEXT_ERR   (-5) /* a DCT-IV specification holds no valid plan */
#define ZAM_STS_SIZE_ERR      (-6) /* a run-time length or order out of range */
#define ZAM_STS_NULL_PTR_ERR  (-8) /* source or destination pointer is null */
#define ZAM_STS_FLAG_ERR      (-16) /* the scaling flag is not one of the four below */

/* ---- Scaling flags -----------------------------------------------------
 * Exactly one of these values; they are not bits to combine.
 *
 *   flag                  forward multiplies by   inverse multiplies by
 *   ZAM_DIV_FWD_BY_N      1/N                     1
 *   ZAM_DIV_INV_BY_N      1                       1/N
 *   ZAM_DIV_BY_SQRTN      1/sqrt(N)               1/sqrt(N)
 *   ZAM_NODIV_BY_ANY      1                       1
 *
 * A forward call followed by the inverse call with the same flag 1, 2 or 4
 * reproduces the input.  1/N is 1.0/N rounded to the element type; 1/sqrt(N)
 * is 1.0/sqrt(N) evaluated in double (square root rounded first), then rounded
 * to the element type.  The factor is applied to every output as a last
 * multiplication, also when it is 1.
 */
#define ZAM_DIV_FWD_BY_N  1u
#define ZAM_DIV_INV_BY_N  2u
#define ZAM_DIV_BY_SQRTN  4u
#define ZAM_NODIV_BY_ANY  8u

/* ---- Version record ----------------------------------------------------- */

typedef struct ZamLibVersion {
    int32_t major;           /* 6 */
    int32_t minor;           /* 1 */
    int32_t build;           /* 137 */
    int32_t build2;          /* 316: a further build identifier */
    char targetCode[4];      /* "mx" and two zero bytes: the processor variant */
    const char* name;        /* "zamgenmx-6.1.dll" */
    const char* version;     /* "6.1 build 137.36" */
    const char* buildDate;   /* "Sep 29 2009" */
} ZamLibVersion;

/* The record's layout is part of the interface: fail the build of any
 * translation unit that would see it differently. */
#define ZAM_STATIC_CHECK(name, cond) typedef char zam_check_##name[(cond) ? 1 : -1]
ZAM_STATIC_CHECK(version_target_offset, offsetof(ZamLibVersion, targetCode) == 16);
#if UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
ZAM_STATIC_CHECK(version_size, sizeof(ZamLibVersion) == 48);
ZAM_STATIC_CHECK(version_name_offset, offsetof(ZamLibVersion, name) == 24);
ZAM_STATIC_CHECK(version_text_offset, offsetof(ZamLibVersion, version) == 32);
ZAM_STATIC_CHECK(version_date_offset, offsetof(ZamLibVersion, buildDate) == 40);
#endif
#undef ZAM_STATIC_CHECK

/* The constant version record; the same pointer on every call.  Never write
 * through it or free it. */
ZAMGEN_API const ZamLibVersion* zamgenGetLibVersion(void);

/* ---- The transforms -------------------------------------------------------
 * Every codelet and length dispatcher is declared by its full name in
 * zamgen_functions.h, which the codelet compiler writes from the library's
 * table of exports and which is installed beside this header.  Per family, in
 * single and double precision, for every length N from 2 to 64:
 *
 *   zamgDFTFwd_CToC_<N>_32fc|64fc   complex DFT, exp(-2 pi i n k / N)
 *   zamgDFTInv_CToC_<N>_32fc|64fc   complex DFT, exp(+2 pi i n k / N)
 *   zamgDFTFwd_RTo<L>_<N>_32f|64f   real DFT to the packed layout L
 *   zamgDFTInv_<L>ToR_<N>_32f|64f   real DFT back from the packed layout L
 *   zamgHartley_<N>_32f|64f         discrete Hartley transform
 *
 * each as   ZamStatus name(const T* pSrc, T* pDst, uint32_t flag);
 * and one length dispatcher per family and precision, the name without _<N>:
 *
 *   ZamStatus zamgDFTFwd_CToC_32fc(const Zam32fc* pSrc, Zam32fc* pDst, int32_t len, uint32_t flag);
 *
 * A dispatcher calls the codelet of the given length (2 to 64) of its family
 * and returns its status.  A length outside 2..64 returns ZAM_STS_SIZE_ERR
 * before anything else is looked at (so even with null pointers); pointers
 * and flag are then checked by the codelet.
 *
 * Real layouts.  The forward real DFT takes N real samples to the half
 * spectrum X[k] = R[k] + i I[k], k = 0..N/2, in one of three layouts (I[0]
 * and, for even N, I[N/2] are 0):
 *
 *   CCS   R[k] at 2k, I[k] at 2k+1, k = 0..N/2: N+2 elements (even N) or N+1
 *         (odd N); elements 1 and (even N) N+1 are written as +0.0.
 *   Pack  R[0], then R[k], I[k] at 2k-1, 2k for 0 < k < N/2, then (even N)
 *         R[N/2] last: N elements.
 *   Perm  even N: R[0], R[N/2], then R[k], I[k] at 2k, 2k+1; odd N: as Pack.
 *
 * The inverse gives the N real samples of the conjugate-symmetric spectrum
 * given by its half, x[n] = s * (R[0] + 2 sum (R[k] cos - I[k] sin)(2 pi n k / N)
 * + (-1)^n R[N/2]).  The CCS inverse never reads elements 1 and N+1.  A
 * forward call may write into its source array (in place) when that array has
 * room for the whole output.
 *
 * Hartley: y[k] = s * sum_n x[n] (cos + sin)(2 pi n k / N).  The transform is
 * its own inverse up to N: flags 1 and 2 both scale by 1/N, 4 by 1/sqrt(N),
 * 8 by 1.
 */
#include "zamgen_functions.h"

/* ---- Walsh-Hadamard transform ---------------------------------------------
 *   ZamStatus zamgWHT_<order>_32f|64f(const T* pSrc, T* pDst, uint32_t flag, uint8_t* pBuffer);
 *   ZamStatus zamgWHT_32f|64f(const T* pSrc, T* pDst, int32_t order, uint32_t flag, uint8_t* pBuffer);
 *
 * For order 1 to 13, N = 2^order real values:
 *   y[k] = s * sum_n (-1)^popcount(k & n) x[n],
 * the Hadamard matrix in natural (Kronecker) order, not sequency order.  The
 * transform is its own inverse up to N: flags 1 and 2 both scale by 1/N, 4 by
 * 1/sqrt(N), 8 by 1; the scale is applied once, to every output.  Single
 * precision is computed in single precision throughout.
 *
 * Orders 8 to 13 need a work buffer of zamgWHTGetBufferSize_32f|64f bytes
 * (orders 1 to 7 need none and ignore the argument).  The buffer belongs to
 * the caller; its content on entry does not matter and on return is
 * undefined; it needs no alignment beyond that of the element type, and two
 * calls running at once must not share one.  With a null buffer the call
 * takes one of that size from zamMalloc and gives it back before it returns
 * (the allocation is not checked).  Source and destination may be the same
 * array.  zamgWHT_32f|64f test the order first (ZAM_STS_SIZE_ERR outside
 * 1..13, whatever the pointers), then call the codelet of that order.
 *
 * zamgWHTGetBufferSize_32f|64f store the buffer size in bytes for an order
 * (0 for orders 1 to 7; order 12: 17408 / 34816, order 13: 36864 / 73728);
 * an order outside 1..13 returns ZAM_STS_SIZE_ERR and leaves *pSize alone.
 */
ZAMGEN_API ZamStatus zamgWHTGetBufferSize_32f(int32_t order, int32_t* pSize);
ZAMGEN_API ZamStatus zamgWHTGetBufferSize_64f(int32_t order, int32_t* pSize);

/* ---- DCT-IV ----------------------------------------------------------------
 * The unnormalised type-IV discrete cosine transform of a power-of-two length
 * N (2 <= N <= 2^27 in _32f, 2^26 in _64f):
 *
 *   y[k] = sum_{n=0}^{N-1} x[n] cos(pi/N (n + 1/2)(k + 1/2)),  k = 0..N-1.
 *
 * It is its own inverse up to the factor 2/N, which the caller applies if
 * wanted; there is no scaling flag.  Lengths 2 to 32 run one straight kernel,
 * 64 and above a two-pass factorised scheme with precomputed tables.
 *
 * Life cycle.  A specification holds what one length needs (plan, tables,
 * a scratch vector) inside one buffer:
 *   1. zamgDCT4GetSize_<T>(N, &size): the buffer size in bytes; -6 for a
 *      length that is not a power of two from 2 up to the largest above (the
 *      size would no longer fit a signed 32-bit count), tested first; then -8
 *      for a null pointer.
 *   2. zamgDCT4Init_<T>(&spec, N, buffer): builds the specification inside
 *      the caller's buffer of at least that size; the buffer's contents are
 *      not read, its first eight bytes become the allocation cursor.  -8 for
 *      a null out pointer or buffer, -6 for an illegal length (the out pointer
 *      is then not written).  The buffer belongs to the caller: the
 *      specification lives as long as the buffer is kept unchanged, and is
 *      ended by discarding the buffer.  Never pass such a specification to
 *      zamgDCT4Free_<T>.
 *      Alignment: the cursor starts 64 bytes into the buffer less the
 *      remainder, by 32, of the low 32 address bits taken as a signed
 *      integer.  For a 32-byte-aligned buffer that is exactly the 64 bytes
 *      of headroom that GetSize includes.  For an unaligned buffer whose low
 *      32 address bits have the top bit set the remainder is negative and the
 *      cursor lands up to 95 bytes in, so the specification ends up to 31
 *      bytes past the end of a buffer of exactly GetSize bytes.  Use a
 *      32-byte-aligned buffer (zamMalloc gives 64-byte alignment), or add 32
 *      bytes.
 *   3. zamgDCT4InitAlloc_<T>(&spec, N): the same in memory from zamMalloc;
 *      -8 for a null out pointer, otherwise the status of GetSize or Init
 *      (an exhausted allocator shows as -8).  Nothing stays allocated on
 *      failure.  End it with zamgDCT4Free_<T>(spec) (-8 for null).
 *   4. zamgDCT4_<T>(src, dst, spec): the transform of N elements; src may be
 *      dst.  -8 for any null pointer, -5 for memory that holds no built
 *      specification (a kind outside 1..6, for example a zero-filled record).
 *
 * Threads: specifications are independent.  For N >= 64 the transform writes
 * the specification's scratch vector, so each thread needs a specification
 * of its own; for N <= 32 one specification may serve any number of threads.
 *
 * Speed and stack: on x86-64 the passes run on AVX2 or SSE2 vectors, chosen
 * on each call from the processor's features, with results identical to the
 * scalar code bit for bit.  From N = 4096 a call may use up to 40 KB of the
 * calling thread's stack (the vector paths' scratch for the nested stages).
 */
typedef struct ZamDCT4Spec_32f ZamDCT4Spec_32f;  /* opaque */
typedef struct ZamDCT4Spec_64f ZamDCT4Spec_64f;  /* opaque */

ZAMGEN_API ZamStatus zamgDCT4GetSize_32f(int32_t len, uint32_t* pSize);
ZAMGEN_API ZamStatus zamgDCT4GetSize_64f(int32_t len, uint32_t* pSize);
ZAMGEN_API ZamStatus zamgDCT4Init_32f(ZamDCT4Spec_32f** ppSpec, int32_t len, uint8_t* pBuffer);
ZAMGEN_API ZamStatus zamgDCT4Init_64f(ZamDCT4Spec_64f** ppSpec, int32_t len, uint8_t* pBuffer);
ZAMGEN_API ZamStatus zamgDCT4InitAlloc_32f(ZamDCT4Spec_32f** ppSpec, int32_t len);
ZAMGEN_API ZamStatus zamgDCT4InitAlloc_64f(ZamDCT4Spec_64f** ppSpec, int32_t len);
ZAMGEN_API ZamStatus zamgDCT4Free_32f(ZamDCT4Spec_32f* pSpec);
ZAMGEN_API ZamStatus zamgDCT4Free_64f(ZamDCT4Spec_64f* pSpec);
ZAMGEN_API ZamStatus zamgDCT4_32f(const Zam32f* pSrc, Zam32f* pDst, const ZamDCT4Spec_32f* pSpec);
ZAMGEN_API ZamStatus zamgDCT4_64f(const Zam64f* pSrc, Zam64f* pDst, const ZamDCT4Spec_64f* pSpec);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZAMGEN_H */
