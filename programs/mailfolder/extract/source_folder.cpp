#include "programs/mailfolder/extract/source_folder.h"

#include <algorithm>
#include <cstring>

#include "programs/mailfolder/extract/message_file.h"
#include "programs/mailfolder/kind.h"

namespace extract {

static constexpr unsigned long kSlot = sizeof(DiskDirRec);
static constexpr const wchar_t* kDFileNames[] = {L"DFile", L"MFile"};

// Names in records are ANSI. A byte that has no meaning there leads to no file.
static std::wstring FileNameOf(const DiskDirRec& record) {
    const std::size_t length =
        std::min<std::size_t>(record.fileName[0], DiskDirRec::keFileNameSize - 1);
    std::wstring name(length, L'\0');
    name.resize(MultiByteToWideChar(CP_ACP, 0, reinterpret_cast<const char*>(record.fileName) + 1,
                                    static_cast<int>(length), name.data(),
                                    static_cast<int>(length)));
    return name;
}

// A lone dot at the end is no part of a name on the disk.
static std::wstring NameOnDisk(std::wstring name) {
    if (name.size() > 1 && name.back() == L'.' && name != L"..")
        name.pop_back();
    return name;
}

// FNV-1a, 64 bits.
static unsigned long long KeyOf(std::wstring_view name) {
    unsigned long long key = 0xCBF29CE484222325ull;
    for (const wchar_t c : name)
        key = (key ^ c) * 0x100000001B3ull;
    return key;
}

static bool IsEmpty(const DiskDirRec& record) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&record);
    return std::all_of(bytes, bytes + sizeof record, [](unsigned char byte) { return byte == 0; });
}

// What stands in slot 0 is a record when it names a file; a header has no name there.
static bool IsHeader(const DiskDirRec& first) {
    return first.fileName[0] == 0 || first.fileName[0] >= DiskDirRec::keFileNameSize;
}

bool SameMessage(const DiskDirRec& left, const DiskDirRec& right) {
    DirectoryRecord records[] = {DirectoryRecord(&left), DirectoryRecord(&right)};
    for (DirectoryRecord& record : records) {
        record.Check_Fixed_Validity();
        record.FixTopicAndIndex();
        record.Record().used = 1;
        record.Record().fileName[0] = 0;
    }
    return records[0] == records[1];
}

SourceFolder::SourceFolder(const Path& argument) {
    const Path path = argument.AsItStands();
    if (!Exists(path))
        Fail("Cannot read {}: there is no such file.", path.Shown());
    const bool isFolder = IsFolder(path);
    mFolder = isFolder ? path : path.Folder();
    const FileHandle opened = OpenShared(mFolder.Full());
    mFinal = opened ? FinalPath(opened) : std::wstring();
    if (mFinal.empty())
        Fail("Cannot read {}: {}.", mFolder.Shown(), LastErrorText());
    if (!isFolder)
        mDFileName = path.Name();
    else
        for (const wchar_t* name : kDFileNames)
            if (mDFileName.empty() && Exists(path.Child(name)))
                mDFileName = name;
    OpenDFile(!isFolder);
}

// Of a damaged D file every record is looked at; of what is something else none.
static std::string WhyNoDFile(const Path& path) {
    try {
        const Kind kind = KindOf(path);
        const bool mayBe = kind == Kind::DFile || kind == Kind::Empty || kind == Kind::Other;
        return mayBe ? "" : std::string("it looks like ") + Words(kind);
    } catch (const Failure&) {
        return "it cannot be read";
    }
}

void SourceFolder::OpenDFile(bool namedItself) {
    if (mDFileName.empty()) {
        mProblem = "there is no D file";
        return;
    }
    const Path path = mFolder.Child(mDFileName);
    mDFile = OpenShared(path.Full());
    LARGE_INTEGER size = {};
    mIsHeld = !mDFile && GetLastError() == ERROR_SHARING_VIOLATION;
    if (!mDFile)
        mProblem = LastErrorText();
    else if (!SameName(ParentOf(FinalPath(mDFile)), mFinal))
        mProblem = "it is a link out of the folder";
    else if (!GetFileSizeEx(mDFile.Get(), &size))
        mProblem = "it cannot be read";
    else
        mProblem = WhyNoDFile(path);
    if (namedItself && mProblem.starts_with("it looks like"))
        Fail("{} is no D file: {}. Name its folder, or see \"mailfolder show\".", path.Shown(),
             mProblem);
    // A slot is numbered in 32 bits, and placed in more.
    mSlots = static_cast<unsigned long>(
        mProblem.empty() ? std::min<long long>(size.QuadPart / kSlot, 0x7FFFFFFF) : 0);
}

void SourceFolder::ForEachMessageFile(const std::function<void(const Entry&)>& visit) const {
    ForEachEntry(mFolder, [&](const Entry& entry) {
        if (!entry.isFolder && IsMessageFileName(entry.name) && !SameName(entry.name, mDFileName))
            visit(entry);
    });
}

bool SourceFolder::HasMail() const {
    bool found = !mDFileName.empty();
    ForEachMessageFile([&](const Entry&) { found = true; });
    return found;
}

