// The guarded library's text blocks and list nodes: each one a block of the heap, of the size that
// was asked for, so that the heap sees every access and every end of life.

#include <new>

#include "resident/core/block_cache.h"
#include "resident/core/node_slots.h"
#include "resident/core/s_list.h"

void* TakeBlock(std::size_t size) { return ::operator new(size); }

void GiveBlock(void* block) { ::operator delete(block); }

void* TakeNodeSlot() { return ::operator new(sizeof(ListNode), std::nothrow); }

void GiveNodeSlot(void* slot) { ::operator delete(slot); }
