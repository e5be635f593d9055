#pragma once

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/folder.h"
#include "programs/mailfolder/write_lock.h"

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

// One that is there, locked from before the first look at it.
struct LockedFolder {
    explicit LockedFolder(const FolderArgument& given);

    Path path;
    WriteLock lock;
    Folder folder;
};
