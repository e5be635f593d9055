// D files of the three types and their folder, beside the model of folder_model.h.

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/folder_model.h"
#include "tests/support/reports.h"
#include "tests/support/scratch.h"
#include "tests/support/side_by_side.h"

namespace {

const std::string kInbox = "INBOX.DAT", kOld = "OLD\\OLD.DAT";
const std::string kLongest = std::string(29, 'L') + ".EML";
int idleCalls;
void CountIdle() { ++idleCalls; }

std::string Base(Text report) { return report + "|JXSYSTEM\\DIRFL_BS.CPP\n"; }
std::string Inbox(Text report) { return report + "|JXSYSTEM\\DIRFILE.CPP\n"; }
const std::string kAlter = "Error BaseDirFile: AlterDirectoryBlock()";
const std::string kFileError = Base("0|Error BaseDirFile: DeleteOldMail(), File error");
const std::string kNotFound = Base("0|" + kAlter + ", Record not found");
const std::string kNotRenamed = "0|DiskDriver::Rename() failed.|254|JXRESIDT\\DISKDRVR.CPP\n";
const std::string kNotRemoved = "eResult == keDELETE_OK|54|JXRESIDT\\RBFILE1.CPP\n";

// Does not wait for a file that another process may hold.
struct File : DirectoryFile {
    File(TypeDirFile type, Text path) : DirectoryFile(type) {
        Parse(std::filesystem::absolute(path).string().c_str(), 1);
    }
    bool DoOpen(const char* name, int mode, int prot) override {
        return RbFile::DoOpen(name, mode, prot);
    }
};

DirectoryRecord Read(Text bytes) {
    std::istringstream in(bytes);
    DirectoryRecord record;
    in >> record;
    return record;
}

// Calls its own AddObject for each record.
struct CountingContainer : RB_Container<DirectoryRecord> {
    CountingContainer() : RB_Container(keOwnsObjects) {}
    int AddObject(DirectoryRecord& record) override {
        ++added;
        return RB_Container::AddObject(record);
    }
    int added = 0;
};

class Store : public SideBySide {
public:
    explicit Store(TypeDirFile type) : mType(type), mFile(type, kInbox) {
        CreateDirectoryA("OLD", nullptr);
        CreateDirectoryA("SUB", nullptr);
        // No message files.
        CreateDirectoryA("DIR.EML", nullptr);
        Put("A.EMX", Message("other extension"));
        Put("SUB\\E.EML", Message("other folder"));
        Put(kInbox, type == keDirMessages ? "" : kHeader);
        Put(kOld, kHeader);
        mNow = static_cast<unsigned long>(std::time(nullptr));
    }
    ~Store() override {
        if (mFile.isOpen())
            mFile.close();
    }
    void Step(Random& random) override {
        idleCalls = mIdle = 0;
        mExpected.clear();
        mPosition.reset();
        const std::string name = AnyName(random);
        if (random.OneIn(6)) {
            PutSomething(random, name);
        } else if (mFile.isOpen()) {
            StepOpen(random);
        } else {
            if (random.OneIn(4))
                StepScan(random);
            else
                StepChange(random, name);
        }
        CompareAll();
    }

private:
    using Change = std::function<std::string(Text)>;

