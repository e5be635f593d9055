#include <gmock/gmock.h>

#include "postrider.h"
#include "tests/support/record_bytes.h"
#include "tests/support/resource_text.h"
#include "tests/support/scratch.h"

class UserList : public testing::Test {
protected:
    ~UserList() override { Open(0); }
    void Open(int mode) {
        if (mFile.isOpen())
            mFile.close();
        mFile.clear();
        EXPECT_TRUE(!mode || mFile.Open(mode));
    }
    void Read(const std::string& lines) { WriteFileBytes(mPath, lines), Open(0xA1); }
    // Imports the next line: "code name/address format encoding platform".
    std::string Next() {
        MailUser user("old", "old", keFormat3, keEncode2);
        const int code = user.Import(mFile);
        return std::to_string(code) + " " + user.Name().Text() + "/" + user.Address().Text() + " " +
               std::to_string(user.MessageFormat()) + " " + std::to_string(user.EnclosureEncode()) +
               " " + std::to_string(user.Platform());
    }
    std::string Line(const std::string& line) { return Read(line + "\r\n"), Next(); }

    ScratchFolder mFolder;
    const std::string mPath = mFolder.Path("users.txt");
    RbFile mFile{mPath.c_str()};
};

TEST_F(UserList, ExportToAFileThatCannotBeWrittenFails) {
    MailUser anna("Anna", std::string(10000, 'a').c_str(), keUserOrdinary), nobody;
    EXPECT_TRUE(anna.Export(mFile) == 2 && nobody.Export(mFile) == 1);
    Read("kept");
    EXPECT_EQ(anna.Export(mFile), 2);
    Open(0xA3);
    mFile.setstate(std::ios::eofbit); // not good, though nothing failed
    EXPECT_EQ(anna.Export(mFile), 2);
    Open(0);
    EXPECT_EQ(ReadFileBytes(mPath), "kept");
}

TEST_F(UserList, WordsAreComparedInTheLocalesOrder) {
    // A soft hyphen has no weight.
    const std::string format = ResourceText(716);
    EXPECT_EQ(Line("Smith\tAnna\tbox7\t\t" + format.substr(0, 1) + "\xAD" + format.substr(1)),
              "0 Smith|Anna/box7 3 7 5");
}

TEST_F(UserList, LongLinesGoOnAsTheNext) {
    // One of 1024 characters is whole; what is longer goes on as the next.
    const std::string fields = "a\tb\tc\t", x(1024 - fields.size(), 'x');
    Read(fields + x + "\r\n" + fields + x + "d\te\tf\r\ng\th\ti");
    for (const char* name : {"a|b/c", "a|b/c", "d|e/f", "g|h/i"})
        EXPECT_EQ(Next(), std::string("0 ") + name + " 2 7 2");
    for (const std::string& line :
         {std::string(10000, '\t'), std::string(10240, ' '), std::string(10000, '\0'),
          RandomBytes(1, 10000), std::string(10000, 'x') + "\r\n"}) {
        Read(line);
        for (int calls = 0; calls < 2000 && mFile.good(); ++calls)
            Next();
        EXPECT_FALSE(mFile.good());
    }
}
