#include <deque>
#include <map>
#include <memory>
#include <random>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/pref_bytes.h"
#include "tests/support/resource_text.h"
#include "tests/survival/pref_steps.h"

// Programs that are ended in the middle of an operation: what their files then hold, and what the
// library's next run makes of them.

static long long Microseconds() {
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return now.QuadPart * 1000000 / frequency.QuadPart;
}

// A program of survival_worker.exe.
class Worker {
public:
    Worker(Text operation, Text folder)
        : mProcess(new HelperProcess("survival_worker.exe", operation + " " + folder + " " +
                                                                mReady.Name() + " " + mGo.Name() +
                                                                " " + mDone.Name())) {}
    bool IsReady() { return mReady.Wait(60000); }
    void Go() { mGo.Set(); }
    bool IsDone(unsigned long milliseconds) { return mDone.Wait(milliseconds); }
    void Kill() { mProcess.reset(); }
    unsigned long ExitCode() { return mProcess->ExitCode(); }

private:
    Signal mReady, mGo, mDone;
    std::unique_ptr<HelperProcess> mProcess;
};

// What a file holds; "none" for none.
static std::string Held(Text path) { return FileThere(path) ? ReadFileBytes(path) : "none"; }

// The names and bytes of a folder's files.
static std::string Everything(Text folder) {
    std::string all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            all += entry.path().string() + Held(entry.path().string());
    return all;
}

class Killed : public MailFolder {
protected:
    static constexpr unsigned int kKills = 200, kAhead = 3, kSeed = 1;

    virtual void Prepare(Text folder) = 0;
    // Checks what is left, lets the library go on with it, and names the moment of the kill;
    // kBetween before, between and after the operations.
    virtual std::string Check(Text folder) = 0;
    static constexpr char kBetween[] = "between_operations";

    std::string Fresh(unsigned int number) {
        const std::string folder = mFolder.Path("V" + std::to_string(number % kAhead));
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
        Prepare(folder);
        return folder;
    }
    // How long a worker takes that is left alone.
    long long Duration(Text operation) {
        Worker worker(operation, Fresh(0));
        EXPECT_TRUE(worker.IsReady());
        const long long start = Microseconds();
        worker.Go();
        EXPECT_TRUE(worker.IsDone(60000));
        const long long duration = Microseconds() - start;
        EXPECT_EQ(worker.ExitCode(), 0u);
        return duration;
    }
    // Ends workers at random moments; `least` of them are to be in the middle of an operation.
    void KillAll(Text operation, unsigned int least) {
        std::mt19937 random(kSeed);
        std::map<std::string, unsigned int> moments;
        std::deque<std::unique_ptr<Worker>> workers;
        long long duration = Duration(operation);
        // Those that come next start while this one's files are looked at.
        for (unsigned int i = 0; i < kKills + kAhead - 1; ++i) {
            workers.emplace_back(i < kKills ? new Worker(operation, Fresh(i)) : nullptr);
            if (i + 1 < kAhead)
                continue;
            const unsigned int kill = i + 1 - kAhead;
            const long long delay = static_cast<long long>(random() / 4294967296.0 * duration);
            ASSERT_TRUE(workers.front()->IsReady());
            const long long start = Microseconds();
            workers.front()->Go();
            while (Microseconds() - start < delay)
                ;
            workers.front()->Kill();
            // Too late for some is well; as the machine's speed changes, for few.
            const bool late = workers.front()->IsDone(0);
            duration += late ? -duration / 32 : duration / 256;
            workers.pop_front();
            SCOPED_TRACE("seed " + std::to_string(kSeed) + ", kill " + std::to_string(kill) +
                         " after " + std::to_string(delay) + " of " + std::to_string(duration) +
                         " microseconds");
            const std::string folder = mFolder.Path("V" + std::to_string(kill % kAhead));
            // It counts as ended while the system may still be at its last write.
            std::string last;
            do {
                last = Everything(folder);
                Sleep(25);
            } while (Everything(folder) != last);
            EXPECT_FALSE(FileThere(folder + "\\FAILED"));
            const std::string moment = Check(folder);
            ++moments[late ? "after_the_end" : moment];
            if (HasFailure())
                return;
        }
        unsigned int middle = 0;
        for (const auto& [moment, count] : moments) {
            std::printf("    %3u %s\n", count, moment.c_str());
            RecordProperty(moment, static_cast<int>(count));
            middle += moment == kBetween || moment == "after_the_end" ? 0 : count;
        }
        EXPECT_GE(middle, least) << "too few kills hit the operation";
    }
};

static bool IsStart(Text bytes, Text whole) { return whole.compare(0, bytes.size(), bytes) == 0; }

// D files that are rewritten one after another, by way of a copy and a backup.
class KilledRewriting : public Killed {
protected:
    static constexpr unsigned int kFiles = 6, kRecords = 900;

