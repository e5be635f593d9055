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
    JxLoggedMailUser user;
    user.SetAddress(std::string(143, 'a').c_str());
    EXPECT_EQ(Written(static_cast<BaseMailUser&>(user)), "");
    std::fstream closed;
    EXPECT_FALSE(user.WriteInfo(closed) || JxLoggedMailUser().WriteInfo(closed));
}
