#pragma once

#include <atomic>
#include <typeinfo>

#include "resident/core/rb_container.h"

// How many list nodes were deleted so far, of any list.
extern std::atomic<unsigned int> deletedListNodes;

// Appends to a list as S_List::AppendItem does, at a cost that does not grow with the list: it
// walks on from the node that it appended last. Between its calls the list may change in every way:
// once a node was deleted, of whatever list, it starts from the head again.
class ListTail {
public:
    // `list` is the same one each time.
    int Append(S_List& list, void* item);

private:
    ListNode* mLast = nullptr;
    unsigned int mDeleted = 0; // deletedListNodes when mLast was a node
};

// The same for a container. One of a derived class gets its AddObject called for each object.
template <class T>
class ContainerTail {
public:
    // A null container is never added to.
    explicit ContainerTail(RB_Container<T>* container)
        : mpoContainer(container),
          mfPlain(container && typeid(*container) == typeid(RB_Container<T>)) {}

    bool IsPlain() const { return mfPlain; }
    int Add(T& object) {
        return mfPlain ? mTail.Append(*mpoContainer->mpoList, &object)
                       : mpoContainer->AddObject(object);
    }

private:
    RB_Container<T>* mpoContainer;
    bool mfPlain;
    ListTail mTail;
};
