#include "programs/mailfolder/checker.h"

#include <algorithm>
#include <set>
#include <unordered_map>

#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/leftovers.h"
#include "programs/mailfolder/progress.h"
#include "programs/mailfolder/record.h"

namespace {

constexpr unsigned long long kSlot = BaseDirFile::keRecordSize;

class Checker {
public:
    Checker(const Path& path, int type)
        : mPath(path), mDirectory(path.Folder()), mType(type), mFiles(FilesOf(mDirectory)) {
        mFound.folder.path = path;
        mFound.folder.why = "it is not there";
    }

    Checked Run(bool namedItself);

private:
    // A used record by the file that it names.
    struct Named {
        unsigned long long slot;
        unsigned long long fingerprint;
        bool listed; // readers list it
        bool blank;
        std::string name; // as it spells it
    };

    void Add(const char* what, const std::string& text, const std::string& lost) {
        mFound.problems.push_back({what, {}, {}, {}, text, lost});
    }
    void AddAt(const char* what, const Slot& slot, const std::string& text,
               const std::string& lost) {
        mFound.problems.push_back({what, slot.number, slot.position,
                                   WideOfAnsi(DirectoryRecord(&slot.stored).FileName().Text()),
                                   text, lost});
    }
    void AddFor(const char* what, const FileEntry& entry, const std::string& text,
                const char* lost) {
        mFound.problems.push_back({what,
                                   {},
                                   {},
                                   entry.name,
                                   "The message file " + Printable(entry.name) + " " + text,
                                   lost});
    }

    void CheckLeftovers();
    bool CheckKind(bool namedItself);
    void CheckHeader();
    void CheckEnd();
    void CheckSlot(const Slot& slot);
    void CheckName(const Slot& slot);
    void CheckMessageFile(const std::wstring& key, const FileEntry& entry);
    void CheckOwnRecord(const std::wstring& key, const FileEntry& entry, const OwnRecord& own);

