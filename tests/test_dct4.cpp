// DCT-IV: the work-area arena, the specification life cycle and the
// transform, in both precisions.
#include "support.hpp"

#include <complex>

#include "dct4/kernels.hpp"
#include "zamcore.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <cstdlib>
#include <memory>

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

using namespace zt;
using CLD = std::complex<LD>;
using namespace zam::dct4;

// ---- The exported functions of one precision --------------------------------

template <class T> struct Api;
template <> struct Api<float> {
    using Spec = ZamDCT4Spec_32f;
    static constexpr auto get_size = zamgDCT4GetSize_32f;
    static constexpr auto init = zamgDCT4Init_32f;
    static constexpr auto init_alloc = zamgDCT4InitAlloc_32f;
    static constexpr auto free = zamgDCT4Free_32f;
    static constexpr auto run = zamgDCT4_32f;
};
template <> struct Api<double> {
    using Spec = ZamDCT4Spec_64f;
    static constexpr auto get_size = zamgDCT4GetSize_64f;
    static constexpr auto init = zamgDCT4Init_64f;
    static constexpr auto init_alloc = zamgDCT4InitAlloc_64f;
    static constexpr auto free = zamgDCT4Free_64f;
    static constexpr auto run = zamgDCT4_64f;
};

template <class T>
class Dct4 : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4, Precisions);

std::vector<int32_t> lengths_up_to(int32_t max)
{
    std::vector<int32_t> v;
    for (int32_t n = 2; n <= max; n *= 2) v.push_back(n);
    return v;
}

const int32_t kIllegal[] = {0, 1, 3, 5, 6, 9, 12, 24, 48, 65, 96, 100, 129, 192, 320, 1000, 3 << 12, 3 << 20,
                            (1 << 20) + 2, -2, -64, INT32_MIN, INT32_MAX, 1 << 30};

// A buffer aligned to 32 bytes, plus an offset.
struct Buffer {
    std::unique_ptr<uint8_t[]> raw;
    uint8_t* p;
    Buffer(size_t size, size_t offset = 0) : raw(new uint8_t[size + 64 + offset])
    {
        p = reinterpret_cast<uint8_t*>((reinterpret_cast<uintptr_t>(raw.get()) + 31) & ~uintptr_t(31)) + offset;
    }
    uint64_t cursor_offset() const { return arena_cursor(p) - as_value(p); }
};

