// DCT-IV: the work-area arena and the radix choice.
#include "dct4/arena.hpp"

#include <gtest/gtest.h>

#include <climits>

namespace {

using namespace zam::dct4;

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

TEST(Dct4Arena, RadixChoice)
{
    const struct { int32_t m, radix; } cases[] = {
        {2, -6}, {3, -6}, {9, -6}, {15, -6}, {0, -6}, {-4, -6}, {INT32_MIN, -6}, {4, 2}, {6, 2}, {12, 2}, {14, 2},
        {16, 4}, {20, 4}, {18, 2}, {22, 2}, {24, 4}, {27, -6}, {32, 8}, {40, 8}, {64, 8}, {96, 8}, {120, 8},
        {128, 16}, {144, 16}, {136, 8}, {256, 16}, {496, 16}, {512, 32}, {520, 8}, {528, 16}, {544, 32},
        {1 << 20, 32}, {(1 << 20) + 2, 2}};
    for (auto c : cases) {
        uint32_t r = 12345;
        const ZamStatus sts = radix_choice(c.m, &r);
        if (c.radix < 0) {
            EXPECT_EQ(sts, ZAM_STS_SIZE_ERR) << c.m;
            EXPECT_EQ(r, 12345u) << c.m;
        } else {
            EXPECT_EQ(sts, ZAM_STS_OK) << c.m;
            EXPECT_EQ(r, uint32_t(c.radix)) << c.m;
        }
    }
}

} // namespace
