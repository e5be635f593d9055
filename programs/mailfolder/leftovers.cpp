#include "programs/mailfolder/leftovers.h"

#include <algorithm>

#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/new_file.h"
#include "programs/mailfolder/pref_directory.h"
#include "programs/mailfolder/record.h"
#include "resident/core/windows_api.h"

std::string Candidate::Words() const {
    std::string words = Count(records, "sound record");
    if (covered)
        words += ", " + Count(covered, "message file") + " listed";
    return words + (whole ? ", whole" : ", not whole");
}

std::string Leftovers::Words() const {
    switch (state) {
    case Missing:
        return fmt::format("{} is not there; an interrupted rewriting left {} beside it.",
                           target.Shown(), Count(candidates.size(), "file"));
    case Emptied:
        return target.Shown() +
               (kind == Kind::DFile
                    ? " lists nothing; its .BAK lists messages that are still there."
                    : " is not whole; its .BAK is.");
    case Unfinished:
        return fmt::format("An interrupted rewriting of {} left a temporary file, or another "
                           "program is rewriting it.",
                           target.Shown());
    case Copied:
        return fmt::format(
            "An interrupted update of {} left the old file in the Windows directory.",
            target.Shown());
    default:
        return {};
    }
}

// Adds the file that a record names, when it is there.
static void AddCovered(std::vector<unsigned long long>& covered, const Slot& slot,
                       const FileNames& files) {
    const auto key = files.KeyOf(DirectoryRecord(&slot.stored));
    if (key && files.Has(*key))
        covered.push_back(HashOf(*key));
}

static void MakeUnique(std::vector<unsigned long long>& covered) {
    std::sort(covered.begin(), covered.end());
    covered.erase(std::unique(covered.begin(), covered.end()), covered.end());
}

// Whether the message file that a record names says itself that it is that message's.
static bool Agrees(const Slot& slot, const Path& directory) {
    const std::string name = DirectoryRecord(&slot.stored).FileName().Text();
    const OwnRecord own = ReadOwnRecord(directory.Child(WideOfAnsi(name)), name);
    return own.IsKnown() && Fingerprint(own.record) == Fingerprint(slot.stored);
}

// A copy in the Windows directory names no folder, and message files are called the same in all of
// them: what it lists counts where the messages agree.
static void JudgeDFile(Candidate& candidate, const FileNames& files, const Path& directory) {
    const Folder folder = OpenFolder(candidate.path, -1);
    bool damaged = folder.size % BaseDirFile::keRecordSize != 0;
    std::vector<unsigned long long> covered;
    ForEachSlot(folder, [&](Slot& slot) {
        if (slot.stored.used == 0)
            return;
        if (!IsSound(slot.stored)) {
            damaged = true;
            return;
        }
        ++candidate.records;
        if (candidate.role != Candidate::WindowsCopy || Agrees(slot, directory))
            AddCovered(covered, slot, files);
    });
    MakeUnique(covered);
    candidate.covered = covered.size();
    candidate.whole = !damaged;
}

static void JudgePrefFile(Candidate& candidate) {
    const PrefDirectory directory(candidate.path);
    candidate.records = std::count_if(directory.blocks.begin(), directory.blocks.end(),
                                      [&](const auto& block) { return directory.Holds(block); });
    candidate.whole = directory.damage.empty() && candidate.records > 0 &&
                      candidate.records == directory.blocks.size();
}

static void Judge(Candidate& candidate, Kind kind, const FileNames& files, const Path& directory) {
    if (InputFile(candidate.path).Size() == 0)
        return;
    if (kind == Kind::DFile)
        return JudgeDFile(candidate, files, directory);
    if (kind == Kind::PrefFile)
        return JudgePrefFile(candidate);
    const unsigned long long size = InputFile(candidate.path).Size();
    candidate.records = size / sizeof(UserLRec);
    candidate.whole = size % sizeof(UserLRec) == 0 && size > 0;
}

