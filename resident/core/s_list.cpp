#include "resident/core/s_list.h"

#include <climits>

#include "resident/core/list_tail.h"
#include "resident/core/node_slots.h"

void* ListNode::operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept {
    // A derived class's nodes have another size.
    return size == sizeof(ListNode) ? TakeNodeSlot() : ::operator new(size, nothrow);
}

void* ListNode::operator new(std::size_t size) {
    void* const node = operator new(size, std::nothrow);
    if (!node)
        throw std::bad_alloc();
    return node;
}

void ListNode::operator delete(void* node, std::size_t size) {
    if (size == sizeof(ListNode))
        GiveNodeSlot(node);
    else
        ::operator delete(node);
}

ListNode::ListNode(void* item, ListNode* following) : next(following), data(item) {}

std::atomic<unsigned int> deletedListNodes;

ListNode::~ListNode() { deletedListNodes.fetch_add(1, std::memory_order_relaxed); }

S_List::S_List() = default;

S_List::~S_List() { ClearList(); }

int S_List::InsertAfter(void* item, void* existing) { return Insert(item, existing, 0); }

int S_List::InsertBefore(void* item, void* existing) { return Insert(item, existing, 1); }

int S_List::InsertAfterCurrent(void* item) {
    if (!item)
        return false;
    return mpoCurrent ? Insert(item, mpoCurrent->data, 0) : AppendItem(item);
}

int S_List::InsertBeforeCurrent(void* item) {
    if (!item)
        return false;
    return mpoCurrent ? Insert(item, mpoCurrent->data, 1) : AppendItem(item);
}

int S_List::AppendItem(void* item) { return ListTail().Append(*this, item); }

int ListTail::Append(S_List& list, void* item) {
    ListNode* const node = item ? new (std::nothrow) ListNode(item, nullptr) : nullptr;
    if (!node)
        return false;
    const unsigned int deleted = deletedListNodes.load(std::memory_order_relaxed);
    ListNode** link = mLast && mDeleted == deleted ? &mLast->next : &list.mpoHead;
    while (*link)
        link = &(*link)->next;
    *link = mLast = node;
    mDeleted = deleted;
    ++list.mlCount;
    return true;
}

int S_List::Insert(void* item, void* existing, int before) {
    if (!item || !existing)
        return AppendItem(item);
    ListNode* previous;
    ListNode* found = Find(existing, previous);
    if (!found)
        return AppendItem(item);
    ++mlCount;
    if (!before)
        found->next = new ListNode(item, found->next);
    else if (previous)
        previous->next = new ListNode(item, found);
    else
        mpoHead = new ListNode(item, found);
    return true;
}

int S_List::RemoveItem(void* item) {
    ListNode* previous;
    ListNode* found = item ? Find(item, previous) : nullptr;
    if (!found)
        return false;
    (previous ? previous->next : mpoHead) = found->next;
    if (mpoCurrent == found)
        mpoCurrent = found->next;
    delete found;
    --mlCount;
    return true;
}

ListNode* S_List::Next() {
    mpoCurrent = mpoCurrent ? mpoCurrent->next : mpoHead;
    return mpoCurrent;
}

void S_List::ClearList() {
    while (mpoHead) {
        ListNode* node = mpoHead;
        mpoHead = node->next;
        delete node;
    }
    mpoCurrent = nullptr;
    mlCount = 0;
}

ListNode* S_List::operator[](long index) const {
    if (index < 0 || index >= mlCount || index > SHRT_MAX)
        return nullptr;
    ListNode* node = mpoHead;
    for (short step = 0; step < index; ++step)
        node = node->next;
    return node;
}

ListNode* S_List::Find(const void* item, ListNode*& previous) const {
    previous = nullptr;
    for (ListNode* node = mpoHead; node; previous = node, node = node->next)
        if (node->data == item)
            return node;
    return nullptr;
}