    // What other programs do.
    void PutSomething(Random& random, Text name) {
        if (random.OneIn(2)) {
            if (name.find('\\') != name.npos || name.find('*') != name.npos || name.size() < 5 ||
                name.back() == '.' || name == kInbox)
                return;
            const std::string bytes =
                random.OneIn(5) ? std::string(random.Below(400), 'x') : AnyRecord(random) + "text";
            Say("put", name, bytes.size());
            Put(name, bytes);
            return;
        }
        std::string bytes = mType == keDirMessages ? ""
                            : random.OneIn(8)      ? AnyRecord(random)
                                                   : kHeader;
        // Now and then more than are read at once.
        for (unsigned int slots = random.OneIn(30) ? 500 : random.Below(6); slots--;)
            bytes += AnyRecord(random);
        if (random.OneIn(6) && !mFile.isOpen())
            bytes += AnyRecord(random).substr(0, random.Below(316));
        if (random.OneIn(20))
            bytes = bytes.substr(0, random.Below(316));
        if (mFile.isOpen())
            return;
        Say("put D file of", bytes.size());
        if (random.OneIn(25)) {
            Say("removed");
            DeleteFileA(kInbox.c_str());
            mFiles.erase(kInbox);
        } else {
            Put(kInbox, bytes);
        }
    }
    void StepOpen(Random& random) {
        std::string& file = mFiles[kInbox];
        const unsigned int slots = file.size() / 316, slot = random.Below(slots + 1);
        const long position = static_cast<long>(slot) * 316 + (random.OneIn(9) ? 5 : 0);
        const bool write = random.OneIn(2);
        switch (random.Below(8)) {
        case 0:
            Say("close");
            mFile.close();
            break;
        case 1:
            Say("seek", position);
            mFile.clear();
            mFile.seekg(position);
            mPosition = position;
            break;
        case 2:
            Find(random);
            break;
        case 3: {
            Say("alter at", position, write);
            const std::string record = AnyRecord(random);
            DirectoryRecord real = Read(record);
            Same("position", mFile.AlterDirectoryBlock(real, position, write),
                 Alter(record, position, write));
            if (mExpected.empty())
                mPosition = position + 316;
            CompareRecord(real);
            break;
        }
        case 4: {
            Say("alter slot", slot, write);
            const std::string record = AnyRecord(random);
            DirectoryRecord real = Read(record);
            mFile.clear();
            mFile.seekg(7);
            Same("position", mFile.AlterDirectoryBlock(real, slot, write),
                 Alter(record, static_cast<long>(slot) * 316, write));
            mPosition = 7;
            CompareRecord(real);
            break;
        }
        case 5: {
            const std::string probe = AnyProbe(random), record = AnyRecord(random);
            Say("alter probe", write);
            DirectoryRecord realProbe = Read(probe), real = Read(record);
            const long found = Found(Fixed(Clamped(probe)));
            Same("position", mFile.AlterDirectoryBlock(realProbe, real, write),
                 found < 0 ? found : Alter(record, found, write));
            if (found < 0)
                mExpected = kNotFound;
            else
                CompareRecord(real), mPosition = found + 316;
            break;
        }
        case 6:
            mFile.clear();
            mFile.seekg(9);
            Count();
            mPosition = 9;
            break;
        case 7: {
            Say("read the first");
            DirectoryRecord real;
            mFile.clear();
            mFile.seekg(11);
            Same("read", mFile.ReadDDR(mFile, real), file.size() >= 316);
            mPosition = 11;
            break;
        }
        }
    }
    void StepScan(Random& random) {
        const unsigned int operation = random.Below(7);
        switch (operation) {
        case 0:
            Find(random);
            break;
        case 1:
            Count();
            break;
        case 2: {
            Say("identifiers");
            RB_Container<JxDownloadItem> items(1);
            std::string texts, model;
            const int result = mFile.GetUIDList(&items);
            for (auto* item = items.GetFirstObject(); item; item = items.GetNextObject())
                texts += item->Text().Text() + std::string(" ");
            Same("result", result, There());
            for (const std::string& slot : Slots(Bytes(), First()))
                if (IsUsed(slot) && Byte(slot, 112))
                    model += FieldText(slot, 112, 74) + " ";
            Same("identifiers", texts, model);
            if (!There())
                mExpected = Base("0|Can't open Inbox D File");
            break;
        }
        case 3: {
            const int options = random.Below(4);
            Say("check", options);
            int model = There() ? 2 : options & 1 ? 1 : 2;
            if (There()) {
                mIdle = 1;
                for (const std::string& slot : Slots(Bytes(), 316)) {
                    mIdle += 2;
                    const std::string record = Clamped(slot);
                    if (IsProcessable(record) && (!(options & 2) || IsInstallable(record))) {
                        model = 3;
                        break;
                    }
                }
                mIdle += model == 2;
            }
            Same("result", mFile.CheckUnprocessedDDRs(enumCheckOptions(options), CountIdle), model);
            break;
        }
        case 4:
            Walk();
            break;
        case 5: {
            const std::string record = AnyRecord(random);
            Say("rules");
            DirectoryRecord real = Read(record);
            const std::string clamped = Clamped(record);
            const int ok = IsProcessable(clamped), installable = ok && IsInstallable(clamped);
            Same("processable",
                 mFile.OkToProcess(&real) + 2 * mFile.OkToProcess(&real, keCheckInstallable) +
                     4 * mFile.OkToProcess(&real, keGetInstallable) +
                     8 * mFile.OkToProcess(&real, keGetInstallRequests),
                 ok + 6 * installable + 8 * ok);
            Same("valid", real.CheckValidity(), clamped == record && Word(record, 310) < 6);
            const std::string probe = AnyProbe(random);
            DirectoryRecord other = Read(probe);
            Same("same message", real == other, SameMessage(clamped, Clamped(probe)));
            real.FixTopicAndIndex();
            Same("fixed", Written(real), Fixed(clamped));
            Same("used", real.isUsed() + 2 * other.isUsed(),
                 IsUsed(Fixed(clamped)) + 2 * IsUsed(Clamped(probe)));
            const std::string id = random.Bytes(random.Below(90));
            real.SetMessageID(reinterpret_cast<const unsigned char*>(Pascal(id).data()));
            Same("identified", Written(real), MessageID(Fixed(clamped), id.substr(0, 73)));
            break;
        }
        case 6:
            Say("date stamp");
            Same("there", mFile.CheckDateStamp() != 0, There());
            break;
        }
    }
    void StepChange(Random& random, Text name) {
        const unsigned int operation = random.Below(14);
        const std::string probe = AnyProbe(random);
        DirectoryRecord real = Read(probe);
        const std::string fixed = Fixed(Clamped(probe));
        switch (operation) {
        case 0:
            Say("open");
            if (There())
                mFile.Open(keOpenUpdate), mPosition = 0;
            break;
        case 1:
        case 2:
            Add(name, random.OneIn(2));
            break;
        case 3:
            if (random.OneIn(3))
                Create();
            break;
        case 4: {
            Say("delete");
            std::string changed;
            const bool deleted = Change1(
                fixed, [&](Text stored) { return changed = Free(stored); },
                Base("isOpen()|" + kAlter + ", file not OPEN"),
                [&](Text stored) {
                    const std::string file = FileOf(FieldText(stored, 38, 34));
                    if (file == "SUB" || file == "OLD")
                        return mExpected += kNotRemoved, false;
                    if (!file.empty())
                        mFiles.erase(Upper(file));
                    return true;
                });
            Same("deleted", mFile.DeleteMail(real), deleted);
            break;
        }
        case 5:
        case 6:
        case 7: {
            const int action = operation == 5   ? random.Below(11)
                               : operation == 6 ? 2
                                                : random.Below(2);
            Say("mark", action);
            const int marked = Change1(
                fixed, [&](Text stored) { return Marked(stored, action); },
                Base("0|Error BaseDirFile: MarkRecord(), can't open file"),
                [](Text) { return true; });
            operation == 5
                ? Same("marked", mFile.MarkRecord(real, enumMarkMailAction(action)), marked)
            : operation == 6 ? mFile.MarkUnUsed(real, 0)
                             : mFile.MarkMail(real, action);
            break;
        }
        case 8: {
            Say("clear receipt");
            const bool asked = Byte(probe, 3) & 2;
            const int cleared =
                asked ? Change1(
                            fixed, [&](Text stored) { return Marked(stored, 7); },
                            Base("0|Error BaseDirFile: MarkRecord(), can't open file"),
                            [](Text) { return true; })
                      : 1;
            Same("cleared", mFile.ClearReturnReceipt(real), cleared);
            break;
        }
        case 9: {
            Say("compress");
            Same("compressed", mFile.CompressDFile(), There());
            if (There()) {
                mFiles[kInbox] = Head() + UsedRecords(Bytes(), [](Text record) { return record; });
                mFiles.erase("INBOX.BAK");
            }
            break;
        }
        case 10: {
            const bool all = random.OneIn(2);
            Say("strip", all);
            Same("stripped", mFile.RemoveAllMessageIDs(BaseDirFile::enumRemoveOptions(!all)),
                 There() && mType != keDirForeign);
            if (mType != keDirForeign) {
                mUsed = mUnprocessed = 0;
                if (There()) {
                    mFiles["INBOX.BAK"] = Bytes();
                    mFiles[kInbox] = Head() + UsedRecords(Bytes(), [&](Text record) {
                                         return !all && Byte(record, 3) & 0x20
                                                    ? record
                                                    : With(record, 112, {'\0'});
                                     });
                } else {
                    mExpected = Base("0|Error BaseDirFile: RemoveAllMessageIDs()");
                }
            }
            break;
        }
        case 11:
            Take(random);
            break;
        case 12:
            if (random.OneIn(2))
                MoveOld(random);
            else
                Trim();
            break;
        case 13:
            CopyUsed();
            break;
        }
    }

