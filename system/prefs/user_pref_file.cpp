#include "system/prefs/user_pref_file.h"

#include <cstring>

#include "postrider_ticker.h"
#include "resident/files/disk_driver.h"
#include "resident/files/file_identity.h"
#include "resident/files/file_replacement.h"
#include "resources/jxsysres.h"

static constexpr int kOpenReadWrite = keOpenIn | keOpenOut | keOpenBinary;
static constexpr long kHeaderSize = 46;
static constexpr unsigned int kCaption = 110;
static constexpr unsigned int kFirstMessage = 604; // that of UserPrefError 0

static const char kMagic[] = "PREFRBSW";

// The scrambling key of the format, the same in every program that shares the files.
static constexpr unsigned char kKey[20] = {0x3D, 0xA7, 0x52, 0xEC, 0x19, 0x8B, 0xF4,
                                           0x66, 0x21, 0xD9, 0x0E, 0x73, 0xB5, 0x48,
                                           0x9C, 0xC1, 0x2F, 0xE3, 0x5A, 0x84};

static unsigned int Count(const JXExtendDatHeader& header) {
    return static_cast<unsigned short>(header.number);
}

unsigned long AppRecHeader::Offset() const {
    return static_cast<unsigned long>(static_cast<unsigned short>(offset[0])) << 16 |
           static_cast<unsigned short>(offset[1]);
}

void AppRecHeader::SetOffset(unsigned long value) {
    offset[0] = static_cast<short>(value >> 16);
    offset[1] = static_cast<short>(value & 0xFFFF);
}

std::ostream& operator<<(std::ostream& out, AppRecHeader& record) {
    return out.write(reinterpret_cast<const char*>(&record), sizeof record);
}

std::istream& operator>>(std::istream& in, AppRecHeader& record) {
    return in.read(reinterpret_cast<char*>(&record), sizeof record);
}

UserPrefFile::UserPrefFile() : UserPrefFile(nullptr, 0, 0, 0) {}

UserPrefFile::UserPrefFile(void* buffer, unsigned short id, unsigned short size,
                           unsigned short version)
    : miOpenMode(keOpenIn | keOpenBinary), moRecord(), moTag{id, version, size, buffer} {}

UserPrefFile::~UserPrefFile() = default;

UserPrefFile& UserPrefFile::operator=(const UserPrefFile& other) {
    PreferenceFile::operator=(other);
    mStatus = other.mStatus;
    miOpenMode = other.miOpenMode;
    mFlags = other.mFlags;
    moHeader = other.moHeader;
    moRecord = other.moRecord;
    moTag = other.moTag;
    return *this;
}

int UserPrefFile::ShowFileMessage(unsigned int textId, const char* path) {
    // A share: `path` may be a text that is rebuilt meanwhile.
    const RBString kept(path);
    PrintError(textId, kCaption, 0, GetJxSystemResHandle(), kept.Text());
    return false;
}

int UserPrefFile::FileError(UserPrefError code) {
    return code == kePrefCloseError ? 0 : ShowFileMessage(kFirstMessage + code, FullFileSpec());
}

bool UserPrefFile::Reopen(int mode) {
    ClosePrefFile();
    clear();
    const std::wstring name = OpenedName(*this);
    FileLock lock;
    enumFileLockResult taken = lock.Take(*this);
    if (mode & keOpenOut) {
        // What is not there is made here: opening it would follow a link that leads nowhere yet.
        if (taken == keLockNoFile && !(mode & keOpenNoCreate) && MakeNewFile(name.c_str()))
            taken = lock.Take(*this);
        mode |= keOpenNoCreate;
    }
    if (taken != keLockTimedOut && !((mode & keOpenOut) && IsLink(name.c_str())))
        return Open(mode);
    setstate(std::ios::badbit | std::ios::failbit);
    return false;
}

bool UserPrefFile::LockOpened(FileLock& lock) {
    // A stream that was opened by another name than the specification's has no lock, and goes on:
    // nobody renames its file while it is open.
    if (!isOpen() || lock.Take(*this, 0) != keLockTimedOut)
        return true;
    ClosePrefFile();
    clear();
    return (lock.Take(*this) == keLockTaken && Open(kOpenReadWrite | keOpenNoCreate)) ||
           FileError(kePrefOpenError);
}

bool UserPrefFile::MoveTo(long position) {
    clear();
    seekg(position);
    return good();
}

long UserPrefFile::FileSize() {
    clear();
    seekg(0, std::ios::end);
    return tellg();
}

