// Every export touches exactly its documented memory: arrays, work buffers
// and specifications of exactly their sizes lie flush against a page that
// faults on any access, once at their end and once at their start; refused
// calls get pointers into such a page; and arrays at any byte offset give the
// bits of aligned ones.
#include "support.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

using namespace zt;
constexpr GuardedBytes::Side kSides[] = {GuardedBytes::kEnd, GuardedBytes::kStart};

// The CCS inverse never reads element 1 nor (even N) element N+1: both hold
// NaN, and with the guard page at the end the source stops before N+1.
TEST(Footprint, CodeletsAndDispatchersStayInsideTheirArrays) {
    uint8_t* const none = inaccessible();
    // Source, destination and in-place array; the guard page at the end, then at the start.
    const GuardedBytes areas[2][3] = {{GuardedBytes(1024), GuardedBytes(1024), GuardedBytes(1024)},
                                      {GuardedBytes(1024, GuardedBytes::kStart), GuardedBytes(1024, GuardedBytes::kStart),
                                       GuardedBytes(1024, GuardedBytes::kStart)}};
    for (const Case& c : all_cases()) {
        const size_t w = c.single ? 4 : 8, out = static_cast<size_t>(c.out);
        const bool ccs_inverse = c.layout == kCCS && c.direction > 0;
        const Scalars x = c.input(static_cast<uint64_t>(c.n));
        Scalars poisoned = x;
        if (ccs_inverse) poisoned[1] = NAN;
        if (ccs_inverse && c.n % 2 == 0) poisoned[static_cast<size_t>(c.n + 1)] = NAN;
        for (int side = 0; side < 2; ++side) {
            const GuardedBytes(&area)[3] = areas[side];
            const size_t in = ccs_inverse && c.n % 2 == 0 && side == 0 ? x.size() - 1 : x.size();
            const Scalars stored(poisoned.begin(), poisoned.begin() + static_cast<ptrdiff_t>(in));
            uint8_t *const src = area[0].flush(in * w), *const dst = area[1].flush(out * w);
            uint8_t* const same = area[2].flush(std::max(in, out) * w);
            for (uint32_t flag : kFlags) {
                Scalars want;
                ASSERT_EQ(c.run(x, want, flag), ZAM_STS_OK);
                for (int way = 0; way < 3; ++way) {  // codelet, dispatcher, in place
                    uint8_t* d = way == 2 ? same : dst;
                    store_scalars(stored, c.single, way == 2 ? d : src);
                    if (way < 2) std::memset(d, 0xFF, out * w);  // NaN: every output must be written
                    const ZamStatus st = way == 0 ? c.call(src, d, flag)
                                       : way == 1 ? c.dispatch(src, d, c.n, flag) : c.call(d, d, flag);
                    EXPECT_EQ(st, ZAM_STS_OK);
                    EXPECT_TRUE(identical(load_scalars(d, out, c.single), want)) << c.name << " way " << way;
                }
            }
        }
        // Refused calls read and write nothing.
        EXPECT_EQ(c.call(none, nullptr, ZAM_NODIV_BY_ANY), ZAM_STS_NULL_PTR_ERR) << c.name;
        EXPECT_EQ(c.call(nullptr, none, 0u), ZAM_STS_NULL_PTR_ERR) << c.name;
        for (uint32_t flag : kBadFlags) {
            EXPECT_EQ(c.call(none, none, flag), ZAM_STS_FLAG_ERR) << c.name;
            EXPECT_EQ(c.dispatch(none, none, c.n, flag), ZAM_STS_FLAG_ERR) << c.name;
        }
        for (int32_t len : {c.n - 64, c.n + 63, -c.n, INT32_MIN + c.n, INT32_MAX - c.n})
            EXPECT_EQ(c.dispatch(none, none, len, ZAM_NODIV_BY_ANY), ZAM_STS_SIZE_ERR) << c.family << " " << len;
    }
}

TEST(Footprint, CodeletsTakeArraysAtAnyByteOffset) {
    alignas(64) uint8_t src[1024 + 16], dst[1024 + 16];
    for (const Case& c : all_cases()) {
        const Scalars x = c.input(3);
        for (size_t offset = 1; offset < 16; ++offset) {
            const uint32_t flag = kFlags[offset % 4];
            Scalars want;
            ASSERT_EQ(c.run(x, want, flag), ZAM_STS_OK);
            store_scalars(x, c.single, src + offset);
            ASSERT_EQ(c.call(src + offset, dst + 16 - offset, flag), ZAM_STS_OK);
            EXPECT_TRUE(identical(load_scalars(dst + 16 - offset, want.size(), c.single), want))
                << c.name << " at offsets " << offset << ", " << 16 - offset;
        }
    }
}

