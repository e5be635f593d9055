#pragma once

#include "resident/files/rb_file.h"

// What ReplaceFile does besides. They add up.
enum enumReplaceOptions : int {
    keReplacePlain = 0,         // the old file stays as the backup
    keReplaceDropBackup = 0x01, // the backup goes when all is done
    keReplaceNoWayBack = 0x02,  // where the second rename fails, the old file stays the backup
    keReplaceKeepNew = 0x04,    // where a rename fails, the new file stays under its own name
    keReplaceFlush = 0x08,      // the new file is on the disk before it takes the old one's place
    keReplaceKeepOlder = 0x10   // an older backup goes only when the old file can be renamed
};

// How a file is replaced by a new one, for all that rewrite files. The new file is whole and closed
// under a name of its own in the same folder, and of these steps each leaves one of the two files
// whole under a name that is known:
//
//   1. the new file gets the old one's access rights (its DACL);
//   2. a program that has the old file open for writing has a second to close it, and an older
//      backup is removed: never the only copy, for where there is no old file it stays;
//   3. the old file is renamed to the backup;
//   4. the new file is renamed to the old one's name.
//
// Where step 3 fails, the older backup is gone, unless keReplaceKeepOlder said to look first, and
// the new file is removed; where step 4 does, the old one gets its name back and the new one is
// removed. Links are not replaced, nor is a link in the backup's place: everything stays then.
// Returns 1, or 0 after a rename's report. The caller holds the file's FileLock from before its
// first read of the old file.
JX_API int ReplaceFileBy(const wchar_t* newFile, const wchar_t* target, const wchar_t* backup,
                         int options);
JX_API int ReplaceFileBy(const FileSpec& newFile, const FileSpec& target, const FileSpec& backup,
                         int options);

// Makes an empty file of this name; false when there is an entry of the name, a link that leads
// nowhere included, or it cannot be made.
JX_API bool MakeNewFile(const wchar_t* path);
// Opens a closed file to be written from its start: a new one, or one that is there and is cut. A
// link is not followed. False when it cannot be opened.
JX_API bool OpenAnew(RbFile& file);
// Makes an empty file under a name that nobody had: HashUniqueFileName, and the next name when
// another program has taken it meanwhile. Returns false when none can be made.
JX_API bool MakeUniqueFile(RbFile* result, FileSpec& where, const char* pszExtension);
