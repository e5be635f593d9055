#include <gmock/gmock.h>

#include <climits>

#include "postrider.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"

class SystemPrefs : public testing::Test {
protected:
    void Lines(const std::string& text) { WriteFileBytes(mPath, text); }
    // Opens the file, or goes back to its start, for a new walk.
    void Open() {
        mKey = "";
        EXPECT_EQ(mFile.OpenPrefFile(), 1);
    }
    // The next line of the opened file's section: "key:value:result".
    std::string Line(const char* section, int keySize = 2000, int valueSize = 2000,
                     const char* defaultValue = "none") {
        std::string key = mKey + std::string(2000 - mKey.size(), '\0'), value(2000, '\0');
        const int result = mFile.GetNextUnKeyPrefLine(section, key.data(), keySize, defaultValue,
                                                      value.data(), valueSize);
        mKey = key.c_str();
        return mKey + ":" + value.c_str() + ":" + std::to_string(result);
    }
    // The next line of a section by the profile functions: "key:value", or "" at its end.
    std::string Walk(const char* section, bool first, short keySize = 300, short valueSize = 300) {
        char key[300] = "k", value[300] = "";
        const int result = mFile.GetUnKeyedPrefLine(section, key, keySize, value, valueSize, first);
        return result ? key + std::string(":") + value : "";
    }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    const std::string mPath = mFolder.Path("prefs.ini");
    SystemPrefFile mFile{RBString(mPath.c_str())};
    std::string mKey;
};

TEST_F(SystemPrefs, KeyedReadsTakeNumbersAndAtMost1599Characters) {
    Lines("[S]\r\na=12abc\r\nb=abc\r\nc=\r\nd= -5 6\r\ne=-2147483648\r\nlong=" +
          std::string(10000, 'x') + "\r\n");
    EXPECT_EQ(mFile.GetToken("s", "a", 7), 12);
    EXPECT_EQ(mFile.GetToken("s", "b", 7), 0);
    EXPECT_EQ(mFile.GetToken("s", "c", 7), 7);
    EXPECT_EQ(mFile.GetToken("s", "d", 7L), -5L);
    EXPECT_EQ(mFile.GetToken("s", "e", 7L), -2147483647L - 1);
    EXPECT_EQ(mFile.GetToken("s", "long", ""), std::string(1599, 'x'));
    EXPECT_STREQ(mFile.GetToken("s", "c", "default"), "");
    EXPECT_STREQ(mFile.GetToken("s", "missing", static_cast<const char*>(nullptr)), "");
}

TEST_F(SystemPrefs, WritesAndRemovesKeysWithoutAnOpenStream) {
    const auto file = [&](int result) { return result ? ReadFileBytes(mPath) : "failed"; };
    EXPECT_EQ(file(mFile.SetToken("s", "k", -5, 0)), "[s]\r\nk=-5\r\n");
    EXPECT_EQ(file(mFile.SetToken("s", "k", 5, 1)), "[s]\r\n");
    EXPECT_EQ(file(mFile.SetToken("s", "k", 2147483647L, 0)), "[s]\r\nk=2147483647\r\n");
    EXPECT_EQ(file(mFile.SetToken("s", "k", "", 0)), "[s]\r\n");
    EXPECT_EQ(file(mFile.SetToken("s", "k", "text", 0)), "[s]\r\nk=text\r\n");
    EXPECT_EQ(file(mFile.SetToken("s", "k", "other", 1)), "[s]\r\n");
    EXPECT_EQ(file(mFile.SetPrefToken("s", "k", "")), "[s]\r\nk=\r\n");
    EXPECT_EQ(file(mFile.SetPrefToken("s", "k", nullptr)), "[s]\r\n");
}

TEST_F(SystemPrefs, WalksASectionByItsKeyNames) {
    std::string text = "[s]\r\nb=1\r\nlong=value\r\na=\r\n[u]\r\nUnKnown=1\r\n[many]\r\n";
    for (int key = 1000; key < 1500; ++key)
        text += std::to_string(key) + "=x\r\n";
    Lines(text);
    EXPECT_EQ(Walk("S", true), "b:1");
    EXPECT_STREQ(mFile.GetToken("u", "UnKnown", ""), "1"); // does not disturb the walk
    EXPECT_EQ(Walk("S", false, 3, 4), "lo:val");
    EXPECT_EQ(Walk("S", false, 2, 1), "a:");
    EXPECT_EQ(Walk("S", false) + Walk("S", false), "");
    char value[] = "....";
    EXPECT_EQ(mFile.GetUnKeyedPrefLine("S", nullptr, 300, value + 1, 0, 1), 1);
    EXPECT_EQ(mFile.GetUnKeyedPrefLine("S", value + 1, 0, nullptr, 300, 1), 1);
    EXPECT_STREQ(value, "....");
    EXPECT_EQ(Walk("missing", true) + Walk("missing", false) + Walk("u", true), "");
    int names = 0; // of 4 characters and a zero, in 1,600 bytes
    while (Walk("many", names == 0) == std::to_string(1000 + names) + ":x")
        ++names;
    EXPECT_TRUE(names == 319 || names == 320) << names;
}

