#include "dct4/arena.hpp"

#include <cstring>

namespace zam::dct4 {

uint64_t arena_cursor(Arena arena)
{
    uint64_t c;
    std::memcpy(&c, arena, sizeof c);
    return c;
}

void arena_set_cursor(Arena arena, uint64_t cursor) { std::memcpy(arena, &cursor, sizeof cursor); }

void* arena_take(Arena arena, uint32_t size)
{
    const uint64_t c = arena_cursor(arena);
    arena_set_cursor(arena, c + round_to_granule(size));
    return as_ptr<void>(c);
}

uint32_t arena_give_back(Arena arena, const void*, uint32_t size)
{
    const uint32_t rounded = round_to_granule(size);
    arena_set_cursor(arena, arena_cursor(arena) - rounded);
    return rounded;
}

ListNode* list_node_make(void* memory, Arena arena)
{
    auto* node = static_cast<ListNode*>(memory);
    node->value = 0;
    node->next = nullptr;
    node->arena = arena;
    return node;
}

ListNode* list_new(Arena arena) { return list_node_make(arena_take(arena, kListNodeBytes), arena); }

uint64_t list_append(ListNode* head, uint64_t value)
{
    ListNode* last = head;
    while (last->next != nullptr) last = last->next;
    if (last->value == 0) {
        last->value = value;
    } else {
        last->next = list_node_make(arena_take(head->arena, kListNodeBytes), head->arena);
        last->next->value = value;
    }
    return value;
}

uint64_t list_item(const ListNode* head, int32_t index)
{
    if (index < 0) return 0;
    const ListNode* node = head;
    for (int32_t k = 0; k < index; ++k) {
        node = node->next;
        if (node == nullptr) return 0;
    }
    return node->value;
}

void list_drop_tail(ListNode* head)
{
    for (ListNode* node = head->next; node != nullptr; node = node->next)
        arena_give_back(head->arena, node, kListNodeBytes);
    head->next = nullptr;
}

void list_discard(ListNode* head)
{
    list_drop_tail(head);
    arena_give_back(head->arena, head, kListNodeBytes);
}

void release_owned_list(ListNode* head)
{
    for (ListNode* node = head; node != nullptr; node = node->next) {
        if (node->value == 0) continue;
        Owned* object = as_ptr<Owned>(node->value);
        object->release(object);
        arena_give_back(node->arena, object, object->size);
    }
}

ZamStatus radix_choice(int32_t m, uint32_t* radix)
{
    uint32_t r;
    if (m >= 512 && m % 32 == 0) {
        r = 32;
    } else if (m < 16) {
        if (m < 4 || m % 2 != 0) return ZAM_STS_SIZE_ERR;
        r = 2;
    } else if (m >= 128 && m % 16 == 0) {
        r = 16;
    } else if (m >= 32 && m % 8 == 0) {
        r = 8;
    } else if (m % 4 == 0) {
        r = 4;
    } else if (m % 2 != 0) {
        return ZAM_STS_SIZE_ERR;
    } else {
        r = 2;
    }
    *radix = r;
    return ZAM_STS_OK;
}

} // namespace zam::dct4
