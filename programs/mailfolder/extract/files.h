#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace extract {

// Files by their long names in UTF-16, as the system has them. Names are taken as they stand: no
// device is reached by one, and none is too long.

// Closes a handle of a file when it goes.
struct CloseFile {
    void operator()(void* handle) const;
};
typedef std::unique_ptr<void, CloseFile> FileHandle;

// The text in UTF-8 for a line of a message; control characters are shown as dots.
std::string Shown(std::wstring_view text);

// An argument of the command line: UTF-8, or what is none in the system's code page.
std::wstring WideArgument(const std::string& argument);

// Why the last call of the system failed, in words that go on after a name.
std::string LastErrorText();

// The full path, in the form that is taken as it stands.
std::wstring LongPath(const std::wstring& path);
// As people write it.
std::wstring WithoutPrefix(const std::wstring& longPath);
std::wstring Joined(const std::wstring& folder, std::wstring_view name);
std::wstring ParentOf(const std::wstring& path);
std::wstring LastName(const std::wstring& path);

bool SameName(std::wstring_view left, std::wstring_view right);
std::wstring Upper(std::wstring text);

// What an entry of a folder is called, and what it is.
struct Entry {
    std::wstring name;
    bool isFolder;
    bool isLink;
};
// The entries of a folder as the disk has them; none when it cannot be read.
void ForEachEntry(const std::wstring& folder, const std::function<void(const Entry&)>& visit);
// In the order of their names.
std::vector<Entry> EntriesOf(const std::wstring& folder);

bool Exists(const std::wstring& path);
bool IsFolder(const std::wstring& path);
// Opens for reading, and keeps nobody from anything: writers, renames and removals go on. Takes
// folders, too. Null when it fails.
FileHandle OpenShared(const std::wstring& path);

// Where a file or folder really lies, links resolved; empty when nobody knows.
std::wstring FinalPath(const FileHandle& file);
// Of the path's nearest folder that is there, with what is not there behind it.
std::wstring FinalPathOf(const std::wstring& path);
// Whether it is the folder, or lies in it at any depth. Both are final paths.
bool IsWithin(const std::wstring& path, const std::wstring& folder);

// What keeps something of a source from being read, in words that go on after its name.
struct Unreadable {
    std::string reason;
    bool isMissing = false;
};

// Reads as much as there is, up to the buffer's size, and returns that. Throws what is Unreadable.
std::size_t ReadAt(const FileHandle& file, unsigned long long position, char* buffer,
                   std::size_t size);

// A file that is made: under a temporary name beside its own until it is whole. Every failure is a
// Failure that names the file.
class NewFile {
public:
    // The temporary name is the path and ".mailfolder-new". One that an ended program left there
    // goes; one that a running program writes is a Failure.
    explicit NewFile(std::wstring path);
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    // Removes what was not put in place.
    ~NewFile();

    void Write(std::string_view bytes);
    unsigned long long Size() const { return mWritten + mBuffer.size(); }
    // Takes back what is behind that size.
    void CutTo(unsigned long long size);
    // Flushes the file to the disk and gives it its name; false when that name is taken.
    bool PutInPlace(const std::wstring& path);
    bool PutInPlace() { return PutInPlace(mPath); }

private:
    void Flush();
    [[noreturn]] void FailWriting() const;

    std::wstring mPath;
    std::wstring mTemporary;
    FileHandle mFile;
    std::string mBuffer;
    unsigned long long mWritten = 0;
};

// Makes the folder and those above it that are not there.
void MakeFolders(const std::wstring& path);

} // namespace extract
