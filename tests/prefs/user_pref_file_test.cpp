#include <gmock/gmock.h>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/pref_bytes.h"
#include "tests/support/resource_text.h"
#include "tests/support/scratch.h"
#include "tests/support/unrenamed_file.h"

using namespace testing;

class PrefFile : public Test {
protected:
    // Shows what derived classes see.
    struct State : UserPrefFile {
        void operator=(const UserPrefFile& other) { UserPrefFile::operator=(other); }
        using UserPrefFile::keRecordFound, UserPrefFile::mStatus, UserPrefFile::miOpenMode;
        using UserPrefFile::moHeader, UserPrefFile::moRecord;
    };
    static constexpr unsigned int kSize = 45; // the scrambling key goes round twice

    PrefFile() { mFile.SetSpecPart(mPath.c_str(), 0); }
    static std::string Entry(char low, unsigned int ordinal, unsigned long offset,
                             unsigned int size = kSize) {
        return PrefEntry(std::string{low, '\x07'}, "\x02\x01", ordinal, offset, size);
    }
    std::string Header(unsigned int count) { return PrefHeader("\x02\x01", mPath, count); }
    std::string OneBlock(const std::string& block) {
        return Header(1) + Entry(1, 1, 58) + ScrambledBlock(block);
    }
    void Open(const std::string& bytes) {
        mFile.ClosePrefFile();
        WriteFileBytes(mPath, bytes);
        ASSERT_EQ(mFile.OpenPrefFile(), 1);
    }
    // The file must stay as it is.
    void RefusesToWrite(PrefApp& app, const std::string& bytes) {
        Open(bytes);
        EXPECT_EQ(mFile.WriteAppPrefs(app.tag), 0);
        EXPECT_TRUE(Closed() == bytes);
        EXPECT_THAT(mBoxes.TakeTexts(), SizeIs(1));
    }
    std::string Closed() { return mFile.ClosePrefFile(), ReadFileBytes(mPath); }
    std::string Message(unsigned int id) { return FileMessage(id, mPath); }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    const std::string mPath = mFolder.Path("RB.DAT"), mBackup = mFolder.Path("RB.BAK");
    PrefApp mApp{0x0701, std::string(kSize, 'f')},
        mSecond{0x0702, "a longer text than a string keeps"};
    UserPrefFile mFile{mApp.bytes.data(), 0x0701, kSize, 0x0102};
    const std::string mText = std::string(kSize, 'f'), mOther = mSecond.bytes;
};

TEST_F(PrefFile, CopyGoesOnWhereItsOriginalStands) {
    ASSERT_EQ(mFile.CreatePrefsFile(mPath.c_str()), 1);
    const std::string file = Closed();
    State copy;
    copy = mFile;
    // Not even opened, it passes over the read that follows the creation.
    EXPECT_EQ(copy.ReadAppPrefs(mApp.tag, 0), 1);
    EXPECT_TRUE(mApp.bytes == mText && mBoxes.Shown().empty());
    Open(Header(2) + Entry(2, 1, 70) + Entry(1, 2, 70 + kSize) + mText + mText);
    ASSERT_EQ(mFile.ReadAppHeader(0x0701), 1);
    mFile.ClosePrefFile();
    copy = mFile;
    EXPECT_TRUE(copy.mStatus & State::keRecordFound);
    EXPECT_EQ(copy.miOpenMode, 0x81);
    EXPECT_EQ(Written(copy.moHeader), Header(2));
    EXPECT_EQ(Written(copy.moRecord), Entry(1, 2, 70 + kSize));
    EXPECT_EQ(copy.CreatePrefsFile(mPath.c_str()), 1);
    copy.ClosePrefFile();
    EXPECT_EQ(ReadFileBytes(mPath), file); // the tag is its original's
}

TEST_F(PrefFile, BlockThatIsNotThereIsReported) {
    // A block that is cut, or not there.
    for (const std::string& bytes :
         {OneBlock(mText).substr(0, 58), OneBlock(mText).substr(0, 57 + kSize),
          Header(65535) + Entry(1, 1, 0x7FFFFFF0), Header(1) + Entry(1, 1, 0xFFFFFFFF)}) {
        Open(bytes);
        EXPECT_EQ(mFile.ReadAppPrefs(mApp.tag, 1), 0);
        EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(AnyOf(Message(605), Message(607))));
    }
}

TEST_F(PrefFile, BlocksAreWrittenBehindTheRecordsAndInTheFileAlone) {
    for (unsigned long offset : {0ul, 57ul, 58ul + kSize + 1, 0x7FFFFFF0ul, 0xFFFFFFFFul})
        RefusesToWrite(mApp, Header(1) + Entry(1, 1, offset) + mText);
    std::string full = Header(0xFFFF);
    for (int i = 0; i < 0xFFFF; ++i)
        full += Entry(1, 1, 0xC0000);
    RefusesToWrite(mSecond, full);
}

