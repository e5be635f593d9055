#include <gmock/gmock.h>

#include <optional>
#include <set>

#include "tests/store/mail_folder.h"
#include "tests/support/message_boxes.h"
#include "tests/support/pref_bytes.h"
#include "tests/support/resource_text.h"
#include "tests/support/small_disk.h"

using testing::ElementsAre;

// Operations on a disk with room for all, part or nothing of what they write.

// A mail folder on a disk that fills up.
class FullDisk : public MailFolder {
protected:
    static constexpr unsigned int kPage = SmallDisk::kPage;

    void SetUp() override {
        if (!SmallDisk::IsThere())
            GTEST_SKIP() << "no small disk: ./test mounts one where it is allowed to";
    }
    static unsigned int Pages(const std::string& bytes) { return SmallDisk::Pages(bytes.size()); }
    // Records behind `start` so that the file's last page has exactly `slack` bytes left.
    static std::string RecordsLeaving(unsigned int slack, std::string start = kHeader) {
        while ((kPage - start.size() % kPage) % kPage != slack)
            start += Message("T" + std::to_string(start.size()));
        return start;
    }
    static std::string Records(unsigned int count, Text record) {
        std::string records;
        while (count--)
            records += record;
        return records;
    }

    SmallDisk mDisk;
    DFile mInbox{keDirFolder}, mList{keDirMessages};
};

TEST_F(FullDisk, RewrittenDFileIsWholeBeforeItTakesTheOldOnesPlace) {
    const std::string record = MessageID(Message("A"), "<1@a>"), older(100, 'o');
    const std::string stripped = With(record, 112, Bytes("\0"));
    for (unsigned int count : {0u, 1u, 12u, 13u, 40u})
        for (DFile* file : {&mInbox, &mList}) {
            const std::string header = file == &mInbox ? kHeader : "";
            const std::string after = header + Records(count, record);
            const std::string before = header + Free(record) + Records(count, record);
            for (unsigned int pages = 0; pages < Pages(after) + 2; ++pages) {
                SCOPED_TRACE(std::to_string(count) + " records, pages " + std::to_string(pages));
                const bool room = pages >= Pages(after);
                Write(before);
                mDisk.Leave(pages);
                EXPECT_EQ(file->CompressDFile(), room);
                EXPECT_TRUE(Read() == (room ? after : before));
                EXPECT_EQ(Names(), "INBOX.DAT ");

                mDisk.Release();
                Write(before);
                WriteFileBytes("INBOX.BAK", older);
                mDisk.Leave(pages);
                EXPECT_EQ(file->RemoveAllMessageIDs(BaseDirFile::keRemoveAll), room);
                EXPECT_EQ(Reports(), room ? "" : kNotStripped);
                EXPECT_TRUE(Read() == (room ? header + Records(count, stripped) : before));
                EXPECT_TRUE(ReadFileBytes("INBOX.BAK") == (room ? before : older));
                EXPECT_EQ(Names(), "INBOX.BAK INBOX.DAT ");

                mDisk.Release();
                DeleteFileA("INBOX.BAK");
            }
        }
}

TEST_F(FullDisk, AppendedRecordIsThereWholeOrNotAtAll) {
    const std::string added = Message("new", "M.EML");
    WriteFileBytes("M.EML", added + "text");
    RbFile message("M.EML");
    for (unsigned int slack : {0u, 4u, 156u, 312u, 316u, 320u}) {
        SCOPED_TRACE(slack);
        const bool room = slack >= 316;
        const std::string before = RecordsLeaving(slack);
        Write(before);
        mDisk.Leave(0);
        EXPECT_EQ(mInbox.AddMessage(&message), room);
        EXPECT_TRUE(Read() == before + (room ? added : ""));
        mDisk.Leave(1);
        EXPECT_EQ(mInbox.AddMessage(&message), 1);
        EXPECT_TRUE(Read() == before + (room ? added : "") + added);
        mDisk.Release();
    }
}

TEST_F(FullDisk, ChangesInPlaceNeedNoRoom) {
    const std::string a = Date(Message("A", "A.EML"), 3029529600u), free = Free(a);
    const std::string padding = Records(30, Attributes(a, 0x0400));
    const std::set<std::string> others = {"add", "create", "move", "copy"};
    mProbe = Record(a);
    for (const Operation& each : Operations(keDirFolder)) {
        if (others.count(each.name) || each.kind == Operation::keRewrites)
            continue;
        Write(kHeader + a + padding + free + free);
        mDisk.Leave(0);
        EXPECT_EQ(each.run(mInbox), each.works) << each.name;
        mDisk.Release();
    }

    // The rewritten file takes the room of the old one; its copy is on the disk of Windows.
    Write(free + padding + free + a);
    mDisk.Leave(0);
    mList.UpdateDFile();
    EXPECT_TRUE(Read() == padding + a);
}