int UserPrefFile::OpenPrefFile() {
    return Reopen(kOpenReadWrite | keOpenNoCreate) ? 1 : FileError(kePrefOpenError);
}

int UserPrefFile::CreatePrefsFile(const char* name) {
    static_assert(sizeof moHeader.first + sizeof moHeader.second == sizeof kMagic - 1);
    moHeader = JXExtendDatHeader();
    std::memcpy(&moHeader.first, kMagic, sizeof moHeader.first);
    std::memcpy(&moHeader.second, kMagic + sizeof moHeader.first, sizeof moHeader.second);
    moHeader.word = moTag.version;
    moHeader.SetName(name);
    mFlags |= keSkipNextRead;
    // A refused name makes no file: its accepted parts would name another one.
    if (name && *name && SetSpecPart(name, keAsParts) != keSpecOk)
        return ShowFileMessage(keMessageCreate, name);
    FileLock lock;
    if (!Reopen(kOpenReadWrite | keOpenTrunc) || !LockOpened(lock))
        return ShowFileMessage(keMessageCreate, FullFileSpec());
    return UpdateHeader() && WritePrefBuffer(moTag);
}

void UserPrefFile::Encode(AppPrefTag& tag) {
    auto* const bytes = static_cast<unsigned char*>(tag.buffer);
    unsigned int key = sizeof kKey;
    for (unsigned int i = tag.size; bytes && i > 0; --i) {
        bytes[i - 1] ^= kKey[--key];
        if (key == 0)
            key = sizeof kKey;
    }
}

int UserPrefFile::ReadAppHeader(unsigned int id) {
    mStatus &= ~keRecordFound;
    if (!MoveTo(0))
        return FileError(kePrefSeekError);
    if (!(*this >> moHeader))
        return FileError(kePrefReadError);
    for (unsigned int i = 0; i < Count(moHeader); ++i) {
        AppRecHeader record;
        if (!(*this >> record))
            return FileError(kePrefReadError);
        if (record.id == id) {
            moRecord = record;
            mStatus |= keRecordFound;
            break;
        }
    }
    return true;
}

int UserPrefFile::ReadPrefBuffer(AppPrefTag& tag, long offset) {
    if (offset < 0 || !MoveTo(offset))
        return FileError(kePrefSeekError);
    if (!tag.buffer)
        return FileError(kePrefReadError);
    read(static_cast<char*>(tag.buffer), tag.size);
    return good() ? 1 : FileError(kePrefReadError);
}

int UserPrefFile::ReadAppPrefs(AppPrefTag& tag, int create) {
    if (mFlags & keSkipNextRead) {
        mFlags &= ~keSkipNextRead;
        return true;
    }
    if (!ReadAppHeader(tag.id))
        return false;
    int result = 0;
    if (mStatus & keRecordFound) {
        result = ReadPrefBuffer(tag, static_cast<long>(moRecord.Offset()));
    } else if (create && Reopen(kOpenReadWrite)) {
        // This and the first Encode of WriteAppPrefs cancel out: a new block is written
        // unscrambled, and readers of the file rely on it.
        Encode(tag);
        result = WriteAppPrefs(tag);
    }
    Encode(tag);
    return result;
}

int UserPrefFile::WriteAppPrefs(AppPrefTag& tag) {
    Encode(tag);
    const int result = WritePrefBuffer(tag);
    Encode(tag);
    return result;
}

int UserPrefFile::WritePrefBuffer(AppPrefTag& tag) {
    FileLock lock;
    FileLock rebuilt;
    if (!LockOpened(lock) || !ReadAppHeader(tag.id))
        return false;
    const auto* const block = static_cast<const char*>(tag.buffer);
    if (!block && tag.size)
        return FileError(kePrefWriteError);
    if (mStatus & keRecordFound) {
        if (static_cast<unsigned short>(moRecord.size) == tag.size) {
            // A block stands behind the directory, and begins within the file.
            const long directoryEnd =
                kHeaderSize + static_cast<long>(Count(moHeader) * sizeof moRecord);
            const unsigned long offset = moRecord.Offset();
            if (offset < static_cast<unsigned long>(directoryEnd) ||
                offset > static_cast<unsigned long>(FileSize()) ||
                !MoveTo(static_cast<long>(offset)))
                return FileError(kePrefSeekError);
            if (!write(block, tag.size))
                return FileError(kePrefWriteError);
        }
        return UpdateHeader();
    }

    // Cuts off what a first block left that was never counted: its record would pass for the one
    // that is added.
    if (IsFirstBlockUncounted() && MoveTo(kHeaderSize))
        UpdateFile();
    const long fileEnd = FileSize();
    if (fileEnd < 0)
        return FileError(kePrefSeekError);
    // One record more than the header can count would lose them all.
    if (Count(moHeader) == 0xFFFF)
        return FileError(kePrefWriteError);
    moRecord = AppRecHeader();
    moRecord.id = tag.id;
    moRecord.version = tag.version;
    moRecord.size = static_cast<short>(tag.size);
    moRecord.SetOffset(static_cast<unsigned long>(fileEnd) + sizeof moRecord);
    ++moHeader.number;
    moRecord.ordinal = moHeader.number;
    if (Count(moHeader) == 1) {
        if (!(*this << moRecord) || !write(block, tag.size))
            return FileError(kePrefWriteError);
    } else if (!Rebuild(moRecord, tag, rebuilt)) {
        return false;
    } else if (!Reopen(kOpenReadWrite)) {
        return FileError(kePrefOpenError);
    }
    return UpdateHeader();
}

