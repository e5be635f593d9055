#pragma once

#include "resident/files/file_lock.h"
#include "resident/files/rb_file_retry_open.h"
#include "resident/users/jx_download_item.h"
#include "system/store/directory_record.h"

// What a D file is made of.
enum TypeDirFile : int {
    keDirFolder = 0,  // a zero header of 316 bytes, then the records
    keDirForeign = 1, // the same, but never made by this library
    keDirMessages = 2 // records alone, made from the message files "*.EML" of its folder
};

// What FindRecord returns for a match.
enum enumFindRecord : int {
    keFindPosition = 0,
    keFindExisting = 1 // -3 when there is a match
};

// GetInfo counts the same whatever it is given.
enum enumGetInfoOptions : int { keInfoAll = 0 };

// Results of the searching operations besides a byte position.
constexpr long keDirError = -1;
constexpr long keDirNotFound = -2;
constexpr long keDirExists = -3;

// What MarkRecord does to the stored record. Other values write it back as it is.
enum enumMarkMailAction : int {
    keMarkProcessed = 0, // and clears the return receipt
    keMarkUnprocessed = 1,
    keMarkUnused = 2,
    keMarkSet0400 = 3,
    keMarkClear0400 = 4,
    keMarkSet0100 = 5, // and clears 0x0400
    keMarkSet0200 = 6, // and clears 0x0700
    keMarkClearReceipt = 7,
    keMarkClear0700 = 8
};

// A D file: the directory file of one mail folder, one record for each message whose own file lies
// in that folder. docs/formats/d_file.md describes its bytes.
//
// The object is the file: its specification is set afterwards through FileSpec, and operations open
// and close it unless they say that it must be open. Failures are results, and reported as
// assertions; an operation goes on or ends as it says. A file that another process holds is waited
// for (RbFileRetryOpen). What changes the file holds its lock (FileLock) meanwhile, and refuses a
// link. For names outside ASCII see file_spec.h.
//
// Type 0 and 1 files begin with a header that nothing reads, record n at byte n x 316; type 2 files
// have none.
class JX_API BaseDirFile : public RbFileRetryOpen {
public:
    // What RemoveAllMessageIDs takes away.
    enum enumRemoveOptions : int {
        keRemoveAll = 0,
        keRemoveUnkept = 1 // spares records with status bit 0x20
    };
    // Bytes of a record, and of a header.
    static constexpr long keRecordSize = sizeof(DiskDirRec);

    explicit BaseDirFile(TypeDirFile type); // without a name
    ~BaseDirFile() override;
    // Appends the record of a message file, to a D file that is there: at the next whole slot, over
    // the rest of a write that was broken off, and behind a header, which an empty file gets first.
    // Returns 1, or 0 when it was not written.
    virtual int AddMessage(RbFile* message);

    TypeDirFile Type() const { return mType; }

    // Writes a message file's record at the current position of the opened D file: the file's first
    // 316 bytes, with its name and the used byte put in. Returns 1 or 0; a name of more than 33
    // characters gives 0, since cut it would be another file's.
    int WriteRecord(RbFile* message);
    // Reads the record at the start of `file`, and leaves the file open or closed, and at the
    // position, as it was. Returns 1 or 0.
    int ReadDDR(RbFile& file, DirectoryRecord& record);

    // Makes the file anew: an empty one, or for type 2 from the folder's message files. The old
    // file is cut first, without a backup: see examples/rebuild for a way that keeps it. Returns
    // the result of the last record written; 1 without one, also when the file cannot be opened;
    // and 0 for type 1, which it never makes.
    int CreateDFile();

    // The byte position of the first record that is the same message as `probe`, whose topic and
    // index it repairs; keDirNotFound, keDirExists or keDirError.
    long FindRecord(DirectoryRecord& probe, enumFindRecord option);

    // Read or, with `write`, write one record; return its byte position or a negative result. By
    // position and by probe the file must be open; by probe it is left behind the record.
    // Slot 0 is the header of a file that has one.
    long AlterDirectoryBlock(DirectoryRecord& record, long position, int write);
    long AlterDirectoryBlock(DirectoryRecord& probe, DirectoryRecord& record, int write);
    long AlterDirectoryBlock(DirectoryRecord& record, unsigned int slot, int write);