    KilledRewriting() {
        mBefore = mCompressed = mStripped = kHeader;
        for (unsigned int i = 0; i < kRecords; ++i) {
            const std::string record = Message("T" + std::to_string(i));
            const std::string identified = MessageID(record, "<1@a>");
            mBefore += i % 3 ? identified : Free(identified);
            mCompressed += i % 3 ? identified : "";
            mStripped += i % 3 ? With(identified, 112, Bytes("\0")) : "";
        }
    }
    static std::string Path(Text folder, unsigned int i, Text extension = ".DAT") {
        return folder + "\\D" + std::to_string(i) + extension;
    }
    void Prepare(Text folder) override {
        for (unsigned int i = 0; i < kFiles; ++i) {
            WriteFileBytes(Path(folder, i), mBefore);
            WriteFileBytes(Path(folder, i, ".BAK"), mOlder);
        }
    }
    const std::string mOlder = kHeader + Message("older");
    std::string mBefore, mCompressed, mStripped;
};

class KilledCompressing : public KilledRewriting {
protected:
    std::string Check(Text folder) override {
        std::vector<std::string> copies;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() == ".TMP")
                copies.push_back(entry.path().string());
        const std::string copy = copies.empty() ? "none" : ReadFileBytes(copies[0]);
        EXPECT_LE(copies.size(), 1u);
        EXPECT_TRUE(copy == "none" || IsStart(copy, mCompressed));
        std::string moment = copy == "none" ? kBetween : copy == mCompressed ? "copied" : "copying";

        for (unsigned int i = 0; i < kFiles; ++i) {
            const std::string file = Held(Path(folder, i)), backup = Held(Path(folder, i, ".BAK"));
            if (file == "none") {
                EXPECT_TRUE(backup == mBefore && copy == mCompressed) << i;
                moment = "renaming";
            } else if (file == mBefore) {
                EXPECT_TRUE(backup == mOlder || (backup == "none" && copy == mCompressed)) << i;
                if (backup == "none")
                    moment = "backup_removed";
            } else {
                EXPECT_TRUE(file == mCompressed) << i;
                if (backup != "none") {
                    EXPECT_TRUE(backup == mBefore && copy == "none") << i;
                    moment = "backup_left";
                }
            }
            CompressAgain(folder, i, file == "none");
        }
        // Nothing removes the copy of a run that was ended.
        EXPECT_EQ(copies.empty() ? "none" : ReadFileBytes(copies[0]), copy);
        return moment;
    }
    void CompressAgain(Text folder, unsigned int i, bool missing) {
        DFile again(keDirFolder, Path(folder, i));
        if (missing) {
            // The next run does not find the file, and leaves the backup, which takes its name.
            EXPECT_EQ(again.CompressDFile(), 0);
            std::filesystem::rename(Path(folder, i, ".BAK"), Path(folder, i));
        }
        EXPECT_EQ(again.CompressDFile(), 1);
        EXPECT_TRUE(Held(Path(folder, i)) == mCompressed);
        EXPECT_EQ(Held(Path(folder, i, ".BAK")), "none");
    }
};

TEST_F(KilledCompressing, KeepsTheFileOrItsBackup) { KillAll("compress", 40); }

class KilledStripping : public KilledRewriting {
protected:
    std::string Check(Text folder) override {
        std::string moment = kBetween;
        for (unsigned int i = 0; i < kFiles; ++i) {
            const std::string file = Held(Path(folder, i)), backup = Held(Path(folder, i, ".BAK")),
                              copy = Held(Path(folder, i, ".TMP"));
            if (file == "none") {
                EXPECT_TRUE(backup == mBefore && copy == mStripped) << i;
                moment = "renaming";
            } else if (file == mBefore) {
                EXPECT_TRUE(copy == "none" || IsStart(copy, mStripped)) << i;
                EXPECT_TRUE(backup == mOlder || (backup == "none" && copy == mStripped)) << i;
                if (copy != "none")
                    moment = backup == "none" ? "backup_removed" : "copying";
            } else {
                EXPECT_TRUE(file == mStripped && backup == mBefore && copy == "none") << i;
            }
            StripAgain(folder, i, file);
        }
        return moment;
    }
    void StripAgain(Text folder, unsigned int i, Text file) {
        DFile again(keDirFolder, Path(folder, i));
        if (file == "none") {
            EXPECT_EQ(again.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 0);
            EXPECT_EQ(Reports(), kNotStripped);
            EXPECT_TRUE(Held(Path(folder, i, ".TMP")) == mStripped);
            std::filesystem::rename(Path(folder, i, ".BAK"), Path(folder, i));
        }
        EXPECT_EQ(again.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 1);
        EXPECT_TRUE(Held(Path(folder, i)) == mStripped);
        EXPECT_TRUE(Held(Path(folder, i, ".BAK")) == (file == "none" ? mBefore : file));
        EXPECT_EQ(Held(Path(folder, i, ".TMP")), "none");
    }
};

