/*
 * zamcore: the maker's core library.  Memory for zamgen's work areas.
 *
 * zamMalloc returns a block of at least `size` bytes whose address is a
 * multiple of 64, or a null pointer when size is 0 or the memory is not
 * available.  zamFree releases a block from zamMalloc; a null pointer is
 * ignored.  Both may be called from any thread.
 *
 * This header is valid C99 and C++.
 */
#ifndef ZAMCORE_H
#define ZAMCORE_H

#include <stdint.h>

#if defined(_WIN32) || defined(__CYGWIN__)
#  if defined(ZAMCORE_BUILDING)
#    define ZAMCORE_API __declspec(dllexport)
#  elif defined(ZAMCORE_STATIC)
#    define ZAMCORE_API
#  else
#    define ZAMCORE_API __declspec(dllimport)
#  endif
#elif defined(__GNUC__)
#  define ZAMCORE_API __attribute__((visibility("default")))
#else
#  define ZAMCORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define ZAMCORE_ALIGNMENT 64

ZAMCORE_API void* zamMalloc(uint32_t size);
ZAMCORE_API void zamFree(void* ptr);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* ZAMCORE_H */