TEST_F(PrefFile, BlocksThatADamagedCountLeavesOutStay) {
    const auto add = [&](const std::string& bytes) {
        Open(bytes);
        EXPECT_EQ(mFile.WriteAppPrefs(mApp.tag), 1);
        return Closed();
    };
    const std::string blocks = Entry(2, 1, 70) + Entry(3, 2, 70 + kSize) + mText + mText;
    EXPECT_EQ(add(Header(0) + blocks).substr(0, 46 + blocks.size()), Header(1) + blocks);
    // What is left of a first block that was broken off makes room.
    for (unsigned int size = 0; size <= 12 + kSize; ++size)
        EXPECT_EQ(add(Header(0) + (Entry(2, 1, 58) + mText).substr(0, size)), OneBlock(mText));
    EXPECT_TRUE(mBoxes.Shown().empty());
}

// A relative path is one of the root, where there is no such file.
TEST_F(PrefFile, StreamThatAnotherNameOpenedIsWritten) {
    PrefApp app{1, "new"};
    CreateDirectoryA("SUB", nullptr);
    WriteFileBytes("SUB\\RB.DAT", Header(0));
    mFile.open("SUB\\RB.DAT", keOpenUpdate | keOpenBinary);
    EXPECT_EQ(mFile.WriteAppPrefs(app.tag), 1);
    mFile.ClosePrefFile();
    EXPECT_GT(ReadFileBytes("SUB\\RB.DAT").size(), Header(0).size() + 12);
}

TEST_F(PrefFile, ItsOwnCopiesAreNotRebuilt) {
    for (const char* name : {"RB.BAK", "rb.tmp"}) {
        mFile.SetSpecPart(name, 0);
        WriteFileBytes(name, OneBlock(mText));
        ASSERT_EQ(mFile.OpenPrefFile(), 1);
        EXPECT_EQ(mFile.WriteAppPrefs(mSecond.tag), 0);
        mFile.ClosePrefFile();
        EXPECT_EQ(ReadFileBytes(name), OneBlock(mText));
        EXPECT_THAT(mBoxes.TakeTexts(), SizeIs(1));
    }
}

TEST_F(PrefFile, FileThatCannotBeOpenedIsReported) {
    EXPECT_TRUE(mFile.OpenPrefFile() == 0 && !FileThere(mPath));
    EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(Message(604)));
    const auto fails = [&] {
        EXPECT_TRUE(mFile.OpenPrefFile() == 0 && mFile.CreatePrefsFile("RB.DAT") == 0);
        EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(Message(604), Message(703)));
    };
    CreateDirectoryA(mPath.c_str(), nullptr);
    fails();
    EXPECT_TRUE(RemoveDirectoryA(mPath.c_str()));
    WriteFileBytes(mPath, "kept");
    {
        const HeldFile held(mPath);
        fails();
    }
    if (MakeReadOnly(mPath))
        fails();
    EXPECT_TRUE(GetFileAttributesA(mPath.c_str()) & FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(ReadFileBytes(mPath), "kept");
}

TEST_F(PrefFile, FailedRebuildLeavesTheFileAsItWas) {
    const auto fails = [&] {
        Open(OneBlock(mText));
        EXPECT_TRUE(mFile.WriteAppPrefs(mSecond.tag) == 0 && mSecond.bytes == mOther);
        EXPECT_EQ(Closed(), OneBlock(mText));
    };
    CreateDirectoryA(mBackup.c_str(), nullptr);
    fails();
    RemoveDirectoryA(mBackup.c_str());
    WriteFileBytes(mBackup, "older");
    {
        const HeldFile held(mBackup);
        fails();
    }
    EXPECT_EQ(ReadFileBytes(mBackup), "older");
    mBoxes.TakeTexts();
    {
        // The old file is out of the way already, and gets its name back.
        const UnrenamedFile kept(mBackup);
        fails();
        EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(HasSubstr("DiskDriver::Rename() failed.")));
        EXPECT_FALSE(FileThere(mFolder.Path("RB.TMP")));
        EXPECT_EQ(ReadFileBytes(mBackup), Header(2) + Entry(1, 1, 70) +
                                              Entry(2, 2, 70 + kSize, mOther.size()) +
                                              ScrambledBlock(mText) + ScrambledBlock(mOther));
    }
    CreateDirectoryA(mFolder.Path("RB.TMP").c_str(), nullptr);
    fails();
}