    // Finds the probe, and writes the stored record back changed where `first` lets it.
    template <class First>
    bool Change1(Text probe, const Change& change, Text notOpen, First first) {
        if (!There())
            return mExpected = notOpen, false;
        const long at = Found(probe);
        if (at < 0)
            return mExpected = kNotFound + kFileError, false;
        const std::string stored = Clamped(Bytes().substr(at, 316));
        if (!first(stored))
            return false;
        mFiles[kInbox].replace(at, 316, change(stored));
        return true;
    }
    long Alter(Text record, long position, bool write) {
        std::string& file = mFiles[kInbox];
        mRecord = write ? Clamped(record) : std::string();
        if (write) {
            file.resize(std::max<std::size_t>(file.size(), position + 316));
            file.replace(position, 316, mRecord);
            return position;
        }
        if (position + 316u > file.size())
            return mExpected = kFileError, -1;
        mRecord = Clamped(file.substr(position, 316));
        return position;
    }
    void CompareRecord(DirectoryRecord& real) {
        if (mExpected.empty())
            Same("record", Written(real), mRecord);
    }
    long Found(Text probe) {
        unsigned int at = First();
        for (const std::string& slot : Slots(Bytes(), at)) {
            if (SameMessage(Clamped(slot), probe))
                return at;
            at += 316;
        }
        return -2;
    }
    void Find(Random& random) {
        const std::string probe = AnyProbe(random);
        const int option = random.Below(2);
        Say("find", option);
        DirectoryRecord real = Read(probe);
        const long found = There() ? Found(Fixed(Clamped(probe))) : -1;
        Same("found", mFile.FindRecord(real, enumFindRecord(option)),
             found >= 0 && option ? -3 : found);
        Same("probe", Written(real), Fixed(Clamped(probe)));
        if (mFile.isOpen() && found >= 0)
            mPosition = found + 316 * option;
    }
    void Count() {
        Say("count");
        Same("counted", mFile.GetInfo(keInfoAll), There());
        mUsed = mUnprocessed = mKind1 = 0;
        mNewest = 0;
        for (const std::string& slot : Slots(Bytes(), First()))
            if (IsUsed(slot)) {
                const bool unprocessed = !(Byte(slot, 3) & 1);
                ++mUsed;
                mUnprocessed += unprocessed;
                mNewest = std::max(mNewest, Long(slot, 300));
                mKind1 |= unprocessed && Word(slot, 310) == 1;
            }
    }
    void Walk() {
        Say("walk");
        std::string walked, model;
        char *topic, *file, *sender;
        unsigned short kind, flag;
        for (int more = GetFirstRecord(mFile.FullFileSpec(), &topic, &file, &sender, &kind, &flag);
             more; more = GetNextRecord(&topic, &file, &sender, &kind, &flag))
            walked += topic + std::string("/") + file + "/" + sender + "/" +
                      std::to_string(kind * 2 + flag) + " ";
        Done();
        for (const std::string& slot : Slots(Bytes(), 0)) {
            if (!IsUsed(slot))
                continue;
            const std::string record = Clamped(slot), name = FieldText(record, 72, 32);
            const std::size_t bar = name.find('|');
            model += FieldText(record, 4, 28) + "/" + FieldText(record, 38, 34) + "/" +
                     (bar == name.npos ? name : name.substr(bar + 1) + " " + name.substr(0, bar)) +
                     "/" + std::to_string(Word(record, 310) * 2 + (Byte(record, 3) & 1)) + " ";
        }
        Same("walked", walked, model);
    }
    void Add(Text name, bool open) {
        if (name.find_first_of("*\\") != name.npos || name.empty() || name == "SUB" ||
            name == "NUL" || name.back() == '.')
            return;
        Say("add", name, open);
        RbFile message(mFolder.Path(name).c_str());
        open = open && message.Open(keOpenRead);
        if (open)
            message.seekg(3);
        const auto file = mFiles.find(Upper(name));
        const bool added =
            There() && file != mFiles.end() && file->second.size() >= 316 && name.size() <= 33;
        if (added) {
            // The rest of a write that was broken off gives way; a header comes first.
            std::string& inbox = mFiles[kInbox];
            inbox.resize(inbox.size() - inbox.size() % 316);
            if (inbox.empty())
                inbox = Head();
            inbox += Fixed(
                With(With(Clamped(file->second.substr(0, 316)), 38, Pascal(name)), 2, "\x01"));
        }
        Same("added", mFile.AddMessage(&message), added);
        Same("message is open", message.isOpen(), open);
        if (open) {
            Same("message's position", message.tellg(), There() ? 3 : message.tellg());
            message.close();
        }
    }
    void Create() {
        Say("create");
        int result = mType != keDirForeign;
        if (mType != keDirForeign) {
            mUsed = mUnprocessed = 0;
            std::string records, reports;
            for (const auto& [name, bytes] : mFiles) {
                if (name.size() < 4 || name.find('\\') != name.npos ||
                    name.substr(name.size() - 4) != ".EML")
                    continue;
                result = bytes.size() >= 316 && name.size() <= 33;
                if (result)
                    records += Fixed(
                        With(With(Clamped(bytes.substr(0, 316)), 38, Pascal(name)), 2, "\x01"));
                else
                    reports += Base("0|Error BaseDirFile: CreateDFile(), writing record");
            }
            if (mType == keDirMessages)
                mExpected =
                    reports + (reports.empty() ? "" : Base("0|Error BaseDirFile: CreateDFile()"));
            result = mType == keDirMessages ? result : 1;
            mFiles[kInbox] = mType == keDirMessages ? records : kHeader;
        }
        Same("created", mFile.CreateDFile(), result);
    }
    void Take(Random& random) {
        const int option = random.Below(4);
        Say("take", option);
        RB_Container<DirectoryRecord> plain(1);
        CountingContainer counting;
        const bool counts = random.OneIn(2);
        RB_Container<DirectoryRecord>& list = counts ? counting : plain;
        std::string taken, model;
        int expected = 1;
        if (There()) {
            std::string& file = mFiles[kInbox];
            mGood = mIdle = 1;
            for (unsigned int at = 316; at + 316 <= file.size(); at += 316) {
                std::string record = Clamped(file.substr(at, 316));
                if (!IsUsed(record))
                    continue;
                ++mIdle;
                if (option == 2 ? !(Byte(record, 3) & 0x40)
                                : !IsProcessable(record) || (option == 1 && !IsInstallable(record)))
                    continue;
                mIdle += 2;
                record = option == 2 ? Status(record, Byte(record, 3) & ~0x40)
                                     : Attributes(record, Word(record, 36) | 0x0400);
                file.replace(at, 316, record);
                model += record;
                expected = 2;
            }
        } else if (option == 2) {
            mGood = 0;
            mExpected = Inbox("fGood");
        }
        // Without anybody to wait for, records are read by blocks.
        const bool idle = random.OneIn(2);
        mIdle = idle ? mIdle : 0;
        if (option == 2 && !idle && random.OneIn(2))
            mFile.GetInstallableDDRs(&list);
        else
            Same("result",
                 mFile.GetUnprocessedDDRs(&list, idle ? CountIdle : nullptr,
                                          enumGetDDROptions(option)),
                 expected);
        for (auto* record = list.GetFirstObject(); record; record = list.GetNextObject())
            taken += Written(*record);
        Same("taken", taken, model);
        Same("added", counting.added * 316, counts ? model.size() : 0);
    }
    void MoveOld(Random& random) {
        const bool onlyProcessed = random.OneIn(2);
        const unsigned long age =
            random.Of<unsigned long>({0, 1000, 700000000, 0x80000000, 0xFFFFFFFF});
        Say("move old", age, onlyProcessed);
        File old(keDirFolder, kOld);
        std::vector<std::string> moved;
        if (mType == keDirFolder && !There())
            mExpected = Inbox("0|Error DirectoryFile: DeleteOldMail()");
        for (unsigned int at = 316; mType == keDirFolder && at + 316 <= Bytes().size(); at += 316) {
            const std::string record = Clamped(Bytes().substr(at, 316));
            unsigned long filed = Long(record, 300) - 2082844800ul;
            filed = filed < 315561600 ? 315561600 : filed;
            if (!IsUsed(record) || filed + 0ull + age >= mNow ||
                (onlyProcessed && !(Byte(record, 3) & 1)))
                continue;
            const std::string name = FileOf(FieldText(record, 38, 34));
            const auto file = mFiles.find(Upper(name));
            if (name.empty() || file == mFiles.end() || file->second.size() < 316) {
                if (!name.empty() && name != "SUB" && name != "OLD" && file == mFiles.end())
                    mExpected += kNotRenamed;
                mExpected += Inbox("0|Error DirectoryFile: DeleteOldMail()");
                // A file without a record has moved all the same.
                if (file != mFiles.end() && !name.empty())
                    moved.push_back(file->second), mFiles.erase(file);
                break;
            }
            moved.push_back(file->second);
            mFiles.erase(file);
            mFiles[kInbox].replace(at, 316, Free(record));
        }
        mFile.DeleteOldMail(age, onlyProcessed, &old);
        AdoptMoved(moved);
    }
    // The moved files have new names, which only the library knows: eight digits at most.
    void AdoptMoved(const std::vector<std::string>& moved) {
        std::map<std::string, std::string> fresh;
        for (const auto& entry : std::filesystem::directory_iterator("OLD")) {
            const std::string name = entry.path().filename().string();
            if (!mFiles.count("OLD\\" + name)) {
                fresh[name] = ReadFileBytes("OLD\\" + name);
                Same("name", name.find_first_not_of("0123456789"), name.size() - 4);
            }
        }
        Same("moved files", fresh.size(), moved.size());
        for (const std::string& bytes : moved)
            for (const auto& [name, content] : fresh)
                if (content == bytes && !mFiles.count("OLD\\" + name)) {
                    mFiles["OLD\\" + name] = bytes;
                    if (bytes.size() >= 316)
                        mFiles[kOld] += Fixed(
                            With(With(Clamped(bytes.substr(0, 316)), 38, Pascal(name)), 2, "\x01"));
                    break;
                }
    }
    void Trim() {
        Say("trim");
        mFile.UpdateDFile();
        if (!There())
            return;
        std::string& file = mFiles[kInbox];
        if (mType == keDirMessages) {
            std::string kept;
            for (const std::string& slot : Slots(file, 0))
                kept += Byte(slot, 2) ? slot : "";
            file = kept;
        } else if (file.size() < 316) {
            mExpected = Inbox("0|Error copy file: DirectoryFile");
        } else if (file.size() % 316 == 0) {
            while (file.size() > 316 && !Byte(file, file.size() - 314))
                file.resize(file.size() - 316);
        }
    }
    void CopyUsed() {
        Say("copy");
        RbFile copy(mFolder.Path("COPY.DAT").c_str());
        int number = 0, count = 0;
        std::string model;
        if (mType != keDirMessages) {
            mUsed = mUnprocessed = 0;
            mGood = 1;
            for (const std::string& slot : Slots(Bytes(), 316)) {
                ++number;
                if (!IsUsed(slot))
                    continue;
                model += With(Clamped(slot), 0, {char(number >> 8), char(number)});
                count = ++mUsed;
                mUnprocessed += !(Byte(slot, 3) & 1);
            }
            if (There())
                mFiles["COPY.DAT"] = model;
        }
        Same("copied", mFile.GetDFile(copy), count);
    }

