#pragma once

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "programs/mailfolder/file_writer.h"
#include "programs/mailfolder/path.h"
#include "programs/mailfolder/shared_read.h"

namespace extract {

// Folders that are read, and files that are made. All paths are as they stand.

bool SameName(std::wstring_view left, std::wstring_view right);

// What an entry of a folder is called, and what it is.
struct Entry {
    std::wstring name;
    bool isFolder;
    bool isLink;
};
// The entries of a folder as the disk has them; none when it cannot be read.
void ForEachEntry(const Path& folder, const std::function<void(const Entry&)>& visit);
// In the order of their names.
std::vector<Entry> EntriesOf(const Path& folder);

// Whatever it is, links followed.
bool Exists(const Path& path);
bool IsFolder(const Path& path);

// Where a file or folder really lies, links resolved; empty when nobody knows.
std::wstring FinalPath(const FileHandle& file);
// Of the path's nearest folder that is there, with what is not there behind it.
std::wstring FinalPathOf(const Path& path);
// The folder of a final path.
std::wstring ParentOf(const std::wstring& finalPath);
// Whether it is the folder, or lies in it at any depth. Both are final paths.
bool IsWithin(const std::wstring& path, const std::wstring& folder);

// What keeps something of a source from being read, in words that go on after its name.
class Unreadable : public std::exception {
public:
    Unreadable(std::string why, bool missing = false)
        : reason(std::move(why)), isMissing(missing) {}
    const char* what() const noexcept override { return reason.c_str(); }

    std::string reason;
    bool isMissing;
};

// Reads as much as there is, up to the buffer's size, and returns that. Throws what is Unreadable.
std::size_t ReadOn(const FileHandle& file, char* buffer, std::size_t size);
std::size_t ReadAt(const FileHandle& file, unsigned long long position, char* buffer,
                   std::size_t size);

// Whether a file with a temporary name may be what an ended program left: it begins as what is
// written here does, or has not begun.
bool IsLeftover(const Path& path);

// A file that is made: under a temporary name beside its own until it is whole. Every failure is a
// Failure that names the file.
class NewFile {
public:
    // The temporary name is the path and ".mailfolder-new". One that an ended program left there
    // goes; one that a running program writes is a Failure.
    explicit NewFile(const Path& path);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    // Removes what was not put in place.
    ~NewFile();

    void Write(std::string_view bytes) { mWriter->Write(bytes); }
    unsigned long long Size() const { return mWriter->Size(); }
    // Takes back what is behind that size.
    void CutTo(unsigned long long size) { mWriter->CutTo(size); }
    // Flushes the file to the disk and gives it its name; false when that name is taken.
    bool PutInPlace(const Path& path);
    bool PutInPlace() { return PutInPlace(mPath); }

private:
    Path mPath;
    Path mTemporary;
    std::optional<FileWriter> mWriter; // until it is put in place
};

// Makes the folder and those above it that are not there.
void MakeFolders(const Path& path);

} // namespace extract
