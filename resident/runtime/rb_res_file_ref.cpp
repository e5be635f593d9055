#include "resident/runtime/rb_res_file_ref.h"

#include "resident/core/rb_ref_counter.h"
#include "resident/core/windows_api.h"
#include "resident/runtime/check.h"

struct RbResFileRef::SharedRecord : RbRefCounter {
    explicit SharedRecord(void* handle) : RbRefCounter(1), module(static_cast<HINSTANCE>(handle)) {}

    short usage = 0;
    HINSTANCE module;
};

RbResFileRef::RbResFileRef() : mpoShared(new SharedRecord(nullptr)) {}

RbResFileRef::RbResFileRef(void* module) : mfValid(1), mpoShared(new SharedRecord(module)) {}

RbResFileRef::RbResFileRef(const RbResFileRef& other) { Take(other); }

RbResFileRef& RbResFileRef::operator=(const RbResFileRef& other) {
    if (this != &other) {
        DecrementUsage();
        Take(other);
    }
    mfValid = true;
    return *this;
}

RbResFileRef::~RbResFileRef() { DecrementUsage(); }

void RbResFileRef::Take(const RbResFileRef& other) {
    mpoShared = other.mpoShared;
    SafeCheck(mpoShared);
    if (mpoShared)
        mpoShared->Increment();
    mfValid = true;
}

int RbResFileRef::DecrementUsage() {
    SafeCheck(mpoShared);
    if (mpoShared && mpoShared->Decrement()) {
        delete mpoShared;
        mpoShared = nullptr;
    }
    return 0;
}

void RbResFileRef::BeginUsingResourceFile() {
    SafeCheck(mpoShared);
    SafeCheck(mfValid);
    if (mpoShared)
        ++mpoShared->usage;
}

void RbResFileRef::EndUsingResourceFile() {
    SafeCheck(mpoShared);
    SafeCheck(mfValid);
    if (!mpoShared)
        return;
    --mpoShared->usage;
    SafeCheck(mpoShared->usage >= 0);
}

int RbResFileRef::LoadStringA(unsigned int id, char* buffer, int size) {
    SafeCheck(mpoShared);
    BeginUsingResourceFile();
    const int loaded = mpoShared ? ::LoadStringA(mpoShared->module, id, buffer, size) : 0;
    EndUsingResourceFile();
    return loaded;
}

int RbResFileRef::UsageCount() const { return mpoShared ? mpoShared->usage : 0; }