// The work buffer of exactly the queried size, or none (orders 1 to 7 get a
// pointer into the guard page, which they must not even look at).
TEST(Footprint, WalshHadamardStaysInsideArraysAndBuffer) {
    uint8_t* const none = inaccessible();
    for (const WhtCase& c : wht_cases()) {
        const size_t w = c.single ? 4 : 8, n = c.n();
        const Scalars x = random_scalars(n, n, c.single);
        for (auto side : kSides) {
            GuardedBytes size(sizeof(int32_t), side);
            ASSERT_EQ(c.buffer_size(c.order, reinterpret_cast<int32_t*>(size.data())), ZAM_STS_OK);
            const auto bytes = static_cast<size_t>(*reinterpret_cast<int32_t*>(size.data()));
            GuardedBytes src(n * w, side), dst(n * w, side), buf(bytes, side);
            for (uint32_t flag : kFlags) {
                std::vector<uint8_t> s(n * w), d(n * w);
                store_scalars(x, c.single, s.data());
                ASSERT_EQ(c.call(s.data(), d.data(), flag, nullptr), ZAM_STS_OK);
                const Scalars want = load_scalars(d.data(), n, c.single);
                for (int way = 0; way < 4; ++way) {  // with the buffer, without, the order entry, in place
                    uint8_t* const buffer = way == 1 ? nullptr : bytes ? buf.data() : none;
                    uint8_t* const out = way == 3 ? src.data() : dst.data();
                    store_scalars(x, c.single, src.data());
                    std::memset(dst.data(), 0xFF, n * w);
                    EXPECT_EQ(way == 2 ? c.entry(src.data(), out, c.order, flag, buffer)
                                       : c.call(src.data(), out, flag, buffer), ZAM_STS_OK);
                    EXPECT_TRUE(identical(load_scalars(out, n, c.single), want)) << c.name << " way " << way;
                }
            }
        }
        EXPECT_EQ(c.call(none, nullptr, ZAM_NODIV_BY_ANY, none), ZAM_STS_NULL_PTR_ERR) << c.name;
        EXPECT_EQ(c.call(none, none, 0u, none), ZAM_STS_FLAG_ERR) << c.name;
        EXPECT_EQ(c.entry(none, none, c.order + 13, ZAM_NODIV_BY_ANY, none), ZAM_STS_SIZE_ERR) << c.name;
        EXPECT_EQ(c.buffer_size(-c.order, reinterpret_cast<int32_t*>(none)), ZAM_STS_SIZE_ERR) << c.name;
    }
}

// GetSize's count, Init's buffer of exactly that many bytes, the returned
// handle and the transform's arrays, each guarded; the result is that of a
// specification from InitAlloc.  A refused length given the smallest
// specification's 256 bytes stays inside them and writes no handle.
TEST(Footprint, Dct4StaysInsideItsBufferAndArrays) {
    uint8_t* const none = inaccessible();
    for (bool single : {true, false}) {
        const Dct4Api& f = dct4_api(single);
        const size_t w = single ? 4 : 8;
        for (int32_t n = 2; n <= 4096; n *= 2) {
            const auto un = static_cast<size_t>(n);
            const Scalars x = random_scalars(un, un, single);
            std::vector<uint8_t> s(un * w), d(un * w);
            store_scalars(x, single, s.data());
            void* alloc = nullptr;
            ASSERT_EQ(f.init_alloc(&alloc, n), ZAM_STS_OK);
            ASSERT_EQ(f.run(s.data(), d.data(), alloc), ZAM_STS_OK);
            ASSERT_EQ(f.free(alloc), ZAM_STS_OK);
            const Scalars want = load_scalars(d.data(), un, single);
            for (auto side : kSides) {
                GuardedBytes size(sizeof(uint32_t), side), handle(sizeof(void*), side);
                ASSERT_EQ(f.get_size(n, reinterpret_cast<uint32_t*>(size.data())), ZAM_STS_OK);
                GuardedBytes buf(*reinterpret_cast<uint32_t*>(size.data()), side), src(un * w, side), dst(un * w, side);
                void** spec = reinterpret_cast<void**>(handle.data());
                ASSERT_EQ(f.init(spec, n, buf.data()), ZAM_STS_OK) << n;
                for (uint8_t* out : {dst.data(), src.data()}) {  // apart, in place
                    store_scalars(x, single, src.data());
                    EXPECT_EQ(f.run(src.data(), out, *spec), ZAM_STS_OK);
                    EXPECT_TRUE(identical(load_scalars(out, un, single), want)) << n;
                }
            }
        }
        auto** const no_handle = reinterpret_cast<void**>(none);
        for (int32_t n : {0, 1, 3, 6, 96, 3 << 20, -64, INT32_MIN, INT32_MAX, 2 * f.max_length}) {
            EXPECT_EQ(f.get_size(n, reinterpret_cast<uint32_t*>(none)), ZAM_STS_SIZE_ERR) << n;
            EXPECT_EQ(f.init_alloc(no_handle, n), ZAM_STS_SIZE_ERR) << n;
            for (auto side : kSides) EXPECT_EQ(f.init(no_handle, n, GuardedBytes(256, side).data()), ZAM_STS_SIZE_ERR) << n;
        }
        EXPECT_EQ(f.init(nullptr, 64, none), ZAM_STS_NULL_PTR_ERR);
        EXPECT_EQ(f.init(no_handle, 64, nullptr), ZAM_STS_NULL_PTR_ERR);
        EXPECT_EQ(f.run(none, none, nullptr), ZAM_STS_NULL_PTR_ERR);
        for (auto side : kSides) EXPECT_EQ(f.run(none, none, GuardedBytes(80, side).data()), ZAM_STS_CONTEXT_ERR);  // a zero-filled record
    }
}

}  // namespace
