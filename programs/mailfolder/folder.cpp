#include "programs/mailfolder/folder.h"

#include <algorithm>
#include <cstring>

#include "programs/console/text.h"
#include "programs/mailfolder/progress.h"
#include "resident/core/windows_api.h"

static constexpr unsigned long kSlot = BaseDirFile::keRecordSize;

unsigned long Folder::Slots() const {
    const unsigned long slots = size / kSlot;
    return HasHeader() && slots ? slots - 1 : slots;
}

// Opens a file for reading, with a buffer of its own. Fails when it cannot be.
namespace {

struct InputFile : RbFile {
    explicit InputFile(const std::string& path) : RbFile(SpecOf(path)), mBuffer(0x10000, '\0') {
        rdbuf()->pubsetbuf(mBuffer.data(), mBuffer.size());
        if (!Open(keOpenRead))
            Fail("Cannot read {}: opening it failed.", Printable(path));
    }
    ~InputFile() override { close(); }

    std::string mBuffer;
};

} // namespace

static unsigned long SizeOf(const std::string& path) {
    InputFile file(path);
    file.seekg(0, std::ios::end);
    return static_cast<unsigned long>(file.tellg());
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
    InputFile file(folder.path);
    DiskDirRec first;
    file >> first;
    const auto* const bytes = reinterpret_cast<const char*>(&first);
    if (std::all_of(bytes, bytes + sizeof first, [](char c) { return c == 0; })) {
        folder.why = "it begins with an empty header";
    } else if (first.fileName[0] > 0 && first.fileName[0] < DiskDirRec::keFileNameSize) {
        folder.type = keDirMessages;
        folder.why = "it begins with a record";
    } else {
        folder.why = "it begins with neither an empty header nor a record";
    }
}

Folder FindFolder(const std::string& argument, int type, bool maybeMissing) {
    Folder folder = {FullPath(argument), keDirFolder, "as it was told", 0};
    if (IsFolder(folder.path)) {
        const std::string directory = folder.path.back() == '\\' ? folder.path : folder.path + "\\";
        folder.path = directory + "DFile";
        if (!IsThere(folder.path) && (!maybeMissing || IsThere(directory + "MFile")))
            folder.path = directory + "MFile";
        if (!IsThere(folder.path) && !maybeMissing)
            Fail("{} has no D file: there is no \"DFile\" or \"MFile\" in it. Name the file, or "
                 "make "
                 "one with rebuild.",
                 Printable(argument));
    }
    SpecOf(folder.path);
    const bool missing = !IsThere(folder.path) && maybeMissing;
    if (!missing) {
        NeedReadable(folder.path);
        folder.size = SizeOf(folder.path);
    }
    if (type >= 0)
        folder.type = static_cast<TypeDirFile>(type);
    else if (missing)
        folder.why = "what programs make";
    else
        GuessType(folder);
    return folder;
}

void ForEachSlot(const Folder& folder, const std::function<void(Slot&)>& visit) {
    InputFile file(folder.path);
    Progress progress("Reading " + Printable(folder.path));
    Slot slot;
    slot.number = folder.HasHeader() ? 1 : 0;
    slot.position = slot.number * kSlot;
    file.seekg(static_cast<long>(slot.position));
    for (; slot.position + kSlot <= folder.size; ++slot.number, slot.position += kSlot) {
        if (!(file >> slot.stored))
            Fail("Cannot read {} at byte {}.", Printable(folder.path), slot.position);
        visit(slot);
        progress.Show(slot.position, folder.size);
    }
}

std::string InCapitals(std::string ansi) {
    CharUpperBuffA(ansi.data(), ansi.size());
    return ansi;
}

bool IsMessageFile(const std::string& name) {
    return name.size() >= 4 && InCapitals(name.substr(name.size() - 4)) == ".EML";
}

FileEntries FilesOf(const std::string& directory) {
    FileEntries entries;
    FileSearch search;
    ffblk found;
    int more = search.First((directory + "\\*").c_str(), found, 0);
    for (; more; more = search.Next(found))
        if (!(found.ff_attrib & keAttrDirectory))
            entries[InCapitals(found.ff_name)] = {found.ff_name,
                                                  static_cast<unsigned long>(found.ff_fsize)};
    search.Close();
    return entries;
}

LibraryFile::LibraryFile(const Folder& folder) : BaseDirFile(folder.type) {
    static_cast<FileSpec&>(*this) = SpecOf(folder.path);
}

LibraryFile::~LibraryFile() = default;
