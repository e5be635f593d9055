#include "programs/mailfolder/write_lock.h"

#include "programs/mailfolder/tool.h"

WriteLock::WriteLock(const Path& path) {
    // One that is not there may be between the two renames of another program's rewrite.
    const Path::Thing what = path.What();
    const bool mayBeFile = what == Path::keFile || what == Path::keMissing;
    if (mayBeFile && mLock.Take(path.Full().c_str()) == keLockTimedOut)
        Fail("Another program has been changing {} for half a minute. Nothing was changed.",
             path.Shown());
    if (mLock.IsHeld())
        Detail("{} is locked.\n", path.Shown());
}
