// BaseDirFile: what the user's actions change in the records, and keeping the file tidy.

#include <cstring>

#include "resident/files/disk_driver.h"
#include "resident/files/oem_name.h"
#include "resident/runtime/check.h"
#include "system/store/base_dir_file.h"
#include "system/store/record_reader.h"

static const char kSource[] = "JXSYSTEM\\DIRFL_BS.CPP";

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
    const RBString name = record.FileName();
    // As it crosses to the file system too: the conversion knows fewer characters, and makes dots
    // of some that it does not know.
    const OemName oemName(name.Text());
    if (!IsPlainName(name.Text()) || !oemName || !IsPlainName(oemName.Text()))
        return false;
    file = Beside(name.Text());
    return true;
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
    if (!Open(keOpenUpdate)) {
        JX_FAIL("Error BaseDirFile: MarkRecord(), can't open file");
        return 0;
    }
    int marked = 0;
    DirectoryRecord stored;
    // A probe that is not in the file gives -2, which passes here and fails as a position below:
    // the two reports are what callers know.
    const long position = AlterDirectoryBlock(probe, stored, 0);
    if (position != keDirError) {
        Mark(stored.Record(), action);
        marked = AlterDirectoryBlock(stored, position, 1) != keDirError;
    }
    close();
    return marked;
}

int BaseDirFile::DeleteMail(DirectoryRecord& probe) {
    Open(keOpenUpdate);
    int deleted = 0;
    DirectoryRecord stored;
    // As in MarkRecord, -2 goes on and fails as a position.
    const long position = AlterDirectoryBlock(probe, stored, 0);
    if (position != keDirError) {
        stored.Record().used = 0;
        RbFile message;
        const bool gone =
            !MessageFile(stored, message) || !message.Exists() || message.Remove() == keDELETE_OK;
        deleted = gone && AlterDirectoryBlock(stored, position, 1) != keDirError;
    }
    if (isOpen())
        close();
    return deleted;
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

static constexpr unsigned int kCopyBuffer = 0x10000;

int BaseDirFile::CompressDFile() {
    FileSpec backup = WithExtension(*this, ".BAK");
    RbFile compressed;
    // A file that has the backup's name would be removed as an older backup.
    if (IsSameFile(backup) || !HashUniqueFileName(&compressed, *this, ".TMP"))
        return 0;
    bool copied = false;
    {
        const std::unique_ptr<char[]> buffer(new char[kCopyBuffer]);
        compressed.rdbuf()->pubsetbuf(buffer.get(), kCopyBuffer);
        if (Open(keOpenRead) && compressed.Open(keOpenWrite))
            copied = CopyUsedRecords(compressed, [](DiskDirRec&) {});
        if (isOpen())
            close();
        if (compressed.isOpen())
            compressed.close();
    }
    if (!copied) {
        DiskDriver::RemoveFile(compressed);
        return 0;
    }

    DiskDriver::RemoveFile(backup);
    if (!DiskDriver::Rename(*this, backup)) {
        DiskDriver::RemoveFile(compressed);
        return 0;
    }
    if (!DiskDriver::Rename(compressed, *this)) {
        // The old file goes back. Where even that fails the backup is the only copy, and stays.
        DiskDriver::Rename(backup, *this);
        DiskDriver::RemoveFile(compressed);
        return 0;
    }
    // A read-only file's backup is read-only as well.
    RbFile(backup).ImpRemove();
    return 1;
}

int BaseDirFile::GetUIDList(RB_Container<JxDownloadItem>* list) {
    if (!Open(keOpenUpdate)) {
        JX_FAIL("Can't open Inbox D File");
        return 0;
    }
    MoveTo(FirstRecord());
    RecordReader records(*this);
    while (DiskDirRec* stored = records.Next()) {
        if (!IsUsed(*stored))
            continue;
        const DirectoryRecord record(stored);
        if (record.MessageID().Length())
            list->AddObject(*new JxDownloadItem(record.MessageID()));
    }
    const int result = AtEnd();
    if (result)
        clear();
    close();
    return result;
}

int BaseDirFile::RemoveAllMessageIDs(enumRemoveOptions option) {
    if (mType == keDirForeign)
        return 0;
    miUsed = miUnprocessed = 0;
    BaseDirFile stripped(mType);
    static_cast<FileSpec&>(stripped) = WithExtension(*this, ".TMP");
    FileSpec backup = WithExtension(*this, ".BAK");
    // Neither of the two that are made may be this file itself.
    const bool namesFree = !IsSameFile(stripped) && !IsSameFile(backup);
    bool made = false;
    bool copied = false;
    if (namesFree && Open(keOpenIn | keOpenBinary)) {
        made = stripped.Open(keOpenWrite);
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
    }

    int result = 0;
    if (copied) {
        DiskDriver::RemoveFile(backup);
        // When the second rename fails, the D file stays under its backup's name.
        if (DiskDriver::Rename(*this, backup))
            result = DiskDriver::Rename(stripped, *this);
        else
            DiskDriver::RemoveFile(stripped);
    } else if (made) {
        DiskDriver::RemoveFile(stripped);
    }
    if (!result)
        JX_FAIL("Error BaseDirFile: RemoveAllMessageIDs()");
    return result;
}