    void CompareAll() {
        Same("reports", mReports.Take(), mExpected);
        Same("idle calls", idleCalls, mIdle);
        Same("counts",
             std::to_string(mFile.UsedCount()) + " " + std::to_string(mFile.UnprocessedCount()) +
                 " " + std::to_string(mFile.NewestDate()) + " " +
                 std::to_string(mFile.HasUnprocessedKind1()) + " " + std::to_string(mFile.IsGood()),
             std::to_string(mUsed) + " " + std::to_string(mUnprocessed) + " " +
                 std::to_string(mNewest) + " " + std::to_string(mKind1) + " " +
                 std::to_string(mGood));
        if (mPosition)
            Same("stands at", mFile.tellg(), *mPosition);
        std::map<std::string, std::string> there;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(mFolder.Path()))
            if (entry.is_regular_file()) {
                const std::string name = entry.path().string().substr(mFolder.Path().size() + 1);
                there[Upper(name)] = name;
            }
        std::string names, model;
        for (const auto& [upper, name] : there)
            names += upper + " ";
        for (const auto& [name, bytes] : mFiles)
            model += name + " ";
        Same("files", names, model);
        for (const auto& [name, bytes] : mFiles)
            if (there.count(name))
                Same(name.c_str(), ReadFileBytes(there[name]), bytes);
    }