TEST_F(KilledStripping, KeepsTheFileOrItsBackup) { KillAll("strip", 50); }

class KilledMoving : public Killed {
protected:
    static constexpr unsigned int kMessages = 24;

    static std::string MessageName(unsigned int i) { return "M" + std::to_string(i) + ".EML"; }
    static std::string OldMessage(unsigned int i) {
        return Date(Message("T" + std::to_string(i), MessageName(i)), 3029529600u);
    }
    void Prepare(Text folder) override {
        std::string records = kHeader;
        for (unsigned int i = 0; i < kMessages; ++i) {
            records += OldMessage(i);
            WriteFileBytes(folder + "\\" + MessageName(i), OldMessage(i) + "text");
        }
        WriteFileBytes(folder + "\\D.DAT", records);
        std::filesystem::create_directory(folder + "\\OLD");
        WriteFileBytes(folder + "\\OLD\\D.DAT", kHeader);
    }
    // How many messages are in the other folder, by its records, its files and the slots freed for
    // them; in that order, and each message in one folder alone.
    struct Moved {
        unsigned int listed, files, freed;
    };
    Moved Count(Text folder) {
        const std::string old = ReadFileBytes(folder + "\\OLD\\D.DAT");
        std::set<std::string> listed;
        std::string records = kHeader, oldRecords = kHeader, unlisted;
        Moved moved = {static_cast<unsigned int>(old.size()) / 316 - 1, 0, 0};
        for (unsigned int i = 0; i < moved.listed; ++i) {
            const std::string name = old.substr(316 * (i + 1) + 39, old[316 * (i + 1) + 38]);
            oldRecords += With(OldMessage(i), 38, Pascal(name));
            EXPECT_TRUE(listed.insert(name).second);
            EXPECT_TRUE(Held(folder + "\\OLD\\" + name) == OldMessage(i) + "text") << i;
        }
        EXPECT_TRUE(old == oldRecords);
        for (const auto& entry : std::filesystem::directory_iterator(folder + "\\OLD"))
            if (entry.path().extension() == ".EML") {
                if (!listed.count(entry.path().filename().string()))
                    mUnlisted = entry.path().string();
                ++moved.files;
            }
        EXPECT_TRUE(moved.files == moved.listed ||
                    Held(mUnlisted) == OldMessage(moved.listed) + "text");
        const std::string left = ReadFileBytes(folder + "\\D.DAT");
        for (unsigned int i = 0; i < kMessages; ++i) {
            const bool free = left[316 * (i + 1) + 2] == 0;
            moved.freed += free;
            records += free ? Free(OldMessage(i)) : OldMessage(i);
            EXPECT_EQ(free, i < moved.freed);
            EXPECT_TRUE(Held(folder + "\\" + MessageName(i)) ==
                        (i < moved.files ? "none" : OldMessage(i) + "text"))
                << i;
        }
        EXPECT_TRUE(left == records);
        return moved;
    }
    std::string Check(Text folder) override {
        const Moved moved = Count(folder);
        EXPECT_TRUE(moved.files == moved.listed || moved.files == moved.listed + 1);
        EXPECT_TRUE(moved.files == moved.freed || moved.files == moved.freed + 1);
        EXPECT_LE(moved.freed, moved.listed);
        // Before the first message, between two and after the last no message is half moved.
        std::string moment = kBetween;
        DFile inbox(keDirFolder, folder + "\\D.DAT"), old(keDirFolder, folder + "\\OLD\\D.DAT");
        if (moved.files > moved.freed) {
            moment = moved.files > moved.listed ? "moved_and_not_listed" : "listed_twice";
            // The next run stops at the message that is gone, until its record is deleted.
            inbox.DeleteOldMail(0, 0, &old);
            EXPECT_EQ(Reports(), kNotRenamed + kNotAged);
            const Moved same = Count(folder);
            EXPECT_TRUE(same.files == moved.files && same.listed == moved.listed &&
                        same.freed == moved.freed);
            DirectoryRecord gone = Record(OldMessage(moved.freed));
            EXPECT_EQ(inbox.DeleteMail(gone), 1);
        }
        if (moved.files > moved.listed) {
            RbFile message(mUnlisted.c_str());
            EXPECT_EQ(old.AddMessage(&message), 1);
        }
        inbox.DeleteOldMail(0, 0, &old);
        const Moved all = Count(folder);
        EXPECT_TRUE(all.files == kMessages && all.listed == kMessages && all.freed == kMessages);
        return moment;
    }
    std::string mUnlisted;
};

// A message is half moved for a small part of the time: most kills fall between two.
TEST_F(KilledMoving, LeavesOneMessageAtMostHalfMoved) { KillAll("move", 8); }