    Path mPath;
    Path mDirectory;
    int mType;
    FileEntries mFiles;
    Checked mFound;
    std::map<std::wstring, Named> mNamed;
    std::unordered_map<unsigned long long, std::wstring> mByFingerprint;
    std::map<std::wstring, unsigned long long> mFreed; // fingerprints of freed slots
};

void Checker::CheckLeftovers() {
    const Leftovers left = FindLeftovers(mPath);
    if (left.state == Leftovers::None)
        return;
    const bool whole = left.state == Leftovers::Unfinished;
    Add(whole ? "leftover-file" : "interrupted-rewrite", left.Words(),
        whole ? "Nothing."
              : "Nothing yet: a program that makes a new D file, and then compresses it, would "
                "remove the old one.");
}

// Whether there is a D file to be read.
bool Checker::CheckKind(bool namedItself) {
    const Path::Thing what = mPath.What();
    if (what == Path::keMissing) {
        const bool any = std::any_of(mFiles.begin(), mFiles.end(), [](const auto& file) {
            return IsMessageFileName(file.second.name);
        });
        if (mFound.problems.empty() && !any)
            Fail("{} has no D file, and no message files: there is nothing to check.",
                 mDirectory.Shown());
        if (mFound.problems.empty())
            Add("no-d-file", "There is no D file for the message files of the folder.",
                "Marks, such as processed, that only it had.");
        return false;
    }
    if (what == Path::keLink)
        Add("link", mPath.Shown() + " is a link.", "Nothing: it is read where it leads to.");
    const Kind kind = KindOf(mPath);
    mFound.folder = OpenFolder(mPath, mType);
    if (kind == Kind::DFile || kind == Kind::Empty || mType >= 0)
        return true;
    if (namedItself && kind != Kind::Other)
        Fail("{} is no D file: it looks like {}.", mPath.Shown(), Words(kind));
    Add("not-a-d-file",
        fmt::format("{} is no D file: it looks like {}.", mPath.Shown(), Words(kind)),
        "All records, unless it is another program's; the messages are in their own files.");
    return false;
}

void Checker::CheckHeader() {
    const Folder& folder = mFound.folder;
    if (!folder.HasHeader())
        return;
    if (folder.size < kSlot) {
        mFound.problems.push_back(
            {"no-header",
             0,
             0,
             {},
             fmt::format("The file has {} where its header takes {}.", Count(folder.size, "byte"),
                         kSlot),
             "Nothing by itself; but a message that is added now stands where no program looks for "
             "it."});
        return;
    }
    Slot header = {0, 0, {}};
    InputFile(mPath).ReadAt(0, &header.stored, sizeof header.stored);
    if (IsUsed(header.stored) && LooksLikeRecord(header.stored))
        AddAt("used-header", header, "The header's place holds a record.",
              "That record for all programs that pass over the header; notifiers list it. (With "
              "--type 2 it counts as the first record.)");
    else if (!IsZero(header.stored))
        AddAt("header-content", header, "The header is not all zero.",
              "Nothing: no program reads it.");
}

void Checker::CheckEnd() {
    const Folder& folder = mFound.folder;
    const unsigned long long rest = folder.size % kSlot;
    if (rest == 0 || (folder.HasHeader() && folder.size < kSlot))
        return;
    const unsigned long long position = folder.size - rest;
    mFound.problems.push_back(
        {"cut-record",
         position / kSlot,
         position,
         {},
         fmt::format("The file ends inside a record: {} of {} bytes are there.", rest, kSlot),
         "That record; its message file, if it is there, still has the message. Records that are "
         "added behind it cannot be read."});
}

void Checker::CheckSlot(const Slot& slot) {
    if (slot.stored.used == 0) {
        ++mFound.freeSlots;
        if (const auto key = FileKey(DirectoryRecord(&slot.stored)); key && mFiles.count(*key))
            mFreed[*key] = Fingerprint(slot.stored);
        return;
    }
    for (const Fault& fault : FaultsOf(slot.stored))
        AddAt(fault.what, slot, fault.text, fault.lost);
    mFound.messages += IsUsed(slot.stored) != 0;
    CheckName(slot);
}

void Checker::CheckName(const Slot& slot) {
    const DirectoryRecord record(&slot.stored);
    const std::string name = record.FileName().Text();
    if (name.empty())
        return AddAt("no-file-name", slot, "The record names no message file.",
                     "The message cannot be opened by this record.");
    const auto key = FileKey(record);
    if (!key)
        return AddAt("name-leaves-folder", slot,
                     fmt::format("The message file's name \"{}\" is none of a file of this folder.",
                                 Printable(name)),
                     "The message cannot be opened by this record; no program follows the name.");
    if (!mFiles.count(*key))
        AddAt("missing-file", slot,
              fmt::format("The message file {} is not in the folder.", Printable(name)),
              "The message itself, unless the file is found elsewhere.");
    const Named named = {slot.number, Fingerprint(slot.stored), IsUsed(slot.stored) != 0,
                         IsBlank(slot.stored), name};
    const auto [first, fresh] = mNamed.emplace(*key, named);
    if (!fresh)
        AddAt("second-record", slot,
              fmt::format("The message file {} has a record in slot {} already{}.", Printable(name),
                          first->second.slot,
                          first->second.name == name
                              ? ""
                              : fmt::format(", as {}", Printable(first->second.name))),
              "Nothing; deleting either of the two messages deletes the file of both.");
    if (!fresh && named.listed && !first->second.listed)
        first->second = named;
    mByFingerprint.emplace(named.fingerprint, *key);
}

void Checker::CheckMessageFile(const std::wstring& key, const FileEntry& entry) {
    const auto named = mNamed.find(key);
    if (!IsMessageFileName(entry.name) && named == mNamed.end())
        return;
    const auto recordName = RecordName(entry.name);
    const OwnRecord own = ReadOwnRecord(mDirectory.Child(entry.name), recordName.value_or("X.EML"));
    CheckOwnRecord(key, entry, own);
    if (named != mNamed.end()) {
        if (!named->second.listed)
            AddFor("file-of-broken-record", entry, "has only a record that cannot be read.",
                   "Nothing yet: the message is not listed until the folder is rebuilt.");
        return;
    }
    const auto freed = mFreed.find(key);
    const bool known = own.state == OwnRecord::Sound || own.state == OwnRecord::Damaged;
    if (!recordName)
        mFound.notes.push_back(
            fmt::format("{} cannot be listed: a record cannot hold its name. Renamed, it can.",
                        Printable(entry.name)));
    else if (freed != mFreed.end() && known && Fingerprint(own.record) == freed->second)
        mFound.notes.push_back(
            fmt::format("{} is of a deleted message: \"mailfolder undelete\" takes it back.",
                        Printable(entry.name)));
    else
        AddFor("file-without-record", entry, "has no record.",
               "Nothing yet: the message is not listed until the folder is rebuilt.");
}

void Checker::CheckOwnRecord(const std::wstring& key, const FileEntry& entry,
                             const OwnRecord& own) {
    constexpr char kNothing[] = "Nothing that the D file has; rebuilding cannot do without it.";
    switch (own.state) {
    case OwnRecord::Link:
        return AddFor("link", entry, "is a link.", "Nothing: it is not followed.");
    case OwnRecord::Unreadable:
        Warn("{} cannot be read.\n", mDirectory.Child(entry.name).Shown());
        return;
    case OwnRecord::Short:
        return AddFor(
            "short-message-file", entry,
            fmt::format("has {}; its own record alone takes {}.", Count(entry.size, "byte"), kSlot),
            "What is not there of the message.");
    case OwnRecord::Zero:
        return AddFor("own-record-zero", entry, "begins with zeros instead of its record.",
                      kNothing);
    case OwnRecord::Garbage:
        return AddFor("own-record-garbage", entry, "does not begin with its record.", kNothing);
    case OwnRecord::Damaged:
        AddFor("own-record-damaged", entry, "begins with a damaged record.", kNothing);
        break;
    case OwnRecord::Sound:
        break;
    }
    const auto named = mNamed.find(key);
    if (named == mNamed.end() || !named->second.listed)
        return;
    const unsigned long long fingerprint = Fingerprint(own.record);
    if (fingerprint == named->second.fingerprint)
        return;
    const auto other = mByFingerprint.find(fingerprint);
    if (named->second.blank)
        AddFor("blank-record", entry,
               fmt::format("has a record in slot {} that tells nothing of it.", named->second.slot),
               "What programs show of the message.");
    else if (other != mByFingerprint.end() && other->second != key)
        AddFor("own-record-swapped", entry,
               fmt::format("begins with the record of {}.",
                           Printable(mFiles.count(other->second) ? mFiles.at(other->second).name
                                                                 : other->second)),
               "Nothing; but one of the two records is another message's.");
    else
        AddFor("own-record-differs", entry,
               fmt::format("begins with a record at odds with that of slot {}: its topic is "
                           "\"{}\".",
                           named->second.slot, Printable(FieldText(own.record.topic))),
               "Nothing; but one of the two records is another message's.");
}

Checked Checker::Run(bool namedItself) {
    CheckLeftovers();
    const bool isDFile = CheckKind(namedItself);
    const std::wstring name = FoldCase(mPath.Name());
    if (name == L"DFILE" && mPath.IsThere() && mFiles.count(L"MFILE"))
        Add("two-d-files", "The folder has both a \"DFile\" and an \"MFile\".",
            "Nothing; but programs may list different messages.");
    if (isDFile) {
        CheckHeader();
        ForEachSlot(mFound.folder, [this](Slot& slot) { CheckSlot(slot); });
        CheckEnd();
    }
    Progress progress("Reading message files");
    std::size_t done = 0;
    for (const auto& [key, entry] : mFiles) {
        progress.Show(++done, mFiles.size());
        if (isDFile || IsMessageFileName(entry.name))
            CheckMessageFile(key, entry);
    }
    if (!isDFile) // each of them has none
        std::erase_if(mFound.problems,
                      [](const Problem& problem) { return problem.what == "file-without-record"; });
    return mFound;
}

} // namespace

Checked CheckFolder(const Path& argument, int type) {
    const Path path = argument.IsThere() ? DFileOf(argument) : argument;
    if (!argument.IsThere() && FindLeftovers(argument).state == Leftovers::None)
        DFileOf(argument); // says that it is not there
    return Checker(path, type).Run(!argument.IsFolder());
}
