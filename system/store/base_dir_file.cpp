// BaseDirFile: making a D file, and its records one by one.

#include "system/store/base_dir_file.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>

#include "resident/core/byte_order.h"
#include "resident/files/disk_driver.h"
#include "resident/files/file_identity.h"
#include "resident/files/file_replacement.h"
#include "resident/runtime/check.h"
#include "system/store/borrowed_file.h"
#include "system/store/record_reader.h"

static constexpr Reporter kReports("JXSYSTEM\\DIRFL_BS.CPP");

DirectoryRecord BaseDirFile::oFindBufDDR;
unsigned short BaseDirFile::mwStampTime;
unsigned short BaseDirFile::mwStampDate;

BaseDirFile::BaseDirFile(TypeDirFile type) : mType(type) {}

BaseDirFile::~BaseDirFile() = default;

bool BaseDirFile::MoveTo(long position) {
    clear();
    seekg(position);
    return good();
}

long BaseDirFile::FileSize() {
    clear();
    seekg(0, std::ios::end);
    return tellg();
}

bool BaseDirFile::OpenToChange(FileLock& lock, int mode) {
    if (lock.Take(*this) == keLockTimedOut || IsLink(OpenedName(*this).c_str()))
        return false;
    if (!Open(mode))
        return false;
    // A file that was held had to be waited for, and could not be locked before: another program
    // may have replaced it since.
    if (!lock.IsHeld() && lock.Take(*this) == keLockTaken) {
        close();
        return Open(mode);
    }
    if (!lock.IsHeld())
        close();
    return lock.IsHeld();
}

int BaseDirFile::AddMessage(RbFile* message) {
    FileLock lock;
    if (!OpenToChange(lock, keOpenAppend))
        return false;
    DirectoryRecord record;
    const long size = tellg();
    int written = size >= 0 && ReadMessageRecord(message, record);
    if (written) {
        // The rest of a write that was broken off is no record: the new one takes its place.
        const long slot = size - size % keRecordSize;
        MoveTo(slot);
        if (slot < FirstRecord())
            WriteHeader(*this);
        written = (*this << record).flush().good();
    }
    const bool torn = bad();
    close();
    if (torn)
        CutBack(size);
    return written;
}

// Takes back what a full disk had room for of a record: those behind it would be out of their
// slots.
void BaseDirFile::CutBack(long size) {
    const ClosedAtEnd closed(*this);
    if (Open(keOpenUpdate) && FileSize() > size && MoveTo(size))
        UpdateFile();
}

// The record for a message file, as this folder lists it.
bool BaseDirFile::ReadMessageRecord(RbFile* message, DirectoryRecord& record) {
    DiskDirRec& fields = record.Record();
    const RBString name(message ? message->FullFileName() : "");
    // Cut to its field, a name would be another file's.
    if (!message || name.Length() >= sizeof fields.fileName || !ReadDDR(*message, record))
        return false;
    fields.fileName[0] = name.LengthByte();
    std::memcpy(fields.fileName + 1, name.Text(), name.Length());
    fields.used = 1;
    record.FixTopicAndIndex();
    return true;
}

int BaseDirFile::WriteRecord(RbFile* message) {
    DirectoryRecord record;
    return ReadMessageRecord(message, record) && (*this << record).good();
}

int BaseDirFile::ReadDDR(RbFile& file, DirectoryRecord& record) {
    const BorrowedFile borrowed(file, keOpenIn | keOpenBinary);
    if (!borrowed)
        return false;
    file.seekg(0);
    return (file >> record).good();
}

bool BaseDirFile::WriteHeader(std::ostream& stream) {
    DiskDirRec header = {};
    return (stream << header).good();
}

int BaseDirFile::CreateDFile() {
    if (mType == keDirForeign)
        return false;
    miUsed = miUnprocessed = 0;
    FileLock lock;
    // What is not there is made first, so that it can be locked, and so that no link that leads
    // nowhere yet is followed.
    MakeNewFile(OpenedName(*this).c_str());
    if (!OpenToChange(lock, keOpenRewrite | keOpenNoCreate))
        return true;

    bool result = true;
    bool allWritten = true;
    long written = 0;
    if (mType == keDirMessages) {
        FileSpec pattern(FullFileSpec());
        pattern.SetSpecPart("*.EML", keAsParts);
        DiskDriver driver;
        driver.ChangeLocation(*this);
        driver.SetSearchPattern(pattern);
        for (bool more = good() && driver.FindFile(); more; more = driver.FindFile()) {
            RbFile message(pattern);
            // The pattern finds short names too: what the file is called counts.
            if (!driver.ValidFind() || driver.FoundDirectory() || !driver.FoundFile(message) ||
                lstrcmpiA(message.FileExt(), ".EML") != 0)
                continue;
            // Flush: a result of 1 means that the record is in the file.
            result = WriteRecord(&message) && flush();
            if (result) {
                written += keRecordSize;
            } else {
                allWritten = false;
                kReports.Fail("Error BaseDirFile: CreateDFile(), writing record");
            }
        }
    } else {
        WriteHeader(*this);
        flush();
    }
    const bool torn = bad();
    close();
    // A file cut inside its header would mislead every reader: it goes.
    if (torn && mType != keDirMessages)
        DiskDriver::RemoveFile(*this);
    else if (torn)
        CutBack(written);
    if (!allWritten)
        kReports.Fail("Error BaseDirFile: CreateDFile()");
    return result;
}

