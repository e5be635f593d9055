#include <gmock/gmock.h>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/pref_bytes.h"
#include "tests/support/resource_text.h"
#include "tests/support/scratch.h"

using namespace testing;

static const std::string kRecord(1500, 'r');
static std::string RecordOf(JXMailPrefs& prefs) {
    return std::string(reinterpret_cast<char*>(prefs.Record()), 1500);
}
static std::string Report(const char* expression, int line) {
    return ReportText(expression, "", line, "JXSYSTEM\\MAILPREF.CPP");
}

class MailPrefs : public Test {
protected:
    MailPrefs() { mPrefs.SetSpecPart(mPath.c_str(), 0); }
    std::string File(const std::string& record) {
        return PrefHeader("\x90\x01", mPath, 1) + PrefEntry("\x51\x46", "\x90\x01", 1, 58, 1500) +
               ScrambledBlock(record);
    }
    std::string Message(unsigned int id) { return FileMessage(id, mPath); }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    const std::string mPath = mFolder.Path("RB.DAT"), mIniPath = mFolder.Path("USER.INI");
    JxMailUserRepresentation mUser{"Smith|Anna", mFolder.Path().c_str()};
    JXMailPrefs mPrefs{JXMailPrefs::keAllowWriting};
};

TEST_F(MailPrefs, ConnectionStandsInTheSettingsFile) {
    ASSERT_EQ(mPrefs.CreatePrefsFile(mPath.c_str()), 1);
    mPrefs.SetDialupConnection("Home");
    mPrefs.SetDisconnectFlag(-7);
    EXPECT_EQ(ReadFileBytes(mIniPath),
              "[Dial-Up Networking]\r\nConnection=Home\r\nDisconnect=1\r\n");
}

TEST_F(MailPrefs, OtherApplicationsBlockIsReadIntoItsTag) {
    WriteFileBytes(mPath, PrefHeader("\x90\x01", mPath, 2) +
                              PrefEntry("\x51\x46", "\x90\x01", 1, 70, 1500) +
                              PrefEntry(Bytes("\x07\0"), "\x90\x01", 2, 1570, 5) +
                              ScrambledBlock(std::string(1500, 'm')) + ScrambledBlock("other"));
    const std::string before = RecordOf(mPrefs);
    char block[] = "empty";
    AppPrefTag tag = {7, 400, 5, block};
    EXPECT_EQ(mPrefs.ReadOtherPrefs(tag), 1);
    EXPECT_STREQ(block, "other");
    EXPECT_EQ(RecordOf(mPrefs), before);
    EXPECT_TRUE(!mPrefs.isOpen() && mBoxes.Shown().empty());
}

TEST_F(MailPrefs, DamagedOrMissingFileIsReportedAsAWhole) {
    JXMailPrefs missing(mUser, 1); // says nothing, and has no settings file
    EXPECT_TRUE(missing.IsValid() == 0 && mBoxes.Shown().empty() && !FileThere(mPath));
    missing.SetDialupConnection("Home");
    missing.SetDisconnectFlag(1);
    missing.GetPopAccount();
    missing.GetSmtpHost();
    EXPECT_THAT(mBoxes.TakeTexts(),
                ElementsAre(Report("mpoUserIniFile", 455), Report("mpoUserIniFile", 483),
                            Report("mstrPopAccount.Length () > 0", 416),
                            Report("mstrSmtpHost.Length () > 0", 423)));
    WriteFileBytes(mPath, With(File(kRecord), 46, "\x01")); // another application's
    EXPECT_EQ(JXMailPrefs(mUser, 1).IsValid(), 0);
    EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(Message(701)));
    // A user without a folder has no file, and not that of the current folder.
    for (const std::string& none : {std::string("C:\\a\\\\b"), std::string(300, 'x')}) {
        JxMailUserRepresentation user("Anna", none.c_str());
        EXPECT_EQ(JXMailPrefs(user, 1).IsValid(), 0);
    }
    EXPECT_TRUE(mBoxes.Shown().empty());
    for (unsigned int size : {0, 45, 57, 58, 1557}) {
        WriteFileBytes(mPath, File(kRecord).substr(0, size));
        EXPECT_EQ(JXMailPrefs(mUser, 1).IsValid(), 0);
        EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(Message(605), Message(701)));
    }
}

TEST_F(MailPrefs, FileThatCannotBeWrittenIsReportedAndKept) {
    const std::string file = File(kRecord);
    mPrefs.SetReturnAddress("J\xE4rg");
    const auto fails = [&] {
        EXPECT_EQ(mPrefs.WriteJXPrefs(), 0);
        EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(Message(701)));
        EXPECT_TRUE(mPrefs.GetReturnAddress() == "J\xE4rg"); // ANSI again
    };
    EXPECT_EQ(mPrefs.VerifyFileExists(mUser), 0);
    CreateDirectoryA(mPath.c_str(), nullptr);
    fails();
    RemoveDirectoryA(mPath.c_str());
    WriteFileBytes(mPath, file);
    EXPECT_EQ(mPrefs.VerifyFileExists(mUser), 1);
    JxMailUserRepresentation nobody("Anna", "");
    KeptFile root("C:\\RB.DAT");
    WriteFileBytes(root.Path(), file);
    EXPECT_EQ(mPrefs.VerifyFileExists(nobody), 0);
    JxMailUserRepresentation gone("Anna", mFolder.Path("GONE").c_str());
    EXPECT_EQ(mPrefs.VerifyFileExists(gone), 0);
    {
        const HeldFile held(mPath);
        fails();
        EXPECT_EQ(mPrefs.ReadJXPrefs() + mPrefs.IsValid(), 0);
        EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(Message(701)));
    }
    if (MakeReadOnly(mPath))
        fails();
    EXPECT_EQ(ReadFileBytes(mPath), file);
    char block[] = "other";
    AppPrefTag tag = {7, 1, 5, block};
    EXPECT_EQ(mPrefs.ReadOtherPrefs(tag), 0);
    EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(Message(701)));
}
