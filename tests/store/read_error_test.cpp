#include "tests/store/watched_file.h"

// Files of which the first part can be read and a later one cannot: what is told, and that no file
// is replaced by what was read of it.

static const std::string kUnread = Base("0|Error BaseDirFile: AlterDirectoryBlock()");
static const std::string kScanFailed = Inbox("0|Error DirectoryFile: GetUnprocessedDDRs()");

class ReadError : public MailFolder {
protected:
    // More records than are read at once: those before the bad one are read, the last is not.
    static constexpr unsigned int kRecords = 450, kBad = 440;

    static std::string Topic(unsigned int i) { return "T" + std::to_string(i); }
    // A D file whose records have identifiers; a free one is there for what rewrites it.
    static std::string Content(Text header, int status = 0) {
        std::string bytes = header;
        for (unsigned int i = 0; i < kRecords; ++i)
            bytes += i == 1 ? Free(Message("free"))
                            : Status(MessageID(Message(Topic(i)), "<1@a>"), status);
        return bytes;
    }
    ReadError() {
        mInbox.FailReadsAt(316 + kBad * 316 + 100);
        mList.FailReadsAt(kBad * 316 + 100);
        Write(mContent);
    }

    template <class T>
    static unsigned int Size(RB_Container<T>& list) {
        unsigned int size = 0;
        for (T* object = list.GetFirstObject(); object; object = list.GetNextObject())
            ++size;
        return size;
    }

    Watched<DFile> mInbox{keDirFolder}, mList{keDirMessages};
    const std::string mContent = Content(kHeader), mListContent = Content("");
};

TEST_F(ReadError, FileIsNotReplacedByTheRecordsThatCouldBeRead) {
    WriteFileBytes("INBOX.BAK", "older");
    for (DFile* file : {&mInbox, &mList}) {
        const std::string content = file == &mInbox ? mContent : mListContent;
        Write(content);
        EXPECT_TRUE(Left(file->CompressDFile()) == "0" + content);
        EXPECT_TRUE(Left(file->RemoveAllMessageIDs(BaseDirFile::keRemoveAll)) == "0" + content);
        EXPECT_EQ(Reports(), kNotStripped);
        EXPECT_EQ(Names(), "INBOX.BAK INBOX.DAT ");
    }
    EXPECT_TRUE(ReadFileBytes("INBOX.BAK") == "older");
    // Type 2 is rewritten in place: the copy is whole before the file is cut.
    mList.UpdateDFile();
    EXPECT_EQ(Reports(), Inbox("0|Error DirectoryFile copy: source file"));
    EXPECT_TRUE(Read() == mListContent);
}

TEST_F(ReadError, SearchThatCannotGoOnIsAnErrorAndNotAMissingRecord) {
    DirectoryRecord last = Record(Message(Topic(kRecords - 1))), missing = Record(Message("none"));
    for (DirectoryRecord* probe : {&last, &missing}) {
        EXPECT_EQ(mInbox.FindRecord(*probe, keFindPosition), keDirError);
        EXPECT_EQ(mInbox.FindRecord(*probe, keFindExisting), keDirError);
        EXPECT_TRUE(mInbox.MarkRecord(*probe, keMarkUnused) == 0 && mInbox.DeleteMail(*probe) == 0);
        EXPECT_EQ(Reports(), kUnread + kUnread);
    }
    for (unsigned int early : {2u, kBad - 1}) {
        DirectoryRecord probe = Record(Message(Topic(early)));
        EXPECT_EQ(mInbox.FindRecord(probe, keFindPosition), (early + 1) * 316);
        EXPECT_EQ(mInbox.FindRecord(probe, keFindExisting), keDirExists);
    }
    EXPECT_TRUE(Read() == mContent);
}

TEST_F(ReadError, CountsAndListsTellThatTheyAreNotWhole) {
    for (unsigned int bad : {kBad - 1, kBad}) {
        mInbox.FailReadsAt(316 + bad * 316 + 100);
        EXPECT_TRUE(mInbox.GetInfo(keInfoAll) == 0 && mInbox.UsedCount() == int(bad) - 1) << bad;
    }
    EXPECT_EQ(mInbox.GetUIDList(&mItems), 0);
    EXPECT_EQ(Size(mItems), kBad - 1);

    RbFile copy("COPY.DAT");
    EXPECT_TRUE(mInbox.GetDFile(copy) == kBad - 1 && !mInbox.IsGood());
    EXPECT_EQ(Reports(), Inbox("fGood|Error DirectoryFile: GetDFile()"));
    EXPECT_EQ(ReadFileBytes("COPY.DAT").size(), (kBad - 1) * 316);
    EXPECT_TRUE(Read() == mContent);
}

TEST_F(ReadError, ScansThatBreakOffAreErrors) {
    Write(Content(kHeader, 0x01));
    const std::string processed = Read();
    EXPECT_EQ(mInbox.CheckUnprocessedDDRs(keCheckProcessable, nullptr), keScanError);
    EXPECT_EQ(Reports(), kScanFailed);
    EXPECT_TRUE(Read() == processed);
    // Without the bad place there is nothing to find.
    EXPECT_EQ(mFile.CheckUnprocessedDDRs(keCheckProcessable, nullptr), keCheckNone);

    // What was taken before the error is the list's, and marked.
    const std::string a = Message("A"), b = Message("B"), c = Message("C");
    Write(kHeader + a + b + c);
    mInbox.FailReadsAt(3 * 316 + 1);
    EXPECT_EQ(mInbox.GetUnprocessedDDRs(&mTaken, nullptr, keGetProcessable), keScanError);
    EXPECT_EQ(Reports(), kScanFailed);
    EXPECT_EQ(Size(mTaken), 2u);
    EXPECT_EQ(Read(), kHeader + Attributes(a, 0x0400) + Attributes(b, 0x0400) + c);

    mInbox.FailReadsAt(316);
    mInbox.DeleteOldMail(0, 0, &mFile);
    EXPECT_EQ(Reports(), kNotAged);
}

TEST_F(ReadError, CopiesTellWhichOfTheTwoFilesFailed) {
    const std::string path = mFolder.Path("INBOX.DAT");
    constexpr long kPlace = 70000; // in the third large buffer
    for (enumDupStream buffer : {keDupLargeBuffer, keDupSmallBuffer})
        for (int close : {0, 1})
            for (bool reading : {true, false}) {
                SCOPED_TRACE(std::to_string(buffer) + std::to_string(close));
                Watched<RbFile> source(path.c_str()), copy("COPY.DAT");
                ASSERT_TRUE(source.Open(keOpenRead) && copy.Open(keOpenWrite));
                reading ? source.FailReadsAt(kPlace) : copy.FailWritesAt(kPlace);
                EXPECT_EQ(copy.Copy(source, close, nullptr, buffer),
                          reading ? keCopyReadFailed : keCopyWriteFailed);
                if (!close)
                    source.close(), copy.close();
                EXPECT_FALSE(source.isOpen() || copy.isOpen());
                // What was copied stays.
                const unsigned int whole = buffer == keDupLargeBuffer ? 64000 : kPlace;
                EXPECT_TRUE(ReadFileBytes("COPY.DAT") == mContent.substr(0, whole));
                DeleteFileA("COPY.DAT");
            }
    EXPECT_TRUE(Read() == mContent);
}