    // Counts anew what the accessors below tell. Returns 1 when the file was read to its end. Of
    // the other operations, DirectoryFile::GetDFile counts both kinds of records as well, and
    // CreateDFile and RemoveAllMessageIDs set the two counts to 0; none else changes them.
    int GetInfo(enumGetInfoOptions options);
    int UsedCount() const { return miUsed; }
    int UnprocessedCount() const { return miUnprocessed; }
    // The largest date of a used record, in its epoch (DayTime, format 0).
    unsigned long NewestDate() const { return mulNewestDate; }
    // 1 when an unprocessed used record has kind 1.
    int HasUnprocessedKind1() const { return mfKind1; }
    // 1 while the last scan or copy went well.
    int IsGood() const { return fGood; }

    // Whether the file exists, by its directory entry. Its time stamp is remembered, not told.
    int CheckDateStamp();

    // The operations below find the stored record by `probe` (the same message) and change it in
    // place. They return 1 on success, else 0. One that is not in the file is reported twice.

    // Removes the message's file and frees its slot, also when that file is not there, or the name
    // is none of a file of this folder. Where the file cannot be removed, the record stays.
    int DeleteMail(DirectoryRecord& probe);
    int MarkRecord(DirectoryRecord& probe, enumMarkMailAction action);
    // MarkRecord with keMarkUnused; the second argument is not looked at.
    void MarkUnUsed(DirectoryRecord& probe, unsigned int notUsed);
    // MarkRecord with keMarkProcessed or, with `unmark`, keMarkUnprocessed.
    void MarkMail(DirectoryRecord& probe, int unmark);
    // 1 at once when the probe itself asks for no receipt.
    int ClearReturnReceipt(DirectoryRecord& probe);

    // Rewrites the file with its used records alone, through a ".TMP" and a ".BAK" file. Returns 1,
    // or 0 with the old file in place; where it cannot be put back, it is the ".BAK" file.
    int CompressDFile();
    // Adds a new item for each used record with a message identifier. They are the list's where it
    // owns its objects, else the caller's to delete. Opens the file for writing, though it does not
    // write: a read-only one gives 0.
    int GetUIDList(RB_Container<JxDownloadItem>* list);
    // Rewrites the file without message identifiers, and free slots. The old file stays as ".BAK".
    // Returns 1, or 0; where the last step fails, the D file is left under the name of its backup.
    int RemoveAllMessageIDs(enumRemoveOptions option);

protected:
    // Where the records of this type start.
    long FirstRecord() const { return mType == keDirMessages ? 0 : keRecordSize; }
    // Clears what the last operation left in the stream's state, which would hold it in its place,
    // and moves to `position`.
    bool MoveTo(long position);
    // The opened file's size; leaves it at its end. -1 when it cannot be told.
    long FileSize();
    // The file of a record's message in this folder; false when the name leads anywhere else.
    bool MessageFile(const DirectoryRecord& record, FileSpec& file) const;
    // Takes the file's lock and opens it to change it. False, with nothing open, where either
    // fails, and for a link: what it leads to is not this folder's.
    bool OpenToChange(FileLock& lock, int mode);
    // Whether the stream stopped because the file ended, and for no other reason.
    bool AtEnd() const { return eof() && !bad(); }

    int miUsed = 0;
    int miUnprocessed = 0;
    unsigned long mulNewestDate = 0;
    int mfKind1 = 0;
    int fGood = 1;
    int mfCopied = 0; // set by GetDFile
    TypeDirFile mType;

private:
    static bool WriteHeader(std::ostream& stream);
    bool ReadMessageRecord(RbFile* message, DirectoryRecord& record);
    void CutBack(long size);
    // Copies the used records from the start of the opened file, each after `change`, behind a new
    // header; true when all were copied and written out.
    template <class Change>
    bool CopyUsedRecords(RbFile& copy, Change change);

    static DirectoryRecord oFindBufDDR;
    static unsigned short mwStampTime;
    static unsigned short mwStampDate;
};
