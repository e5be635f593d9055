#include <functional>
#include <map>

#include "resident/core/windows_api.h"
#include "tests/hostile/neighbours.h"
#include "tests/store/mail_folder.h"
#include "tests/support/helper_process.h"
#include "tests/support/pref_bytes.h"

// Programs that are ended before each single step that changes a file: what their files then hold,
// and what the tool and the library's next run make of them.

class Ended : public MailFolder {
protected:
    Ended() : mHere(mFolder.Path()) {}

    static unsigned long Run(const std::string& program, const std::string& arguments) {
        return HelperProcess(program, arguments).ExitCode();
    }
    // Another program does this, as neighbour.cpp says.
    unsigned long Do(Text kind) const {
        Signal start;
        start.Set();
        return Run("neighbour.exe", mHere + " " + kind + " 1 " + start.Name() + " \"\"");
    }
    // What a file holds; "none" for none.
    static std::string Held(Text path) { return FileThere(path) ? ReadFileBytes(path) : "none"; }

    // Ends the operation before its first step, its second, and so on until it gets through. `look`
    // checks what is left, mends it and names the state.
    void EndEverywhere(Text operation, const std::function<void()>& prepare,
                       const std::function<std::string()>& look) {
        std::map<std::string, unsigned int> states;
        unsigned int step = 0;
        for (unsigned long code = kEndedAtStep; code == kEndedAtStep && !HasFailure();) {
            prepare();
            SCOPED_TRACE(operation + " ended before step " + std::to_string(++step));
            SetEnvironmentVariableA("POSTRIDER_END_AT", std::to_string(step).c_str());
            code = Do(operation);
            SetEnvironmentVariableA("POSTRIDER_END_AT", nullptr);
            EXPECT_TRUE(code == 0 || code == kEndedAtStep) << code;
            ++states[look()];
        }
        for (const auto& [state, count] : states)
            std::printf("    %3u %s\n", count, state.c_str());
        EXPECT_GT(step, 3u) << "no step is seen";
    }

    // A file that is rewritten by way of a copy and a backup, whatever these are called: it is the
    // old one or the new one, or else both are there whole. Everything else is an older backup or
    // the start of the new file. The tool puts one of the two in place.
    std::string LookAtRewriting(Text file, Text before, Text after, Text older) {
        std::map<std::string, int> others;
        bool copying = false;
        for (const auto& entry : std::filesystem::directory_iterator(mHere)) {
            const std::string path = entry.path().string(), bytes = Held(path);
            if (path == file)
                continue;
            ++others[bytes];
            copying = copying || (bytes != before && bytes != after && bytes != older);
            EXPECT_TRUE(bytes == before || bytes == older ||
                        after.compare(0, bytes.size(), bytes) == 0)
                << path;
        }
        const std::string now = Held(file);
        EXPECT_TRUE(now == before || now == after ||
                    (now == "none" && others[before] && others[after]));
        EXPECT_LE(others.size(), 3u + copying);
        const std::string state = now == "none"   ? "between the renames"
                                  : now == after  ? "renamed"
                                  : copying       ? "copying"
                                  : others[after] ? "copied"
                                  : others[older] ? "before"
                                                  : "older backup gone";
        if (now == "none") {
            EXPECT_EQ(Run("mailfolder.exe", "recover " + file + " --yes --quiet"), 0u);
            EXPECT_TRUE(Held(file) == before || Held(file) == after);
        }
        return state;
    }
    void Clear() {
        for (const auto& entry : std::filesystem::directory_iterator(mHere))
            std::filesystem::remove_all(entry.path());
    }

    const std::string mHere;
};

