// The guarded library's text blocks and list nodes: each one a block of the heap, of the size that
// was asked for, so that the heap sees every access and every end of life.

#include <cstdint>
#include <new>

#include "resident/core/block_cache.h"
#include "resident/core/node_slots.h"
#include "resident/core/s_list.h"

void* TakeBlock(std::size_t size) {
    // No size fits these: a text that changes always moves.
    constexpr BlockHeader kNever = {1, 0};
    if (size > SIZE_MAX - sizeof kNever)
        size = SIZE_MAX - sizeof kNever;
    auto* const block = static_cast<char*>(::operator new(sizeof kNever + size));
    std::memcpy(block, &kNever, sizeof kNever);
    return block + sizeof kNever;
}

void GiveBlock(void* block) { ::operator delete(static_cast<char*>(block) - sizeof(BlockHeader)); }

void* TakeNodeSlot() { return ::operator new(sizeof(ListNode), std::nothrow); }

void GiveNodeSlot(void* slot) { ::operator delete(slot); }
