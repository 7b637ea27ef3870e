// The length dispatchers: one bounds test on (length - first) taken as
// unsigned, then one indirect call through a constant table of the family's
// codelets.  Pointers and flag are the codelet's to check, so a bad length
// wins over everything else.  The tables come from the compiler's table of
// exports (dispatch_tables.inc).
#include "zamgen.h"

#include <array>

namespace {

template <class T>
using Codelet = ZamStatus (*)(const T*, T*, uint32_t);

template <class T, size_t Count>
inline ZamStatus dispatch(const std::array<Codelet<T>, Count>& table, int32_t first, const T* src, T* dst,
                          int32_t len, uint32_t flag) noexcept
{
    // Lengths below the first wrap around to large values.
    const uint32_t i = static_cast<uint32_t>(len) - static_cast<uint32_t>(first);
    if (i >= Count) return ZAM_STS_SIZE_ERR;
    return table[i](src, dst, flag);
}

} // namespace

#define ZAM_DISPATCHER(name, T, first, last, ...)                                         \
    extern "C" ZamStatus name(const T* src, T* dst, int32_t len, uint32_t flag)           \
    {                                                                                     \
        static constexpr std::array<Codelet<T>, (last) - (first) + 1> table{__VA_ARGS__}; \
        return dispatch(table, first, src, dst, len, flag);                               \
    }
#include "dispatch_tables.inc"
