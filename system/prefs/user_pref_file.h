#pragma once

#include "resident/core/rb_int.h"
#include "resident/files/file_lock.h"
#include "system/prefs/jx_dat_header.h"
#include "system/prefs/preference_file.h"

// One application's preference block, as its owner describes it.
struct AppPrefTag {
    unsigned short id;      // 18001 for the mail preferences
    unsigned short version; // 400 for the mail preferences
    unsigned short size;    // of the block, in bytes
    void* buffer;           // the owner's, of that size
};

// A block's entry in the file: 12 bytes.
struct AppRecHeader {
    unsigned short id;      // 0: in the machine's order
    unsigned short version; // 2: in the machine's order
    RBInt ordinal;          // 4: the number of records when it was added
    RBInt offset[2];        // 6: of the block in the file, big-endian, high word first
    RBInt size;             // 10

    // `offset` as one number of the machine's order.
    JX_API unsigned long Offset() const;
    JX_API void SetOffset(unsigned long value);
};
static_assert(sizeof(AppRecHeader) == 12);

// What went wrong with a preference file.
enum UserPrefError : int {
    kePrefOpenError = 0,
    kePrefReadError = 1,
    kePrefWriteError = 2,
    kePrefSeekError = 3,
    kePrefCloseError = 4 // not shown
};

// A binary file of several applications' preference blocks: a header, a directory of records and
// the scrambled blocks. docs/formats/rb_dat.md describes its bytes.
//
// Failures are shown to the user, in a message box that names the file, and are results of 0.
class JX_API UserPrefFile : public PreferenceFile {
public:
    // Without a block, or with one's tag: `buffer`, of `size` bytes, stays the caller's and must
    // outlive this object and its copies.
    UserPrefFile();
    UserPrefFile(void* buffer, unsigned short id, unsigned short size, unsigned short version);
    ~UserPrefFile() override;

    // Status, mode, flags, header, current record and tag.
    UserPrefFile& operator=(const UserPrefFile& other);

    // Opens for reading and writing. Returns 1, or 0 after message 604.
    int OpenPrefFile();
    // Makes the file anew with this object's own block, as it stands in memory, and leaves it open;
    // the next ReadAppPrefs leaves the block alone. `name` is the file's, and is kept in the
    // header; what it leaves out is this object's specification. Returns 1 or 0.
    int CreatePrefsFile(const char* name);

    // Read or write one application's block, in the opened file. A block that is not found is added
    // by writing, and with `create` by reading: the latter writes it unscrambled, and readers take
    // it so until it is next written. A read that does not find the block leaves the buffer
    // scrambled. Return 1 or 0.
    int ReadAppPrefs(AppPrefTag& tag, int create);
    int WriteAppPrefs(AppPrefTag& tag);

    // The steps of the above. ReadAppHeader reads the file's header, and looks for the record of
    // `id`; a missing one is no failure. ReadPrefBuffer reads tag.size bytes at `offset`.
    int ReadAppHeader(unsigned int id);
    int ReadPrefBuffer(AppPrefTag& tag, long offset);
    // A block of another size than the stored one is silently not written.
    int WritePrefBuffer(AppPrefTag& tag);
    // Adds a record and its block by rebuilding the file through "RB.BAK", which keeps the file as
    // it was before. The old file stays in place when anything fails.
    int InsertPrefRec(AppRecHeader& record, AppPrefTag& tag);
    // Writes the header.
    int UpdateHeader();
    // Scrambles the block in memory, or unscrambles it: it is its own inverse.
    static void Encode(AppPrefTag& tag);
    // Shows message 604 and the code; returns 0.
    int FileError(UserPrefError code);

protected:
    enum : unsigned int { keRecordFound = 0x2 };
    enum : unsigned int { keSkipNextRead = 0x1 };
    // Messages that name a file.
    enum { keMessageAccess = 701, keMessageCreate = 703 };

    // Shows message `textId` with a path in it; returns 0.
    int ShowFileMessage(unsigned int textId, const char* path);
    // Opens this file, or opens it again, when no other program is just changing it. A link is not
    // opened to be written.
    bool Reopen(int mode);
    // Takes the lock for a change of the opened file. Who has to wait for it has the file closed
    // meanwhile, which would keep the holder from replacing it, and open again afterwards.
    bool LockOpened(FileLock& lock);
    // Moves to `position` from the start, whatever the last operation left in the stream's state.
    bool MoveTo(long position);
    // The opened file's size; leaves it at its end. -1 when it cannot be told.
    long FileSize();

    unsigned int mStatus = 0;
    int miOpenMode;
    unsigned int mFlags = 0;
    JXExtendDatHeader moHeader;
    AppRecHeader moRecord;
    AppPrefTag moTag;

private:
    bool IsFirstBlockUncounted();
    bool CopyWithRecord(RbFile& copy, AppRecHeader& record, AppPrefTag& tag);
    bool Rebuild(AppRecHeader& record, AppPrefTag& tag, FileLock& rebuilt);
    bool PutInPlace(RbFile& copy);
};

// The 12 bytes.
JX_API std::ostream& operator<<(std::ostream& out, AppRecHeader& record);
JX_API std::istream& operator>>(std::istream& in, AppRecHeader& record);
