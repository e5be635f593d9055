#pragma once

#include "resident/core/s_list.h"
#include "resident/core/windows_api.h" // defines a macro GetObject, which it then removes

// A list of objects held by address: adding an object stores a pointer to it, never a copy.
//
//     for (T* object = list.GetFirstObject(); object; object = list.GetNextObject())
//
// The cursor lives in the list, so one container has one iteration at a time.
template <class T>
class RB_Container {
public:
    enum { keOwnsObjects = 0x1 };

    // With `keOwnsObjects` in `flags` the container deletes its objects when it is cleared or
    // destroyed; otherwise they stay the caller's.
    explicit RB_Container(unsigned int flags) : mFlags(flags), mpoList(new S_List) {}
    RB_Container(const RB_Container&) = delete;
    RB_Container& operator=(const RB_Container&) = delete;
    virtual ~RB_Container() {
        ClearContainer();
        delete mpoList;
    }

    // The object under the cursor, or null.
    virtual T* GetObject() { return Object(mpoList->mpoCurrent); }
    virtual T* GetFirstObject() {
        mpoList->mpoCurrent = mpoList->mpoHead;
        return GetObject();
    }
    virtual T* GetNextObject() {
        mpoList->Next();
        return GetObject();
    }

    // Results as S_List gives them: 1, or 0 when nothing was added or removed.
    virtual int AddObject(T& object) { return mpoList->AppendItem(&object); }
    virtual int RemoveObject(T& object) { return mpoList->RemoveItem(&object); }
    virtual int InsertObjectAfter(T& object, T& existing) {
        return mpoList->InsertAfter(&object, &existing);
    }
    virtual int InsertObjectBefore(T& object, T& existing) {
        return mpoList->InsertBefore(&object, &existing);
    }
    virtual int InsertObjectAfterCurrent(T& object) { return mpoList->InsertAfterCurrent(&object); }
    virtual int InsertObjectBeforeCurrent(T& object) {
        return mpoList->InsertBeforeCurrent(&object);
    }

    // The object at `index`, or null.
    T* operator[](short index) { return Object((*mpoList)[index]); }

    // Empties the list; deletes the objects when the container owns them.
    void ClearContainer() {
        if (mFlags & keOwnsObjects) {
            while (T* object = GetFirstObject()) {
                RemoveObject(*object);
                delete object;
            }
        }
        mpoList->ClearList();
    }

private:
    static T* Object(ListNode* node) { return node ? static_cast<T*>(node->data) : nullptr; }

    unsigned int mFlags;
    S_List* mpoList;
};