TEST_F(SystemPrefs, LinesAreCutToTheirBuffers) {
    const std::string key(798, 'k'), value(801, 'v'), line = key + "=" + value; // 1,600 characters
    Lines("[s]\nname=value\n" + line + "\n" + std::string(10000, 'k') + "=\na=b\n");
    Open();
    EXPECT_EQ(Line("s", 4, 3), "nam:va:2");
    EXPECT_EQ(Line("s"), key + ":" + value + ":801");
    for (int calls = 0; calls < 20 && !Line("s").ends_with("-2"); ++calls)
        EXPECT_LE(mKey.size(), 1600u);
}

TEST_F(SystemPrefs, NoRoomIsNoValue) {
    Lines("[s]\na=1\nb=2\n");
    Open();
    for (int size : {0, INT_MIN})
        EXPECT_EQ(Line("s", 2000, size).substr(1), "::0");
    char key[] = "k", value[] = "v"; // room for the zero alone
    EXPECT_EQ(mFile.GetUnKeyedPrefLine("s", key, 1, value, 1, 1), 1);
    EXPECT_TRUE(!*key && !*value);
}

TEST_F(SystemPrefs, TellsWhyThereIsNoLine) {
    EXPECT_TRUE(mFile.OpenPrefFile() == 0 && !FileThere(mPath));
    Lines("[a]\nk=v\n");
    EXPECT_EQ(Line("a"), "::-2");
    Open();
    EXPECT_EQ(Line("") + Line(nullptr), "::-2::-2");
    EXPECT_EQ(Line("b", 10, 3), ":no:-1");
    Open();
    EXPECT_EQ(Line("b", 10, 10, nullptr), "::-1");
    Open();
    EXPECT_EQ(Line("a"), "k:v:1");
    SystemPrefFile copy;
    copy = mFile;
    EXPECT_FALSE(copy.isOpen());
    EXPECT_EQ(SystemPrefFile(static_cast<const FileSpec&>(copy)).OpenPrefFile(), 1);
    EXPECT_TRUE(mBoxes.Shown().empty()) << "the destructor does not close";
}

TEST_F(SystemPrefs, AWalkBelongsToItsObject) {
    Lines("[a]\r\nk=v\r\nl=w\r\n");
    EXPECT_EQ(Walk("a", true), "k:v");
    SystemPrefFile copy(mFile);
    char key[10] = "", value[10] = "";
    EXPECT_EQ(copy.GetUnKeyedPrefLine("a", key, 10, value, 10, 1), 1);
    EXPECT_EQ(Walk("a", false), "l:w");
    EXPECT_EQ(copy.GetUnKeyedPrefLine("a", key, 10, value, 10, 0), 1);
    EXPECT_STREQ(key, "l");
}

TEST_F(SystemPrefs, IniEntriesMoveTheirValues) {
    RbIniStringEntry text("S", "text", "before");
    EXPECT_TRUE(text.StreamIn(mFile) == 0 && text.GetValue().Length() == 0);
    Lines("[s]\r\ntext=value\r\n");
    EXPECT_TRUE(text.StreamIn(mFile) == 1 && text.GetValue() == "value");
    text.SetValue("");
    text.StreamOut(mFile);
    EXPECT_EQ(ReadFileBytes(mPath), "[s]\r\n");
    for (int value : {0, 2147483647, -1}) {
        RbIniIntEntry number("S", "number", value);
        EXPECT_EQ(RbIniIntEntry("S").GetValue() + RbIniIntEntry("S", "k").GetValue(), 0);
        number.StreamOut(mFile);
        EXPECT_EQ(ReadFileBytes(mPath), "[s]\r\nnumber=" + std::to_string(value) + "\r\n");
        number.SetValue(1);
        EXPECT_TRUE(number.StreamIn(mFile) == (value != -1) && number.GetValue() == value);
    }
}