TEST_F(FullDisk, NewDFileHasWholeRecordsOnly) {
    // A header that cannot be written is not told: there is no record whose result it would be.
    mDisk.Leave(0);
    EXPECT_EQ(mInbox.CreateDFile(), 1);
    EXPECT_EQ(Names(), "");
    mDisk.Leave(1);
    EXPECT_EQ(Left(mInbox.CreateDFile()), "1" + kHeader);
    mDisk.Release();
    // The old file is cut first, and its room is there for the new one.
    for (unsigned int count : {0u, 1u, 13u}) {
        Write(kHeader + Records(count, Message("old")));
        mDisk.Leave(0);
        EXPECT_EQ(Left(mInbox.CreateDFile()), "1" + kHeader);
        mDisk.Release();
    }
    DeleteFileA("INBOX.DAT");
    constexpr unsigned int kMessages = 30;
    std::set<std::string> all;
    for (unsigned int i = 0; i < kMessages; ++i) {
        const std::string name = "M" + std::to_string(i) + ".EML";
        all.insert(Message(name, name));
        WriteFileBytes(name, Message(name, name));
    }
    for (unsigned int older : {0, 1, 2})
        for (unsigned int pages = 0; pages < 5; ++pages) {
            SCOPED_TRACE(std::to_string(pages) + " pages and " + std::to_string(older));
            if (older)
                Write(Records(older * kPage / 316, Message("old")));
            mDisk.Leave(pages);
            const unsigned int room = std::min((pages + older) * kPage / 316, kMessages);
            EXPECT_EQ(mList.CreateDFile(), room == kMessages);
            std::string reports;
            for (unsigned int i = room; i < kMessages; ++i)
                reports += Base("0|Error BaseDirFile: CreateDFile(), writing record");
            EXPECT_EQ(Reports(),
                      reports +
                          (room < kMessages ? Base("0|Error BaseDirFile: CreateDFile()") : ""));
            const std::string made = Read();
            EXPECT_EQ(made.size(), room * 316);
            std::set<std::string> records;
            for (unsigned int i = 0; i < made.size() / 316; ++i)
                records.insert(made.substr(i * 316, 316));
            EXPECT_EQ(records.size(), room);
            EXPECT_TRUE(std::includes(all.begin(), all.end(), records.begin(), records.end()));
            DeleteFileA("INBOX.DAT");
        }
}

class FullDiskMoving : public FullDisk {
protected:
    FullDiskMoving() { CreateDirectoryA("OLD", nullptr); }
    // Moves the one message of `inbox` and returns the files of the other folder.
    std::string Move(DirectoryFile& inbox) {
        inbox.DeleteOldMail(0, 0, &mOld);
        std::string left;
        for (const auto& entry : std::filesystem::directory_iterator("OLD"))
            if (entry.path().filename() != "OLD.DAT")
                left += ReadFileBytes(entry.path().string());
        return left;
    }
    DFile mOld{keDirFolder, "OLD\\OLD.DAT"};
    const std::string mMessage = Date(Message("A", "A.EML"), 3029529600u);
};

// On one disk moving takes no room; listing does.
TEST_F(FullDiskMoving, MessageThatCannotBeListedIsMovedAndItsOldRecordStays) {
    for (unsigned int slack : {0u, 156u, 312u}) {
        SCOPED_TRACE(slack);
        const std::string old = RecordsLeaving(slack);
        WriteFileBytes("A.EML", mMessage + "text");
        WriteFileBytes("OLD\\OLD.DAT", old);
        Write(kHeader + mMessage);
        mDisk.Leave(0);
        EXPECT_EQ(Move(mInbox), mMessage + "text");
        EXPECT_EQ(Reports(), kNotAged);
        EXPECT_TRUE(Read() == kHeader + mMessage && ReadFileBytes("OLD\\OLD.DAT") == old);
        EXPECT_EQ(Names(), "INBOX.DAT OLD ");
        mDisk.Release();
        std::filesystem::remove_all("OLD");
        CreateDirectoryA("OLD", nullptr);
    }
}