// Pages of memory at a chosen address (or anywhere for 0), read-write; null
// when the system will not give them there.
uint8_t* map_pages(uintptr_t address, size_t bytes)
{
#if defined(_WIN32)
    return static_cast<uint8_t*>(
        VirtualAlloc(reinterpret_cast<void*>(address), bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
#else
    const int fixed = address != 0 ? MAP_FIXED_NOREPLACE : 0;
    void* m = mmap(reinterpret_cast<void*>(address), bytes, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | fixed, -1, 0);
    if (m == MAP_FAILED) return nullptr;
    if (address != 0 && m != reinterpret_cast<void*>(address)) {
        munmap(m, bytes);
        return nullptr;
    }
    return static_cast<uint8_t*>(m);
#endif
}
void unmap_pages(uint8_t* p, size_t bytes)
{
#if defined(_WIN32)
    (void)bytes;
    VirtualFree(p, 0, MEM_RELEASE);
#else
    munmap(p, bytes);
#endif
}
bool forbid_access(uint8_t* p, size_t bytes)
{
#if defined(_WIN32)
    DWORD old;
    return VirtualProtect(p, bytes, PAGE_NOACCESS, &old) != 0;
#else
    return mprotect(p, bytes, PROT_NONE) == 0;
#endif
}
constexpr size_t kPage = 65536;  // a multiple of every page size and allocation granule in use

// ---- A long-double reference: the DCT-IV through a complex FFT of N/2 ------

std::vector<LD> reference_dct4(const std::vector<LD>& x)
{
    const size_t n = x.size(), h = n / 2;
    const LD pi = 3.141592653589793238462643383279502884L;
    std::vector<CLD> v(h);
    for (size_t k = 0; k < h; ++k) {
        const LD a = -pi * LD(4 * k + 1) / LD(4 * n);
        v[k] = CLD(x[2 * k], x[n - 1 - 2 * k]) * CLD(std::cos(a), std::sin(a));
    }
    for (size_t i = 1, j = 0; i < h; ++i) {  // radix-2 FFT, exponent -2 pi i/h
        size_t bit = h >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(v[i], v[j]);
    }
    for (size_t len = 2; len <= h; len *= 2)
        for (size_t b = 0; b < h; b += len)
            for (size_t u = 0; u < len / 2; ++u) {
                const LD a = -2 * pi * LD(u) / LD(len);
                const CLD w = v[b + u + len / 2] * CLD(std::cos(a), std::sin(a));
                v[b + u + len / 2] = v[b + u] - w;
                v[b + u] += w;
            }
    std::vector<LD> y(n);
    for (size_t k = 0; k < h; ++k) {
        const LD a = -pi * LD(k) / LD(n);
        const CLD w = v[k] * CLD(std::cos(a), std::sin(a));
        y[2 * k] = w.real();
        y[n - 1 - 2 * k] = -w.imag();
    }
    return y;
}

template <class T>
Scalars widen(const std::vector<T>& v) { return Scalars(v.begin(), v.end()); }

// Error bounds of the relative rms error, per precision.
template <class T> constexpr LD kBound = sizeof(T) == 4 ? 1e-6L : 2e-15L;

// ---- Arena -----------------------------------------------------------------

struct Counted {
    Owned own;
    int* calls;
};
void count_release(Owned* self) { ++*reinterpret_cast<Counted*>(self)->calls; }

TEST(Dct4Arena, TakesAndGivesBackWholeGranules)
{
    alignas(32) uint8_t buf[1024];
    const Arena a = buf;
    const uint64_t start = as_value(buf + 64);
    arena_set_cursor(a, start);
    struct { uint32_t size, advance; } takes[] = {{0, 0}, {1, 32}, {24, 32}, {32, 32}, {33, 64}, {80, 96}, {88, 96}};
    for (auto c : takes) {
        void* p = arena_take(a, c.size);
        EXPECT_EQ(as_value(p), start) << c.size;
        EXPECT_EQ(arena_cursor(a), start + c.advance) << c.size;
        EXPECT_EQ(arena_give_back(a, nullptr, c.size), c.advance);
        EXPECT_EQ(arena_cursor(a), start);
    }
    arena_take(a, 40);
    arena_take(a, 100);
    arena_give_back(a, nullptr, 99);  // the address is never looked at
    arena_give_back(a, buf, 33);
    EXPECT_EQ(arena_cursor(a), start);
    arena_take(a, 100);
    arena_give_back(a, nullptr, 64);  // a wrong size leaves the cursor displaced
    EXPECT_EQ(arena_cursor(a), start + 64);
    EXPECT_EQ(list_node_space(3), 96u);
}

TEST(Dct4Arena, ListsTakeNodesOnlyPastAFilledSlot)
{
    alignas(32) uint8_t buf[1024];
    const Arena a = buf;
    const uint64_t start = as_value(buf + 64);
    arena_set_cursor(a, start);
    ListNode* head = list_new(a);
    EXPECT_EQ(arena_cursor(a), start + 32);
    EXPECT_EQ(list_item(head, 0), 0u);
    EXPECT_EQ(list_append(head, 0), 0u);  // an empty head stays empty...
    EXPECT_EQ(list_append(head, 7), 7u);  // ...and the next value lands in it
    EXPECT_EQ(arena_cursor(a), start + 32);
    list_append(head, 8);
    list_append(head, 9);
    EXPECT_EQ(arena_cursor(a), start + 96);
    const struct { int32_t index; uint64_t value; } items[] = {{-1, 0}, {0, 7}, {1, 8}, {2, 9}, {3, 0}, {INT32_MAX, 0}};
    for (auto c : items) EXPECT_EQ(list_item(head, c.index), c.value) << c.index;
    list_drop_tail(head);
    EXPECT_EQ(arena_cursor(a), start + 32);
    EXPECT_EQ(list_item(head, 0), 7u);
    EXPECT_EQ(list_item(head, 1), 0u);
    list_discard(head);
    EXPECT_EQ(arena_cursor(a), start);
}

TEST(Dct4Arena, ReleasingOwnedObjectsCallsEachAndGivesBackItsSize)
{
    alignas(32) uint8_t buf[2048];
    const Arena a = buf;
    const uint64_t start = as_value(buf + 64);
    arena_set_cursor(a, start);
    int calls = 0;
    ListNode* head = list_new(a);
    for (uint32_t size : {40u, 96u, 200u}) {
        auto* c = static_cast<Counted*>(arena_take(a, size));
        *c = {{count_release, size}, &calls};
        list_append(head, as_value(c));
    }
    EXPECT_EQ(arena_cursor(a), start + 32 + 64 + 96 + 224 + 2 * 32);
    release_owned_list(head);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(arena_cursor(a), start + 32 + 2 * 32);  // the nodes stay
    list_discard(head);
    EXPECT_EQ(arena_cursor(a), start);
}

TYPED_TEST(Dct4, TableHoldsTheRoundedAngles)
{
    using T = TypeParam;
    for (uint32_t n : {64u, 256u, 2048u}) {
        uint32_t r = 0;
        ASSERT_EQ(radix_choice(int32_t(n / 2), &r), ZAM_STS_OK);
        std::vector<T> table(n);
        fill_second_pass_table(table.data(), n, r);
        for (uint32_t q = 0; q < n / (2 * r); ++q)
            for (uint32_t p = 0; p < r; ++p) {
                const T a = T(2 * (2 * q + 1) * (2 * p + 1)) / T(8 * n);
                const T angle = T(3.141592653589793 * double(a));
                const T* slot = &table[2 * r * q + table_slot(r, p)];
                EXPECT_EQ(slot[0], std::cos(angle));
                EXPECT_EQ(slot[1], std::sin(angle));
            }
    }
}

// ---- Size, initialisation, release -------------------------------------------

TYPED_TEST(Dct4, GetSize)
{
    using T = TypeParam;
    uint32_t size = 0;
    for (int32_t n : {2, 4, 8, 16, 32}) {
        ASSERT_EQ(Api<T>::get_size(n, &size), ZAM_STS_OK);
        EXPECT_EQ(size, 256u);
    }
    const bool single = sizeof(T) == 4;
    const struct { int32_t n; uint32_t f32, f64; } refs[] = {
        {64, 1280, 1792}, {128, 1792, 2816}, {256, 2816, 4864}, {1024, 8960, 17152}};
    for (auto c : refs) {
        ASSERT_EQ(Api<T>::get_size(c.n, &size), ZAM_STS_OK);
        EXPECT_EQ(size, single ? c.f32 : c.f64) << c.n;
    }
    for (int32_t n : lengths_up_to(kMaxLength<T>)) {
        ASSERT_EQ(Api<T>::get_size(n, &size), ZAM_STS_OK) << n;
        EXPECT_EQ(size % 32, 0u);
        EXPECT_LE(size, uint32_t(INT32_MAX));
    }
    for (int32_t n : kIllegal) EXPECT_EQ(Api<T>::get_size(n, &size), ZAM_STS_SIZE_ERR) << n;
    EXPECT_EQ(Api<T>::get_size(2 * kMaxLength<T>, &size), ZAM_STS_SIZE_ERR);
    EXPECT_EQ(Api<T>::get_size(64, nullptr), ZAM_STS_NULL_PTR_ERR);
}

// Init takes exactly the planner's total, and the release gives all of it
// back; an illegal length leaves the cursor where Init set it.
TYPED_TEST(Dct4, InitTakesThePlannedBytesAndReleaseReturnsThem)
{
    using T = TypeParam;
    for (int32_t n : lengths_up_to(1 << 18)) {
        uint32_t size = 0;
        ASSERT_EQ(Api<T>::get_size(n, &size), ZAM_STS_OK);
        Buffer buf(size);
        typename Api<T>::Spec* spec = nullptr;
        ASSERT_EQ(Api<T>::init(&spec, n, buf.p), ZAM_STS_OK) << n;
        EXPECT_EQ(buf.cursor_offset(), size) << n;
        auto* s = reinterpret_cast<Spec<T>*>(spec);
        EXPECT_EQ(s->length, uint32_t(n));
        EXPECT_EQ(s->kind, n <= 32 ? uint32_t(std::countr_zero(uint32_t(n))) : 6u);
        destroy(s);
        EXPECT_EQ(buf.cursor_offset(), 64u) << n;
    }
    Buffer buf(1 << 16);
    for (int32_t n : kIllegal) {
        auto* spec = reinterpret_cast<typename Api<T>::Spec*>(&buf);
        EXPECT_EQ(Api<T>::init(&spec, n, buf.p), ZAM_STS_SIZE_ERR) << n;
        EXPECT_EQ(spec, reinterpret_cast<typename Api<T>::Spec*>(&buf));
        EXPECT_EQ(buf.cursor_offset(), 64u) << n;
    }
    typename Api<T>::Spec* spec = nullptr;
    EXPECT_EQ(Api<T>::init(nullptr, 64, buf.p), ZAM_STS_NULL_PTR_ERR);
    EXPECT_EQ(Api<T>::init(&spec, 64, nullptr), ZAM_STS_NULL_PTR_ERR);
    EXPECT_EQ(Api<T>::init_alloc(nullptr, 64), ZAM_STS_NULL_PTR_ERR);
    for (int32_t n : kIllegal) EXPECT_EQ(Api<T>::init_alloc(&spec, n), ZAM_STS_SIZE_ERR) << n;
    EXPECT_EQ(spec, nullptr);
    EXPECT_EQ(Api<T>::free(nullptr), ZAM_STS_NULL_PTR_ERR);
    ASSERT_EQ(Api<T>::init_alloc(&spec, 4096), ZAM_STS_OK);
    EXPECT_EQ(Api<T>::free(spec), ZAM_STS_OK);
}

// The cursor lands 64 bytes in for an aligned buffer; one byte past
// alignment, 63 bytes in when the low 32 address bits are positive as a
// signed integer, 95 when they are negative.
TYPED_TEST(Dct4, CursorFollowsTheSignedRemainder)
{
    using T = TypeParam;
    typename Api<T>::Spec* spec = nullptr;
    Buffer aligned(256);
    ASSERT_EQ(Api<T>::init(&spec, 8, aligned.p), ZAM_STS_OK);
    EXPECT_EQ(aligned.cursor_offset(), 64u + 192u);
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "ThreadSanitizer keeps the addresses below for itself";
#endif
    const struct { uintptr_t address; uint64_t offset; } cases[] = {
        {uintptr_t(0x6a0000000000), 63}, {uintptr_t(0x6a0080000000), 95}};
    for (auto c : cases) {
        uint8_t* m = map_pages(c.address, kPage);
        if (m == nullptr) GTEST_SKIP() << "the system gives no page at 0x" << std::hex << c.address;
        uint8_t* p = m + 1;
        ASSERT_EQ(Api<T>::init(&spec, 64, p), ZAM_STS_OK);
        auto* s = reinterpret_cast<Spec<T>*>(spec);
        EXPECT_EQ(as_value(s) - as_value(p), c.offset);
        EXPECT_EQ(as_value(s) % 32, 0u);
        destroy(s);
        EXPECT_EQ(arena_cursor(p) - as_value(p), c.offset);
        unmap_pages(m, kPage);
    }
}

// A 32-byte-aligned buffer of exactly GetSize bytes, followed by a page that
// cannot be touched, holds the whole specification and its scratch.
TYPED_TEST(Dct4, BufferOfExactlyGetSizeBytesIsNotOverrun)
{
    using T = TypeParam;
    Random rng(7);
    for (int32_t n : lengths_up_to(1 << 16)) {
        uint32_t size = 0;
        ASSERT_EQ(Api<T>::get_size(n, &size), ZAM_STS_OK);
        const size_t span = (size + kPage - 1) / kPage * kPage;
        uint8_t* m = map_pages(0, span + kPage);
        ASSERT_NE(m, nullptr);
        ASSERT_TRUE(forbid_access(m + span, kPage));
        uint8_t* p = m + span - size;
        typename Api<T>::Spec* spec = nullptr;
        ASSERT_EQ(Api<T>::init(&spec, n, p), ZAM_STS_OK);
        std::vector<T> x = rng.reals<T>(size_t(n)), y(static_cast<size_t>(n));
        EXPECT_EQ(Api<T>::run(x.data(), y.data(), spec), ZAM_STS_OK);
        unmap_pages(m, span + kPage);
    }
}

// ---- The transform -----------------------------------------------------------

TYPED_TEST(Dct4, StatusOfNullPointersAndUnbuiltRecords)
{
    using T = TypeParam;
    typename Api<T>::Spec* spec = nullptr;
    ASSERT_EQ(Api<T>::init_alloc(&spec, 64), ZAM_STS_OK);
    std::vector<T> x(64, T(1)), y(64, T(5));
    EXPECT_EQ(Api<T>::run(nullptr, y.data(), spec), ZAM_STS_NULL_PTR_ERR);
    EXPECT_EQ(Api<T>::run(x.data(), nullptr, spec), ZAM_STS_NULL_PTR_ERR);
    EXPECT_EQ(Api<T>::run(x.data(), y.data(), nullptr), ZAM_STS_NULL_PTR_ERR);
    alignas(32) uint8_t zeros[kSpecBytes] = {};
    const auto* bogus = reinterpret_cast<const typename Api<T>::Spec*>(zeros);
    EXPECT_EQ(Api<T>::run(x.data(), y.data(), bogus), ZAM_STS_CONTEXT_ERR);
    for (T v : y) EXPECT_EQ(v, T(5));
    EXPECT_EQ(Api<T>::free(spec), ZAM_STS_OK);
}

// Every length to 2^16 against the reference; twice, times 2/N, is the
// input; in place, and through Init, gives the same bits.
TYPED_TEST(Dct4, EveryLengthIsAccurateSelfInverseAndRepeatable)
{
    using T = TypeParam;
    LD worst = 0, worst_twice = 0;
    for (int32_t n : lengths_up_to(1 << 16)) {
        Random rng(uint64_t(n) * 31);
        const std::vector<T> x = rng.reals<T>(size_t(n));
        typename Api<T>::Spec* spec = nullptr;
        ASSERT_EQ(Api<T>::init_alloc(&spec, n), ZAM_STS_OK);
        std::vector<T> y(static_cast<size_t>(n)), z(static_cast<size_t>(n)), w = x;
        ASSERT_EQ(Api<T>::run(x.data(), y.data(), spec), ZAM_STS_OK);
        const LD err = relative_rms(widen(y), reference_dct4(widen(x)));
        EXPECT_LT(err, kBound<T>) << n;
        worst = std::max(worst, err);

        ASSERT_EQ(Api<T>::run(y.data(), z.data(), spec), ZAM_STS_OK);
        Scalars back = widen(z);
        for (LD& v : back) v *= LD(2) / LD(n);
        const LD twice = relative_rms(back, widen(x));
        EXPECT_LT(twice, 2 * kBound<T>) << n;
        worst_twice = std::max(worst_twice, twice);

        ASSERT_EQ(Api<T>::run(w.data(), w.data(), spec), ZAM_STS_OK);
        EXPECT_TRUE(bitwise_equal(w, y)) << "in place, N = " << n;

        uint32_t size = 0;
        ASSERT_EQ(Api<T>::get_size(n, &size), ZAM_STS_OK);
        Buffer buf(size);
        typename Api<T>::Spec* own = nullptr;
        ASSERT_EQ(Api<T>::init(&own, n, buf.p), ZAM_STS_OK);
        ASSERT_EQ(Api<T>::run(x.data(), w.data(), own), ZAM_STS_OK);
        EXPECT_TRUE(bitwise_equal(w, y)) << "Init and InitAlloc, N = " << n;
        EXPECT_EQ(Api<T>::free(spec), ZAM_STS_OK);
    }
    std::printf("[ dct4 %s ] worst relative rms %.3Le, twice %.3Le\n", sizeof(T) == 4 ? "32f" : "64f", worst,
                worst_twice);
}

// Lengths past 2^16 nest a stage inside a nested stage: applied twice they
// still give back the input.
TYPED_TEST(Dct4, DoublyNestedLengthsAreSelfInverse)
{
    using T = TypeParam;
    const int32_t n = 1 << 18;
    Random rng(99);
    const std::vector<T> x = rng.reals<T>(size_t(n));
    typename Api<T>::Spec* spec = nullptr;
    ASSERT_EQ(Api<T>::init_alloc(&spec, n), ZAM_STS_OK);
    std::vector<T> y(static_cast<size_t>(n)), z(static_cast<size_t>(n));
    ASSERT_EQ(Api<T>::run(x.data(), y.data(), spec), ZAM_STS_OK);
    ASSERT_EQ(Api<T>::run(y.data(), z.data(), spec), ZAM_STS_OK);
    Scalars back = widen(z);
    for (LD& v : back) v *= LD(2) / LD(n);
    EXPECT_LT(relative_rms(back, widen(x)), 2 * kBound<T>);
    EXPECT_EQ(Api<T>::free(spec), ZAM_STS_OK);
}

// Every first-pass kernel (2 to 64 points) with every second-pass kernel
// (radix 1 to 32) makes the DCT-IV of their product.
TYPED_TEST(Dct4, EveryPairingOfPassKernelsIsTheTransform)
{
    using T = TypeParam;
    for (uint32_t m = 2; m <= 64; m *= 2)
        for (uint32_t r = 1; r <= 32; r *= 2) {
            const uint32_t n = m * r;
            Random rng(n + m);
            const std::vector<T> x = rng.reals<T>(n);
            std::vector<T> table(n), scratch(n), y(n);
            fill_second_pass_table(table.data(), n, r);
            two_pass(m, r, x.data(), scratch.data(), table.data(), y.data());
            EXPECT_LT(relative_rms(widen(y), reference_dct4(widen(x))), kBound<T>) << "M = " << m << ", r = " << r;
        }
}

// Every vector path this processor runs gives the scalar path's bits: every
// length to 2^16 (the nested stages included) and every pairing of pass
// kernels, on random values, huge and tiny ones (subnormal results), signed
// zeros, and values with infinities and NaNs among them; in place too.  NaN
// results must be NaN on both paths (the sign and payload of a NaN are not
// part of the results).
TYPED_TEST(Dct4, EveryVectorPathGivesTheScalarBits)
{
    using T = TypeParam;
    std::vector<Path> paths;
    for (Path p : {Path::Sse2, Path::Avx2, Path::Avx512})
        if (path_supported(p)) paths.push_back(p);
#if defined(ZAMGEN_HOST_HAS_AVX2)
    EXPECT_TRUE(path_supported(Path::Avx2) && best_path() == Path::Avx2) << "this machine has AVX2";
#endif
#if defined(ZAMGEN_HOST_HAS_AVX512)
    EXPECT_TRUE(path_supported(Path::Avx512) && widest_path() == Path::Avx512) << "this machine has AVX-512";
#endif
    if (paths.empty()) GTEST_SKIP() << "scalar build";
    for (int32_t n : lengths_up_to(1 << 16)) {
        typename Api<T>::Spec* spec = nullptr;
        ASSERT_EQ(Api<T>::init_alloc(&spec, n), ZAM_STS_OK);
        const auto* s = reinterpret_cast<const Spec<T>*>(spec);
        for (const std::vector<T>& x : path_inputs<T>(size_t(n), uint64_t(n))) {
            std::vector<T> want(x.size()), got(x.size());
            ASSERT_EQ(transform(x.data(), want.data(), s, Path::Scalar), ZAM_STS_OK);
            for (Path p : paths) {
                ASSERT_EQ(transform(x.data(), got.data(), s, p), ZAM_STS_OK);
                EXPECT_TRUE(same_results(got, want)) << "N = " << n << ", path " << int(p);
                got = x;
                ASSERT_EQ(transform(got.data(), got.data(), s, p), ZAM_STS_OK);
                EXPECT_TRUE(same_results(got, want)) << "in place, N = " << n << ", path " << int(p);
            }
        }
        EXPECT_EQ(Api<T>::free(spec), ZAM_STS_OK);
    }
    for (uint32_t m = 2; m <= 64; m *= 2)
        for (uint32_t r = 1; r <= 32; r *= 2) {
            const uint32_t n = m * r;
            std::vector<T> table(n), scratch(n), want(n), got(n);
            fill_second_pass_table(table.data(), n, r);
            for (const std::vector<T>& x : path_inputs<T>(n, n + m)) {
                two_pass(m, r, x.data(), scratch.data(), table.data(), want.data(), Path::Scalar);
                for (Path p : paths) {
                    two_pass(m, r, x.data(), scratch.data(), table.data(), got.data(), p);
                    EXPECT_TRUE(same_results(got, want)) << "M = " << m << ", r = " << r << ", path " << int(p);
                }
            }
        }
}

// The kernels of 2, 4 and 8 points, evaluated in the element type with the
// literals given in decimal.
template <class T>
T lit(const char* s) { return sizeof(T) == 4 ? T(std::strtof(s, nullptr)) : T(std::strtod(s, nullptr)); }

template <class T>
std::vector<T> small_kernel(const std::vector<T>& x)
{
    const bool f = sizeof(T) == 4;
    const T h = lit<T>(f ? "0.70710677" : "0.7071067811865476");
    if (x.size() == 2) {
        const T c = lit<T>(f ? "0.9238795" : "0.9238795325112867"), s = lit<T>(f ? "0.38268343" : "0.3826834323650898");
        return {c * x[0] + s * x[1], s * x[0] - c * x[1]};
    }
    if (x.size() == 4) {
        const T t1 = lit<T>(f ? "0.8206788" : "0.8206787908286604"), t2 = lit<T>(f ? "0.53451115" : "0.5345111359507917");
        const T s1 = lit<T>(f ? "0.98078525" : "0.9807852804032304"), s2 = lit<T>(f ? "0.8314696" : "0.8314696123025452");
        const T u = x[0] - t1 * x[3], v = x[1] - t2 * x[2];
        const T p = x[3] + s1 * u, q = x[2] + s2 * v;
        const T u1 = u - t1 * p, v1 = v - t2 * q, w = (u1 + v1) * h;
        return {p + q, (p - q) * h + w, (p - q) * h - w, u1 - v1};
    }
    const T c1 = lit<T>(f ? "0.9951847" : "0.9951847266721969"), s1 = lit<T>(f ? "0.09801714" : "0.0980171403295606");
    const T c3 = lit<T>(f ? "0.95694035" : "0.9569403357322088"), s3 = lit<T>(f ? "0.29028466" : "0.2902846772544624");
    const T c7 = lit<T>(f ? "0.77301043" : "0.773010453362737"), s7 = lit<T>(f ? "0.6343933" : "0.6343932841636455");
    const T p = h * (x[4] + x[3]), q = h * (x[4] - x[3]), u = h * (x[5] + x[2]), w = h * (x[5] - x[2]);
    const T A = x[0] + p, E = x[0] - p, B = x[1] + u, H = x[1] - u, D = q - x[7], F = q + x[7], K = w - x[6],
            G = w + x[6];
    const T R1 = c1 * A - s1 * D, I1 = s1 * A + c1 * D, R2 = c3 * B - s3 * K, I2 = s3 * B + c3 * K;
    const T R3 = c3 * E - s3 * F, I3 = s3 * E + c3 * F, R4 = s7 * H - c7 * G, I4 = c7 * H + s7 * G;
    return {R1 + R2, R3 + R4, h * (R3 - R4) + h * (I3 + I4), h * (R1 - R2) + h * (I1 + I2),
            h * (R1 - R2) - h * (I1 + I2), h * (R3 - R4) - h * (I3 + I4), I3 - I4, I1 - I2};
}

TYPED_TEST(Dct4, KernelsOfTwoFourAndEightAreExact)
{
    using T = TypeParam;
    for (int32_t n : {2, 4, 8}) {
        typename Api<T>::Spec* spec = nullptr;
        ASSERT_EQ(Api<T>::init_alloc(&spec, n), ZAM_STS_OK);
        Random rng{uint64_t(n)};
        for (int trial = 0; trial < 100; ++trial) {
            std::vector<T> x = rng.reals<T>(size_t(n)), y(static_cast<size_t>(n));
            if (trial < n) {  // the impulses first
                std::fill(x.begin(), x.end(), T(0));
                x[size_t(trial)] = T(1);
            }
            ASSERT_EQ(Api<T>::run(x.data(), y.data(), spec), ZAM_STS_OK);
            EXPECT_TRUE(bitwise_equal(y, small_kernel(x))) << "N = " << n << ", trial " << trial;
        }
        EXPECT_EQ(Api<T>::free(spec), ZAM_STS_OK);
    }
}

} // namespace
