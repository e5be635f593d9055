#include "programs/mailfolder/checker.h"

#include <algorithm>
#include <tuple>

#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/leftovers.h"
#include "programs/mailfolder/progress.h"
#include "programs/mailfolder/record.h"

namespace {

constexpr unsigned long long kSlot = BaseDirFile::keRecordSize;

// What a record, or a freed slot, says of a message file, in few bytes: there may be millions.
struct Named {
    enum Rank : unsigned long { keListed, keUnlisted, keFreed };

    unsigned long long file; // the hash of its key
    unsigned long long fingerprint;
    unsigned long slot : 29;
    unsigned long rank : 2;
    unsigned long blank : 1;
    unsigned long spelling; // of the name, as it stands

    auto Order() const { return std::tuple(file, rank, slot); }
    bool operator<(const Named& other) const { return Order() < other.Order(); }
};

// What all records name.
class Index {
public:
    void Reserve(unsigned long long slots) { mNamed.reserve(static_cast<std::size_t>(slots)); }
    void Add(const Named& named) { mNamed.push_back(named); }
    // Behind the last.
    void Sort() { std::sort(mNamed.begin(), mNamed.end()); }

    // The record by which a file is known, the first that programs list or else the first; null
    // when there is none.
    const Named* For(unsigned long long file) const {
        const Named* const listed = First(file, Named::keListed);
        return listed ? listed : First(file, Named::keUnlisted);
    }
    // The one that came before a slot.
    const Named* Before(unsigned long long file, unsigned long long slot) const;
    // The last of its freed slots.
    const Named* Freed(unsigned long long file) const;
    const Named* WithFingerprint(unsigned long long fingerprint) const;

private:
    const Named* First(unsigned long long file, Named::Rank rank) const;

    std::vector<Named> mNamed;
    // By their fingerprints; made for the first who asks.
    mutable std::vector<const Named*> mByFingerprint;
};

const Named* Index::First(unsigned long long file, Named::Rank rank) const {
    const auto found = std::lower_bound(mNamed.begin(), mNamed.end(),
                                        Named{file, 0, 0, static_cast<unsigned long>(rank), 0, 0});
    return found != mNamed.end() && found->file == file && found->rank == rank ? &*found : nullptr;
}

const Named* Index::Before(unsigned long long file, unsigned long long slot) const {
    for (const Named::Rank rank : {Named::keListed, Named::keUnlisted})
        if (const Named* const first = First(file, rank); first && first->slot < slot)
            return first;
    return nullptr;
}

const Named* Index::Freed(unsigned long long file) const {
    const auto behind = std::upper_bound(mNamed.begin(), mNamed.end(),
                                         Named{file, 0, 0x1FFFFFFF, Named::keFreed, 0, 0});
    const bool any =
        behind != mNamed.begin() && behind[-1].file == file && behind[-1].rank == Named::keFreed;
    return any ? &behind[-1] : nullptr;
}

const Named* Index::WithFingerprint(unsigned long long fingerprint) const {
    if (mByFingerprint.empty()) {
        for (const Named& named : mNamed)
            if (named.rank != Named::keFreed)
                mByFingerprint.push_back(&named);
        std::sort(mByFingerprint.begin(), mByFingerprint.end(), [](const Named* a, const Named* b) {
            return std::tie(a->fingerprint, a->slot) < std::tie(b->fingerprint, b->slot);
        });
    }
    const auto found = std::lower_bound(
        mByFingerprint.begin(), mByFingerprint.end(), fingerprint,
        [](const Named* named, unsigned long long value) { return named->fingerprint < value; });
    return found != mByFingerprint.end() && (*found)->fingerprint == fingerprint ? *found : nullptr;
}

class Checker {
public:
    Checker(const Path& path, int type, Findings& findings)
        : mPath(path), mDirectory(path.Folder()), mType(type), mFindings(findings),
          mNames(mDirectory) {
        mFound.folder.path = path;
        mFound.folder.why = "it is not there";
    }

    void Run(bool namedItself);

private:
    void Add(const char* what, const std::string& text, const std::string& lost) {
        mFindings.Add({what, {}, {}, {}, text, lost});
    }
    void AddAt(const char* what, const Slot& slot, const std::string& text,
               const std::string& lost) {
        mFindings.Add({what, slot.number, slot.position,
                       WideOfAnsi(DirectoryRecord(&slot.stored).FileName().Text()), text, lost});
    }
    void AddFor(const char* what, const FileEntry& entry, const std::string& text,
                const char* lost) {
        mFindings.Add({what,
                       {},
                       {},
                       entry.name,
                       "The message file " + Printable(entry.name) + " " + text,
                       lost});
    }

    bool LookAtDFile(bool namedItself);
    void IndexSlot(const Slot& slot);
    void TellOfLeftovers();
    void TellOfDFile(bool isDFile);
    void CheckHeader();
    void CheckEnd();
    void CheckSlot(const Slot& slot);
    void CheckName(const Slot& slot);
    void CheckMessageFile(const FileEntry& entry, bool isDFile);
    void CheckOwnRecord(const Named* named, const FileEntry& entry, const OwnRecord& own);
    void CheckUnnamed(const std::wstring& key, const FileEntry& entry, const OwnRecord& own);
    std::string NameAt(unsigned long long slot);

