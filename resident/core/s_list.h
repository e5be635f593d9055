#pragma once

#include <cstddef>
#include <new>

#include "resident/core/jx_api.h"

// One link of an S_List. The item is never the node's to free.
struct JX_API ListNode {
    // A node with `item`, before `following`; neither becomes its own.
    ListNode(void* item, ListNode* following);
    virtual ~ListNode();

    // From resident/core/node_slots.h.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void operator delete(void* node, std::size_t size);

    ListNode* next;
    void* data;
};

// A singly linked list of pointers to items that it does not own, with one cursor.
// Appending, searching and indexing walk from the head.
class JX_API S_List {
public:
    S_List();
    S_List(const S_List&) = delete;
    S_List& operator=(const S_List&) = delete;
    virtual ~S_List();

    // The insertions return 1, or 0 for a null item. An `existing` item that is null or not in the
    // list, or a cursor that is not positioned, makes them append. They look for the item, also for
    // that under the cursor: of one that is in the list several times, they take the first node.
    // The cursor does not move.
    virtual int InsertAfter(void* item, void* existing);
    virtual int InsertBefore(void* item, void* existing);
    virtual int InsertAfterCurrent(void* item);
    virtual int InsertBeforeCurrent(void* item);
    // Returns 0 for a null item or when no node can be allocated, else 1.
    virtual int AppendItem(void* item);

    // Unlinks the first node of `item`; a cursor on it moves to the next node.
    // Returns 1 when the item was in the list, else 0.
    virtual int RemoveItem(void* item);

    // Moves the cursor on, from nowhere to the head, and returns it; null behind the last node.
    virtual ListNode* Next();

    // The insertion behind the four: before the existing item, or with 0 after it.
    int Insert(void* item, void* existing, int before);
    // Unlinks all nodes; the items stay.
    void ClearList();

    // The node at `index` from the head, or null. The count of steps is 16 bits wide: indexes from
    // 32,768 on are not reached.
    ListNode* operator[](long index) const;

    ListNode* mpoHead = nullptr;
    ListNode* mpoCurrent = nullptr;
    long mlCount = 0;

private:
    // The first node of `item`, or null; `previous` receives the node before it.
    ListNode* Find(const void* item, ListNode*& previous) const;
};
