// The length dispatchers: one bounds test on (length - 2) taken as unsigned,
// then one indirect call through a constant table of the 63 codelets of the
// family, lengths 2 to 64.  Pointers and flag are the codelet's to check, so a
// bad length wins over everything else.
#include "zamgen.h"

#include <array>

namespace {

template <class T>
using Codelet = ZamStatus (*)(const T*, T*, uint32_t);

template <class T>
using Table = std::array<Codelet<T>, 63>;

template <class T>
inline ZamStatus dispatch(const Table<T>& table, const T* src, T* dst, int32_t len, uint32_t flag) noexcept
{
    const uint32_t i = static_cast<uint32_t>(len) - 2u;  // negative lengths wrap to large values
    if (i > 62u) return ZAM_STS_SIZE_ERR;
    return table[i](src, dst, flag);
}

#define ZAM_TABLE(family, type)                                                           \
    constexpr Table<Zam##type> k_##family##_##type = {                                     \
        ZAM_FOR_EACH_LENGTH(ZAM_ENTRY_##type##_##family)};
#define ZAM_DISPATCHER(family, type)                                                      \
    extern "C" ZamStatus zamg##family##_##type(const Zam##type* src, Zam##type* dst,      \
                                               int32_t len, uint32_t flag)                 \
    {                                                                                     \
        return dispatch(k_##family##_##type, src, dst, len, flag);                        \
    }

#define ZAM_ENTRY_32fc_DFTFwd_CToC(N) zamgDFTFwd_CToC_##N##_32fc,
#define ZAM_ENTRY_64fc_DFTFwd_CToC(N) zamgDFTFwd_CToC_##N##_64fc,
#define ZAM_ENTRY_32fc_DFTInv_CToC(N) zamgDFTInv_CToC_##N##_32fc,
#define ZAM_ENTRY_64fc_DFTInv_CToC(N) zamgDFTInv_CToC_##N##_64fc,
#define ZAM_ENTRY_32f_DFTFwd_RToCCS(N) zamgDFTFwd_RToCCS_##N##_32f,
#define ZAM_ENTRY_64f_DFTFwd_RToCCS(N) zamgDFTFwd_RToCCS_##N##_64f,
#define ZAM_ENTRY_32f_DFTFwd_RToPack(N) zamgDFTFwd_RToPack_##N##_32f,
#define ZAM_ENTRY_64f_DFTFwd_RToPack(N) zamgDFTFwd_RToPack_##N##_64f,
#define ZAM_ENTRY_32f_DFTFwd_RToPerm(N) zamgDFTFwd_RToPerm_##N##_32f,
#define ZAM_ENTRY_64f_DFTFwd_RToPerm(N) zamgDFTFwd_RToPerm_##N##_64f,
#define ZAM_ENTRY_32f_DFTInv_CCSToR(N) zamgDFTInv_CCSToR_##N##_32f,
#define ZAM_ENTRY_64f_DFTInv_CCSToR(N) zamgDFTInv_CCSToR_##N##_64f,
#define ZAM_ENTRY_32f_DFTInv_PackToR(N) zamgDFTInv_PackToR_##N##_32f,
#define ZAM_ENTRY_64f_DFTInv_PackToR(N) zamgDFTInv_PackToR_##N##_64f,
#define ZAM_ENTRY_32f_DFTInv_PermToR(N) zamgDFTInv_PermToR_##N##_32f,
#define ZAM_ENTRY_64f_DFTInv_PermToR(N) zamgDFTInv_PermToR_##N##_64f,
#define ZAM_ENTRY_32f_Hartley(N) zamgHartley_##N##_32f,
#define ZAM_ENTRY_64f_Hartley(N) zamgHartley_##N##_64f,

ZAM_TABLE(DFTFwd_CToC, 32fc)
ZAM_TABLE(DFTFwd_CToC, 64fc)
ZAM_TABLE(DFTInv_CToC, 32fc)
ZAM_TABLE(DFTInv_CToC, 64fc)
ZAM_TABLE(DFTFwd_RToCCS, 32f)
ZAM_TABLE(DFTFwd_RToCCS, 64f)
ZAM_TABLE(DFTFwd_RToPack, 32f)
ZAM_TABLE(DFTFwd_RToPack, 64f)
ZAM_TABLE(DFTFwd_RToPerm, 32f)
ZAM_TABLE(DFTFwd_RToPerm, 64f)
ZAM_TABLE(DFTInv_CCSToR, 32f)
ZAM_TABLE(DFTInv_CCSToR, 64f)
ZAM_TABLE(DFTInv_PackToR, 32f)
ZAM_TABLE(DFTInv_PackToR, 64f)
ZAM_TABLE(DFTInv_PermToR, 32f)
ZAM_TABLE(DFTInv_PermToR, 64f)
ZAM_TABLE(Hartley, 32f)
ZAM_TABLE(Hartley, 64f)
}  // namespace

ZAM_DISPATCHER(DFTFwd_CToC, 32fc)
ZAM_DISPATCHER(DFTFwd_CToC, 64fc)
ZAM_DISPATCHER(DFTInv_CToC, 32fc)
ZAM_DISPATCHER(DFTInv_CToC, 64fc)
ZAM_DISPATCHER(DFTFwd_RToCCS, 32f)
ZAM_DISPATCHER(DFTFwd_RToCCS, 64f)
ZAM_DISPATCHER(DFTFwd_RToPack, 32f)
ZAM_DISPATCHER(DFTFwd_RToPack, 64f)
ZAM_DISPATCHER(DFTFwd_RToPerm, 32f)
ZAM_DISPATCHER(DFTFwd_RToPerm, 64f)
ZAM_DISPATCHER(DFTInv_CCSToR, 32f)
ZAM_DISPATCHER(DFTInv_CCSToR, 64f)
ZAM_DISPATCHER(DFTInv_PackToR, 32f)
ZAM_DISPATCHER(DFTInv_PackToR, 64f)
ZAM_DISPATCHER(DFTInv_PermToR, 32f)
ZAM_DISPATCHER(DFTInv_PermToR, 64f)
ZAM_DISPATCHER(Hartley, 32f)
ZAM_DISPATCHER(Hartley, 64f)