// Whether a program is writing to it right now.
static bool IsBeingWritten(const Path& path) {
    const FileHandle file(CreateFileW(path.Full().c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      0, nullptr));
    return !file && GetLastError() == ERROR_SHARING_VIOLATION;
}

// What the file is, or was.
static Kind KindOfTarget(const Path& target) {
    if (FoldCase(target.Name()) == L"RB.DAT")
        return Kind::PrefFile;
    for (const Path& path : {target, BackupOf(target)})
        if (path.What() == Path::keFile) {
            const Kind kind = KindOf(path);
            if (kind == Kind::UserFile || kind == Kind::DFile)
                return kind;
        }
    return Kind::DFile;
}

// Whether the library or this tool gives temporary files that are to replace the target such a
// name: one in numbers, or its own.
static bool IsTemporaryName(const std::wstring& name, const Path& target) {
    if (FoldCase(ExtensionOf(name)) != L".TMP")
        return false;
    if (FoldCase(name) == FoldCase(target.WithExtension(L".TMP").Name()))
        return true;
    const std::wstring stem = name.substr(0, name.size() - 4);
    return !stem.empty() && stem.size() <= 8 &&
           std::all_of(stem.begin(), stem.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

namespace {

class Finder {
public:
    explicit Finder(const Path& target) {
        mFound.target = target;
        mFound.kind = KindOfTarget(target);
    }

    Leftovers Find();

private:
    bool Add(const Path& path, Candidate::Role role, unsigned long long written);
    void AddBeside();
    void AddWindowsCopies();
    void JudgeAll();
    bool IsBetter(const Candidate& left, const Candidate& right) const;
    void Choose();

    const Candidate* Of(Candidate::Role role) const {
        for (const Candidate& candidate : mFound.candidates)
            if (candidate.role == role)
                return &candidate;
        return nullptr;
    }

    Leftovers mFound;
};

// Of files that are none of this kind, only empty temporary ones belong here.
bool Finder::Add(const Path& path, Candidate::Role role, unsigned long long written) {
    if (path.What() != Path::keFile)
        return false;
    const Kind kind = KindOf(path);
    const bool empty = kind == Kind::Empty && role != Candidate::Backup;
    if (kind != mFound.kind && !empty)
        return false;
    if (role == Candidate::Temporary && IsBeingWritten(path))
        return false;
    mFound.candidates.push_back({path, role, written});
    return true;
}

void Finder::AddBeside() {
    const Path& target = mFound.target;
    const std::wstring backup = FoldCase(BackupOf(target).Name());
    const std::wstring own = FoldCase(target.Name());
    ForEachFile(target.Folder(), [&](const FileEntry& entry) {
        const std::wstring key = FoldCase(entry.name);
        if (key == own)
            Add(target, Candidate::Target, entry.written);
        else if (key == backup)
            Add(BackupOf(target), Candidate::Backup, entry.written);
        else if (IsTemporaryName(entry.name, target))
            Add(target.Beside(entry.name), Candidate::Temporary, entry.written);
    });
}

// UpdateDFile of a type 2 file writes it again from a copy in the Windows directory.
void Finder::AddWindowsCopies() {
    const Candidate* const target = Of(Candidate::Target);
    if (mFound.kind != Kind::DFile || !target || OpenFolder(target->path, -1).type != keDirMessages)
        return;
    wchar_t windows[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    const Path directory(Utf8(std::wstring_view(windows)));
    ForEachFile(directory, [&](const FileEntry& entry) {
        const std::wstring key = FoldCase(entry.name);
        if (key.starts_with(L"JPW") && ExtensionOf(key) == L".TMP")
            Add(directory.Child(entry.name), Candidate::WindowsCopy, entry.written);
    });
}

// Those in the Windows directory may be of any folder: only what this one lacks makes them its own.
void Finder::JudgeAll() {
    const Path directory = mFound.target.Folder();
    const FileNames files(directory);
    for (Candidate& candidate : mFound.candidates)
        Judge(candidate, mFound.kind, files, directory);
    const Candidate* const target = Of(Candidate::Target);
    const unsigned long long covered = target ? target->covered : 0;
    std::erase_if(mFound.candidates, [&](const Candidate& candidate) {
        return candidate.role == Candidate::WindowsCopy && candidate.covered <= covered;
    });
}

bool Finder::IsBetter(const Candidate& left, const Candidate& right) const {
    // The file itself stays, unless it is damaged and a later one is not, or it lists nothing.
    if (left.role == Candidate::Target)
        return !IsBetter(right, left);
    if (right.role == Candidate::Target && mFound.kind != Kind::DFile)
        return left.whole && !right.whole;
    if (right.role == Candidate::Target) {
        if (right.records == 0)
            return left.records > 0 && left.covered > 0;
        return left.covered > right.covered &&
               (left.role == Candidate::WindowsCopy ||
                (left.role == Candidate::Temporary && !right.whole && left.whole &&
                 left.written >= right.written));
    }
    if (left.covered != right.covered)
        return left.covered > right.covered;
    if (left.whole != right.whole)
        return left.whole;
    if (left.covered == 0 && left.records != right.records)
        return left.records > right.records;
    if (left.written != right.written)
        return left.written > right.written;
    return left.role > right.role;
}

void Finder::Choose() {
    auto& all = mFound.candidates;
    std::stable_sort(all.begin(), all.end(), [this](const Candidate& a, const Candidate& b) {
        return &a != &b && IsBetter(a, b);
    });
    const Candidate& best = all.front();
    mFound.why = best.role == Candidate::Target ? "it is sound, or none of the others is better"
                 : all.size() == 1              ? "it is the only one"
                 : best.covered > all[1].covered
                     ? "it lists the most messages whose files are there"
                 : best.whole && !all[1].whole   ? "it alone is whole"
                 : best.written > all[1].written ? "it is whole as the others are, and newer"
                                                 : "it has the most";
}

Leftovers Finder::Find() {
    AddBeside();
    AddWindowsCopies();
    // What is alone needs no comparison, and may be long.
    if (mFound.candidates.size() == 1 && Of(Candidate::Target))
        return mFound;
    JudgeAll();
    const Candidate* const target = Of(Candidate::Target);
    const Candidate* const backup = Of(Candidate::Backup);
    const bool isPref = mFound.kind == Kind::PrefFile;
    if (!mFound.target.IsThere() && !mFound.candidates.empty())
        mFound.state = Leftovers::Missing;
    else if (Of(Candidate::WindowsCopy))
        mFound.state = Leftovers::Copied;
    else if (target && backup &&
             (mFound.kind == Kind::DFile ? target->records == 0 && backup->covered > 0
                                         : !target->whole && backup->whole))
        mFound.state = Leftovers::Emptied;
    else if (Of(Candidate::Temporary) && !isPref)
        mFound.state = Leftovers::Unfinished;
    if (mFound.state != Leftovers::None)
        Choose();
    return mFound;
}

} // namespace

Leftovers FindLeftovers(const Path& target) { return Finder(target).Find(); }

void NeedNoLeftovers(const Path& target) {
    const Leftovers found = FindLeftovers(target);
    if (found.state != Leftovers::None)
        throw Failure{
            fmt::format("{} \"mailfolder recover {}\" tells more, and mends it. Nothing was "
                        "changed.",
                        found.Words(), target.Shown()),
            keDamage};
}

unsigned long long OnlyInBackup(const Path& target) {
    const FileNames files(target.Folder());
    const auto listed = [&](const Path& path) {
        std::vector<unsigned long long> covered;
        if (KindOf(path) == Kind::DFile)
            ForEachSlot(OpenFolder(path, -1), [&](Slot& slot) {
                if (slot.stored.used != 0)
                    AddCovered(covered, slot, files);
            });
        MakeUnique(covered);
        return covered;
    };
    const auto now = listed(target);
    const auto before = listed(BackupOf(target));
    return std::count_if(before.begin(), before.end(), [&](unsigned long long file) {
        return !std::binary_search(now.begin(), now.end(), file);
    });
}
