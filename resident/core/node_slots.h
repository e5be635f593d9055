#pragma once

// Memory for list nodes. The nodes lie close together: every append walks over all nodes of its
// list, and the heap scatters them.
//
// Safe on any thread. TakeNodeSlot returns memory for one ListNode, or null when there is none; it
// goes back by GiveNodeSlot alone and never to the heap.
void* TakeNodeSlot();
void GiveNodeSlot(void* slot);