TEST_F(FullDiskMoving, MessageOfAnotherDiskIsMovedWholeOrNotAtAll) {
    DFile inbox(keDirFolder, mFolder.Path("INBOX.DAT"));
    const std::string content = mMessage + std::string(3 * kPage - 316, 't');
    for (unsigned int pages = 0; pages < 5; ++pages) {
        SCOPED_TRACE(pages);
        const bool room = pages >= 3;
        WriteFileBytes(mFolder.Path("A.EML"), content);
        WriteFileBytes(mFolder.Path("INBOX.DAT"), kHeader + mMessage);
        WriteFileBytes("OLD\\OLD.DAT", kHeader);
        mDisk.Leave(pages);
        EXPECT_TRUE(Move(inbox) == (room ? content : ""));
        EXPECT_EQ(Reports(), room ? "" : kNotRenamed + kNotAged);
        EXPECT_EQ(FileThere(mFolder.Path("A.EML")), !room);
        EXPECT_TRUE(ReadFileBytes(mFolder.Path("INBOX.DAT")) ==
                    kHeader + (room ? Free(mMessage) : mMessage));
        EXPECT_EQ(ReadFileBytes("OLD\\OLD.DAT").size(), room ? 632u : 316u);
        mDisk.Release();
        std::filesystem::remove_all("OLD");
        CreateDirectoryA("OLD", nullptr);
    }
}

TEST_F(FullDisk, CopiesTellThatTheyAreNotWhole) {
    const std::string content = kHeader + Records(30, Message("A"));
    Write(content);
    for (unsigned int pages = 0; pages < Pages(content) + 2; ++pages)
        for (enumDupStream buffer : {keDupLargeBuffer, keDupSmallBuffer})
            for (int close : {0, 1}) {
                SCOPED_TRACE(std::to_string(pages) + " pages, close " + std::to_string(close));
                const bool room = pages >= Pages(content);
                RbFile source("INBOX.DAT"), copy("COPY.DAT");
                mDisk.Leave(pages);
                EXPECT_EQ(copy.Copy(source, close, nullptr, buffer),
                          room ? keCopyDone : keCopyWriteFailed);
                if (!close)
                    source.close(), copy.close();
                EXPECT_FALSE(source.isOpen() || copy.isOpen());
                // What was copied stays.
                EXPECT_TRUE(ReadFileBytes("COPY.DAT") == content.substr(0, pages * kPage));
                DeleteFileA("COPY.DAT");
            }

    const std::string records = content.substr(316);
    for (unsigned int pages = 0; pages < Pages(records) + 2; ++pages) {
        SCOPED_TRACE(pages);
        const bool room = pages >= Pages(records);
        RbFile copy("COPY.DAT");
        mDisk.Leave(pages);
        mInbox.GetDFile(copy);
        EXPECT_EQ(mInbox.IsGood(), room);
        EXPECT_EQ(Reports(), room ? "" : Inbox("fGood|Error DirectoryFile: GetDFile()"));
        EXPECT_FALSE(copy.isOpen());
        DeleteFileA("COPY.DAT");
    }
    EXPECT_TRUE(Read() == content);
}

class FullDiskPrefs : public FullDisk {
protected:
    static std::string Entry(const PrefApp& app, unsigned int ordinal, unsigned long offset) {
        const std::string id{char(app.tag.id), '\0'};
        return PrefEntry(id, "\x02\x01", ordinal, offset, app.tag.size);
    }
    static std::string Header(unsigned int count, Text name = "") {
        return PrefHeader("\x02\x01", name, count);
    }
    // What room there was for of a file with its first block, which its header does not count.
    static std::string Begun(Text whole, unsigned int pages) {
        return With(whole, 45, Bytes("\0")).substr(0, pages * kPage);
    }
    int Write(PrefApp& app) {
        UserPrefFile file;
        file.SetSpecPart(mPath.c_str(), 0);
        EXPECT_EQ(file.OpenPrefFile(), 1);
        const int written = file.WriteAppPrefs(app.tag);
        file.ClosePrefFile();
        return written;
    }
    MessageBoxes mBoxes;
    const std::string mPath = std::filesystem::absolute("RB.DAT").string();
    const std::string mBackup = std::filesystem::absolute("RB.BAK").string();
    PrefApp mFirst{1, RandomBytes(1, 45)}, mLarge{1, RandomBytes(1, 9000)};
    PrefApp mSecond{2, RandomBytes(2, 9000)};
    const std::string mOne = Header(1) + Entry(mFirst, 1, 58) + ScrambledBlock(mFirst.bytes);
    const std::string mTwo = Header(2) + Entry(mFirst, 1, 70) + Entry(mSecond, 2, 70 + 45) +
                             ScrambledBlock(mFirst.bytes) + ScrambledBlock(mSecond.bytes);
};

