#include <gtest/gtest.h>

#include "programs/mailticker/message_file.h"
#include "programs/mailticker/text.h"
#include "tests/support/mail_bytes.h"
#include "tests/support/scratch.h"

namespace {

struct MessageFile : testing::Test {
    std::wstring Folder() const { return FromAnsi((mFolder.Path() + "\\").c_str()); }

    ScratchFolder mFolder;
    std::wstring mWhy;
};

} // namespace

TEST_F(MessageFile, IsReadBehindItsRecord) {
    const struct {
        std::string file;
        std::wstring fields, text;
    } cases[] = {
        {"Gr\xFC\xDF"
         "e\rLine\nLine\r\nEnd\x01",
         L"", L"Gr\u00FC\u00DFe\r\nLine\r\nLine\r\nEnd\u00B7"},
        {"From: a\r\nSubject: b\r\n c\r\n\r\nBody: x\r\n", L"From: a\r\nSubject: b c",
         L"Body: x\r\n"},
        {"From: =?utf-8?Q?J=C3=B6rg?= <j@b>\r\n\r\n", L"From: J\u00F6rg <j@b>", L""},
        {"To: a\n\nText", L"To: a", L"Text"},
        {"Dear all: this is no header\n\nText", L"", L"Dear all: this is no header\r\n\r\nText"},
        {"", L"", L""},
    };
    for (const auto& one : cases) {
        WriteFileBytes(mFolder.Path("M.EML"), Message("T") + one.file);
        const auto text = ReadMessageText(Folder(), L"M.EML", mWhy);
        ASSERT_TRUE(text) << one.file;
        EXPECT_EQ(text->fields, one.fields);
        EXPECT_EQ(text->text, one.text);
    }
}

TEST_F(MessageFile, IsNoOtherFileThanOneOfTheFolder) {
    WriteFileBytes(mFolder.Path("SHORT.EML"), "no record");
    for (const wchar_t* name : {L"..\\x", L"C:\\x", L"a:b", L"", L".", L"..", L"*", L"CON", L"NUL",
                                L"SHORT.EML", L"GONE.EML"}) {
        mWhy.clear();
        EXPECT_FALSE(ReadMessageText(Folder(), name, mWhy)) << name;
        EXPECT_FALSE(mWhy.empty()) << name;
    }
}

TEST_F(MessageFile, IsHandedOverWithoutItsRecordAndForAWhile) {
    const std::string body = "From: a\r\n\r\n" + std::string(3000000, 'x');
    WriteFileBytes(mFolder.Path("RUN.EXE"), Message("T") + body);
    WriteFileBytes(mFolder.Path("TEXT"), Message("T") + "Plain");
    std::string mail, text;
    {
        MessageCopies copies;
        const auto make = [&](const wchar_t* name) {
            const std::wstring path = copies.Make(Folder(), name, mWhy);
            return std::string(path.begin(), path.end());
        };
        mail = make(L"RUN.EXE");
        text = make(L"TEXT");
        EXPECT_TRUE(mail.ends_with("RUN.eml")) << mail;
        EXPECT_TRUE(text.ends_with("TEXT.txt")) << text;
        EXPECT_EQ(ReadFileBytes(mail), body);
        EXPECT_EQ(ReadFileBytes(text), "Plain");
    }
    EXPECT_FALSE(FileThere(mail) || FileThere(text));
}
