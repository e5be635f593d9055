#include "programs/mailfolder/folder.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "programs/mailfolder/hash.h"
#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/progress.h"
#include "resident/files/file_handle.h"

static constexpr unsigned long long kSlot = BaseDirFile::keRecordSize;

unsigned long long Folder::Slots() const {
    const unsigned long long slots = size / kSlot;
    return HasHeader() && slots ? slots - 1 : slots;
}

Path DFileOf(const Path& argument) {
    switch (argument.What()) {
    case Path::keMissing:
        Fail("Cannot use {}: there is no such file or folder.", argument.Shown());
    case Path::keDevice:
        Fail("Cannot use {}: it is a device.", argument.Shown());
    case Path::keFile:
    case Path::keLink:
    case Path::keSpecial:
        return argument;
    case Path::keFolder:
        break;
    }
    const Path folder = argument.Child(L"DFile");
    const Path messages = argument.Child(L"MFile");
    if (folder.IsThere() || messages.IsThere())
        return folder.IsThere() ? folder : messages;
    // Or what is left of one.
    const auto has = [](const Path& path) {
        return path.WithExtension(L".BAK").IsThere() || path.WithExtension(L".TMP").IsThere();
    };
    return !has(folder) && has(messages) ? messages : folder;
}

// Nothing in the file tells its type, but where its first record stands.
static void GuessType(Folder& folder) {
    folder.type = keDirFolder;
    if (folder.size == 0) {
        folder.type = keDirMessages;
        folder.why = "it is empty, without a header";
        return;
    }
    if (folder.size < kSlot) {
        folder.why = "it is too short to tell";
        return;
    }
    DiskDirRec first;
    InputFile(folder.path).ReadAt(0, &first, sizeof first);
    if (IsZero(first)) {
        folder.why = "it begins with an empty header";
    } else if (LooksLikeRecord(first)) {
        folder.type = keDirMessages;
        folder.why = "it begins with a record";
    } else {
        folder.why = "it begins with neither an empty header nor a record";
    }
}

Folder OpenFolder(const Path& path, int type) {
    Folder folder = {path, keDirFolder, "as it was told", InputFile(path).Size()};
    if (type >= 0)
        folder.type = static_cast<TypeDirFile>(type);
    else
        GuessType(folder);
    Detail("{} is taken for type {}: {}.\n", path.Shown(), static_cast<int>(folder.type),
           folder.why);
    return folder;
}

Folder FindFolder(const Path& given, int type) {
    const Path path = DFileOf(given);
    if (!path.IsThere())
        Fail("{} has no D file: there is no \"DFile\" or \"MFile\" in it. \"mailfolder check\" "
             "tells "
             "what is there instead.",
             given.Shown());
    NeedReadable(path);
    if (type < 0) {
        const Kind kind = KindOf(path);
        if (kind != Kind::DFile && kind != Kind::Empty)
            throw Failure{fmt::format("{} is no D file: it looks like {}. (--type reads it as one "
                                      "all the same.)",
                                      path.Shown(), Words(kind)),
                          keDamage};
    }
    return OpenFolder(path, type);
}

void ForEachSlot(const Folder& folder, const std::function<void(Slot&)>& visit) {
    const InputFile file(folder.path);
    Progress progress("Reading " + folder.path.Shown());
    std::vector<DiskDirRec> block(256);
    Slot slot;
    slot.number = folder.HasHeader() ? 1 : 0;
    while (slot.number < file.Size() / kSlot) {
        const std::size_t count =
            file.ReadAt(slot.number * kSlot, block.data(), block.size() * kSlot) / kSlot;
        if (count == 0)
            Fail("Cannot read {} at byte {}.", folder.path.Shown(), slot.number * kSlot);
        for (std::size_t i = 0; i < count; ++i, ++slot.number) {
            slot.position = slot.number * kSlot;
            slot.stored = block[i];
            visit(slot);
        }
        progress.Show(slot.number * kSlot, file.Size());
    }
}