TEST_F(FullDiskPrefs, FurtherBlockIsAddedToTheRebuiltFileAlone) {
    for (unsigned int pages = 0; pages < Pages(mTwo) + 2; ++pages) {
        SCOPED_TRACE(pages);
        // The older backup's room is used.
        const bool room = pages + 1 >= Pages(mTwo);
        WriteFileBytes(mPath, mOne);
        WriteFileBytes(mBackup, "older");
        mDisk.Leave(pages);
        EXPECT_EQ(Write(mSecond), room);
        EXPECT_TRUE(ReadFileBytes(mPath) == (room ? mTwo : mOne));
        EXPECT_EQ(mTwo.compare(0, ReadFileBytes(mBackup).size(), ReadFileBytes(mBackup)) == 0,
                  !room);
        EXPECT_EQ(Names(), "RB.BAK RB.DAT ");
        EXPECT_EQ(mBoxes.TakeTexts().size(), room ? 0u : 1u);
        mDisk.Release();
    }
    // A change needs no room.
    mDisk.Leave(0);
    mFirst.bytes.assign(45, 'x');
    EXPECT_EQ(Write(mFirst), 1);
    EXPECT_EQ(ReadFileBytes(mPath).substr(70, 45), ScrambledBlock(mFirst.bytes));
    EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre());
}

TEST_F(FullDiskPrefs, FirstBlockIsNotCountedUntilItIsWhole) {
    const std::string large = Header(1) + Entry(mLarge, 1, 58) + ScrambledBlock(mLarge.bytes);
    for (unsigned int pages = 0; pages < 4; ++pages) {
        SCOPED_TRACE(pages);
        const bool room = pages >= 2;
        WriteFileBytes(mPath, Header(0));
        mDisk.Leave(pages);
        EXPECT_EQ(Write(mLarge), room);
        EXPECT_TRUE(ReadFileBytes(mPath) == (room ? large : Begun(large, pages + 1)));
        EXPECT_EQ(mBoxes.TakeTexts(),
                  room ? std::vector<std::string>{} : std::vector{FileMessage(606, mPath)});
        mDisk.Release();
        EXPECT_EQ(Write(mLarge), 1);
        EXPECT_TRUE(ReadFileBytes(mPath) == large);
        DeleteFileA(mPath.c_str());
    }
}

TEST_F(FullDiskPrefs, NewFileThatIsNotWholeIsTold) {
    const std::string whole = Header(1, mPath) + Entry(mLarge, 1, 58) + mLarge.bytes;
    // The old file is cut first: its room is the new one's, and its bytes are gone in any case.
    for (unsigned int older : {0u, 5u, kPage + 1, 4 * kPage})
        for (unsigned int pages = 0; pages < 5; ++pages) {
            SCOPED_TRACE(std::to_string(pages) + " pages and " + std::to_string(older) + " bytes");
            const unsigned int all = pages + Pages(std::string(older, 'o'));
            const bool room = all >= 3;
            if (older)
                WriteFileBytes(mPath, std::string(older, 'o'));
            mDisk.Leave(pages);
            UserPrefFile file(mLarge.bytes.data(), 1, 9000, 0x0102);
            EXPECT_EQ(file.CreatePrefsFile(mPath.c_str()), room);
            file.ClosePrefFile();
            EXPECT_EQ(mBoxes.TakeTexts(),
                      room ? std::vector<std::string>{} : std::vector{FileMessage(606, mPath)});
            EXPECT_TRUE(ReadFileBytes(mPath) == (room ? whole : Begun(whole, all)));
            mDisk.Release();
            DeleteFileA(mPath.c_str());
        }
}

// A stream keeps what is written to it: it must be on the disk before the result tells so.
TEST_F(FullDisk, UsersThatWereWrittenAreInTheFile) {
    MailUser user("Smith|Anna", "anna@host", keFormat1, keEncode1);
    user.SetPlatform(kePlatform6);
    const std::string line = "Smith\tAnna\tanna@host\t" + ResourceText(726) + "\t" +
                             ResourceText(713) + "\t" + ResourceText(718) + "\r\n";
    for (unsigned int pages = 0; pages < 3; ++pages) {
        SCOPED_TRACE(pages);
        mDisk.Leave(pages);
        RbFile list("USERS.TXT");
        ASSERT_TRUE(list.Open(keOpenRewrite));
        unsigned int written = 0;
        while (written < 1000 && user.Export(list) == keUserListDone)
            ++written;
        list.close();
        EXPECT_EQ(written, pages * kPage / line.size());
        EXPECT_EQ(ReadFileBytes("USERS.TXT").substr(0, written * line.size()),
                  Records(written, line));
        DeleteFileA("USERS.TXT");
    }

    JxLoggedMailUser logged(user);
    for (bool room : {false, true}) {
        mDisk.Leave(room);
        RbFile file("JXLGDUSR.DAT");
        ASSERT_TRUE(file.Open(keOpenRewrite));
        EXPECT_EQ(logged.WriteInfo(file), room);
        file.close();
        DeleteFileA("JXLGDUSR.DAT");
    }
}
