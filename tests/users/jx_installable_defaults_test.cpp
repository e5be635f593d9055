#include <gmock/gmock.h>

#include "postrider.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/resource_text.h"
#include "tests/support/scratch.h"

using testing::ElementsAre;
using Values = std::vector<int>; // message format, enclosure encoding, platform

static std::string File(const std::string& format, const std::string& encoding,
                        const std::string& platform) {
    return "[Address Defaults]\r\nMessage Format=" + format + "\r\nEnclosure Encoding=" + encoding +
           "\r\nPlatform=" + platform + "\r\n";
}

class InstallableDefaults : public testing::Test {
protected:
    InstallableDefaults() { CreateDirectoryA(mFolder.Path("source").c_str(), nullptr); }
    ~InstallableDefaults() override { JxInstallableDefaults::KillInstance(); }

    JxInstallableDefaults& Defaults() { return *JxInstallableDefaults::GetInstance(); }
    int SetUpFrom(const char* source) {
        return Defaults().SetupInstallableDefaults(mFolder.Path(source).c_str(),
                                                   mFolder.Path().c_str());
    }
    Values Get() {
        return {Defaults().GetDefaultMessageFormat(), Defaults().GetDefaultEnclosureEncoding(),
                Defaults().GetDefaultPlatformType()};
    }
    void Set(int format, int encoding, int platform) {
        Defaults().SetDefaultMessageFormat(static_cast<enumMessageFormat>(format));
        Defaults().SetDefaultEnclosureEncoding(static_cast<enumEnclosureEncode>(encoding));
        Defaults().SetDefaultPlatformType(static_cast<enumUserPlatformType>(platform));
    }
    static std::string Report(int line) {
        return ReportText("0", "", line, "JXRESIDT\\JXINDFLT.CPP");
    }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    const std::string mTarget = mFolder.Path("defaults.ini");
};

TEST_F(InstallableDefaults, BeforeSetUpAreFixedAndCannotBeSet) {
    Set(1, 1, 1);
    EXPECT_THAT(mBoxes.Texts(), ElementsAre(Report(198), Report(227), Report(165)));
    EXPECT_EQ(Get(), (Values{2, 7, 4}));
    EXPECT_EQ(SetUpFrom("source"), 1);
    EXPECT_EQ(Get(), (Values{4, 7, 4}));
    EXPECT_FALSE(FileThere(mTarget));
}

TEST_F(InstallableDefaults, WordsAreTheSameToTheByte) {
    SetUpFrom("source");
    Set(2, 2, 2);
    const Values kept = Get();
    char word[99];
    GetPrivateProfileStringA("Address Defaults", "Message Format", "", word, 99, mTarget.c_str());
    // The collation passes over a soft hyphen.
    WritePrivateProfileStringA("Address Defaults", "Message Format",
                               (std::string(word) + "\xAD").c_str(), mTarget.c_str());
    EXPECT_EQ(kept, (Values{2, 2, 2}));
    EXPECT_EQ(Get(), (Values{4, 2, 2}));
}

TEST_F(InstallableDefaults, AreKeptAsWords) {
    SetUpFrom("source");
    const std::pair<Values, Values> cases[] = {
        {{1, 1, 1}, {713, 718, 720}}, {{2, 2, 2}, {715, 719, 721}}, {{3, 7, 3}, {716, 725, 722}},
        {{4, 7, 4}, {714, 725, 723}}, {{4, 7, 5}, {714, 725, 724}}, {{4, 7, 6}, {714, 725, 726}}};
    for (const auto& [values, words] : cases) {
        Set(values[0], values[1], values[2]);
        EXPECT_EQ(Get(), values);
        EXPECT_EQ(ReadFileBytes(mTarget),
                  File(ResourceText(words[0]), ResourceText(words[1]), ResourceText(words[2])));
    }
    // A value without a word leaves its key without a text.
    Set(5, 3, 0);
    EXPECT_THAT(mBoxes.Texts(), ElementsAre(Report(191), Report(220), Report(158)));
    EXPECT_EQ(ReadFileBytes(mTarget), File("", "", ""));
}

TEST_F(InstallableDefaults, SetUpCopiesTheSourceOnlyWhereThereIsNoTarget) {
    RBString upper(ResourceText(713).c_str());
    const std::string source =
        File(upper.Upper().Text(), std::string(10000, 'x'), ResourceText(726));
    WriteFileBytes(mFolder.Path("source\\defaults.ini"), source);
    SetUpFrom("source\\");
    EXPECT_EQ(ReadFileBytes(mTarget), source);
    EXPECT_EQ(Get(), (Values{4, 7, 6})); // words are known by their exact text
    EXPECT_EQ(MailUser().Platform(), 6);
    WriteFileBytes(mTarget, File("", "", ResourceText(722)));
    SetUpFrom("source");
    EXPECT_EQ(Get(), (Values{4, 7, 3}));
}

TEST_F(InstallableDefaults, ASourceThatCannotBeReadLeavesNoTarget) {
    WriteFileBytes(mFolder.Path("source\\defaults.ini"), File("", "", ResourceText(722)));
    {
        const HeldFile held(mFolder.Path("source\\defaults.ini"));
        SetUpFrom("source");
        EXPECT_FALSE(FileThere(mTarget));
    }
    SetUpFrom("source");
    EXPECT_EQ(Get(), (Values{4, 7, 3}));
}
