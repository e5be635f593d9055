// BaseDirFile: what the user's actions change in the records, and keeping the file tidy.

#include <cstring>

#include "resident/core/list_tail.h"
#include "resident/files/disk_driver.h"
#include "resident/files/file_identity.h"
#include "resident/files/file_replacement.h"
#include "resident/files/oem_name.h"
#include "resident/runtime/check.h"
#include "system/store/base_dir_file.h"
#include "system/store/borrowed_file.h"
#include "system/store/record_reader.h"

static constexpr Reporter kReports("JXSYSTEM\\DIRFL_BS.CPP");

// Whether a name is a plain one: one that, put behind any folder, is a file of that folder.
static bool IsPlainName(const char* name) {
    if (!*name || std::strpbrk(name, "\\/:*?\"<>|"))
        return false;
    for (const char* p = name; *p; ++p)
        if (static_cast<unsigned char>(*p) < 0x20)
            return false;
    // Dots and blanks at a name's end fall away: what is left of it, if anything, is another name.
    const char last = name[std::strlen(name) - 1];
    if (last == '.' || last == ' ')
        return false;
    // A device's name opens the device in every folder.
    const std::size_t length = std::strcspn(name, ". ");
    const auto is = [&](const char* device, std::size_t size) {
        return length == size && _strnicmp(name, device, std::strlen(device)) == 0;
    };
    for (const char* device : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"})
        if (is(device, std::strlen(device)))
            return false;
    return !(is("COM", 4) || is("LPT", 4)) || name[3] < '1' || name[3] > '9';
}

bool BaseDirFile::MessageFile(const DirectoryRecord& record, FileSpec& file) const {
    RBString name = record.FileName();
    // A lone dot at the end is no part of the file's name: "LETTER." is the file LETTER.
    const unsigned int length = name.Length();
    const bool loneDot =
        length > 1 && name.Text()[length - 1] == '.' && name.Text()[length - 2] != '.';
    if (loneDot)
        name.Truncate(length - 1);
    // As it crosses to the file system too: the conversion knows fewer characters, and makes dots
    // of some that it does not know.
    const OemName oemName(name.Text());
    if (!IsPlainName(name.Text()) || !oemName || !IsPlainName(oemName.Text()))
        return false;
    file = Beside(name.Text());
    return !loneDot || !DiskDriver::FileExists(file, keAttrDirectory);
}

// Applies an action of MarkRecord.
static void Mark(DiskDirRec& record, enumMarkMailAction action) {
    switch (action) {
    case keMarkProcessed:
        record.status |= keStatusProcessed;
        record.status &= ~keStatusReturnReceipt;
        break;
    case keMarkUnprocessed:
        record.status &= ~keStatusProcessed;
        break;
    case keMarkUnused:
        record.used = 0;
        break;
    case keMarkSet0400:
        record.attributes |= 0x0400;
        break;
    case keMarkClear0400:
        record.attributes &= ~0x0400;
        break;
    case keMarkSet0100:
        record.attributes &= ~0x0400;
        record.attributes |= 0x0100;
        break;
    case keMarkSet0200:
        record.attributes &= ~0x0700;
        record.attributes |= 0x0200;
        break;
    case keMarkClearReceipt:
        record.status &= ~keStatusReturnReceipt;
        break;
    case keMarkClear0700:
        record.attributes &= ~0x0700;
        break;
    }
}

int BaseDirFile::MarkRecord(DirectoryRecord& probe, enumMarkMailAction action) {
    FileLock lock;
    if (!OpenToChange(lock, keOpenUpdate)) {
        kReports.Fail("Error BaseDirFile: MarkRecord(), can't open file");
        return false;
    }
    const ClosedAtEnd closed(*this);
    DirectoryRecord stored;
    // A probe that is not in the file gives -2, which passes here and fails as a position below:
    // the two reports are what callers know.
    const long position = AlterDirectoryBlock(probe, stored, false);
    if (position == keDirError)
        return false;
    Mark(stored.Record(), action);
    return AlterDirectoryBlock(stored, position, true) != keDirError;
}

int BaseDirFile::DeleteMail(DirectoryRecord& probe) {
    FileLock lock;
    const ClosedAtEnd closed(*this);
    OpenToChange(lock, keOpenUpdate);
    DirectoryRecord stored;
    // As in MarkRecord, -2 goes on and fails as a position.
    const long position = AlterDirectoryBlock(probe, stored, false);
    if (position == keDirError)
        return false;
    stored.Record().used = 0;
    RbFile message;
    // What a link leads to is not this folder's to remove.
    const bool gone = !MessageFile(stored, message) || !message.Exists() ||
                      (!IsLink(message) && message.Remove() == keDELETE_OK);
    return gone && AlterDirectoryBlock(stored, position, true) != keDirError;
}

void BaseDirFile::MarkUnUsed(DirectoryRecord& probe, unsigned int) {
    MarkRecord(probe, keMarkUnused);
}

void BaseDirFile::MarkMail(DirectoryRecord& probe, int unmark) {
    MarkRecord(probe, unmark ? keMarkUnprocessed : keMarkProcessed);
}

int BaseDirFile::ClearReturnReceipt(DirectoryRecord& probe) {
    return probe.Record().status & keStatusReturnReceipt ? MarkRecord(probe, keMarkClearReceipt)
                                                         : 1;
}

template <class Change>
bool BaseDirFile::CopyUsedRecords(RbFile& copy, Change change) {
    if (mType != keDirMessages)
        WriteHeader(copy);
    RecordReader records(*this);
    while (DiskDirRec* stored = copy.good() ? records.Next() : nullptr) {
        // A header of zeros is a record that is not used.
        ClampRecord(*stored);
        if (!IsUsed(*stored))
            continue;
        change(*stored);
        copy << *stored;
    }
    return copy.flush() && AtEnd();
}

// The same file under another extension.
static FileSpec WithExtension(const FileSpec& file, const char* ext) {
    FileSpec other(file);
    other.SetFileExt(ext);
    return other;
}

static void MakeWritable(const FileSpec& file) {
    const std::wstring name = WideName(file);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES)
        SetFileAttributesW(name.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
}

static constexpr unsigned int kCopyBuffer = 0x10000;

int BaseDirFile::CompressDFile() {
    const FileSpec backup = WithExtension(*this, ".BAK");
    RbFile compressed;
    FileLock lock;
    // A file that has the backup's name would be removed as an older backup.
    if (IsSameFile(backup) || !MakeUniqueFile(&compressed, *this, ".TMP"))
        return false;
    bool copied = false;
    {
        const std::unique_ptr<char[]> buffer(new char[kCopyBuffer]);
        compressed.rdbuf()->pubsetbuf(buffer.get(), kCopyBuffer);
        const ClosedAtEnd copyClosed(compressed);
        const ClosedAtEnd closed(*this);
        if (OpenToChange(lock, keOpenRead) && compressed.Open(keOpenWrite))
            copied = CopyUsedRecords(compressed, [](DiskDirRec&) {});
    }
    if (!copied) {
        DiskDriver::RemoveFile(compressed);
        return false;
    }

    return ReplaceFileBy(compressed, *this, backup, keReplaceDropBackup);
}

int BaseDirFile::GetUIDList(RB_Container<JxDownloadItem>* list) {
    if (!Open(keOpenUpdate)) {
        kReports.Fail("Can't open Inbox D File");
        return false;
    }
    const ClosedAtEnd closed(*this);
    MoveTo(FirstRecord());
    ContainerTail<JxDownloadItem> items(list);
    RecordReader records(*this);
    while (DiskDirRec* stored = records.Next()) {
        if (!IsUsed(*stored))
            continue;
        const DirectoryRecord record(stored);
        if (record.MessageID().Length())
            items.Add(*new JxDownloadItem(record.MessageID()));
    }
    const int result = AtEnd();
    if (result)
        clear();
    return result;
}

int BaseDirFile::RemoveAllMessageIDs(enumRemoveOptions option) {
    if (mType == keDirForeign)
        return false;
    miUsed = miUnprocessed = 0;
    BaseDirFile stripped(mType);
    static_cast<FileSpec&>(stripped) = WithExtension(*this, ".TMP");
    const FileSpec backup = WithExtension(*this, ".BAK");
    // Neither of the two that are made may be this file itself.
    const bool namesFree = !IsSameFile(stripped) && !IsSameFile(backup);
    FileLock lock;
    bool copied = false;
    if (namesFree && OpenToChange(lock, keOpenIn | keOpenBinary)) {
        const bool made = OpenAnew(stripped);
        if (made) {
            copied = CopyUsedRecords(stripped, [option](DiskDirRec& stored) {
                if (option == keRemoveUnkept && (stored.status & keStatusKeepMessageID))
                    return;
                DirectoryRecord record(&stored);
                record.SetMessageID(nullptr);
                stored = record.Record();
            });
            stripped.close();
        }
        close();
        if (made && !copied)
            DiskDriver::RemoveFile(stripped);
    }
    const int result = copied && ReplaceFileBy(stripped, *this, backup, keReplaceNoWayBack);
    // A read-only backup would block every later rewriting.
    if (result)
        MakeWritable(backup);
    if (!result)
        kReports.Fail("Error BaseDirFile: RemoveAllMessageIDs()");
    return result;
}
