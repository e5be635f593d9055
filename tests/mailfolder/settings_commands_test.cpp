#include <gmock/gmock.h>

#include <memory>

#include "resident/core/windows_api.h"
#include "tests/mailfolder/tool.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

struct SettingsCommands : testing::Test {
    ScratchFolder mFolder;
};

TEST_F(SettingsCommands, PrefsShowNeverShowsAPassword) {
    {
        MailUser person("Smith|Anna", "anna@post:995", keUserOrdinary);
        JxLoggedMailUser user(person);
        user.SetSecondText("secret word");
        JXMailPrefs prefs(JXMailPrefs::keAllowWriting);
        ASSERT_TRUE(prefs.CreatePrefsFile(mFolder.Path("RB.DAT").c_str()));
        FileSpec mail(mFolder.Path().c_str(), 1);
        prefs.SetMailDirectory(mail);
        prefs.SetUserData(user);
        prefs.SetPriority("Urgent", 0);
        prefs.SetDialupConnection("Office");
        ASSERT_TRUE(prefs.WriteJXPrefs());
    }
    const Ran text = RunTool("prefs show RB.DAT");
    EXPECT_EQ(text.code, 0u);
    EXPECT_THAT(text.out, HasSubstr("Password            set, not shown"));
    EXPECT_THAT(text.out, HasSubstr("Mail directory      " + mFolder.Path() + "\\\n"));
    const Ran ran = RunTool("prefs show . --json");
    EXPECT_THAT(ran.out + text.out, Not(HasSubstr("secret")));
    const auto json = ran.Json();
    EXPECT_EQ(json["popAccount"], "anna@post:995");
    EXPECT_EQ(json["popPort"], 995);
    EXPECT_EQ(json["smtpHost"], "");
    EXPECT_EQ(json["passwordSet"], true);
    EXPECT_EQ(json["priority1"], "Urgent");
    EXPECT_EQ(json["dialupConnection"], "Office");
}

TEST_F(SettingsCommands, PrefsShowTellsOfDamageWithoutABox) {
    const std::string header = "PREFRBSW" + Bytes("\x90\x01\0") + std::string(33, '\0');
    const std::string record = Bytes("\x51\x46\x90\x01\0\x01\0\0\0\x3A\x05\xDC");
    const std::string block(1500, '\0');
    const auto shown = [](const std::string& bytes) {
        WriteFileBytes("RB.DAT", bytes);
        const Ran ran = RunTool("prefs show RB.DAT");
        EXPECT_EQ(ran.code, ran.err.empty() ? 0u : 3u);
        return ran.err;
    };
    EXPECT_THAT(shown(""), HasSubstr("shorter than its header"));
    EXPECT_THAT(shown(With(header, 0, "X") + Bytes("\0\x01")), HasSubstr("does not begin with"));
    EXPECT_THAT(shown(header + Bytes("\0\0")), HasSubstr("other programs"));
    EXPECT_THAT(shown(header + Bytes("\0\x02") + record.substr(0, 5)),
                HasSubstr("ends inside its list of 2 blocks"));
    EXPECT_THAT(shown(header + Bytes("\0\x01") + With(record, 11, "\xDB") + block),
                HasSubstr("have 1499 bytes"));
    EXPECT_THAT(shown(header + Bytes("\0\x01") + record + Cut(block).substr(1)),
                HasSubstr("ends inside the mail preferences"));
    EXPECT_EQ(shown(header + Bytes("\0\x01") + record + block), "");
}

// The files of the Windows directory, put back afterwards.
struct CurrentUser : SettingsCommands {
    CurrentUser() {
        mData.Remove();
        mUser.Remove();
    }
    const KeptFile mData{WindowsDirectory() + "\\JXUSER.DAT"};
    const KeptFile mUser{WindowsDirectory() + "\\JXLGDUSR.DAT"};
};

TEST_F(CurrentUser, IsMissing) {
    const Ran ran = RunTool("user show");
    EXPECT_EQ(ran.code, 1u);
    EXPECT_THAT(ran.err, HasSubstr("There is no current user"));
}

TEST_F(CurrentUser, ShowsPathsAndAccountsAndLeavesTheFiles) {
    {
        MailUser person("Smith|Anna", "anna@post", keUserOrdinary);
        JxLoggedMailUser user(person);
        user.SetLoggedText("C:\\Anna\\");
        JxBackgndData data;
        data.mstrSettings[JxBackgndData::keMailDirectory].puts("C:\\Anna\\InBox\\");
        data.mstrSettings[JxBackgndData::keDFileName].puts("DFile");
        data.SetFullPopAccount("anna:995");
        data.SetFullSmtpHost("post");
        std::ostringstream bytes;
        bytes << data;
        WriteFileBytes(mData.Path(), bytes.str());
        std::fstream file(mUser.Path(), std::ios::out | std::ios::binary);
        ASSERT_TRUE(user.WriteInfo(file));
    }
    SetFileAttributesA(mData.Path().c_str(), FILE_ATTRIBUTE_HIDDEN);
    const auto json = RunTool("user show --json").Json();
    EXPECT_EQ(json["name"], "Smith|Anna");
    EXPECT_EQ(json["address"], "anna@post");
    EXPECT_EQ(json["prefsDirectory"], "C:\\Anna\\");
    EXPECT_EQ(json["inboxDirectory"], "C:\\Anna\\InBox\\");
    EXPECT_EQ(json["inboxFile"], "DFile");
    EXPECT_EQ(json["popPort"], 995);
    EXPECT_EQ(json["smtpPort"], 25);
    EXPECT_EQ(GetFileAttributesA(mData.Path().c_str()) & FILE_ATTRIBUTE_HIDDEN,
              static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN));
}

TEST_F(CurrentUser, NeverShowsThePasswordOfAVerification) {
    const std::string bytes = Bytes("\0\0\0\x04"
                                    "anna"
                                    "\0\0\0\x06"
                                    "secret"
                                    "\0\0\0\x07"
                                    "1.2.3.4"
                                    "\0\0\0\0");
    WriteFileBytes(mData.Path(), bytes);
    const Ran ran = RunTool("user show");
    EXPECT_EQ(ran.code, 0u);
    EXPECT_THAT(ran.out, AllOf(HasSubstr("POP user            anna"), HasSubstr("1.2.3.4"),
                               Not(HasSubstr("secret"))));
    EXPECT_THAT(ran.err, HasSubstr("JXLGDUSR.DAT is missing"));
}

TEST_F(CurrentUser, TellsOfACutUserFile) {
    WriteFileBytes(mUser.Path(), std::string(50, '\0'));
    const Ran ran = RunTool("user show");
    EXPECT_EQ(ran.code, 3u);
    EXPECT_THAT(ran.err, HasSubstr("it ends inside the user"));
}

} // namespace
