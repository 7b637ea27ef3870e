// Loads and stores of one element at any byte address.  Callers may pass
// arrays that are not aligned to their element type; copying the bytes is the
// well-defined way to access them, and it compiles to the same single load or
// store as an indexed access.
#pragma once

#include <cstddef>
#include <cstring>

namespace zam {

template <class T>
[[gnu::always_inline]] inline T load(const void* p, ptrdiff_t i) noexcept
{
    T v;
    std::memcpy(&v, static_cast<const char*>(p) + i * static_cast<ptrdiff_t>(sizeof(T)), sizeof(T));
    return v;
}

template <class T>
[[gnu::always_inline]] inline void store(void* p, ptrdiff_t i, T v) noexcept
{
    std::memcpy(static_cast<char*>(p) + i * static_cast<ptrdiff_t>(sizeof(T)), &v, sizeof(T));
}

} // namespace zam
