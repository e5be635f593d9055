#pragma once

#include <optional>
#include <string>

#include "programs/mailfolder/file_writer.h"
#include "programs/mailfolder/path.h"
#include "programs/mailfolder/write_lock.h"

// A new file beside the one that it is to replace, under a fresh temporary name; it is removed
// unless it takes that one's place.
class NewFile {
public:
    // Fails when it cannot be made. The lock is the target's.
    NewFile(const Path& target, const WriteLock& lock);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    // Fails when the disk is full; nothing has been changed then.
    void Write(const void* bytes, std::size_t size) {
        mWriter->Write({static_cast<const char*>(bytes), size});
    }
    void Write(const std::string& bytes) { mWriter->Write(bytes); }
    // All of another file.
    void Copy(const Path& from);
    // Sees all bytes on the disk, and puts the file in the place of the old one, which stays as its
    // backup. Fails with the old one in its place, and where there was none and is one now.
    void PutInPlace();

private:
    Path mTarget;
    bool mReplaces;
    Path mPath;
    std::optional<FileWriter> mWriter;
};

// The ".BAK" of a file.
Path BackupOf(const Path& target);
// Fails when a backup is there already and may not be replaced.
void NeedBackupPlace(const Path& target, bool replaceBackup);
