#include "system/store/directory_file.h"

#include "resident/core/byte_order.h"
#include "resident/core/day_time.h"
#include "resident/core/list_tail.h"
#include "resident/files/disk_driver.h"
#include "resident/files/file_identity.h"
#include "resident/files/temporary_file.h"
#include "resident/runtime/check.h"
#include "system/store/borrowed_file.h"
#include "system/store/record_reader.h"

static constexpr Reporter kReports("JXSYSTEM\\DIRFILE.CPP");

// Scans of an inbox start behind a header, whatever the file's type.
static constexpr long kScanStart = BaseDirFile::keRecordSize;

static constexpr int kNotProcessable = 0x0100 | 0x0200 | 0x0400 | 0x0800;
static constexpr int kTaken = 0x0400;
static constexpr int kInstallable = 0x1000 | 0x2000;

DirectoryFile::DirectoryFile(TypeDirFile type) : BaseDirFile(type) {}

DirectoryFile::~DirectoryFile() = default;

static bool IsProcessable(const DiskDirRec& record) {
    return IsUsed(record) && !(record.status & keStatusProcessed) &&
           !(record.attributes & kNotProcessable) && record.kind != 0;
}

static bool IsInstallable(const DiskDirRec& record) { return record.attributes & kInstallable; }

int DirectoryFile::OkToProcess(DirectoryRecord* record) { return IsProcessable(record->Record()); }

int DirectoryFile::OkToProcess(DirectoryRecord* record, enumCheckOptions options) {
    return OkToProcess(record) &&
           (!(options & keCheckInstallable) || IsInstallable(record->Record()));
}

int DirectoryFile::OkToProcess(DirectoryRecord* record, enumGetDDROptions option) {
    return OkToProcess(record) && (option != keGetInstallable || IsInstallable(record->Record()));
}

static void CallIdle(void (*idle)()) {
    if (idle)
        idle();
}

int DirectoryFile::CheckUnprocessedDDRs(enumCheckOptions options, void (*idle)()) {
    if (!CheckDateStamp() && !(options & keCheckAlways))
        return keCheckNone;
    if (!OpenSilent(keOpenUpdate))
        return keCheckCannotOpen;
    CallIdle(idle);
    MoveTo(kScanStart);
    int result = keCheckNone;
    RecordReader records(*this);
    while (result == keCheckNone) {
        CallIdle(idle);
        DiskDirRec* const stored = records.Next();
        if (!stored)
            break;
        CallIdle(idle);
        DirectoryRecord record(stored);
        if (OkToProcess(&record, options))
            result = keCheckSome;
    }
    if (result == keCheckNone && !AtEnd())
        result = keScanError;
    close();
    // Programs know this report, which names the other scan.
    if (result == keScanError)
        kReports.Fail("Error DirectoryFile: GetUnprocessedDDRs()");
    return result;
}

int DirectoryFile::GetUnprocessedDDRs(RB_Container<DirectoryRecord>* list, void (*idle)(),
                                      enumGetDDROptions option) {
    if (option != keGetInstallRequests && !CheckDateStamp())
        return keGetNone;
    FileLock lock;
    fGood = OpenToChange(lock, keOpenUpdate);
    kReports.Check(fGood, "fGood");
    if (!fGood)
        return keGetNone;
    // `idle` may take its time, and so may what it lets run: others write meanwhile.
    if (idle)
        lock.Release();

    CallIdle(idle);
    ContainerTail<DirectoryRecord> taken(list);
    const bool alone = !idle && taken.IsPlain();
    int result = (alone ? TakeByBlocks(taken, option) : TakeOneByOne(taken, idle, option))
                     ? keGetSome
                     : keGetNone;
    if (!AtEnd())
        result = keScanError;
    close();
    if (result == keScanError)
        kReports.Fail("Error DirectoryFile: GetUnprocessedDDRs()");
    return result;
}

// With the lock, and nothing called that may change the file: what was read ahead stays true.
// Returns whether any was taken.
bool DirectoryFile::TakeByBlocks(ContainerTail<DirectoryRecord>& list, enumGetDDROptions option) {
    bool some = false;
    MoveTo(kScanStart);
    RecordReader records(*this);
    for (long position = kScanStart; DiskDirRec* stored = records.Next();
         position += keRecordSize) {
        if (!IsUsed(*stored))
            continue;
        DirectoryRecord record(stored);
        record.Check_Fixed_Validity();
        if (!IsSelected(record, option))
            continue;
        if (!TakeRecord(record, option, position, nullptr))
            break;
        records.StreamMoved();
        list.Add(*new DirectoryRecord(record));
        some = true;
    }
    return some;
}

