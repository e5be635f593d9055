#pragma once

#include <string>

#include "programs/mailfolder/path.h"
#include "programs/mailfolder/win_handle.h"

// A new file beside the one that it is to replace, under a fresh temporary name; it is removed
// unless it takes that one's place.
class NewFile {
public:
    // Fails when it cannot be made.
    explicit NewFile(const Path& target);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    // Fails when the disk is full; nothing has been changed then.
    void Write(const void* bytes, std::size_t size);
    void Write(const std::string& bytes) { Write(bytes.data(), bytes.size()); }
    // Sees all bytes on the disk, and puts the file in the place of the old one, which stays as its
    // backup. Fails with the old one in its place.
    void PutInPlace();

private:
    void Remove();

    Path mTarget;
    Path mPath;
    WinHandle mFile;
    std::string mBuffer;
};

// The ".BAK" of a file.
Path BackupOf(const Path& target);
// Fails when a backup is there already and may not be replaced.
void NeedBackupPlace(const Path& target, bool replaceBackup);
