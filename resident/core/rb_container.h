#pragma once

#include "resident/core/s_list.h"
#include "resident/core/windows_api.h" // defines a macro GetObject, which it then removes

template <class T>
class ContainerTail;

// A list of objects held by address: adding an object stores a pointer to it, never a copy.
//
//     for (T* object = list.GetFirstObject(); object; object = list.GetNextObject())
//
// The cursor lives in the list, so one container has one iteration at a time. Removing the object
// under it moves it to the next one: the loop above then passes that one over, or begins again with
// the first when the last one was removed. Where objects go, begin again with GetFirstObject.
template <class T>
class RB_Container {
public:
    enum { keOwnsObjects = 0x1 };

    // With `keOwnsObjects` in `flags` the container deletes its objects when it is cleared or
    // destroyed, and an object may be in it only once; otherwise they stay the caller's. Removing
    // an object never deletes it.
    explicit RB_Container(unsigned int flags);
    RB_Container(const RB_Container&) = delete;
    RB_Container& operator=(const RB_Container&) = delete;
    virtual ~RB_Container();

    // The object under the cursor, or null. The other two move it first: to the first object, or to
    // the next one, of which there is none behind the last, and the first again behind that.
    virtual T* GetObject();
    virtual T* GetFirstObject();
    virtual T* GetNextObject();

    // As S_List's, by the objects' addresses: 1, or 0 when nothing was added or removed. An
    // `existing` object that is not in the list, or no current one, makes the insertions append.
    virtual int AddObject(T& object);
    virtual int RemoveObject(T& object);
    virtual int InsertObjectAfter(T& object, T& existing);
    virtual int InsertObjectBefore(T& object, T& existing);
    virtual int InsertObjectAfterCurrent(T& object);
    virtual int InsertObjectBeforeCurrent(T& object);

    // The object at `index`, from 0, or null.
    T* operator[](short index);

    // Empties the list; deletes the objects when the container owns them.
    void ClearContainer();

private:
    template <class>
    friend class ContainerTail;
    static T* Object(ListNode* node) { return node ? static_cast<T*>(node->data) : nullptr; }

    unsigned int mFlags;
    S_List* mpoList;
};

// The DLL exports the containers of its own types: each is declared beside its type, and
// instantiated in one source, which defines JX_INSTANTIATE_CONTAINERS.
#ifdef JX_INSTANTIATE_CONTAINERS
#define JX_EXPORTED_CONTAINER(T) template class JX_API RB_Container<T>
#else
#define JX_EXPORTED_CONTAINER(T) extern template class JX_API RB_Container<T>
#endif

// The members stand outside the class, or an exported instantiation would leave them out.

template <class T>
RB_Container<T>::RB_Container(unsigned int flags) : mFlags(flags), mpoList(new S_List) {}

template <class T>
RB_Container<T>::~RB_Container() {
    ClearContainer();
    delete mpoList;
}

template <class T>
T* RB_Container<T>::GetObject() {
    return Object(mpoList->mpoCurrent);
}

template <class T>
T* RB_Container<T>::GetFirstObject() {
    mpoList->mpoCurrent = mpoList->mpoHead;
    return GetObject();
}

template <class T>
T* RB_Container<T>::GetNextObject() {
    mpoList->Next();
    return GetObject();
}

template <class T>
int RB_Container<T>::AddObject(T& object) {
    return mpoList->AppendItem(&object);
}

template <class T>
int RB_Container<T>::RemoveObject(T& object) {
    return mpoList->RemoveItem(&object);
}

template <class T>
int RB_Container<T>::InsertObjectAfter(T& object, T& existing) {
    return mpoList->InsertAfter(&object, &existing);
}

template <class T>
int RB_Container<T>::InsertObjectBefore(T& object, T& existing) {
    return mpoList->InsertBefore(&object, &existing);
}

template <class T>
int RB_Container<T>::InsertObjectAfterCurrent(T& object) {
    return mpoList->InsertAfterCurrent(&object);
}

template <class T>
int RB_Container<T>::InsertObjectBeforeCurrent(T& object) {
    return mpoList->InsertBeforeCurrent(&object);
}

template <class T>
T* RB_Container<T>::operator[](short index) {
    return Object((*mpoList)[index]);
}

template <class T>
void RB_Container<T>::ClearContainer() {
    if (mFlags & keOwnsObjects) {
        while (T* object = GetFirstObject()) {
            RemoveObject(*object);
            delete object;
        }
    }
    mpoList->ClearList();
}