class KilledAddingPrefs : public Killed {
protected:
    static constexpr unsigned int kSteps = std::size(kPrefSteps);

    // The file before the first step and after each, and the steps that rebuild it.
    KilledAddingPrefs() {
        std::vector<PrefStep> apps;
        std::vector<std::string> blocks;
        mStates.push_back(File(apps, blocks));
        for (unsigned int step = 0; step < kSteps; ++step) {
            unsigned int app = 0;
            while (app < apps.size() && apps[app].id != kPrefSteps[step].id)
                ++app;
            mRebuilds.push_back(app > 0 && app == apps.size());
            if (app == apps.size()) {
                apps.push_back(kPrefSteps[step]);
                blocks.emplace_back();
            }
            blocks[app] = ScrambledBlock(kPrefSteps[step].Block(step));
            mStates.push_back(File(apps, blocks));
        }
        mRebuilds.push_back(false);
    }
    static std::string File(const std::vector<PrefStep>& apps,
                            const std::vector<std::string>& blocks) {
        std::string entries, data;
        for (unsigned int i = 0; i < apps.size(); ++i) {
            entries += PrefEntry(std::string{char(apps[i].id), '\0'}, "\x02\x01", i + 1,
                                 46 + 12 * apps.size() + data.size(), apps[i].size);
            data += blocks[i];
        }
        return PrefHeader("\x02\x01", "RB.DAT", apps.size()) + entries + data;
    }
    void Prepare(Text folder) override { WriteFileBytes(folder + "\\RB.DAT", mStates[0]); }

    std::string Check(Text folder) override {
        const std::string file = Held(folder + "\\RB.DAT"), backup = Held(folder + "\\RB.BAK"),
                          aside = Held(folder + "\\RB.TMP");
        unsigned int done = 0;
        const auto find = [&](Text bytes) {
            done = std::find(mStates.begin(), mStates.end(), bytes) - mStates.begin();
            return done < mStates.size();
        };
        if (file == "none") {
            EXPECT_TRUE(find(aside) && mRebuilds[done] && backup == mStates[done + 1]);
            OpenMissing(folder);
            GoOn(folder, done + 1);
            return "renaming";
        }
        if (!find(file)) {
            // Only the first block is added in place. The header does not count it yet.
            EXPECT_TRUE(file.size() > 46 && IsStart(file, With(mStates[1], 0, mStates[0])) &&
                        backup == "none" && aside == "none");
            GoOn(folder, 0);
            return "first_block_not_counted";
        }
        std::string kept = "none";
        for (unsigned int step = 0; step < done; ++step)
            if (mRebuilds[step])
                kept = mStates[step];
        std::string moment = kBetween;
        if (aside != "none") {
            EXPECT_TRUE(mRebuilds[done - 1] && aside == mStates[done - 1] && backup == "none");
            moment = "backup_not_named";
        } else if (backup != kept) {
            EXPECT_TRUE(mRebuilds[done] && IsStart(backup, mStates[done + 1]));
            moment = backup == mStates[done + 1] ? "copied" : "copying";
        }
        GoOn(folder, done);
        return moment;
    }
    // Nothing takes the missing file's place by itself; the rebuilt one does.
    void OpenMissing(Text folder) {
        MessageBoxes boxes;
        UserPrefFile file;
        file.SetSpecPart((folder + "\\RB.DAT").c_str(), 0);
        EXPECT_EQ(file.OpenPrefFile(), 0);
        EXPECT_EQ(boxes.TakeTexts(), std::vector{FileMessage(604, folder + "\\RB.DAT")});
        EXPECT_EQ(Held(folder + "\\RB.DAT"), "none");
        std::filesystem::rename(folder + "\\RB.BAK", folder + "\\RB.DAT");
    }
    // The step that was cut short, or comes next, and one more.
    void GoOn(Text folder, unsigned int done) {
        UserPrefFile file;
        file.SetSpecPart((folder + "\\RB.DAT").c_str(), 0);
        ASSERT_EQ(file.OpenPrefFile(), 1);
        const unsigned int end = std::min(done + 2, kSteps);
        for (unsigned int step = done; step < end; ++step) {
            std::string block = kPrefSteps[step].Block(step);
            AppPrefTag tag{kPrefSteps[step].id, kPrefVersion, kPrefSteps[step].size, block.data()};
            EXPECT_EQ(file.WriteAppPrefs(tag), 1);
        }
        file.ClosePrefFile();
        EXPECT_TRUE(Held(folder + "\\RB.DAT") == mStates[end]) << end;
    }

    std::vector<std::string> mStates;
    std::vector<bool> mRebuilds;
};

TEST_F(KilledAddingPrefs, KeepsEveryBlock) { KillAll("prefs", 50); }
