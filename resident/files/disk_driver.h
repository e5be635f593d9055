#pragma once

#include "resident/files/file_search.h"
#include "resident/files/file_spec.h"

// Access to folders and volumes: moves the process's current drive and folder, lists a folder,
// tests for, creates, removes and renames files, and removes folder trees.
//
// The current drive and folder and the name buffer are the process's: one thread at a time.
class JX_API DiskDriver {
public:
    DiskDriver();
    // Moves the process to the folder of `where`, and leaves it there when destroyed; where it
    // cannot, IsLocationValid() is 0.
    explicit DiskDriver(const FileSpec& where);
    DiskDriver(const DiskDriver&) = delete;
    DiskDriver& operator=(const DiskDriver&) = delete;
    // Moves the process to the start location.
    ~DiskDriver();

    int IsLocationValid() const { return mfLocationValid; }

    // Drive A is never selected, and a specification without a drive never moves the process.
    bool ChangeLocation(const FileSpec& where);
    // The reference stays valid as long as the driver.
    const FileSpec& CurrentDir();
    int CurrentVolume(); // 0 = A
    bool ChangeVolume(int drive);
    bool ChangeVolume(char letter); // upper case
    bool ChangeDir(const FileSpec& where);

    static bool MakeDir(const char* path);
    static bool MakeDir(FileSpec& path);
    // Whether an entry is found; with keAttrDirectory, a first one that is no folder is passed
    // over.
    static bool FileExists(const char* name, int attributes);
    static bool FileExists(FileSpec& name, int attributes);
    static bool RemoveFile(const char* name);
    static bool RemoveFile(FileSpec& name);
    // A failure is reported. The two names must not be the same pointer.
    static bool Rename(const char* from, const char* to);
    static bool Rename(FileSpec& from, FileSpec& to);
    // Removes the tree; returns 1, or 0 when the folder cannot be entered or nothing was removed.
    int RemoveDir(FileSpec& folder);
    // Returns the number of entries removed; passes over those that cannot be.
    int DoDelDirectory(const char* pattern);
    static int GetFileInfo(const char* name, ffblk* record, int attributes);

    // Listing: set what to search for, then FindFile until it returns 0, and EndSearch.
    void SetSearchPattern(const FileSpec& pattern) { moSearchPattern = pattern; }
    void SetSearchAttributes(unsigned short attributes) { mwSearchAttributes = attributes; }
    int FindFile();
    // Non-zero when the entry found has one of the search attributes, or there are none.
    int ValidFind();
    // Whether the entry found is a folder.
    bool FoundDirectory() const { return moFound.ff_attrib & keAttrDirectory; }
    // A file's name becomes `out`'s name, a folder's is appended to its path.
    bool FoundFile(FileSpec& out);
    void EndSearch();

    // Receives the OEM form of each name.
    static char szTranslatedString[keOemNameSize];

private:
    FileSearch* mpoSearch;
    int mfNewSearch;
    ffblk moFound;
    FileSpec moStartLocation;
    FileSpec moCurrentDir;
    FileSpec moSearchPattern;
    int miCurrentVolume;
    unsigned short mwSearchAttributes;
    int mfLocationValid;
};
