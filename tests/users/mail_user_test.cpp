#include <gmock/gmock.h>

#include "postrider.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"

using namespace testing;

static MailUser User(const std::string& name, MailUserType type = keUserOrdinary) {
    return MailUser(name.c_str(), "", type);
}
TEST(MailUserName, IsTranslatedWithoutTheAddress) {
    MailUser user("|J\x8Arg", "\x8A", keUserOrdinary);
    user.TranslateIn();
    EXPECT_TRUE(user.Name() == "|J\xE4rg" && user.Address() == "\x8A");
    EXPECT_TRUE(user.GetUserNameFirstChar() == 'J' && User("").GetUserNameFirstChar() == '\0');
}

TEST(MailUserAddress, AnEmptyOneIsReported) {
    MessageBoxes boxes;
    MailUser user = User("Anna");
    EXPECT_EQ(user.SetInternetAddress(""), 1);
    EXPECT_STREQ(user.Address().Text(), "");
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

TEST(MailUserRecord, AddressesThatDoNotFitAreNotWritten) {
    MailUser user("Smith|Anna", std::string(143, 'a').c_str(), keUserFile);
    EXPECT_EQ(Written(user), "");
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
