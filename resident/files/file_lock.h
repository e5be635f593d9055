#pragma once

#include "resident/files/file_spec.h"

class RbFile;

// What became of taking a lock.
enum enumFileLockResult : int {
    keLockTaken = 1,
    keLockNoFile = 0,   // no such file, or one that is not to be opened for reading now
    keLockTimedOut = -1 // another program kept it for 30 seconds
};

// The lock that the writers of a shared file hold around each change, so that of two programs one
// changes and the other waits: one byte at 1 TB, far behind the end of any file, locked by
// LockFileEx. Readers neither take it nor see it.
//
// It is taken before the file is opened for the change: who waits has nothing open that would keep
// the holder from renaming the file, and looks afterwards whether the name still leads to the file
// that was locked, since a rewrite puts another in its place. It counts within a process: a holder
// may take it again. It is free when its holder releases it, is destroyed, or ends in any way.
//
// Waiting lets no messages run: holders keep it for milliseconds.
class JX_API FileLock {
public:
    // How long Take waits, and how long for a file that a rewrite is just giving back its name.
    enum { keWaitMilliseconds = 30000, keRenameMilliseconds = 200 };

    FileLock() : mpoHeld(nullptr) {}
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() { Release(); }

    // Takes the lock on the file that RbFile::Open opens for this specification, on the one that is
    // open, or on the one that the system's wide functions find. `milliseconds` bounds the wait.
    enumFileLockResult Take(const FileSpec& file, unsigned long milliseconds = keWaitMilliseconds);
    enumFileLockResult Take(const RbFile& file, unsigned long milliseconds = keWaitMilliseconds);
    enumFileLockResult Take(const wchar_t* path, unsigned long milliseconds = keWaitMilliseconds);

    // Gives the lock back, if it is held.
    void Release();
    bool IsHeld() const { return mpoHeld; }

    struct Held;

private:
    enumFileLockResult Share(Held& lock);

    Held* mpoHeld; // shared by all that hold the same file's lock in this process
};
