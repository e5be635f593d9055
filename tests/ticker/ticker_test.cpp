#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "resident/core/windows_api.h"
#include "resident/users/mail_user.h"
#include "tests/support/helper_process.h"
#include "tests/support/left_behind.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"
#include "ticker/ticker.h"

using namespace testing;

static std::string Mail(const std::string& topic, const std::string& sender) {
    const std::string bytes = With(std::string(316, '\0'), 2, "\x01\xFE" + Pascal(topic));
    return With(With(With(bytes, 38, Pascal("1.EML")), 72, Pascal(sender)), 311, "\x05");
}

class Ticker : public Test {
protected:
    ~Ticker() override { Done(); }

    std::string Inbox(const std::string& bytes) { return WriteFileBytes(mInbox, bytes), mInbox; }
    // What a call gave, "topic/file/sender kind flag"; "" for 0 with nothing written.
    template <class Call, class... Path>
    std::string Gives(Call call, Path... path) {
        char *topic = nullptr, *file = nullptr, *sender = nullptr;
        unsigned short kind = 77, flag = 77;
        if (call(path..., mNull == 1 ? nullptr : &topic, mNull == 2 ? nullptr : &file,
                 mNull == 3 ? nullptr : &sender, mNull == 4 ? nullptr : &kind,
                 mNull == 5 ? nullptr : &flag) == 1)
            return topic + std::string("/") + file + "/" + sender + " " + char('0' + kind) + " " +
                   char('0' + flag);
        EXPECT_TRUE(!topic && !file && !sender && kind == 77 && flag == 77);
        return "";
    }
    std::string First(const std::string& path) { return Gives(GetFirstRecord, path.c_str()); }
    std::string Next() { return Gives(GetNextRecord); }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    const std::string mInbox = mFolder.Path("inbox.d");
    int mNull = 0; // which output is a null pointer
};

TEST_F(Ticker, LeavesNothingBehindWhenDone) {
    Inbox(Mail("Lunch", "Smith|Anna"));
    EXPECT_EQ(LeftBehind([&] {
                  char *inbox = nullptr, *account = nullptr;
                  GetCurUserPath(&inbox, &account);
                  EXPECT_NE(First(mInbox), "");
                  Done();
              }),
              0);
}

