#pragma once

#include "programs/mailfolder/path.h"
#include "resident/files/file_lock.h"

// Held from before the first look at a file until after its renames: whoever else changes it by way
// of the library waits, and so does this, 30 seconds at most.
class WriteLock {
public:
    // A file that is not there has none: what is made then does not replace one that has come
    // since.
    explicit WriteLock(const Path& path);

    bool IsHeld() const { return mLock.IsHeld(); }

private:
    FileLock mLock;
};
