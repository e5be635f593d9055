// A notifier's whole request, through the exported functions alone.

#include <gmock/gmock.h>

#include "resident/core/windows_api.h"
#include "tests/support/helper_process.h"
#include "tests/support/mail_bytes.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"
#include "ticker/ticker.h"

using namespace testing;

// The account of a user with this mail directory and this D file.
static std::string Account(const std::string& directory, const std::string& file) {
    std::vector<std::string> strings(kUserStrings, "text");
    strings[2] = directory;
    strings[3] = file;
    return UserData(strings);
}

class CurrentUser : public Test {
protected:
    CurrentUser() { mKept.Remove(); }
    ~CurrentUser() override {
        Done();
        EXPECT_TRUE(mBoxes.Shown().empty()); // nothing is reported to the user
    }
    // What the functions give for a file with this record; "" for 0 with nothing written.
    std::string Inbox(const std::string& record) {
        mKept.Remove();
        return WriteFileBytes(mPath, ScrambledUserData(record)), Inbox();
    }
    std::string Inbox() {
        mInbox = mUserData = nullptr;
        if (GetCurUserPath(&mInbox, &mUserData)) {
            EXPECT_EQ(mUserData, mPath);
            return mInbox;
        }
        EXPECT_TRUE(!mInbox && !mUserData);
        return "";
    }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    const KeptFile mKept{WindowsDirectory() + "\\JXUSER.DAT"};
    const std::string& mPath = mKept.Path();
    char *mInbox = nullptr, *mUserData = nullptr;
    char *topic = nullptr, *file = nullptr, *sender = nullptr;
    unsigned short kind = 0, flag = 0;
};

TEST_F(CurrentUser, InboxIsListedFromTheAccountOn) {
    const std::string inbox = mFolder.Path("IN.D");
    WriteFileBytes(inbox, kHeader + Kind(::Message("Lunch", "1.EML"), 5) + ::Message("Tea"));
    ASSERT_EQ(Inbox(Account(mFolder.Path(), "IN.D")), inbox);
    EXPECT_TRUE(GetFileAttributesA(mPath.c_str()) & FILE_ATTRIBUTE_HIDDEN);
    ASSERT_EQ(GetFirstRecord(mInbox, &topic, &file, &sender, &kind, &flag), 1);
    EXPECT_EQ(topic + std::string("/") + file + "/" + sender, "Lunch/1.EML/Anna Smith");
    EXPECT_TRUE(kind == 5 && flag == 0);
    EXPECT_EQ(mInbox, inbox);
    ASSERT_EQ(GetNextRecord(&topic, &file, &sender, &kind, &flag), 1);
    EXPECT_STREQ(topic, "Tea");
    // Asking in the middle of a walk leaves its texts alone.
    EXPECT_EQ(Inbox(), inbox);
    EXPECT_STREQ(topic, "Tea");
    EXPECT_EQ(GetNextRecord(&topic, &file, &sender, &kind, &flag), 0);
    EXPECT_STREQ(mInbox, inbox.c_str());
}

// The pointer is the caller's until Done, and what it points to an empty text.
TEST_F(CurrentUser, RecordCallEmptiesTheUserDataPath) {
    Inbox(Account(mFolder.Path(), "IN.D"));
    EXPECT_EQ(GetFirstRecord(mInbox, &topic, &file, &sender, &kind, &flag), 0);
    EXPECT_STREQ(mUserData, "");
}

TEST_F(CurrentUser, PathIsJoinedFromDirectoryAndName) {
    const std::string cases[][3] = {{"C:\\MAIL", "IN.D", "C:\\MAIL\\IN.D"},
                                    {"C:\\A.B\\C.D", "DFile", "C:\\A.B\\C.D\\DFile"},
                                    {"C:\\MAIL", "\\OTHER\\IN.D", "C:\\OTHER\\IN.D"},
                                    {"C:\\MAIL", "D:\\IN.D", "D:\\IN.D"},
                                    {"C:\\MAIL", "", "C:\\MAIL"}};
    for (const auto& [directory, name, inbox] : cases)
        EXPECT_EQ(Inbox(Account(directory, name)), inbox);
    // Parts that do not fit are left out.
    for (const std::string& longName : {std::string(255, 'n'), std::string(7000, 'n')})
        EXPECT_THAT(Inbox(Account("C:\\" + longName, "IN.D")), EndsWith("IN.D"));
    EXPECT_THAT(Inbox(Account("C:\\M", std::string(7000, 'n'))), StartsWith("C:\\M"));
}

TEST_F(CurrentUser, WithoutAFileThatCanBeReadNothingIsWritten) {
    ASSERT_EQ(Inbox(Account("C:\\MAIL", "IN.D")), "C:\\MAIL\\IN.D");
    char* const kept = mInbox;
    {
        const HeldFile held(mPath);
        EXPECT_EQ(Inbox(), "");
        EXPECT_TRUE(GetFileAttributesA(mPath.c_str()) & FILE_ATTRIBUTE_HIDDEN);
    }
    EXPECT_EQ(Inbox(""), "");
    mKept.Remove();
    WriteFileBytes(mFolder.Path("JXUSER.DAT"), ScrambledUserData(Account("C:\\X", "X")));
    EXPECT_TRUE(Inbox() == "" && !FileThere(mPath));
    CreateDirectoryA(mPath.c_str(), nullptr);
    EXPECT_EQ(Inbox(), "");
    EXPECT_TRUE(RemoveDirectoryA(mPath.c_str()));
    EXPECT_STREQ(kept, "C:\\MAIL\\IN.D"); // the last result stays
    EXPECT_EQ(GetCurUserPath(nullptr, &mUserData) + GetCurUserPath(&mInbox, nullptr), 0);
}

TEST_F(CurrentUser, DamagedAccountGivesWhatStandsBeforeTheDamage) {
    const std::string whole = Account("C:\\MAIL", "IN.D");
    const unsigned int paths = 12 + 2 * 8 + 11 + 8; // where the D file's name ends
    for (unsigned int size = paths; size < whole.size(); ++size)
        EXPECT_EQ(Inbox(whole.substr(0, size)), "C:\\MAIL\\IN.D") << size;
    EXPECT_EQ(Inbox(whole.substr(0, paths) + "\xFF\xFF\xFF\xFF" + std::string(10000, 'x')),
              "C:\\MAIL\\IN.D");
}