class EndedRewriting : public Ended {
protected:
    EndedRewriting() {
        for (unsigned int i = 0; i < 12; ++i) {
            const std::string record = Message("T" + std::to_string(i));
            const std::string identified = MessageID(record, "<1@a>");
            mBefore += i % 3 ? identified : Free(identified);
            mCompressed += i % 3 ? identified : "";
            mStripped += i % 3 ? With(identified, 112, Bytes("\0")) : "";
        }
    }
    void EndRewriting(Text operation, Text after, const std::function<int(DFile&)>& again) {
        const std::string file = mHere + "\\DFile";
        EndEverywhere(
            operation,
            [&] {
                Clear();
                WriteFileBytes(file, mBefore);
                WriteFileBytes(mHere + "\\DFile.BAK", mOlder);
            },
            [&] {
                const std::string state = LookAtRewriting(file, mBefore, after, mOlder);
                DFile inbox(keDirFolder, file);
                EXPECT_EQ(again(inbox), 1);
                EXPECT_TRUE(Held(file) == after);
                return state;
            });
    }
    const std::string mOlder = kHeader + Message("older");
    std::string mBefore = kHeader, mCompressed = kHeader, mStripped = kHeader;
};

TEST_F(EndedRewriting, CompressingKeepsTheFileOrItsBackup) {
    EndRewriting("1 z", mCompressed, [](DFile& file) { return file.CompressDFile(); });
}

TEST_F(EndedRewriting, StrippingKeepsTheFileOrItsBackup) {
    EndRewriting("1 s", mStripped,
                 [](DFile& file) { return file.RemoveAllMessageIDs(BaseDirFile::keRemoveAll); });
}

class EndedMoving : public Ended {
protected:
    static constexpr unsigned int kMessages = 3;

    static std::string MessageName(unsigned int i) { return "M" + std::to_string(i) + ".EML"; }
    static std::string OldMessage(unsigned int i) {
        return Status(Date(Message("T" + std::to_string(i), MessageName(i)), 3029529600u), 1);
    }
    void Prepare() {
        Clear();
        std::string records = kHeader;
        for (unsigned int i = 0; i < kMessages; ++i) {
            records += OldMessage(i);
            WriteFileBytes(mHere + "\\" + MessageName(i), OldMessage(i) + "text");
        }
        WriteFileBytes(mHere + "\\DFile", records);
        std::filesystem::create_directory(mHere + "\\OLD");
        WriteFileBytes(mHere + "\\OLD\\DFile", kHeader);
    }
    // How many messages are in the other folder, by its records, its files and the slots freed for
    // them; in that order, and each message in one folder alone.
    struct Moved {
        unsigned int listed, files, freed;
        bool operator==(const Moved&) const = default;
    };
    Moved Count() {
        const std::string old = ReadFileBytes(mHere + "\\OLD\\DFile");
        std::string records = kHeader, oldRecords = kHeader;
        std::set<std::string> listed;
        Moved moved = {static_cast<unsigned int>(old.size()) / 316 - 1, 0, 0};
        for (unsigned int i = 0; i < moved.listed; ++i) {
            const std::string name = old.substr(316 * (i + 1) + 39, old[316 * (i + 1) + 38]);
            oldRecords += With(OldMessage(i), 38, Pascal(name));
            EXPECT_TRUE(listed.insert(name).second);
            EXPECT_TRUE(Held(mHere + "\\OLD\\" + name) == OldMessage(i) + "text") << i;
        }
        EXPECT_TRUE(old == oldRecords);
        for (const auto& entry : std::filesystem::directory_iterator(mHere + "\\OLD"))
            if (entry.path().extension() == ".EML") {
                if (!listed.count(entry.path().filename().string()))
                    mUnlisted = entry.path().string();
                ++moved.files;
            }
        EXPECT_TRUE(moved.files == moved.listed ||
                    Held(mUnlisted) == OldMessage(moved.listed) + "text");
        const std::string left = ReadFileBytes(mHere + "\\DFile");
        for (unsigned int i = 0; i < kMessages; ++i) {
            const bool free = left[316 * (i + 1) + 2] == 0;
            moved.freed += free;
            records += free ? Free(OldMessage(i)) : OldMessage(i);
            EXPECT_EQ(free, i < moved.freed);
            EXPECT_TRUE(Held(mHere + "\\" + MessageName(i)) ==
                        (i < moved.files ? "none" : OldMessage(i) + "text"))
                << i;
        }
        EXPECT_TRUE(left == records);
        return moved;
    }
    std::string Look() {
        const Moved moved = Count();
        EXPECT_TRUE(moved.files == moved.listed || moved.files == moved.listed + 1);
        EXPECT_TRUE(moved.files == moved.freed || moved.files == moved.freed + 1);
        EXPECT_LE(moved.freed, moved.listed);
        std::string state = "between two messages";
        DFile inbox(keDirFolder, mHere + "\\DFile"), old(keDirFolder, mHere + "\\OLD\\DFile");
        if (moved.files > moved.freed) {
            state = moved.files > moved.listed ? "moved and not listed" : "listed twice";
            // The next run stops at the message that is gone, until its record is deleted.
            inbox.DeleteOldMail(0, 0, &old);
            EXPECT_EQ(Reports(), kNotRenamed + kNotAged);
            EXPECT_EQ(Count(), moved);
            DirectoryRecord gone = Record(OldMessage(moved.freed));
            EXPECT_EQ(inbox.DeleteMail(gone), 1);
        }
        if (moved.files > moved.listed) {
            RbFile message(mUnlisted.c_str());
            EXPECT_EQ(old.AddMessage(&message), 1);
        }
        inbox.DeleteOldMail(0, 0, &old);
        EXPECT_EQ(Count(), (Moved{kMessages, kMessages, kMessages}));
        return state;
    }
    std::string mUnlisted;
};

