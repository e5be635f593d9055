#include <gmock/gmock.h>

#include "postrider.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"

using namespace testing;
using Strings = std::vector<std::string>;

// Reads a file with these bytes; whether the stream is good then.
static bool Read(JxBackgndData& data, const std::string& plain) {
    std::istringstream in(ScrambledUserData(plain));
    return (in >> data).good();
}
static JxBackgndData Old() {
    JxBackgndData data;
    Read(data, UserData(Strings(kUserStrings, "old")));
    return data;
}
static std::string Servers(const JxBackgndData& data) {
    return data.GetPopAccount().Text() + std::string(" ") + std::to_string(data.GetPopPort()) +
           " " + std::to_string(data.GetPopOption()) + " " + data.GetSmtpHost().Text() + " " +
           std::to_string(data.GetSmtpPort());
}

TEST(BackgndData, EmptyAddressesAreReportedAndTaken) {
    MessageBoxes boxes;
    JxBackgndData data = Old();
    data.SetFullPopAccount("");
    data.SetFullSmtpHost("");
    EXPECT_TRUE(data.GetFullPopAccount() == "" && Servers(data) == "old 110 1 old 25");
    EXPECT_THAT(boxes.TakeTexts(),
                AllOf(SizeIs(2), Each(HasSubstr("\nstrAddress.Length () > 0\n"))));
    data.SetFullPopAccount(":1");
    data.SetFullSmtpHost(":1");
    EXPECT_EQ(Servers(data), " 1 1  1");
    EXPECT_THAT(boxes.Texts(), ElementsAre(HasSubstr("\nmstrSmtpHost.Length () > 0\n"),
                                           HasSubstr("\nmstrPopAccount.Length () > 0\n")));
}

TEST(BackgndData, TellsItsDialupConnection) {
    const auto told = [](const RsWinPlatformData& platform) {
        EXPECT_NE(platform.Handle(), nullptr);
        return (platform.IsDialup() ? "on " : "off ") +
               std::string(platform.IsDialupNameSet() ? "set " : "unset ") +
               platform.DialupName().Text();
    };
    JxBackgndData data;
    data.mstr16 = "Home";
    RsWinPlatformData none(&data);
    EXPECT_EQ(told(none), "off unset ");
    const std::pair<unsigned long, const char*> options[] = {
        {0xFFFFF3FF, "off unset Home"}, {0x400, "on unset Home"}, {0x800, "off set Home"}};
    for (const auto& [flags, text] : options) {
        data.mulFlags = flags;
        EXPECT_EQ(told(RsWinPlatformData(&data, &data)), text);
    }
    none.SetDialupName("Office");
    EXPECT_EQ(told(none), "on set Office");
    none.SetDialupName("");
    EXPECT_EQ(told(none), "off set ");
}

TEST(DownloadItem, StreamsTheLowHalfOfItsNumber) {
    JxDownloadItem item("<id>"), read("old");
    EXPECT_EQ(JxDownloadItem().Number() + item.Number(), 0u);
    item.SetNumber(0x12345678);
    read.SetNumber(0xAAAABBBB);
    EXPECT_EQ(Written(item), Bytes("\x78\x56\0\0\0\x04<id>"));
    std::istringstream in(Written(item) + Bytes("\x05\x00\xFF\xFF\xFF\xFFx"));
    in >> read;
    EXPECT_TRUE(in.good() && read.Number() == 0xAAAA5678 && read.Text() == "<id>");
    in >> read;
    EXPECT_TRUE(in.fail() && read.Number() == 0xAAAA0005 && read.Text() == "");
}
