#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

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

// The files of a folder, by their names in capitals.
struct FileEntry {
    std::wstring name;
    unsigned long long size;
    unsigned long long written; // a FILETIME
};
typedef std::map<std::wstring, FileEntry> FileEntries;
FileEntries FilesOf(const Path& directory);

// The key of the file that a record names; nothing when the name is none of a file of its folder.
std::optional<std::wstring> FileKey(const DirectoryRecord& record);
// A name as a record can hold it, in ANSI; nothing when it has letters that ANSI has not, or is
// longer than a record's field.
std::optional<std::string> RecordName(const std::wstring& name);
