#pragma once

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/folder.h"
#include "resident/files/file_lock.h"

// What the commands share that change files.

struct WriteOptions {
    bool yes = false;
    bool replaceBackup = false;
};
void AddWriteOptions(CLI::App& app, WriteOptions& options);

// Says that this was a dry run; returns `code`, the real run's.
int NotAsked(ExitCode code = keFine);

// A D file that may be written: it looks like one, whatever it is called and whatever type was
// told. An empty file counts where it has the name of one.
Folder FolderToWrite(const Path& path, int type);

// Held from before the first look at a file until after its renames: whoever else changes it by way
// of the library waits, and so does this, 30 seconds at most.
class WriteLock {
public:
    // A file that is not there has none.
    explicit WriteLock(const Path& path);

private:
    FileLock mLock;
};