void ForEachFile(const Path& directory, const std::function<void(const FileEntry&)>& visit) {
    WIN32_FIND_DATAW found;
    const SearchHandle search(FindFirstFileExW(directory.Child(L"*").Full().c_str(),
                                               FindExInfoBasic, &found, FindExSearchNameMatch,
                                               nullptr, 0));
    if (!search) {
        if (GetLastError() != ERROR_FILE_NOT_FOUND && GetLastError() != ERROR_PATH_NOT_FOUND)
            Fail("Cannot look into {}: {}.", directory.Shown(), LastErrorText());
        return;
    }
    const auto join = [](DWORD high, DWORD low) {
        return static_cast<unsigned long long>(high) << 32 | low;
    };
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            visit(
                {found.cFileName, join(found.nFileSizeHigh, found.nFileSizeLow),
                 join(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime)});
    } while (FindNextFileW(search.Get(), &found));
}

unsigned long long HashOf(const std::wstring& key) {
    return Hash().Add(std::wstring_view(key)).Value();
}

FileNames::FileNames(const Path& directory) {
    ForEachFile(directory, [this](const FileEntry& entry) {
        mHashes.push_back(HashOf(FoldCase(entry.name)));
        mMessageFiles += IsMessageFileName(entry.name);
    });
    std::sort(mHashes.begin(), mHashes.end());
    for (std::size_t i = 1; i < mHashes.size(); ++i)
        if (mHashes[i] == mHashes[i - 1])
            mTwins.push_back(mHashes[i]);
    if (mTwins.empty())
        return;
    mHashes.clear();
    ForEachFile(directory,
                [this](const FileEntry& entry) { mHashes.push_back(HashOf(Key(entry.name))); });
    std::sort(mHashes.begin(), mHashes.end());
}

std::wstring FileNames::Key(const std::wstring& name) const {
    const std::wstring folded = FoldCase(name);
    return std::binary_search(mTwins.begin(), mTwins.end(), HashOf(folded)) ? name : folded;
}

bool FileNames::Has(const std::wstring& key) const {
    return std::binary_search(mHashes.begin(), mHashes.end(), HashOf(key));
}

FileEntries FilesOf(const Path& directory, const FileNames& names) {
    FileEntries entries;
    ForEachFile(directory, [&](const FileEntry& entry) { entries[names.Key(entry.name)] = entry; });
    return entries;
}

namespace {

// The library's own word on a record's name.
struct AnyFolder : BaseDirFile {
    AnyFolder() : BaseDirFile(keDirFolder) { SetSpecPart("C:\\DFile", FileSpec::keAsParts); }
    // Not inline: the release build's linker takes the thunks of one in each source for several.
    ~AnyFolder() override;
    using BaseDirFile::MessageFile;
};

AnyFolder::~AnyFolder() = default;

} // namespace

// Whether a record may name a file so. Letters outside ASCII are no matter: in the OEM code page,
// where the library looks, some become characters that file names have not.
static bool IsFileName(DirectoryRecord record) {
    static const AnyFolder folder;
    unsigned char* const name = record.Record().fileName;
    std::replace_if(
        name + 1, name + DiskDirRec::keFileNameSize, [](unsigned char c) { return c >= 0x80; },
        '_');
    FileSpec spec;
    return folder.MessageFile(record, spec);
}

std::optional<std::wstring> FileNames::KeyOf(const DirectoryRecord& record) const {
    if (!IsFileName(record))
        return {};
    return Key(WideOfAnsi(record.FileName().Text()));
}

std::optional<std::string> RecordName(const std::wstring& name) {
    std::string ansi(name.size() * 2, '\0');
    BOOL lost = FALSE;
    ansi.resize(WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, name.data(),
                                    static_cast<int>(name.size()), ansi.data(),
                                    static_cast<int>(ansi.size()), nullptr, &lost));
    if (lost || ansi.size() >= DiskDirRec::keFileNameSize || WideOfAnsi(ansi) != name)
        return {};
    DiskDirRec record = {};
    record.fileName[0] = static_cast<unsigned char>(ansi.size());
    std::copy(ansi.begin(), ansi.end(), record.fileName + 1);
    if (!IsFileName(DirectoryRecord(&record)))
        return {};
    return ansi;
}