// Record by record: what `idle`, a container and other programs change behind the reader must be
// seen. Returns whether any was taken.
bool DirectoryFile::TakeOneByOne(ContainerTail<DirectoryRecord>& list, void (*idle)(),
                                 enumGetDDROptions option) {
    bool some = false;
    bool taken = false;
    std::unique_ptr<DirectoryRecord> spare;
    for (long position = kScanStart; good(); position += keRecordSize) {
        if (!spare)
            spare.reset(new DirectoryRecord);
        // Seek: drops what the stream has read ahead, which another program may have changed.
        if (!taken)
            seekg(position);
        taken = false;
        if (!(*this >> *spare).good() || !spare->isUsed())
            continue;
        CallIdle(idle);
        if (IsSelected(*spare, option) && TakeRecord(*spare, option, position, idle)) {
            list.Add(*spare.release());
            some = taken = true;
        }
    }
    return some;
}

bool DirectoryFile::IsSelected(DirectoryRecord& record, enumGetDDROptions option) {
    return option == keGetInstallRequests ? record.Record().status & keStatusInstallRequest
                                          : OkToProcess(&record, option);
}

// Marks the record just read as taken and writes it back to its place.
bool DirectoryFile::TakeRecord(DirectoryRecord& record, enumGetDDROptions option, long position,
                               void (*idle)()) {
    MoveTo(position);
    CallIdle(idle);
    FileLock lock;
    // Read without the lock, it may have been taken by another program since.
    if (idle && (lock.Take(*this) == keLockTimedOut || !ReadAgain(record, position) ||
                 !IsSelected(record, option)))
        return false;
    if (option == keGetInstallRequests)
        record.Record().status &= ~keStatusInstallRequest;
    else
        record.Record().attributes |= kTaken;
    // Flush: what the caller gets must be marked even when the program is killed.
    if (!(*this << record).flush())
        return false;
    lock.Release();
    CallIdle(idle);
    return true;
}

// Reads the record at `position` anew and goes back to it; false when it is not used any more.
bool DirectoryFile::ReadAgain(DirectoryRecord& record, long position) {
    return MoveTo(position) && (*this >> record).good() && record.isUsed() && MoveTo(position);
}

void DirectoryFile::GetInstallableDDRs(RB_Container<DirectoryRecord>* list) {
    GetUnprocessedDDRs(list, nullptr, keGetInstallRequests);
}

void DirectoryFile::DeleteOldMail(unsigned long age, int onlyProcessed, DirectoryFile* target) {
    if (mType != keDirFolder)
        return;
    const DayTime now;
    FileLock lock;
    bool sound = OpenToChange(lock, keOpenUpdate);
    lock.Release();
    // What is appended meanwhile was moved just now: the target may be this very file.
    const long size = sound ? FileSize() : 0;
    sound = sound && MoveTo(kScanStart);
    for (long position = kScanStart; sound && position < size; position += keRecordSize) {
        DirectoryRecord record;
        if (!(*this >> record).good()) {
            sound = AtEnd();
            break;
        }
        if (!record.isUsed())
            continue;
        const DayTime filed(FlipLong(record.Record().date), keDayTimeMac);
        const bool old = static_cast<unsigned long long>(filed.Seconds()) + age < now.Seconds();
        if (!old || (onlyProcessed && !(record.Record().status & keStatusProcessed)))
            continue;
        sound = target && MoveMessage(record, *target, position);
        // Wherever that has left the stream.
        sound = sound && MoveTo(position + keRecordSize);
    }
    if (isOpen())
        close();
    if (!sound)
        kReports.Fail("Error DirectoryFile: DeleteOldMail()");
}

// Takes the locks of two files in an order that is the same for every program, so that two that
// move messages in opposite directions do not wait for one another.
static bool TakeBoth(const RbFile& one, FileLock& first, const RbFile& other, FileLock& second) {
    const bool inOrder = OpenedName(one) < OpenedName(other);
    return first.Take(inOrder ? one : other) != keLockTimedOut &&
           second.Take(inOrder ? other : one) != keLockTimedOut;
}

