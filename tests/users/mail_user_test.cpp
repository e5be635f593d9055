#include <gmock/gmock.h>

#include "postrider.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"

using namespace testing;

static MailUser User(const std::string& name, MailUserType type = keUserOrdinary) {
    return MailUser(name.c_str(), "", type);
}
// Platform, message format, enclosure encoding and POP option byte.
static std::vector<int> SettingsOf(const BaseMailUser& user) {
    return {user.Platform(), user.MessageFormat(), user.EnclosureEncode(), user.PopOption()};
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

TEST(MailUserName, IsOrderedAndSplitAtItsFirstBar) {
    const std::string f30(30, 'f'), g60(60, 'g');
    const struct {
        std::string name, givenFirst, familyFirst, split;
    } cases[] = {
        {"Smith|Anna", "Anna Smith", "Smith, Anna", "Anna/Smith/1"},
        {"Anna", "Anna", "Anna", "Anna//1"},
        {"|Anna", "Anna ", ", Anna", "Anna//1"},
        {"Smith|", " Smith", "Smith, ", "/Smith/1"},
        {"a|b|c", "b|c a", "a, b|c", "b|c/a/1"},
        {"", "", "", "//0"},
        // At most 51 characters, and the parts of the first 34.
        {f30 + "|" + g60, g60.substr(9), f30 + ", " + g60.substr(41), "ggg/" + f30 + "/1"}};
    for (const auto& [text, givenFirst, familyFirst, split] : cases) {
        RBString out("before"), given("before"), family("before"), name(text.c_str());
        for (unsigned short flags : {1, 3, 0, 2}) {
            MailUser::OrderedUserName(out, name, flags);
            EXPECT_EQ(out.Text(), flags & 1 ? givenFirst : familyFirst);
        }
        const std::string result = std::to_string(User(text).SplitUserName(given, family));
        EXPECT_EQ(given.Text() + std::string("/") + family.Text() + "/" + result, split);
    }
}

TEST(MailUserName, IsTranslatedWithoutTheAddress) {
    MailUser user("|J\x8Arg", "\x8A", keUserOrdinary);
    user.TranslateIn();
    EXPECT_TRUE(user.Name() == "|J\xE4rg" && user.Address() == "\x8A");
    EXPECT_TRUE(user.GetUserNameFirstChar() == 'J' && User("").GetUserNameFirstChar() == '\0');
}

TEST(MailUserOrder, TypesComeBeforeNamesAndTheTwoTestsAreNotMirrorImages) {
    using Named = std::pair<MailUserType, const char*>;
    const std::tuple<Named, Named, int, int> cases[] = {
        {{0x6000, "b"}, {0x6000, "a"}, 1, 1},   {{0x6000, "a"}, {0x6000, "b"}, 1, 0},
        {{0x6000, "b"}, {0x2000, "a"}, 1, 0},   {{0x2000, "a"}, {0x6000, "b"}, 0, 1},
        {{0x2000, "a"}, {0x2000, "b"}, 1, 0},   {{0x2000, "b"}, {0x2000, "a"}, 0, 1},
        {{0x2000, "b"}, {0x8000, "a"}, 1, 0},   {{0x2000, "b"}, {0x1000, "a"}, 1, 0},
        {{0x8000, "a"}, {0x6000, "b"}, 0, 1},   {{0x4000, "a"}, {0x2000, "b"}, 0, 1},
        {{0x4000, "a"}, {0x8000, "b"}, 1, 0},   {{0x8000, "b"}, {0x4000, "a"}, 0, 0},
        {{0x8000, "a"}, {0x1000, "b"}, 1, 0},   {{0x8000, "b"}, {0x1000, "a"}, 0, 0},
        {{0x1000, "b"}, {0x6000, "a"}, 1, 0},   {{0x1000, "b"}, {0x1000, "a"}, 1, 1},
        {{0x8000, "A|"}, {0x8000, "a,"}, 0, 1}, {{0x8000, "|A"}, {0x8000, "a"}, 0, 1}};
    for (const auto& [left, right, less, greater] : cases) {
        const MailUser a = User(left.second, left.first), b = User(right.second, right.first);
        EXPECT_TRUE((a < b) == less && (a > b) == greater) << PrintToString(std::pair(left, right));
    }
    const std::string n32(32, 'n'); // the rest does not count
    EXPECT_EQ(User(n32 + "1") > User(n32 + std::string(300, '2')), 1);
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

TEST(MailUser, CopiesBitFourOfTheFlagsAndAssignsNone) {
    MailUser user = FileUser("box7"), assigned;
    user.SetFlags(0xFFFFFFFF);
    MailUser copy(user);
    assigned.SetFlags(0x21);
    assigned = user;
    EXPECT_THAT((std::vector{copy.Flags(), assigned.Flags()}), ElementsAre(0x10, 0x21));
    EXPECT_EQ(Written(assigned) + Written(copy), Record("box7") + Record("box7"));
    copy.SetType(0x4000);
    EXPECT_TRUE(user.IsEqual(copy)) << "types do not matter";
    copy.SetEnclosureEncode(keEncode7);
    EXPECT_FALSE(user.IsEqual(copy));
}

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
    EXPECT_TRUE(assigned.UserStatus() == 5 && assigned.Value() == -6);
    EXPECT_TRUE(assigned.LoggedText() == "C:\\ANNA" && assigned.SecondText() == "secret");
}

TEST(MailUserRecord, HasNoFlags) {
    std::string record = Record("box7");
    const auto user =
        std::make_unique<MailUser>(reinterpret_cast<UserLRec*>(record.data()), nullptr);
    EXPECT_EQ(user->Flags(), 0u);
}

TEST(MailUserRecord, SettingsFollowThePlatformByte) {
    const struct {
        const char* bytes; // mark, message format, enclosure encoding, platform
        std::vector<int> settings;
    } cases[] = {{"\xFF\x09\x09\x01", {1, 2, 7, 9}}, {"\xFF\x01\x01\x02", {2, 2, 7, 9}},
                 {"\xFF\x01\x01\x03", {3, 3, 2, 9}}, {"\xFF\x01\x01\x04", {4, 4, 7, 9}},
                 {"\xFF\x09\x03\x05", {4, 4, 7, 9}}, {"\xFF\x01\x01\x05", {6, 1, 1, 9}},
                 {"\xFF\x02\x07\x05", {2, 2, 7, 9}}, {"\xFF\x03\x02\x05", {3, 3, 2, 9}},
                 {"\xFF\x04\x01\x05", {5, 4, 1, 9}}, {"\xFF\x05\x02\x05", {5, 4, 2, 9}},
                 {"\xFF\x04\x07\x06", {6, 1, 1, 9}}, {"\xFF\x03\x02\x07", {4, 2, 7, 9}},
                 {"\xFE\x03\x02\x03", {4, 2, 7, 0}}};
    for (auto [bytes, settings] : cases) {
        const std::string record = With(Record("box7"), 32, bytes);
        EXPECT_EQ(SettingsOf(ReadFrom(record)), settings) << &bytes;
        settings[3] = 0; // a user made from a record starts without the option byte
        EXPECT_EQ(SettingsOf(FromRecord(record)), settings);
    }
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

TEST(MailUserRecord, ReadingStopsBeforeTheNextUser) {
    const std::string a31(31, 'a');
    std::istringstream in(Record(a31) + Continuation("bc") + Record(a31) + Record("box8") + "rest");
    for (const std::string& address : {a31 + "bc", a31, std::string("box8")}) {
        MailUser user;
        in >> user;
        EXPECT_EQ(user.Address().Text(), address);
        EXPECT_EQ(user.Type() + user.TypeExtension(), 0x2000 + 0x1234);
    }
    EXPECT_EQ(in.tellg(), 4 * 114);
    MailUser user = FileUser("box7");
    EXPECT_TRUE((in >> user).fail());
    EXPECT_EQ(Written(user), Record("box7"));
    for (const char* type : {"\x60", "\x40", "\xA0"})
        EXPECT_EQ(ReadFrom(With(Record("box7"), 79, type)).Type(), 0x8000);
    EXPECT_EQ(FromRecord(With(Record("box7"), 79, "\x60")).Type(), 0x6000);
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