TEST_F(Ticker, TellsWhyThereIsNoFirstRecord) {
    const auto reason = [&](const std::string& path) {
        EXPECT_EQ(First(path), "");
        const unsigned long error = GetLastError();
        Done();
        return error;
    };
    EXPECT_EQ(First(mInbox), "");
    EXPECT_EQ(Next(), ""); // a failed open is a walk as well
    Done();
    EXPECT_EQ(reason(mFolder.Path("missing.d")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(reason(mFolder.Path("missing\\inbox.d")), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(reason(Inbox(std::string(316, '\0'))), ERROR_NO_MORE_ITEMS);
    const HANDLE held =
        CreateFileA(mInbox.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(reason(mInbox), ERROR_SHARING_VIOLATION);
    CloseHandle(held);
    EXPECT_TRUE(mBoxes.Shown().empty());
}

// What a walk gives of a record, field by field; "" when it is not used.
static std::string Listed(const std::string& record) {
    const auto byte = [&](unsigned int at) { return static_cast<unsigned char>(record[at]); };
    const auto text = [&](unsigned int at, unsigned int most) {
        return std::string(record.substr(at + 1, std::min<unsigned int>(byte(at), most)).c_str());
    };
    if (!byte(2) || (byte(5) && byte(5) < 0x20) || record.substr(0, 2) == "\xFF\xFF")
        return "";
    RBString sender(text(72, 31).c_str());
    MailUser::OrderedUserName(sender, sender, 1);
    const int kind = std::min(byte(310) << 8 | byte(311), 6);
    return text(4, 27) + "/" + text(38, 33) + "/" + sender.Text() + " " + char('0' + kind) + " " +
           char('0' + (byte(3) & 1));
}

TEST_F(Ticker, WalksDamagedFilesAsTheirRecordsAreReadOneByOne) {
    // Lengths in and out of range, bars and zeros in names, bytes that make a record unused.
    const std::string alphabet = Bytes("\0\0\1\5\x1B\x1F\x20\x21|||aB\x7F\xFF");
    std::mt19937 random(1);
    // Shorter and longer than what is read at once, with and without a cut record at the end.
    for (const unsigned int size : {316u, 1000u, 316u * 414, 316u * 500 + 315}) {
        std::string bytes(size, '\0');
        for (char& c : bytes)
            c = alphabet[random() % alphabet.size()];
        Inbox(bytes);
        std::string walked = First(mInbox);
        for (unsigned int at = 0; at + 316 <= size; at += 316) {
            const std::string expected = Listed(bytes.substr(at, 316));
            if (expected.empty())
                continue;
            ASSERT_EQ(walked, expected) << "record at " << at << " of " << size;
            walked = Next();
        }
        EXPECT_EQ(walked, "");
        EXPECT_TRUE(DeleteFileA(mInbox.c_str())) << "the file is still open";
        Done();
    }
}

TEST_F(Ticker, CallsOutOfOrderAreReportedAndGoOn) {
    const auto source = EndsWith("\nJXTICKER\\JXTICDLL\\JXTICDLL.CPP\n");
    EXPECT_EQ(Next(), "");
    EXPECT_THAT(mBoxes.TakeTexts(),
                ElementsAre(AllOf(StartsWith("Assert Failed!\npoDFile\n"), source)));
    EXPECT_EQ(First(Inbox(Mail("Lunch", "Anna"))), "Lunch/1.EML/Anna 5 0");
    EXPECT_EQ(First(mInbox), "Lunch/1.EML/Anna 5 0");
    EXPECT_THAT(mBoxes.Texts(), Contains(AllOf(StartsWith("Assert Failed!\n!poDFile\n"), source)));
}

TEST_F(Ticker, NullPointersGiveNothing) {
    Inbox(Mail("Lunch", "Anna") + Mail("Tea", "Bo"));
    EXPECT_EQ(Gives(GetFirstRecord, static_cast<const char*>(nullptr)), "");
    for (mNull = 1; mNull <= 5; ++mNull) {
        Done();
        EXPECT_EQ(First(mInbox), "") << mNull;
    }
    Done();
    EXPECT_NE(First(mInbox), "");
    mNull = 3;
    EXPECT_EQ(Next(), "");
}

TEST(PrintErrorBox, ShowsAFormattedResourceCutAt255Characters) {
    MessageBoxes boxes;
    void* const program = GetModuleHandleA(nullptr);
    EXPECT_EQ(PrintError(21, 20, 99, program, "Anna", -3, 50u), IDOK);
    PrintError(22, 999, 0, program);
    PrintError(23, 20, 0, program, std::string(10000, 'x').c_str());
    const auto loaded = AllOf(StartsWith("123456789_"), EndsWith("_1234"), SizeIs(254));
    EXPECT_THAT(boxes.Texts(),
                ElementsAre("Anna has -3 messages, 50% read.", loaded, std::string(255, 'x')));
    EXPECT_EQ(boxes.Shown()[0].caption + boxes.Shown()[1].caption, "Caption");
}

TEST(AllocationFailure, IsHandledWhileTheLibraryIsLoaded) {
    EXPECT_EQ(HelperProcess("allocation-handler").ExitCode(), 0u);
    EXPECT_EQ(HelperProcess("allocation-failure 4").ExitCode(), 20u); // Retry tries again
    EXPECT_EQ(HelperProcess("allocation-failure 2").ExitCode(), 1u);  // Cancel ends the process
}

TEST_F(Ticker, APathThatIsNoneOpensNoOtherFile) {
    Inbox(Mail("Lunch", "Bo"));
    for (const std::string& folder :
         {std::string("C:\\no\\\\folder\\"), std::string(300, 'x') + "\\"}) {
        EXPECT_EQ(First(folder + "inbox.d"), "");
        Done();
    }
}
