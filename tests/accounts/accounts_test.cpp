#include <gmock/gmock.h>

#include <filesystem>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

using namespace testing;

static const std::string kAddress = "abcdefghijklmnopqrstuvwxyz01234", kRest(79, 'r');

static std::string Record(const std::string& name, const std::string& address) {
    return With(With(std::string(82, '\0'), 0, Pascal(name)), 46, Pascal(address));
}
static std::string Continuation(const std::string& rest) {
    return With(std::string(82, '\0'), 0, "\x01+" + Pascal(rest));
}
static std::string Buffer() {
    return std::string(reinterpret_cast<char*>(SysMailUser::ulrSys), 164);
}
// Reads into a user who is old, old: the name, the address, and how far it read.
static std::string Read(const std::string& bytes) {
    MailUser old("old", "old", keFormat3, keEncode2);
    SysMailUser user(old);
    std::istringstream in(bytes);
    in >> user;
    EXPECT_TRUE(user.MessageFormat() == 3 && user.EnclosureEncode() == 2);
    return user.Name().Text() + std::string("/") + user.Address().Text() + " " +
           std::to_string(in.good() ? static_cast<int>(in.tellg()) : -1);
}

TEST(SysUser, IsReadWithItsContinuationAlone) {
    const std::string main = Record("Anna", kAddress), name(31, 'n');
    EXPECT_EQ(Read(main + Record("Bo", "")), "Anna/" + kAddress + " 82");
    // What is there of a continuation that is cut short counts, and is read again.
    EXPECT_EQ(Read(main + Continuation("x").substr(0, 81)), "Anna/" + kAddress + "x 82");
    EXPECT_EQ(Read(main + Continuation("x") + "next"), "Anna/" + kAddress + "x 164");
    EXPECT_EQ(Read(main.substr(0, 81)) + Read(""), "old/old -1old/old -1");
    // Lengths past their fields are not followed.
    EXPECT_EQ(Read(With(With(Record(name, kAddress), 0, "\xFF"), 46, "\xFF")),
              name + "/" + kAddress + " 82");
    EXPECT_EQ(Read(main + With(Continuation(kRest), 2, "\xFF")),
              "Anna/" + kAddress + kRest + " 164");
}

TEST(SysUser, WritesTheBuffersAddressAndNotTheRecord) {
    std::ostringstream pointer;
    pointer << static_cast<const void*>(SysMailUser::ulrSys);
    for (const std::string& rest : {std::string(), kRest}) {
        MailUser user("Smith|Anna", (kAddress + rest).c_str(), keUserOrdinary);
        SysMailUser written(user);
        EXPECT_EQ(Written(written), pointer.str());
        const std::string second = rest.empty() ? std::string(82, '\0') : Continuation(rest);
        EXPECT_EQ(Buffer(), Record("Smith|Anna", kAddress) + second);
    }
    // With a continuation, the record's operator repeats the record from its second byte on.
    auto& record = *reinterpret_cast<SysUserLRec*>(SysMailUser::ulrSys);
    EXPECT_EQ(Written(record), Buffer().substr(0, 82) + Buffer().substr(1, 82));
}

// What another program derives.
struct DefaultUser : JxDefPOPMailUserRepresentation {
    const RBString& GetPrefFileSpecString() const override { return mstrSpec; }
    RBString mstrSpec{"C:\\DEFAULT"};
};

TEST(UserRepresentation, IsAnEntryOfThePop3Users) {
    const ScratchFolder folder;
    SystemPrefFile ini(RBString(folder.Path("users.ini").c_str()));
    JxLoggedMailUser logged;
    logged.SetName("Smith|Anna");
    logged.SetLoggedText("C:\\ANNA");
    JxMailUserRepresentation user(logged), again("Bo", ""), nobody;
    EXPECT_STREQ(user.GetDisplayString().Text(), "Anna Smith");
    user.GetEntryName(); // sets the key to the user's name
    user.StreamOut(ini);
    user.SetEntryName("Bo");
    user.StreamOut(ini);
    EXPECT_EQ(ReadFileBytes(folder.Path("users.ini")),
              "[POP3 Users]\r\nSmith|Anna=C:\\ANNA\r\nBo=C:\\ANNA\r\n");
    EXPECT_TRUE(again.StreamIn(ini) == 1 && again.GetPrefFileSpecString() == "C:\\ANNA");
    EXPECT_TRUE(again == user && !(again == nobody) && user.GetDisplayString() == "Bo");
    const DefaultUser other;
    user = other; // leaves it without a value
    EXPECT_TRUE(user.GetPrefFileSpecString() == "" && user.GetUserName() == "Bo");
}

// The specification that a folder made below `path` gives, behind "failed " when it says so.
static std::string MakeFolder(const std::string& path, int which) {
    JXMailPrefs prefs(0);
    FileSpec directory(path.c_str(), 1), result("C:\\before.txt");
    prefs.SetMailDirectory(directory);
    const int done = JxLoggedMailUser().SetupLocalMailDirectory(
        &prefs, result, static_cast<enumLocalMailDir>(which));
    EXPECT_TRUE(done == 0 || done == 1);
    return (done ? "" : "failed ") + std::string(result.FullSpec());
}

TEST(LocalMailDirectory, IsMadeWithItsEmptyDirectoryFile) {
    const MessageBoxes boxes;
    const ScratchFolder folder;
    const char* const names[] = {"InBox\\DFile", "MailLog\\MFile",  "Public\\DFile",
                                 "Trash\\DFile", "SentMail\\DFile", "OutBox\\DFile",
                                 "BckgWork\\",   "DeadMail\\"};
    for (int which = 0; which < 8; ++which) {
        const std::string path = folder.Path(names[which]);
        EXPECT_EQ(MakeFolder(folder.Path(), which), path);
        EXPECT_TRUE(which < 6 ? ReadFileBytes(path) == std::string(316, '\0') : FileThere(path));
        if (which < 6)
            WriteFileBytes(path, "kept");
        EXPECT_EQ(MakeFolder(folder.Path(), which), path);
        EXPECT_TRUE(which >= 6 || ReadFileBytes(path) == "kept"); // not made anew
    }
    EXPECT_TRUE(boxes.Shown().empty());
    WriteFileBytes(folder.Path("file"), "kept");
    const std::string untouched = "failed C:\\before.txt";
    for (const char* above : {"file", "missing"}) // folders above are not made
        for (int which : {0, 7})
            EXPECT_EQ(MakeFolder(folder.Path(above), which), untouched);
    EXPECT_EQ(MakeFolder("C:\\" + std::string(250, 'm'), 0), untouched);
    EXPECT_EQ(MakeFolder(folder.Path(), 8), untouched);
    const std::string taken = folder.Path("taken\\InBox\\DFile");
    std::filesystem::create_directories(taken);
    EXPECT_EQ(MakeFolder(folder.Path("taken"), 0), "failed " + taken);
    FileSpec result;
    EXPECT_EQ(JxLoggedMailUser().SetupLocalMailDirectory(nullptr, result, keLocalInbox), 0);
}
