#include "resident/core/node_slots.h"

#include <array>
#include <new>

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
    for (;;) {
        if (void* const slot = InterlockedPopEntrySList(&freeSlots))
            return slot;
        auto* const chunk = new (std::nothrow) std::array<Slot, kChunk>;
        if (!chunk)
            return nullptr;
        for (Slot& slot : *chunk)
            GiveNodeSlot(&slot);
    }
}

void GiveNodeSlot(void* slot) {
    InterlockedPushEntrySList(&freeSlots, static_cast<SLIST_ENTRY*>(slot));
}