// Moves one message into the target's folder and frees its slot. Another program may have done so,
// or changed the record, since it was read.
bool DirectoryFile::MoveMessage(DirectoryRecord& record, DirectoryFile& target, long position) {
    FileLock first;
    FileLock second;
    if (!TakeBoth(*this, first, target, second))
        return false;
    DirectoryRecord now;
    if (!ReadAgain(now, position))
        return AtEnd() || good();
    if (!(now == record))
        return true;
    RbFile message;
    RbFile moved;
    // What is no file of this folder is no message, and stays where it is: a folder, a link.
    if (!MessageFile(now, message) || message.DirectoryExists() || IsLink(message) ||
        !HashUniqueFileName(&moved, target, ".EML") || !DiskDriver::Rename(message, moved) ||
        !target.AddMessage(&moved))
        return false;
    now.Record().used = 0;
    return MoveTo(position) && (*this << now).flush();
}

void DirectoryFile::UpdateDFile() {
    FileLock lock;
    if (!OpenToChange(lock, keOpenUpdate))
        return;
    const bool sound = mType == keDirMessages ? DropFreeSlots() : CutFreeSlots();
    close();
    if (!sound)
        kReports.Fail("Error copy file: DirectoryFile");
}

// Copies the file for a rewrite of it; reports why it could not.
static bool CopyWhole(DirectoryFile& file, RbFile& copy) {
    const bool opened = copy.Open(keOpenIn | keOpenOut | keOpenBinary);
    switch (opened ? copy.Copy(file, 0, nullptr, keDupLargeBuffer) : int{keCopyTargetNotOpen}) {
    case keCopyReadFailed:
        kReports.Fail("Error DirectoryFile copy: source file");
        return false;
    case keCopyWriteFailed:
        kReports.Fail("Error DirectoryFile copy: destination file");
        return false;
    case keCopyTargetNotOpen:
        kReports.Fail("Error DirectoryFile copy: OPEN destination file");
        return false;
    case keCopyDone:
        return true;
    default:
        return false;
    }
}

// Rewrites the file in place from a copy. The copy is whole before the file is cut, and stays where
// it alone has all records.
bool DirectoryFile::DropFreeSlots() {
    TemporaryFile copy(".TMP", 0, keTempExtension);
    bool isWhole = true;
    bool sound = true;
    if (CopyWhole(*this, copy)) {
        copy.clear();
        copy.seekg(0);
        MoveTo(0);
        UpdateFile();
        // A file that could not be cut is whole: nothing is written over it.
        isWhole = FileSize() != 0;
        sound = !isWhole && WriteUsedRecords(copy);
    }
    copy.close();
    if (copy.IsValid() && (isWhole || sound))
        copy.ImpRemove();
    return sound;
}

bool DirectoryFile::WriteUsedRecords(RbFile& copy) {
    MoveTo(0);
    RecordReader records(copy);
    while (DiskDirRec* record = good() ? records.Next() : nullptr)
        if (record->used)
            *this << *record;
    return flush() && copy.eof() && !copy.bad();
}

bool DirectoryFile::CutFreeSlots() {
    long size = FileSize();
    // A file that ends inside a slot has no free slot at its end.
    if (size >= keRecordSize && size % keRecordSize)
        return true;
    while (size != keRecordSize) {
        const long lastSlot = size - keRecordSize;
        DirectoryRecord record;
        if (lastSlot < 0 || !MoveTo(lastSlot) || !(*this >> record).good())
            return false;
        if (record.Record().used)
            break;
        MoveTo(lastSlot);
        UpdateFile();
        size = FileSize();
        // A file that another program maps cannot be cut.
        if (size != lastSlot)
            return false;
    }
    return true;
}

int DirectoryFile::GetDFile(RbFile& copy) {
    if (mType == keDirMessages)
        return false;
    mfCopied = fGood = 1;
    miUsed = miUnprocessed = 0;
    if (!Open(keOpenUpdate))
        return miUsed;
    const ClosedAtEnd closed(*this);
    const ClosedAtEnd copyClosed(copy);
    fGood = copy.Open(keOpenIn | keOpenOut | keOpenTrunc | keOpenBinary);
    kReports.Check(fGood, "fGood");
    if (fGood) {
        MoveTo(kScanStart);
        RecordReader records(*this);
        // Free slots count, so that a number tells where the record stands.
        for (unsigned int slot = 1; copy.good(); ++slot) {
            DiskDirRec* const stored = records.Next();
            if (!stored)
                break;
            ClampRecord(*stored);
            if (!IsUsed(*stored))
                continue;
            stored->index = static_cast<short>(slot);
            if (!(copy << *stored))
                break;
            ++miUsed;
            if (!(stored->status & keStatusProcessed))
                ++miUnprocessed;
        }
        fGood = copy.flush() && AtEnd();
    }
    kReports.Check(fGood, "fGood", "Error DirectoryFile: GetDFile()");
    return miUsed;
}
