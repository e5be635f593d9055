#pragma once

#include "resident/core/rb_string.h"

// Marks a message as taken by an empty lock file beside it. The lock's name is the message's with
// ".SEM" in place of its extension, so that files which differ in that alone share a lock. Whoever
// makes the file first holds it; removing the file releases it, whoever does. The lock file
// outlives the object, and a program that ends without removing it. For names outside ASCII see
// file_spec.h.
class JX_API JxMailMessageSemaphore {
public:
    JxMailMessageSemaphore();
    virtual ~JxMailMessageSemaphore();

    // Returns non-zero when this call made the lock file of `name`, 0 when there is one or it
    // cannot be made.
    int CreateSemaphoreA(const char* name);
    // Removes the lock file of `name`, or of the last name given to CreateSemaphoreA when null.
    // A failure is reported; returns non-zero on success.
    int RemoveSemaphore(const char* name);

    // 1 once this object has made a lock file.
    int IsCreated() const { return mfCreated; }

private:
    RBString mstrName;
    int mfCreated = 0;
};
