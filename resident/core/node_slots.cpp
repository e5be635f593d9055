#include "resident/core/node_slots.h"

#include "resident/core/s_list.h"
#include "resident/core/windows_api.h"

namespace {

// Memory for a node, aligned as the system's list of free ones asks.
struct alignas(MEMORY_ALLOCATION_ALIGNMENT) Slot {
    unsigned char node[sizeof(ListNode)];
};

constexpr unsigned int kChunk = 256; // slots, side by side, that are allocated at once

// Slots to come. Lists on any thread share them. Zero is empty.
SLIST_HEADER freeSlots;

} // namespace

void* TakeNodeSlot() {
    if (void* const slot = InterlockedPopEntrySList(&freeSlots))
        return slot;
    Slot* const chunk = new (std::nothrow) Slot[kChunk];
    for (unsigned int i = chunk ? kChunk : 1; --i > 0;)
        GiveNodeSlot(&chunk[i]);
    return chunk;
}

void GiveNodeSlot(void* slot) {
    InterlockedPushEntrySList(&freeSlots, static_cast<SLIST_ENTRY*>(slot));
}
