#pragma once

#include "resident/core/jx_api.h"

// A counted reference to a loaded resource module, shared between copies, through which strings are
// loaded while the module is marked as in use. The module itself is never freed here.
//
// Broken preconditions are told on the debugger output with "Safe assertion failed", nothing more.
class JX_API RbResFileRef {
public:
    // Without a module, and not valid; or with one, and valid.
    RbResFileRef();
    explicit RbResFileRef(void* module);
    // Copies share the other's record, and count as valid.
    RbResFileRef(const RbResFileRef& other);
    RbResFileRef& operator=(const RbResFileRef& other);
    virtual ~RbResFileRef();

    // Gives up this reference's share of the record; the last one deletes it. Returns 0.
    int DecrementUsage();

    // Raise and lower the count that UsageCount tells. LoadStringA does both itself.
    void BeginUsingResourceFile();
    void EndUsingResourceFile();

    // As the Windows function of that name, on the shared module; returns the characters loaded.
    int LoadStringA(unsigned int id, char* buffer, int size);

    int IsValid() const { return mfValid; }
    // Between the two using operations; 0 without a record.
    int UsageCount() const;

private:
    struct SharedRecord;

    void Take(const RbResFileRef& other);

    int mfValid = 0;
    SharedRecord* mpoShared = nullptr;
};