TEST_F(EndedMoving, LeavesOneMessageAtMostHalfMoved) {
    EndEverywhere(
        "1 o", [&] { Prepare(); }, [&] { return Look(); });
}

class EndedPrefs : public Ended {
protected:
    // "RB.DAT" with the blocks up to `last`, the last one of these bytes.
    static std::string File(unsigned int last, Text lastBlock = "") {
        std::string entries, data;
        for (unsigned int id = 1; id <= last; ++id) {
            const std::string block = id == last && !lastBlock.empty()
                                          ? lastBlock
                                          : ScrambledBlock(Neighbours::Block(1000 * id));
            entries += PrefEntry(std::string{char(1000 * id), char(1000 * id >> 8)}, "\x90\x01", id,
                                 46 + 12 * last + data.size(), block.size());
            data += block;
        }
        return PrefHeader("\x90\x01", "RB.DAT", last) + entries + data;
    }
    // Ends the writing of a block to a file of these bytes.
    void EndWriting(unsigned int id, Text before, const std::function<std::string()>& look) {
        const std::string after = File(id);
        EndEverywhere(
            std::to_string(id) + " p",
            [&] {
                Clear();
                WriteFileBytes(mFile, before);
            },
            [&] {
                const std::string state = look();
                EXPECT_EQ(Do(std::to_string(id) + " p"), 0u);
                EXPECT_TRUE(Held(mFile) == after);
                return state;
            });
    }
    const std::string mFile = mHere + "\\RB.DAT";
};

TEST_F(EndedPrefs, AddingABlockKeepsEveryBlock) {
    EndWriting(3, File(2), [&] { return LookAtRewriting(mFile, File(2), File(3), "none"); });
}

// The header counts the block last.
TEST_F(EndedPrefs, AFirstBlockIsThereOrNotCounted) {
    EndWriting(1, File(0), [&] {
        const std::string now = Held(mFile);
        const std::string uncounted = With(File(1), 44, Bytes("\0\0"));
        EXPECT_TRUE(now == File(1) || now == uncounted.substr(0, now.size()));
        return now == File(1) ? "written" : now == File(0) ? "before" : "not counted";
    });
}

TEST_F(EndedPrefs, ChangingABlockWritesItWholeOrNot) {
    const std::string before = File(2, std::string(Neighbours::Block(2000).size(), 'o'));
    EndWriting(2, before, [&] {
        const std::string now = Held(mFile);
        EXPECT_TRUE(now == before || now == File(2));
        return now == before ? "before" : "changed";
    });
}
