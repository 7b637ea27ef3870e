/* 64-byte aligned blocks on top of the C heap.  The block handed out starts at
 * the first multiple of 64 that leaves room for the address malloc returned,
 * which is kept in the word just below it for zamFree. */
#include "zamcore.h"

#include <stdlib.h>

void* zamMalloc(uint32_t size)
{
    if (size == 0) return NULL;
    const size_t total = (size_t)size + ZAMCORE_ALIGNMENT + sizeof(void*);
    unsigned char* raw = (unsigned char*)malloc(total);
    if (raw == NULL) return NULL;
    uintptr_t p = (uintptr_t)(raw + sizeof(void*));
    p = (p + (ZAMCORE_ALIGNMENT - 1)) & ~(uintptr_t)(ZAMCORE_ALIGNMENT - 1);
    ((void**)p)[-1] = raw;
    return (void*)p;
}

void zamFree(void* ptr)
{
    if (ptr == NULL) return;
    free(((void**)ptr)[-1]);
}
