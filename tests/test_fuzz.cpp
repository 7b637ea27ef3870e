// A seeded random driver of every entry: lengths and orders from the whole
// range of their type, flags including bit combinations, null pointers,
// pointers into a guard page and arrays of exactly their size against one.
// The status must follow from the arguments in the documented order (length
// or order, then pointers, then flag); a refused call leaves its arrays as
// they were, an accepted one gives the bits of the same call made plainly.
#include "support.hpp"

#include "dct4/plan.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <map>
#include <random>

namespace {

using namespace zt;

constexpr uint8_t kPoison = 0xA5;

class Fuzz {
public:
    explicit Fuzz(uint64_t seed) : rng_(seed) {}
    uint64_t operator()(uint64_t n) { return rng_() % n; }
    bool one_in(uint64_t n) { return rng_() % n == 0; }
    // Near the range [lo, hi] half the time, else any value or an extreme one.
    int32_t length(int32_t lo, int32_t hi) {
        static constexpr int32_t kEdges[] = {INT32_MIN, INT32_MIN + 2, -1, 0, 1, 65, 1 << 16, 1 << 30, INT32_MAX};
        const uint64_t r = rng_();
        return r % 4 < 2 ? lo - 3 + static_cast<int32_t>(r / 4 % static_cast<uint64_t>(hi - lo + 7))
             : r % 4 == 2 ? static_cast<int32_t>(r >> 32) : kEdges[r / 4 % 9];
    }
    // One of the four flags, a combination of their bits, or anything.
    uint32_t flag() {
        const uint64_t r = rng_();
        return r % 3 == 0 ? kFlags[r / 3 % 4] : r % 3 == 1 ? static_cast<uint32_t>(r / 3 % 32) : static_cast<uint32_t>(r >> 32);
    }
    // A pointer argument: null (whatever was decided), else the array, or
    // half the time a pointer into the guard page when the call must fail.
    uint8_t* pointer(bool null, bool refused, uint8_t* array) {
        return null ? nullptr : refused && one_in(2) ? inaccessible() : array;
    }

private:
    std::mt19937_64 rng_;
};

bool valid(uint32_t flag) { return flag == 1 || flag == 2 || flag == 4 || flag == 8; }
bool untouched(const uint8_t* p, size_t bytes) {
    return std::all_of(p, p + bytes, [](uint8_t b) { return b == kPoison; });
}

TEST(Fuzz, Dispatchers) {
    std::map<std::string, std::vector<const Case*>> family;  // by length, 2 to 64
    for (const Case& c : all_cases()) family[c.family].push_back(&c);
    Fuzz r(1);
    GuardedBytes src(1024), dst(1024);  // 64 complex doubles
    int accepted = 0;
    for (int i = 0; i < 20000; ++i) {
        const auto& cases = std::next(family.begin(), static_cast<ptrdiff_t>(r(family.size())))->second;
        const int32_t len = r.length(2, 64);
        const uint32_t flag = r.flag();
        const bool sized = len >= 2 && len <= 64, null_src = r.one_in(8), null_dst = r.one_in(8);
        const Case& c = *cases[sized ? static_cast<size_t>(len - 2) : r(63)];
        const ZamStatus want = !sized ? ZAM_STS_SIZE_ERR : null_src || null_dst ? ZAM_STS_NULL_PTR_ERR
                             : !valid(flag) ? ZAM_STS_FLAG_ERR : ZAM_STS_OK;
        const size_t w = c.single ? 4 : 8, out = static_cast<size_t>(c.out) * w;
        const Scalars x = c.input(static_cast<uint64_t>(i));
        store_scalars(x, c.single, src.flush(x.size() * w));
        std::memset(dst.flush(out), kPoison, out);
        uint8_t* const s = r.pointer(null_src, want != ZAM_STS_OK, src.flush(x.size() * w));
        uint8_t* const d = r.pointer(null_dst, want != ZAM_STS_OK, dst.flush(out));
        ASSERT_EQ(c.dispatch(s, d, len, flag), want) << c.family << " length " << len << " flag " << flag;
        if (want != ZAM_STS_OK) {
            EXPECT_TRUE(untouched(dst.flush(out), out)) << c.name;
            continue;
        }
        ++accepted;
        Scalars y;
        ASSERT_EQ(c.run(x, y, flag), ZAM_STS_OK);
        EXPECT_TRUE(identical(load_scalars(d, static_cast<size_t>(c.out), c.single), y)) << c.name;
    }
    std::printf("[ fuzz ] 20000 dispatcher calls, %d accepted\n", accepted);
}

// The order entries and codelets with a buffer of exactly the queried size,
// none, or (where no buffer is used) a pointer into the guard page; and the
// size queries, which write nothing for an order outside 1 to 13.
TEST(Fuzz, WalshHadamardEntriesAndSizeQueries) {
    Fuzz r(2);
    GuardedBytes src(65536), dst(65536), buf(73728), size(sizeof(int32_t));
    auto* const size_at = reinterpret_cast<int32_t*>(size.data());
    int accepted = 0;
    for (int i = 0; i < 10000; ++i) {
        const int32_t order = r.length(1, 13);
        const bool ordered = order >= 1 && order <= 13, single = r.one_in(2);
        const WhtCase& c = wht_cases()[(single ? 0 : 13) + (ordered ? static_cast<size_t>(order - 1) : r(13))];
        const size_t w = single ? 4 : 8, bytes = c.n() * w;
        if (r.one_in(3)) {
            *size_at = 0x5A5A5A5A;
            const int32_t staging = c.order == 12 ? 256 : c.order == 13 ? 1024 : 0;
            ASSERT_EQ(c.buffer_size(order, ordered || r.one_in(2) ? size_at : reinterpret_cast<int32_t*>(inaccessible())),
                      ordered ? ZAM_STS_OK : ZAM_STS_SIZE_ERR) << order;
            EXPECT_EQ(*size_at, !ordered ? 0x5A5A5A5A : c.order < 8 ? 0 : static_cast<int32_t>(w) * ((1 << order) + staging));
            continue;
        }
        const bool entry = !ordered || r.one_in(2), null_src = r.one_in(8), null_dst = r.one_in(8);
        const uint32_t flag = r.flag();
        const ZamStatus want = !ordered ? ZAM_STS_SIZE_ERR : null_src || null_dst ? ZAM_STS_NULL_PTR_ERR
                             : !valid(flag) ? ZAM_STS_FLAG_ERR : ZAM_STS_OK;
        int32_t buffer_bytes = 0;
        ASSERT_EQ(c.buffer_size(c.order, &buffer_bytes), ZAM_STS_OK);
        const uint64_t pick = r(3);
        uint8_t* const buffer = pick == 0 ? nullptr
                              : pick == 1 && (want != ZAM_STS_OK || c.order < 8) ? inaccessible()
                                                                                  : buf.flush(static_cast<size_t>(buffer_bytes));
        const Scalars x = want == ZAM_STS_OK ? random_scalars(static_cast<uint64_t>(i), c.n(), single) : Scalars();
        store_scalars(x, single, src.flush(bytes));
        std::memset(dst.flush(bytes), kPoison, bytes);
        uint8_t* const s = r.pointer(null_src, want != ZAM_STS_OK, src.flush(bytes));
        uint8_t* const d = r.pointer(null_dst, want != ZAM_STS_OK, dst.flush(bytes));
        ASSERT_EQ(entry ? c.entry(s, d, order, flag, buffer) : c.call(s, d, flag, buffer), want)
            << c.name << " order " << order << " flag " << flag << (entry ? " entry" : "");
        if (want != ZAM_STS_OK) {
            EXPECT_TRUE(untouched(dst.flush(bytes), bytes)) << c.name;
            continue;
        }
        ++accepted;
        std::vector<uint8_t> plain_src(bytes), plain_dst(bytes);
        store_scalars(x, single, plain_src.data());
        ASSERT_EQ(c.call(plain_src.data(), plain_dst.data(), flag, nullptr), ZAM_STS_OK);
        EXPECT_EQ(std::memcmp(d, plain_dst.data(), bytes), 0) << c.name;
    }
    std::printf("[ fuzz ] 10000 Walsh-Hadamard calls, %d transforms\n", accepted);
}

// GetSize, Init (buffer null, a pointer into the guard page, or exactly
// GetSize bytes; a refused length gets the smallest specification's 256),
// InitAlloc with Free, and the transform on null, zero-filled, random
// (kind outside 1 to 6: a valid kind would be trusted) or built records.
TEST(Fuzz, Dct4LifeCycleAndTransform) {
    struct Made {
        void* spec = nullptr;
        std::vector<uint8_t> x, y;
    };
    std::map<std::pair<bool, int32_t>, Made> made;  // InitAlloc's specification, an input and its result
    auto reference = [&](bool single, int32_t n) -> const Made& {
        Made& m = made[{single, n}];
        if (m.spec != nullptr) return m;
        const size_t bytes = static_cast<size_t>(n) * (single ? 4 : 8);
        m.x.resize(bytes), m.y.resize(bytes);
        store_scalars(random_scalars(static_cast<uint64_t>(n), static_cast<size_t>(n), single), single, m.x.data());
        EXPECT_EQ(dct4_api(single).init_alloc(&m.spec, n), ZAM_STS_OK);
        EXPECT_EQ(dct4_api(single).run(m.x.data(), m.y.data(), m.spec), ZAM_STS_OK);
        return m;
    };
    Fuzz r(3);
    GuardedBytes buf(1 << 17), handle(sizeof(void*)), size(sizeof(uint32_t)), src(1 << 15), dst(1 << 15);
    constexpr size_t kRecord = sizeof(zam::dct4::Spec<double>);
    GuardedBytes record(kRecord);
    auto** const slot = reinterpret_cast<void**>(handle.data());
    uint8_t* const none = inaccessible();
    int counts[4] = {};
    for (int i = 0; i < 12000; ++i) {
        const bool single = r.one_in(2);
        const Dct4Api& f = dct4_api(single);
        int32_t n = r.one_in(2) ? static_cast<int32_t>(1u << r(32)) : r.length(0, 4096);
        const bool legal = n >= 2 && n <= f.max_length && (n & (n - 1)) == 0;
        const uint64_t op = r(4);
        ++counts[op];
        if (op == 0) {  // GetSize: with a null pointer and a bad length, either refusal
            const bool null = r.one_in(4);
            *reinterpret_cast<uint32_t*>(size.data()) = 0x5A5A5A5A;
            const ZamStatus st = f.get_size(n, reinterpret_cast<uint32_t*>(r.pointer(null, !legal, size.data())));
            if (null) EXPECT_TRUE(st == ZAM_STS_NULL_PTR_ERR || (!legal && st == ZAM_STS_SIZE_ERR)) << n << " " << st;
            else EXPECT_EQ(st, legal ? ZAM_STS_OK : ZAM_STS_SIZE_ERR) << n;
            const uint32_t got = *reinterpret_cast<uint32_t*>(size.data());
            EXPECT_TRUE(st == ZAM_STS_OK ? got % 32 == 0 && got >= 256 && got <= INT32_MAX : got == 0x5A5A5A5A) << n;
            continue;
        }
        if (legal) n = std::min(n, 4096);  // what the remaining calls build stays small
        const size_t bytes = static_cast<size_t>(n) * (single ? 4 : 8);
        std::memset(handle.data(), kPoison, sizeof(void*));
        if (op == 1 || op == 2) {  // Init, InitAlloc and Free
            const bool null_out = r.one_in(4), null_buffer = op == 1 && r.one_in(4);
            const ZamStatus want = null_out || null_buffer ? ZAM_STS_NULL_PTR_ERR : legal ? ZAM_STS_OK : ZAM_STS_SIZE_ERR;
            void** const out = reinterpret_cast<void**>(r.pointer(null_out, want != ZAM_STS_OK, handle.data()));
            uint32_t needed = 256;
            if (legal) {
                ASSERT_EQ(f.get_size(n, &needed), ZAM_STS_OK);
            }
            uint8_t* const buffer = null_buffer ? nullptr : null_out && r.one_in(2) ? none : buf.flush(needed);
            ASSERT_EQ(op == 1 ? f.init(out, n, buffer) : f.init_alloc(out, n), want) << n << (op == 1 ? " Init" : " InitAlloc");
            EXPECT_EQ(f.free(nullptr), ZAM_STS_NULL_PTR_ERR);
            if (want != ZAM_STS_OK) {
                EXPECT_TRUE(untouched(handle.data(), sizeof(void*))) << n;
                continue;
            }
            const Made& m = reference(single, n);
            std::vector<uint8_t> y(bytes);
            EXPECT_EQ(f.run(m.x.data(), y.data(), *slot), ZAM_STS_OK);
            EXPECT_EQ(y, m.y) << n;
            if (op == 2) {
                EXPECT_EQ(f.free(*slot), ZAM_STS_OK);
            }
            continue;
        }
        // The transform.
        if (!legal) n = 1 << (1 + r(12));
        const size_t len = static_cast<size_t>(n) * (single ? 4 : 8);
        const uint64_t kind = r(4);  // null, zero-filled, random with a bad kind, built
        const bool null_src = r.one_in(8), null_dst = r.one_in(8);
        const ZamStatus want = kind == 0 || null_src || null_dst ? ZAM_STS_NULL_PTR_ERR
                             : kind < 3 ? ZAM_STS_CONTEXT_ERR : ZAM_STS_OK;
        const Made& m = reference(single, n);
        uint32_t bad_kind = static_cast<uint32_t>(r(1ull << 32));
        bad_kind += bad_kind >= 1 && bad_kind <= 6 ? 6 : 0;
        for (size_t b = 0; b < kRecord; ++b) record.data()[b] = kind == 1 ? 0 : static_cast<uint8_t>(r(256));
        if (kind == 2) std::memcpy(record.data() + offsetof(zam::dct4::Spec<float>, kind), &bad_kind, sizeof bad_kind);
        const void* const spec = kind == 0 ? nullptr : kind < 3 ? record.data() : m.spec;
        std::memcpy(src.flush(len), m.x.data(), len);
        std::memset(dst.flush(len), kPoison, len);
        uint8_t* const s = r.pointer(null_src, want != ZAM_STS_OK, src.flush(len));
        uint8_t* const d = r.pointer(null_dst, want != ZAM_STS_OK, dst.flush(len));
        ASSERT_EQ(f.run(s, d, spec), want) << n << " record " << kind;
        if (want == ZAM_STS_OK) EXPECT_EQ(std::memcmp(d, m.y.data(), len), 0) << n;
        else EXPECT_TRUE(untouched(dst.flush(len), len)) << n;
    }
    for (auto& [key, m] : made) EXPECT_EQ(dct4_api(key.first).free(m.spec), ZAM_STS_OK);
    std::printf("[ fuzz ] 12000 DCT-IV calls: %d GetSize, %d Init, %d InitAlloc, %d transforms\n", counts[0], counts[1],
                counts[2], counts[3]);
}

}  // namespace