    Path mPath;
    Path mDirectory;
    int mType;
    Findings& mFindings;
    FileNames mNames;
    Leftovers mLeft;
    Path::Thing mWhat = Path::keMissing;
    Kind mKind = Kind::Empty;
    Checked mFound;
    Index mIndex;
};

// Whether there is a D file to be read.
bool Checker::LookAtDFile(bool namedItself) {
    mLeft = FindLeftovers(mPath);
    mWhat = mPath.What();
    if (mWhat == Path::keMissing) {
        if (mLeft.state == Leftovers::None && mNames.MessageFiles() == 0)
            Fail("{} has no D file, and no message files: there is nothing to check.",
                 mDirectory.Shown());
        return false;
    }
    mKind = KindOf(mPath);
    mFound.folder = OpenFolder(mPath, mType);
    if (mKind == Kind::DFile || mKind == Kind::Empty || mType >= 0)
        return true;
    if (namedItself && mKind != Kind::Other)
        Fail("{} is no D file: it looks like {}.", mPath.Shown(), Words(mKind));
    return false;
}

void Checker::IndexSlot(const Slot& slot) {
    const bool used = slot.stored.used != 0;
    const bool listed = IsUsed(slot.stored);
    mFound.freeSlots += !used;
    mFound.messages += listed;
    const DirectoryRecord record(&slot.stored);
    if (const auto key = mNames.KeyOf(record); key && (used || mNames.Has(*key)))
        mIndex.Add({HashOf(*key), Fingerprint(slot.stored), static_cast<unsigned long>(slot.number),
                    static_cast<unsigned long>(listed ? Named::keListed
                                               : used ? Named::keUnlisted
                                                      : Named::keFreed),
                    IsBlank(slot.stored),
                    static_cast<unsigned long>(HashOf(WideOfAnsi(record.FileName().Text())))});
}

void Checker::TellOfLeftovers() {
    if (mLeft.state == Leftovers::None)
        return;
    const bool whole = mLeft.state == Leftovers::Unfinished;
    Add(whole ? "leftover-file" : "interrupted-rewrite", mLeft.Words(),
        whole ? "Nothing."
              : "Nothing yet: a program that makes a new D file, and then compresses it, would "
                "remove the old one.");
}

void Checker::TellOfDFile(bool isDFile) {
    if (mWhat == Path::keMissing) {
        if (mLeft.state == Leftovers::None)
            Add("no-d-file", "There is no D file for the message files of the folder.",
                "Marks, such as processed, that only it had.");
        return;
    }
    if (mWhat == Path::keLink)
        Add("link", mPath.Shown() + " is a link.", "Nothing: it is read where it leads to.");
    if (!isDFile)
        Add("not-a-d-file",
            fmt::format("{} is no D file: it looks like {}.", mPath.Shown(), Words(mKind)),
            "All records, unless it is another program's; the messages are in their own files.");
    if (FoldCase(mPath.Name()) == L"DFILE" && mNames.Has(mNames.Key(L"MFile")))
        Add("two-d-files", "The folder has both a \"DFile\" and an \"MFile\".",
            "Nothing; but programs may list different messages.");
}

void Checker::CheckHeader() {
    const Folder& folder = mFound.folder;
    if (!folder.HasHeader())
        return;
    if (folder.size < kSlot) {
        mFindings.Add(
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
    mFindings.Add(
        {"cut-record",
         position / kSlot,
         position,
         {},
         fmt::format("The file ends inside a record: {} of {} bytes are there.", rest, kSlot),
         "That record; its message file, if it is there, still has the message. Records that are "
         "added behind it cannot be read."});
}

void Checker::CheckSlot(const Slot& slot) {
    if (slot.stored.used == 0)
        return;
    for (const Fault& fault : FaultsOf(slot.stored))
        AddAt(fault.what, slot, fault.text, fault.lost);
    CheckName(slot);
}

void Checker::CheckName(const Slot& slot) {
    const DirectoryRecord record(&slot.stored);
    const std::string name = record.FileName().Text();
    if (name.empty())
        return AddAt("no-file-name", slot, "The record names no message file.",
                     "The message cannot be opened by this record.");
    const auto key = mNames.KeyOf(record);
    if (!key)
        return AddAt("name-leaves-folder", slot,
                     fmt::format("The message file's name \"{}\" is none of a file of this folder.",
                                 Printable(name)),
                     "The message cannot be opened by this record; no program follows the name.");
    if (!mNames.Has(*key))
        AddAt("missing-file", slot,
              fmt::format("The message file {} is not in the folder.", Printable(name)),
              "The message itself, unless the file is found elsewhere.");
    const Named* const other = mIndex.Before(HashOf(*key), slot.number);
    if (!other)
        return;
    const bool spelledSo = other->spelling == static_cast<unsigned long>(HashOf(WideOfAnsi(name)));
    AddAt("second-record", slot,
          fmt::format("The message file {} has a record in slot {} already{}.", Printable(name),
                      other->slot + 0, spelledSo ? "" : ", as " + Printable(NameAt(other->slot))),
          "Nothing; deleting either of the two messages deletes the file of both.");
}

// As a record spells it.
std::string Checker::NameAt(unsigned long long slot) {
    DiskDirRec stored = {};
    InputFile(mPath).ReadAt(slot * kSlot, &stored, sizeof stored);
    return DirectoryRecord(&stored).FileName().Text();
}

void Checker::CheckMessageFile(const FileEntry& entry, bool isDFile) {
    const std::wstring key = mNames.Key(entry.name);
    const Named* const named = mIndex.For(HashOf(key));
    if (!named && !IsMessageFileName(entry.name))
        return;
    const OwnRecord own =
        ReadOwnRecord(mDirectory.Child(entry.name), RecordName(entry.name).value_or("X.EML"));
    CheckOwnRecord(named, entry, own);
    if (!named && isDFile) // or else none of them has one
        CheckUnnamed(key, entry, own);
    if (named && named->rank == Named::keUnlisted)
        AddFor("file-of-broken-record", entry, "has only a record that cannot be read.",
               "Nothing yet: the message is not listed until the folder is rebuilt.");
}

void Checker::CheckUnnamed(const std::wstring& key, const FileEntry& entry, const OwnRecord& own) {
    const Named* const freed = mIndex.Freed(HashOf(key));
    if (!RecordName(entry.name))
        mFindings.Note(
            fmt::format("{} cannot be listed: a record cannot hold its name. Renamed, it can.",
                        Printable(entry.name)));
    else if (freed && own.IsKnown() && Fingerprint(own.record) == freed->fingerprint)
        mFindings.Note(
            fmt::format("{} is of a deleted message: \"mailfolder undelete\" takes it back.",
                        Printable(entry.name)));
    // What nobody can read is told of, and rebuilding lists it no more.
    else if (own.state != OwnRecord::Link && own.state != OwnRecord::Unreadable)
        AddFor("file-without-record", entry, "has no record.",
               "Nothing yet: the message is not listed until the folder is rebuilt.");
}

void Checker::CheckOwnRecord(const Named* named, const FileEntry& entry, const OwnRecord& own) {
    constexpr char kNothing[] = "Nothing that the D file has; rebuilding cannot do without it.";
    switch (own.state) {
    case OwnRecord::Link:
        return AddFor("link", entry, "is a link.", "Nothing: it is not followed.");
    case OwnRecord::Unreadable:
        if (!named && !RecordName(entry.name))
            return; // a note says so
        return AddFor("unreadable-message-file", entry, "cannot be read.",
                      "Nothing by itself; but no program can show the message.");
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
    if (!named || named->rank != Named::keListed)
        return;
    const unsigned long long fingerprint = Fingerprint(own.record);
    if (fingerprint == named->fingerprint)
        return;
    const Named* const other = mIndex.WithFingerprint(fingerprint);
    if (named->blank)
        AddFor("blank-record", entry,
               fmt::format("has a record in slot {} that tells nothing of it.", named->slot + 0),
               "What programs show of the message.");
    else if (other && other->file != named->file)
        AddFor("own-record-swapped", entry,
               fmt::format("begins with the record of {}.", Printable(NameAt(other->slot))),
               "Nothing; but one of the two records is another message's.");
    else
        AddFor("own-record-differs", entry,
               fmt::format("begins with a record at odds with that of slot {}: its topic is "
                           "\"{}\".",
                           named->slot + 0, Printable(FieldText(own.record.topic))),
               "Nothing; but one of the two records is another message's.");
}

void Checker::Run(bool namedItself) {
    const bool isDFile = LookAtDFile(namedItself);
    if (isDFile) {
        mIndex.Reserve(mFound.folder.Slots());
        ForEachSlot(mFound.folder, [this](Slot& slot) { IndexSlot(slot); });
        mIndex.Sort();
    }
    mFindings.Begin(mFound);
    TellOfLeftovers();
    TellOfDFile(isDFile);
    if (isDFile) {
        CheckHeader();
        ForEachSlot(mFound.folder, [this](Slot& slot) { CheckSlot(slot); });
        CheckEnd();
    }
    Progress progress("Reading message files");
    std::size_t done = 0;
    ForEachFile(mDirectory, [&](const FileEntry& entry) {
        progress.Show(++done, mNames.Count());
        if (isDFile || IsMessageFileName(entry.name))
            CheckMessageFile(entry, isDFile);
    });
}

} // namespace

void CheckFolder(const Path& argument, int type, Findings& findings) {
    const Path path = argument.IsThere() ? DFileOf(argument) : argument;
    if (!argument.IsThere() && FindLeftovers(argument).state == Leftovers::None)
        DFileOf(argument); // says that it is not there
    Checker(path, type, findings).Run(!argument.IsFolder());
}
