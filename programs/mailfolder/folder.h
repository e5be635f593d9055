#pragma once

#include <functional>
#include <map>
#include <string>

#include "programs/mailfolder/tool.h"

// A D file that a command was given, by its own name or its folder's.
struct Folder {
    std::string path; // of the D file
    TypeDirFile type;
    std::string why; // the type, in words that go on after it
    unsigned long size;

    std::string Directory() const { return path.substr(0, path.rfind('\\')); }
    bool HasHeader() const { return type != keDirMessages; }
    // Whole slots after the header.
    unsigned long Slots() const;
};

// `type` is -1 to guess it from the file's first bytes. With `maybeMissing` the file need not be
// there: it is then type 0, of no bytes, and in a folder has the name "DFile".
Folder FindFolder(const std::string& argument, int type, bool maybeMissing = false);

// One slot as it stands in the file. Slots are numbered by their position; a header is slot 0.
struct Slot {
    unsigned long number;
    unsigned long position;
    DiskDirRec stored;
};

// Calls `visit` for every whole slot but the header. Fails when the file cannot be read.
void ForEachSlot(const Folder& folder, const std::function<void(Slot&)>& visit);

// The files of a folder: their names in capitals, and what the disk tells of them.
struct FileEntry {
    std::string name;
    unsigned long size;
};
typedef std::map<std::string, FileEntry> FileEntries;
FileEntries FilesOf(const std::string& directory);
std::string InCapitals(std::string ansi);
// Those that are message files by their names, "*.EML".
bool IsMessageFile(const std::string& name);

// The library's D file for it.
struct LibraryFile : BaseDirFile {
    explicit LibraryFile(const Folder& folder);
    // Not inline: the release build's linker takes the thunks of one in each source for several.
    ~LibraryFile() override;
    using BaseDirFile::MessageFile;
};