    bool There() const { return mFiles.count(kInbox); }
    std::string Bytes() const { return There() ? mFiles.at(kInbox) : ""; }
    unsigned int First() const { return mType == keDirMessages ? 0 : 316; }
    std::string Head() const { return mType == keDirMessages ? "" : kHeader; }
    void Put(Text name, Text bytes) {
        WriteFileBytes(name, bytes);
        mFiles[Upper(name)] = bytes;
    }
    static std::string Upper(std::string text) {
        for (char& c : text)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return text;
    }
    // The file of this folder that a record's name is; empty for none.
    static std::string FileOf(std::string name) {
        if (name.find_first_of("*\\") != name.npos || name == "NUL")
            return "";
        const bool loneDot = name.size() > 1 && name.back() == '.' && name[name.size() - 2] != '.';
        name.resize(name.size() - loneDot);
        return loneDot && name == "SUB" ? "" : name;
    }
    static std::string AnyName(Random& random) {
        return random.Of<std::string>({"A.EML", "A.EML", "B.EML", "B.EML", "C.EML", "GONE.EML", "",
                                       "SUB", "..\\A.EML", "*.EML", "NUL", "A.EML.", "SUB.",
                                       kLongest, "M" + kLongest});
    }
    static std::string AnyRecord(Random& random) {
        std::string record =
            Message(random.Of<std::string>({"A", "B", "lunch", "Lunch", ""}), AnyName(random));
        record = Date(record, random.Of<unsigned long>(
                                  {1, 3029529600, 3029529601, 3872689600, 0xFFFFFFFF, 0x99223344}));
        record =
            With(record, 72, Pascal(random.Of<std::string>({"Smith|Anna", "Anna", "|Bo", ""})));
        record = Kind(record, static_cast<char>(random.Below(8)));
        if (random.OneIn(2))
            record = Status(record, random.Below(256) & ~(random.OneIn(2) ? 1 : 0));
        if (random.OneIn(2))
            record = Attributes(record,
                                random.OneIn(2) ? random.Below(0x10000) : random.Below(16) << 12);
        if (random.OneIn(3))
            record = MessageID(record, random.Text(70, "<1@.a>"));
        if (random.OneIn(3))
            record = random.OneIn(4) ? Broken(record) : Free(record);
        if (random.OneIn(6))
            record[random.Of<unsigned int>({4, 5, 38, 72, 112, 186, 308, 309, 310})] =
                static_cast<char>(random.Next());
        return record;
    }
    // Mostly one of the file's.
    std::string AnyProbe(Random& random) const {
        const std::vector<std::string> slots = Slots(Bytes(), 0);
        return slots.empty() || random.OneIn(6) ? AnyRecord(random) : random.Of(slots);
    }

    const ScratchFolder mFolder;
    const TypeDirFile mType;
    File mFile;
    Reports mReports;
    unsigned long mNow;

    // The model: the folder's files, what the object counts, and what the step is to report.
    std::map<std::string, std::string> mFiles;
    int mUsed = 0, mUnprocessed = 0, mKind1 = 0, mGood = 1, mIdle = 0;
    unsigned long mNewest = 0;
    std::string mExpected, mRecord;
    std::optional<long> mPosition; // where it is known
};

class StoreModels : public testing::TestWithParam<TypeDirFile> {};

TEST_P(StoreModels, Agree) {
    _putenv("TZ=UTC0");
    _tzset();
    Compare<Store>(25, 60, GetParam());
    _putenv("TZ=");
    _tzset();
}

INSTANTIATE_TEST_SUITE_P(DFiles, StoreModels,
                         testing::Values(keDirFolder, keDirForeign, keDirMessages));

} // namespace
