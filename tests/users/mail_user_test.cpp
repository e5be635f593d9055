#include <gmock/gmock.h>

#include "postrider.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"

using namespace testing;

static MailUser User(const std::string& name, MailUserType type = keUserOrdinary) {
    return MailUser(name.c_str(), "", type);
}
// A file user with Unix settings and POP option byte 9; its record, and a continuation.
static MailUser FileUser(const std::string& address) {
    MailUser user("Smith|Anna", address.c_str(), keFormat3, keEncode2);
    user.SetPopOption(9);
    user.SetType(keUserFile);
    user.SetTypeExtension(0x1234);
    return user;
}
static std::string Record(const std::string& address) {
    const std::string record = With(std::string(114, '\0'), 0, Pascal("Smith|Anna"));
    const std::string settings = "\xFF\x03\x02\x03\x09", type = Bytes("\x00\x20\x34\x12");
    return With(With(With(record, 32, settings), 46, Pascal(address)), 78, type);
}
static std::string Continuation(const std::string& rest) {
    return With(std::string(114, '\0'), 0, "\x01+" + Pascal(rest));
}
static MailUser FromRecord(std::string record, std::string rest = "") {
    return MailUser(reinterpret_cast<UserLRec*>(record.data()),
                    rest.empty() ? nullptr : reinterpret_cast<UserLRec*>(rest.data()));
}
static MailUser ReadFrom(const std::string& bytes) {
    std::istringstream in(bytes);
    MailUser user;
    in >> user;
    EXPECT_TRUE(in.good());
    return user;
}

TEST(MailUserName, IsTranslatedWithoutTheAddress) {
    MailUser user("|J\x8Arg", "\x8A", keUserOrdinary);
    user.TranslateIn();
    EXPECT_TRUE(user.Name() == "|J\xE4rg" && user.Address() == "\x8A");
    EXPECT_TRUE(user.GetUserNameFirstChar() == 'J' && User("").GetUserNameFirstChar() == '\0');
}

TEST(MailUserAddress, StandsBetweenTheFirstBracketsOrIsTheWholeText) {
    MessageBoxes boxes;
    const char* const cases[][2] = {
        {"Anna Smith <box7>", "box7"}, {"a <b<c> d>", "b<c"}, {"a <> b", ""},    {"", ""},
        {"a>b <c>", "a>b <c>"},        {"<box7", "<box7"},    {"box7>", "box7>"}};
    for (const auto& [text, address] : cases) {
        MailUser user = User("Anna");
        EXPECT_EQ(user.SetInternetAddress(text), 1);
        EXPECT_STREQ(user.Address().Text(), address);
    }
    EXPECT_THAT(boxes.Texts(), ElementsAre(AllOf(HasSubstr("\nstrNameAndAddr.Length()\n"),
                                                 EndsWith("\nJXRESIDT\\MUSR_BS.CPP\n"))));
}

// What another program derives.
struct CountedUser : JxLoggedMailUser {
    void CopyDerivedData(const JxLoggedMailUser& other) override { value = other.Value(); }
    long value = 0;
};

// Values besides the library's own are other programs'.
TEST(MailUser, KeepsSettingsOfOtherPrograms) {
    MailUser user("Anna", "a", keFormat1, static_cast<enumEnclosureEncode>(99)), copy(user);
    EXPECT_TRUE(copy.EnclosureEncode() == 99 && copy.IsEqual(user));
    JxLoggedMailUser logged, assigned;
    EXPECT_TRUE(logged.LoggedFlag1() && logged.LoggedFlag2() && logged.Value() == 0);
    logged.SetUserStatus(static_cast<enumLoggedUserStatus>(5));
    logged.SetValue(-6);
    logged.SetLoggedText("C:\\ANNA");
    logged.SetSecondText("secret");
    assigned = logged;
    CountedUser counted;
    counted.JxLoggedMailUser::operator=(logged);
    EXPECT_EQ(counted.value, -6);
    EXPECT_TRUE(assigned.UserStatus() == 5 && assigned.Value() == -6);
    EXPECT_TRUE(assigned.LoggedText() == "C:\\ANNA" && assigned.SecondText() == "secret");
}

TEST(MailUserRecord, AddressesFrom32CharactersGoOnInASecondRecord) {
    const std::string all = std::string(31, 'a') + "b" + std::string(110, 'c');
    for (unsigned int length : {142u, 32u, 31u, 0u}) {
        MailUser user = FileUser(all.substr(0, length));
        std::string bytes = Record(all.substr(0, std::min(length, 31u)));
        if (length > 31)
            bytes += Continuation(all.substr(31, length - 31));
        EXPECT_EQ(Written(user), bytes) << length;
        EXPECT_EQ(BaseMailUser::Continued(), length > 31);
        EXPECT_TRUE(ReadFrom(bytes).IsEqual(user)) << length;
    }
    MailUser tooLong = FileUser(all + "d");
    EXPECT_EQ(Written(tooLong), "");
}

TEST(MailUserRecord, DamagedLengthsAreCutAtTheirFields) {
    const std::string record = With(With(std::string(114, 'x'), 0, "\xFF"), 46, "\xFF");
    const std::string rest = With(std::string(114, 'y'), 0, "\x01+\xFF");
    for (const MailUser& user : {ReadFrom(record + rest), FromRecord(record, rest)}) {
        EXPECT_EQ(user.Name().Text(), std::string(31, 'x'));
        EXPECT_EQ(user.Address().Text(), std::string(31, 'x') + std::string(111, 'y'));
    }
    for (unsigned int length : {31u, 40u, 300u}) {
        MailUser user = User(std::string(length, 'n'));
        EXPECT_EQ(ReadFrom(Written(user)).Name().Text(), std::string(31, 'n'));
    }
}

// Linked from a program: the library has these containers' members.
TEST(MailUserList, IsAContainerOfTheLibrary) {
    RB_Container<MailUser> users(RB_Container<MailUser>::keOwnsObjects);
    for (const char* name : {"Smith|Anna", "Jones|Bo"})
        users.AddObject(*new MailUser(name, nullptr, keUserOrdinary));
    EXPECT_EQ(users.GetFirstObject()->GetUserNameFirstChar(), 'S');
    EXPECT_EQ(users.GetNextObject()->GetUserNameFirstChar(), 'J');
    EXPECT_EQ(users[2], nullptr);
}
