#pragma once

#include <string>
#include <string_view>

// A file or folder that the user named: told as it was given, found by the system's wide functions
// whatever its letters and length.
class Path {
public:
    // What stands under a name.
    enum Thing { keMissing, keFile, keFolder, keDevice, keLink, keSpecial };

    Path() = default;
    // UTF-8. Fails for an empty name.
    explicit Path(const std::string& given);

    // UTF-8: for people, without what would disturb a line of text, and for programs, which open
    // it.
    std::string Shown() const;
    const std::string& Given() const { return mGiven; }
    // From the drive on; with the prefix of long paths where it is one.
    const std::wstring& Full() const { return mFull; }
    // The part behind the last backslash, as the folder has it.
    std::wstring Name() const;

    // The same, in the form that the system takes letter by letter: what lies below may have any
    // length, and the name of a device.
    Path AsItStands() const;

    // A file in this folder, or in the folder that this file is in.
    Path Child(std::wstring_view name) const;
    Path Beside(std::wstring_view name) const { return Folder().Child(name); }
    Path Folder() const;
    // The same file with another extension, which begins with a dot.
    Path WithExtension(std::wstring_view extension) const;

    // A name of the file, which must be there, that the library's classes can open: in ASCII, and
    // short. Fails where the system has none.
    std::string LibraryName() const;

    // Links, to files and to folders, are not followed. A name of a device is one in every folder.
    // Special is what the folder lists and nobody can open by that name: one of another system.
    Thing What() const;
    bool IsDevice() const { return mFull.starts_with(L"\\\\.\\"); }
    bool IsThere() const { return What() != keMissing; }
    bool IsFolder() const { return What() == keFolder; }
    // Whether both names lead to one file on the disk, which must be there.
    bool IsSameFile(const Path& other) const;

private:
    std::string mGiven;
    std::wstring mFull;
};

// Name without regard to case, as the file system compares them.
std::wstring FoldCase(std::wstring name);
// "DFILE" of "DFile.BAK", ".BAK" of it.
std::wstring ExtensionOf(const std::wstring& name);
