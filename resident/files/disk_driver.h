#pragma once

#include "resident/files/file_search.h"
#include "resident/files/file_spec.h"

// Access to folders and volumes: moves the process's current drive and folder, lists a folder,
// tests for, creates, removes and renames files, and removes folder trees.
//
// The current drive and folder and the name buffer are the process's: one thread at a time. For
// names outside ASCII see file_spec.h. Results are true, or 1, on success.
class JX_API DiskDriver {
public:
    // Takes the current location for the start location.
    DiskDriver();
    // Moves the process to the folder of `where`, and leaves it there when destroyed; where it
    // cannot, IsLocationValid() is 0.
    explicit DiskDriver(const FileSpec& where);
    DiskDriver(const DiskDriver&) = delete;
    DiskDriver& operator=(const DiskDriver&) = delete;
    // Moves the process to the start location.
    ~DiskDriver();

    int IsLocationValid() const { return mfLocationValid; }

    // Moves the process to a drive and folder. Drive A is never selected, and a specification
    // without a drive never moves it.
    bool ChangeLocation(const FileSpec& where);
    // Asks where the process is, and remembers it for RemoveDir. The reference stays valid as long
    // as the driver.
    const FileSpec& CurrentDir();
    int CurrentVolume(); // 0 = A
    // By number, or by letter in upper case.
    bool ChangeVolume(int drive);
    bool ChangeVolume(char letter);
    // Moves to the folder, on the drive where the process is.
    bool ChangeDir(const FileSpec& where);

    // Makes the last folder of the path; those above it must be there.
    static bool MakeDir(const char* path);
    static bool MakeDir(FileSpec& path);
    // Whether an entry of that name, which may have wildcards, is found: a file or a folder,
    // whatever the attributes. With keAttrDirectory, a first one that is no folder is passed over.
    static bool FileExists(const char* name, int attributes);
    static bool FileExists(FileSpec& name, int attributes);
    // Removes a file that is not read-only.
    static bool RemoveFile(const char* name);
    static bool RemoveFile(FileSpec& name);
    // A failure is reported. The two names must not be the same pointer.
    static bool Rename(const char* from, const char* to);
    static bool Rename(FileSpec& from, FileSpec& to);
    // By names as the system's wide functions take them.
    static bool Rename(const wchar_t* from, const wchar_t* to);
    // Removes the tree; returns 1, or 0 when the folder cannot be entered or nothing was removed.
    // Ends in the location that CurrentDir last told, that of the construction at first.
    int RemoveDir(FileSpec& folder);
    // Removes what fits the pattern, read-only files and whole folders too. Returns the number of
    // entries removed; passes over those that cannot be.
    int DoDelDirectory(const char* pattern);
    // Fills `record` with the first entry of that name, as FileSearch does.
    static int GetFileInfo(const char* name, ffblk* record, int attributes);

    // Listing: set what to search for, then FindFile until it returns 0, and EndSearch. FindFile
    // gives every entry of the pattern, ValidFind tells those with a wanted attribute.
    void SetSearchPattern(const FileSpec& pattern) { moSearchPattern = pattern; }
    void SetSearchAttributes(unsigned short attributes) { mwSearchAttributes = attributes; }
    int FindFile();
    // Non-zero when the entry found has one of the search attributes, or there are none.
    int ValidFind();
    // Whether the entry found is a folder.
    bool FoundDirectory() const { return moFound.ff_attrib & keAttrDirectory; }
    // A file's name becomes `out`'s name, and its extension `out`'s extension, where it has one: an
    // old extension stays otherwise. A folder's is appended to the path. False, and a report, when
    // nothing has been found.
    bool FoundFile(FileSpec& out);
    // The next FindFile begins anew.
    void EndSearch();

    // Receives the OEM form of each name.
    static char szTranslatedString[keOemNameSize];

private:
    FileSearch* mpoSearch;
    int mfNewSearch = 1;
    ffblk moFound{};
    FileSpec moStartLocation;
    FileSpec moCurrentDir;
    FileSpec moSearchPattern;
    int miCurrentVolume = 0;
    unsigned short mwSearchAttributes = 0;
    int mfLocationValid = 1;
};
