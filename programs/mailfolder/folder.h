#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "programs/mailfolder/kind.h"
#include "programs/mailfolder/path.h"
#include "programs/mailfolder/tool.h"

// A D file that a command was given, by its own name or its folder's.
struct Folder {
    Path path; // of the D file
    TypeDirFile type = keDirFolder;
    std::string why; // the type, in words that go on after it
    unsigned long long size = 0;

    Path Directory() const { return path.Folder(); }
    bool HasHeader() const { return type != keDirMessages; }
    // Whole slots after the header.
    unsigned long long Slots() const;
};

// The D file that an argument means, whether it is there or not: the file itself, or the "DFile" or
// else "MFile" of a folder. Fails when what was named is not there, or a device, or a link.
Path DFileOf(const Path& argument);

// The D file for reading. `type` is -1 to guess it from the file's first bytes. Fails for a file
// that does not look like a D file, unless a type was told.
Folder FindFolder(const Path& given, int type);
inline Folder FindFolder(const std::string& argument, int type) {
    return FindFolder(Path(argument), type);
}
// A D file that is there.
Folder OpenFolder(const Path& path, int type);

// One slot as it stands in the file. Slots are numbered by their position; a header is slot 0.
struct Slot {
    unsigned long long number;
    unsigned long long position;
    DiskDirRec stored;
};

// Calls `visit` for every whole slot but the header. Fails when the file cannot be read.
void ForEachSlot(const Folder& folder, const std::function<void(Slot&)>& visit);

// A file of a folder.
struct FileEntry {
    std::wstring name;
    unsigned long long size;
    unsigned long long written; // a FILETIME
};
// Calls `visit` for every file. Fails when the folder cannot be read; one that is not there has
// none.
void ForEachFile(const Path& directory, const std::function<void(const FileEntry&)>& visit);

// Which names a folder has, in a few bytes each. A file's key is its name in capitals; where two
// names differ in case alone, on disks of other systems, the name as it stands.
class FileNames {
public:
    explicit FileNames(const Path& directory);

    std::wstring Key(const std::wstring& name) const;
    bool Has(const std::wstring& key) const;
    // Of the file that a record names, there or not; nothing when the name is none of a file of its
    // folder.
    std::optional<std::wstring> KeyOf(const DirectoryRecord& record) const;
    std::size_t Count() const { return mHashes.size(); }
    std::size_t MessageFiles() const { return mMessageFiles; }

private:
    std::vector<unsigned long long> mHashes; // of keys, sorted
    std::vector<unsigned long long> mTwins;  // of names in capitals, sorted
    std::size_t mMessageFiles = 0;
};
// For what tells keys apart without keeping them.
unsigned long long HashOf(const std::wstring& key);

// The files of a folder, by their keys.
typedef std::map<std::wstring, FileEntry> FileEntries;
FileEntries FilesOf(const Path& directory, const FileNames& names);

// A name as a record can hold it, in ANSI; nothing when it has letters that ANSI has not, is longer
// than a record's field, or is none that a record may name.
std::optional<std::string> RecordName(const std::wstring& name);
