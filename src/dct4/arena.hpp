// The DCT-IV's work-area arena: a bump allocator inside the caller's buffer,
// list nodes carved from it, the owned-object convention and the radix choice
// shared by the size planner and the plan builder.
//
// The arena is named by the address of its cursor, an unsigned 64-bit word in
// the first eight bytes of the buffer that holds the address of the next free
// byte.  Every request is rounded up to the 32-byte granule; giving back only
// moves the cursor back by the rounded size, so releases must mirror the
// takes (in total) for the cursor to come back to where it started.  Nothing
// is bounds-checked: the size planner guarantees the buffer is large enough.
#pragma once

#include "zamgen.h"

#include <cstdint>

namespace zam::dct4 {

// The cursor word.  It lives at the buffer's first byte, which need not be
// 8-byte aligned, so it is only ever read and written through memcpy.
using Arena = void*;

inline constexpr uint32_t kGranule = 32;
inline constexpr uint32_t kListNodeBytes = 24;

// (size + 31) with the low five bits cleared, in unsigned 32-bit arithmetic.
constexpr uint32_t round_to_granule(uint32_t size) { return (size + (kGranule - 1)) & ~(kGranule - 1); }
// Arena space of `count` list nodes.
constexpr uint32_t list_node_space(uint32_t count) { return count * round_to_granule(kListNodeBytes); }

uint64_t arena_cursor(Arena arena);
void arena_set_cursor(Arena arena, uint64_t cursor);
// Returns the cursor, then advances it by the rounded size.
void* arena_take(Arena arena, uint32_t size);
// Moves the cursor back by the rounded size and returns that size; the
// address is not used (the arena is a stack in effect).
uint32_t arena_give_back(Arena arena, const void* address, uint32_t size);

// A singly linked list of 64-bit values, named by its head node, which always
// exists.  A value of 0 is an empty slot: appending to a list whose last node
// is empty stores into that node.
struct ListNode {
    uint64_t value;
    ListNode* next;
    Arena arena;  // new nodes of the list come from the head's arena
};
static_assert(sizeof(ListNode) == kListNodeBytes);

ListNode* list_node_make(void* memory, Arena arena);
// A fresh head taken from the arena.
ListNode* list_new(Arena arena);
uint64_t list_append(ListNode* head, uint64_t value);
// The value `index` nodes behind the head (0 is the head); 0 for a negative
// index or a walk that runs off the end.
uint64_t list_item(const ListNode* head, int32_t index);
// Gives back one node's space for every node behind the head, unlinks them;
// the head stays.
void list_drop_tail(ListNode* head);
// Drops the tail, then gives back the head itself.
void list_discard(ListNode* head);

// Every record taken from the arena begins with this header: the operation
// that releases what the record owns (not the record itself), and the size
// of the record.
struct Owned {
    void (*release)(Owned* self);
    uint32_t size;
};

// For every node from the head on with a non-zero value: calls the object's
// release, then gives back the object's own size to the node's arena.  The
// nodes stay.
void release_owned_list(ListNode* head);

// The radix of one factorisation step for a half length m: 32 from 512 on, 16
// from 128, 8 from 32, else 4 or 2; ZAM_STS_SIZE_ERR when m cannot be split.
ZamStatus radix_choice(int32_t m, uint32_t* radix);

template <class T>
T* as_ptr(uint64_t value) { return reinterpret_cast<T*>(static_cast<uintptr_t>(value)); }
inline uint64_t as_value(const void* p) { return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(p)); }

} // namespace zam::dct4
