// The length dispatchers (and the Walsh-Hadamard order entries): one bounds
// test on (size - first) taken as unsigned, then one indirect call through a
// constant table of the family's codelets.  Pointers and flag are the codelet's to check, so a bad length
// wins over everything else.  The tables come from the compiler's table of
// exports (dispatch_tables.inc).
#include "zamgen.h"

#include <array>

namespace {

template <class T>
using Codelet = ZamStatus (*)(const T*, T*, uint32_t);

template <class T>
using BufferedCodelet = ZamStatus (*)(const T*, T*, uint32_t, uint8_t*);

// The table index of a size, or Count when it is out of range (sizes below
// the first wrap around to large values).
template <size_t Count>
inline uint32_t index_of(int32_t size, int32_t first) noexcept
{
    const uint32_t i = static_cast<uint32_t>(size) - static_cast<uint32_t>(first);
    return i < Count ? i : static_cast<uint32_t>(Count);
}

template <class T, size_t Count>
inline ZamStatus dispatch(const std::array<Codelet<T>, Count>& table, int32_t first, const T* src, T* dst,
                          int32_t len, uint32_t flag) noexcept
{
    const uint32_t i = index_of<Count>(len, first);
    return i < Count ? table[i](src, dst, flag) : ZAM_STS_SIZE_ERR;
}

template <class T, size_t Count>
inline ZamStatus dispatch(const std::array<BufferedCodelet<T>, Count>& table, int32_t first, const T* src, T* dst,
                          int32_t order, uint32_t flag, uint8_t* buffer) noexcept
{
    const uint32_t i = index_of<Count>(order, first);
    return i < Count ? table[i](src, dst, flag, buffer) : ZAM_STS_SIZE_ERR;
}

} // namespace

#define ZAM_DISPATCHER(name, T, first, last, ...)                                         \
    extern "C" ZamStatus name(const T* src, T* dst, int32_t len, uint32_t flag)           \
    {                                                                                     \
        static constexpr std::array<Codelet<T>, (last) - (first) + 1> table{__VA_ARGS__}; \
        return dispatch(table, first, src, dst, len, flag);                               \
    }
// The Walsh-Hadamard entries take the order and pass a work buffer through.
#define ZAM_BUFFERED_DISPATCHER(name, T, first, last, ...)                                          \
    extern "C" ZamStatus name(const T* src, T* dst, int32_t order, uint32_t flag, uint8_t* buffer)  \
    {                                                                                               \
        static constexpr std::array<BufferedCodelet<T>, (last) - (first) + 1> table{__VA_ARGS__};   \
        return dispatch(table, first, src, dst, order, flag, buffer);                               \
    }
#include "dispatch_tables.inc"