long BaseDirFile::FindRecord(DirectoryRecord& probe, enumFindRecord option) {
    probe.FixTopicAndIndex();
    std::optional<ClosedAtEnd> closed;
    if (!isOpen()) {
        closed.emplace(*this);
        Open(keOpenRead);
    }
    if (bad())
        return keDirError;

    long result = keDirNotFound;
    long position = FirstRecord();
    MoveTo(position);
    RecordReader records(*this);
    for (; DiskDirRec* record = records.Next(); position += keRecordSize) {
        // The date first: it tells nearly all records apart.
        if (record->date != probe.Record().date)
            continue;
        oFindBufDDR = DirectoryRecord(record);
        oFindBufDDR.Check_Fixed_Validity();
        if (!(oFindBufDDR == probe))
            continue;
        // The stream has been read on behind the match: it goes back to it, or to its end.
        if (!MoveTo(option == keFindPosition ? position : position + keRecordSize))
            continue;
        result = option == keFindPosition ? position : keDirExists;
        break;
    }
    if (result == keDirNotFound && !AtEnd())
        result = keDirError;
    return result;
}

long BaseDirFile::AlterDirectoryBlock(DirectoryRecord& record, long position, int write) {
    kReports.Check(isOpen(), "isOpen()", "Error BaseDirFile: AlterDirectoryBlock(), File not open");
    FileLock lock;
    if (MoveTo(position) && (!write || lock.Take(*this) != keLockTimedOut)) {
        if (write)
            *this << record;
        else
            *this >> record;
        if (good() && (!write || flush()))
            return position;
    }
    // Programs know this text, which names another operation.
    kReports.Fail("Error BaseDirFile: DeleteOldMail(), File error");
    return keDirError;
}

long BaseDirFile::AlterDirectoryBlock(DirectoryRecord& probe, DirectoryRecord& record, int write) {
    kReports.Check(isOpen(), "isOpen()", "Error BaseDirFile: AlterDirectoryBlock(), file not OPEN");
    if (!isOpen())
        return keDirError;
    const long position = FindRecord(probe, keFindPosition);
    if (position == keDirNotFound)
        kReports.Fail("Error BaseDirFile: AlterDirectoryBlock(), Record not found");
    if (position == keDirError)
        kReports.Fail("Error BaseDirFile: AlterDirectoryBlock()");
    if (position < 0)
        return position;
    FileLock lock;
    if (write && lock.Take(*this) == keLockTimedOut)
        return keDirError;
    if (write)
        (*this << record).flush();
    else
        *this >> record;
    return good() ? position : keDirError;
}

long BaseDirFile::AlterDirectoryBlock(DirectoryRecord& record, unsigned int slot, int write) {
    // A slot behind the last position that a file can have is refused as position -1.
    const long position =
        slot <= LONG_MAX / keRecordSize ? static_cast<long>(slot) * keRecordSize : keDirError;
    if (isOpen()) {
        clear();
        const long saved = tellg();
        const long result = AlterDirectoryBlock(record, position, write);
        return MoveTo(saved) ? result : keDirError;
    }
    FileLock lock;
    if (write ? !OpenToChange(lock, keOpenUpdate) : !Open(keOpenUpdate)) {
        kReports.Fail("Error BaseDirFile: AlterDirectoryBlock(), can't OPEN file");
        return keDirError;
    }
    const ClosedAtEnd closed(*this);
    return AlterDirectoryBlock(record, position, write);
}

int BaseDirFile::GetInfo(enumGetInfoOptions) {
    miUsed = miUnprocessed = 0;
    mulNewestDate = 0;
    mfKind1 = false;
    const BorrowedFile borrowed(*this, keOpenRead);
    if (!borrowed)
        return false;

    MoveTo(FirstRecord());
    RecordReader records(*this);
    while (DiskDirRec* record = records.Next()) {
        if (!IsUsed(*record))
            continue;
        ++miUsed;
        mulNewestDate = std::max(mulNewestDate, FlipLong(record->date));
        if (!(record->status & keStatusProcessed)) {
            ++miUnprocessed;
            if (record->kind == 1)
                mfKind1 = true;
        }
    }
    return AtEnd();
}

int BaseDirFile::CheckDateStamp() {
    ffblk found;
    if (!DiskDriver::GetFileInfo(FullFileSpec(), &found,
                                 keAttrReadOnly | keAttrHidden | keAttrSystem | keAttrArchive))
        return false;
    mwStampTime = found.ff_ftime;
    mwStampDate = found.ff_fdate;
    return true;
}