void SourceFolder::ForEachRecord(const std::function<void(const SourceMessage&)>& visit) const {
    constexpr unsigned long kBlockSlots = 800;
    std::string block(kBlockSlots * kSlot, '\0');
    for (unsigned long first = 0; first < mSlots; first += kBlockSlots) {
        const std::size_t size = ReadAt(mDFile, 1ull * first * kSlot, block.data(), block.size());
        for (unsigned long i = 0; i < size / kSlot; ++i) {
            SourceMessage message;
            std::memcpy(&message.record, block.data() + i * kSlot, kSlot);
            const DiskDirRec& record = message.record;
            if (IsEmpty(record) || (first + i == 0 && IsHeader(record)))
                continue;
            message.slot = first + i;
            message.file = FileNameOf(record);
            message.origin = record.used == 0 ? Origin::Deleted
                             : IsUsed(record) ? Origin::Listed
                                              : Origin::Broken;
            visit(message);
        }
        if (size < block.size())
            return;
    }
}

SourceMessage SourceFolder::MessageOf(unsigned long slot) const {
    SourceMessage message;
    message.slot = slot;
    ReadAt(mDFile, 1ull * slot * kSlot, reinterpret_cast<char*>(&message.record), kSlot);
    message.file = FileNameOf(message.record);
    return message;
}

// In the order of their keys; of those that name one file, used records come first.
std::vector<SourceFolder::NamedFile> SourceFolder::FilesNamed() const {
    std::vector<NamedFile> named;
    ForEachRecord([&](const SourceMessage& message) {
        const std::wstring name = NameOnDisk(message.file);
        named.push_back({KeyOf(FoldCase(name)), KeyOf(name), *message.slot, message.origin});
    });
    std::sort(named.begin(), named.end(), [](const NamedFile& a, const NamedFile& b) {
        return a.key != b.key         ? a.key < b.key
               : a.origin != b.origin ? a.origin < b.origin
                                      : a.slot < b.slot;
    });
    return named;
}

// The records that name one file.
static auto NamedSo(const auto& named, unsigned long long key) {
    const auto first = std::lower_bound(named.begin(), named.end(), key,
                                        [](const auto& n, auto wanted) { return n.key < wanted; });
    return std::pair(first,
                     std::find_if(first, named.end(), [&](auto& n) { return n.key != key; }));
}

// Whether this is the record with which its message file is taken.
bool SourceFolder::IsChosen(const std::vector<NamedFile>& named,
                            const SourceMessage& message) const {
    const auto [first, last] = NamedSo(named, KeyOf(FoldCase(NameOnDisk(message.file))));
    if (last - first < 2)
        return true;
    unsigned long chosen = first->slot;
    try {
        MessageFile file(mFolder, mFinal);
        file.Open(message.file);
        const Origin best = first->origin;
        const auto own = std::find_if(first, last, [&](const NamedFile& candidate) {
            return candidate.origin == best &&
                   SameMessage(MessageOf(candidate.slot).record, file.Record());
        });
        if (own != last)
            chosen = own->slot;
    } catch (const Unreadable&) {
        // Nothing can be taken out of it, with whichever record.
    }
    return chosen == *message.slot;
}

void SourceFolder::ForEachOrphan(const std::vector<NamedFile>& named,
                                 const std::function<void(const SourceMessage&)>& visit) const {
    std::vector<unsigned long long> keys;
    std::vector<unsigned long long> exact;
    ForEachMessageFile([&](const Entry& entry) {
        keys.push_back(KeyOf(FoldCase(entry.name)));
        exact.push_back(KeyOf(entry.name));
    });
    std::sort(keys.begin(), keys.end());
    std::sort(exact.begin(), exact.end());
    ForEachMessageFile([&](const Entry& entry) {
        const unsigned long long key = KeyOf(FoldCase(entry.name));
        const auto [first, last] = NamedSo(named, key);
        const auto [sameFirst, sameLast] = std::equal_range(keys.begin(), keys.end(), key);
        // On disks where two names differ in nothing but case, a record may mean the other one.
        const bool isNamed =
            sameLast - sameFirst > 1
                ? std::any_of(first, last, [&](auto& n) { return n.exact == KeyOf(entry.name); })
                : first != last;
        if (!isNamed) {
            SourceMessage message;
            message.origin = Origin::Orphan;
            message.file = entry.name;
            // Of names that the system cannot tell as they are, either may be another file's.
            const auto same = std::equal_range(exact.begin(), exact.end(), KeyOf(entry.name));
            message.isAmbiguous = same.second - same.first > 1;
            visit(message);
        }
    });
}

void SourceFolder::ForEach(const std::function<void(const SourceMessage&)>& visit) {
    if (mIsHeld)
        Fail("Cannot read {}: {}. Try again when it is closed.", Shown(), mProblem);
    std::vector<NamedFile> named;
    unsigned long reached = 0;
    try {
        named = FilesNamed();
        ForEachRecord([&](const SourceMessage& message) {
            reached = *message.slot;
            if (IsChosen(named, message))
                visit(message);
        });
    } catch (const Unreadable& problem) {
        mProblem = problem.reason;
        // Those that could be read a moment ago alone have their files left.
        std::erase_if(named, [&](const NamedFile& each) { return each.slot > reached; });
    }
    ForEachOrphan(named, visit);
}

static void AddFolders(const Path& folder, const std::function<void(const Path&)>& visit,
                       const std::function<void(const Failure&)>& failed) {
    try {
        if (SourceFolder(folder).HasMail())
            visit(folder);
    } catch (const Failure& failure) {
        failed(failure);
        return;
    }
    for (const Entry& entry : EntriesOf(folder))
        if (entry.isFolder && !entry.isLink)
            AddFolders(folder.Child(entry.name), visit, failed);
}

std::vector<Path> MailFoldersBelow(const Path& folder,
                                   const std::function<void(const Failure&)>& failed) {
    std::vector<Path> folders;
    AddFolders(
        folder, [&](const Path& found) { folders.push_back(found); }, failed);
    return folders;
}

} // namespace extract