// Whether the adding of the file's first block was broken off before it was counted: what stands
// behind the header is that block or a part of it. Blocks of a damaged file are not taken for it.
bool UserPrefFile::IsFirstBlockUncounted() {
    const long rest = FileSize() - kHeaderSize;
    AppRecHeader first;
    const long recordSize = sizeof first;
    if (Count(moHeader) != 0 || rest <= 0)
        return false;
    if (rest < recordSize)
        return true;
    return MoveTo(kHeaderSize) && *this >> first && first.ordinal == 1 &&
           first.Offset() == static_cast<unsigned long>(kHeaderSize + recordSize) &&
           rest <= recordSize + static_cast<unsigned short>(first.size);
}

int UserPrefFile::InsertPrefRec(AppRecHeader& record, AppPrefTag& tag) {
    FileLock rebuilt;
    return Rebuild(record, tag, rebuilt);
}

// The rebuilt file is locked before it gets the file's name, so that no other program comes
// between.
bool UserPrefFile::Rebuild(AppRecHeader& record, AppPrefTag& tag, FileLock& rebuilt) {
    RbFile copy(Beside("RB.BAK"));
    // The exchange renames through these two: a file that has either name cannot be rebuilt.
    if (IsSameFile(copy) || IsSameFile(Beside("RB.TMP")) || !OpenAnew(copy))
        return ShowFileMessage(kFirstMessage, copy.FullFileSpec());
    const bool copied = CopyWithRecord(copy, record, tag);
    copy.close();
    if (!copied)
        return false;
    if (copy.fail())
        return FileError(kePrefCloseError);
    rebuilt.Take(WideName(copy).c_str());
    return PutInPlace(copy);
}

// Writes the file with the new record behind the others, whose blocks so move on by its size, and
// the new block at the end.
bool UserPrefFile::CopyWithRecord(RbFile& copy, AppRecHeader& record, AppPrefTag& tag) {
    const long length = FileSize();
    if (!(copy << moHeader))
        return FileError(kePrefWriteError);
    if (!MoveTo(kHeaderSize))
        return FileError(kePrefSeekError);
    for (unsigned int i = 1; i < Count(moHeader); ++i) {
        AppRecHeader existing;
        if (!(*this >> existing))
            return FileError(kePrefReadError);
        existing.SetOffset(existing.Offset() + sizeof existing);
        if (!(copy << existing))
            return FileError(kePrefWriteError);
    }
    if (!(copy << record))
        return FileError(kePrefWriteError);
    // All that is left.
    switch (copy.DupStream(*this, length, nullptr, keDupLargeBuffer)) {
    case keCopyWriteFailed:
        return ShowFileMessage(keMessageAccess, copy.FullFileSpec());
    case keCopyReadFailed:
        return ShowFileMessage(keMessageAccess, FullFileSpec());
    default:
        break;
    }
    if (!copy.write(static_cast<const char*>(tag.buffer), tag.size) || !copy.flush())
        return FileError(kePrefWriteError);
    return true;
}

// Exchanges the file and its rebuilt copy, which gives its name to the old file.
bool UserPrefFile::PutInPlace(RbFile& copy) {
    ClosePrefFile();
    FileSpec aside = Beside("RB.TMP");
    if (!ReplaceFileBy(copy, *this, aside, keReplaceKeepNew))
        return false;
    DiskDriver::Rename(aside, copy);
    return true;
}

int UserPrefFile::UpdateHeader() {
    if (!MoveTo(0))
        return FileError(kePrefSeekError);
    if (!(*this << moHeader) || !flush())
        return FileError(kePrefWriteError);
    return true;
}
