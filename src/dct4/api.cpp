// The exported DCT-IV functions: size query, initialisation in the caller's
// buffer or in memory of its own, release, and the transform.
#include "dct4/kernels.hpp"
#include "zamcore.h"

namespace zam::dct4 {
namespace {

template <class T, class Handle>
Spec<T>* spec_of(Handle* h) { return reinterpret_cast<Spec<T>*>(h); }

// The length is tested first, as by every size query of the library; then
// the pointer; nothing is written on failure.
template <class T>
ZamStatus size_query(int32_t n, uint32_t* out)
{
    uint32_t size = 0;
    const ZamStatus sts = get_size<T>(n, &size);
    if (sts != ZAM_STS_OK) return sts;
    if (out == nullptr) return ZAM_STS_NULL_PTR_ERR;
    *out = size;
    return ZAM_STS_OK;
}

template <class T, class Handle>
ZamStatus init_alloc(Handle** out, int32_t n)
{
    if (out == nullptr) return ZAM_STS_NULL_PTR_ERR;
    uint32_t size = 0;
    const ZamStatus sts = get_size<T>(n, &size);
    if (sts != ZAM_STS_OK) return sts;
    auto* buffer = static_cast<uint8_t*>(zamMalloc(size));
    Spec<T>* spec = nullptr;
    const ZamStatus init_sts = init<T>(&spec, n, buffer);
    if (init_sts != ZAM_STS_OK) {
        zamFree(buffer);
        return init_sts;
    }
    *out = reinterpret_cast<Handle*>(spec);
    return ZAM_STS_OK;
}

template <class T, class Handle>
ZamStatus free_spec(Handle* h)
{
    if (h == nullptr) return ZAM_STS_NULL_PTR_ERR;
    Spec<T>* spec = spec_of<T>(h);
    void* buffer = spec->hdr.arena;
    destroy(spec);
    zamFree(buffer);
    return ZAM_STS_OK;
}

template <class T, class Handle>
ZamStatus init_in(Handle** out, int32_t n, uint8_t* buffer)
{
    if (out == nullptr || buffer == nullptr) return ZAM_STS_NULL_PTR_ERR;
    Spec<T>* spec = nullptr;
    const ZamStatus sts = init<T>(&spec, n, buffer);
    if (sts == ZAM_STS_OK) *out = reinterpret_cast<Handle*>(spec);
    return sts;
}

template <class T, class Handle>
ZamStatus run(const T* src, T* dst, const Handle* h)
{
    if (src == nullptr || dst == nullptr || h == nullptr) return ZAM_STS_NULL_PTR_ERR;
    return transform(src, dst, reinterpret_cast<const Spec<T>*>(h));
}

} // namespace
} // namespace zam::dct4

using namespace zam::dct4;

extern "C" {

ZamStatus zamgDCT4GetSize_32f(int32_t len, uint32_t* pSize) { return size_query<float>(len, pSize); }
ZamStatus zamgDCT4GetSize_64f(int32_t len, uint32_t* pSize) { return size_query<double>(len, pSize); }
ZamStatus zamgDCT4Init_32f(ZamDCT4Spec_32f** ppSpec, int32_t len, uint8_t* pBuffer)
{
    return init_in<float>(ppSpec, len, pBuffer);
}
ZamStatus zamgDCT4Init_64f(ZamDCT4Spec_64f** ppSpec, int32_t len, uint8_t* pBuffer)
{
    return init_in<double>(ppSpec, len, pBuffer);
}
ZamStatus zamgDCT4InitAlloc_32f(ZamDCT4Spec_32f** ppSpec, int32_t len) { return init_alloc<float>(ppSpec, len); }
ZamStatus zamgDCT4InitAlloc_64f(ZamDCT4Spec_64f** ppSpec, int32_t len) { return init_alloc<double>(ppSpec, len); }
ZamStatus zamgDCT4Free_32f(ZamDCT4Spec_32f* pSpec) { return free_spec<float>(pSpec); }
ZamStatus zamgDCT4Free_64f(ZamDCT4Spec_64f* pSpec) { return free_spec<double>(pSpec); }
ZamStatus zamgDCT4_32f(const Zam32f* pSrc, Zam32f* pDst, const ZamDCT4Spec_32f* pSpec)
{
    return run<float>(pSrc, pDst, pSpec);
}
ZamStatus zamgDCT4_64f(const Zam64f* pSrc, Zam64f* pDst, const ZamDCT4Spec_64f* pSpec)
{
    return run<double>(pSrc, pDst, pSpec);
}

} // extern "C"
