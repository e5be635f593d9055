#include <cstring>

#include "tests/store/mail_folder.h"

static const std::string kAlter = "Error BaseDirFile: AlterDirectoryBlock()";
static const std::string kFileError = Base("0|Error BaseDirFile: DeleteOldMail(), File error");

class BaseDirFileTest : public MailFolder {};

TEST(JXDatHeader, TakesItsOwnName) {
    JXExtendDatHeader header;
    char* const name = header.SetName("RB.DAT");
    EXPECT_STREQ(header.SetName(name), "RB.DAT");
    EXPECT_STREQ(header.SetName(name + 3), "DAT");
}

TEST(JXDatHeader, KeepsThirtyTwoCharactersAndTheWholeLength) {
    JXExtendDatHeader header;
    const std::string zeros = Written<JXDatHeader>(header);
    EXPECT_EQ(zeros, std::string(44, '\0'));
    for (const auto& [length, stored] : {std::pair(32, 32), {33, 33}, {40, 40}, {300, 44}}) {
        std::memset(header.name, 'x', sizeof header.name);
        header.SetName(std::string(length, 'n').c_str());
        EXPECT_EQ(Written<JXDatHeader>(header),
                  With(zeros, 10, char(stored) + std::string(32, 'n')));
    }
    std::istringstream in(std::string(44, 'h') + "\x05\x06 tail"), cut(std::string(43, 'c'));
    EXPECT_TRUE(in >> header && header.number == 0x0506 && in.tellg() == 46);
    EXPECT_EQ(Written(header), std::string(44, 'h') + "\x05\x06");
    EXPECT_TRUE(!(cut >> header) && header.number == 0x0506);
}

TEST_F(BaseDirFileTest, IsBuiltFromTheFoldersMessageFiles) {
    const std::string own = With(Message("A", "LONG NAME OF BEFORE.EML"), 70, "zz");
    WriteFileBytes("A.EML", Free(own) + "text of the message");
    WriteFileBytes("B.EML", Broken(Message("", "B.EML")) + "text");
    WriteFileBytes("C.EMX", Message("other extension"));
    CreateDirectoryA("D.EML", nullptr);
    CreateDirectoryA("SUB", nullptr);
    SetCurrentDirectoryA("SUB");
    WriteFileBytes("E.EML", Message("other folder"));
    EXPECT_EQ(mMessages.CreateDFile(), 1);
    EXPECT_EQ(Names(), "E.EML "); // the current folder is still the same
    SetCurrentDirectoryA("..");
    EXPECT_EQ(Read(), With(own, 38, Pascal("A.EML")) +
                          With(Message("", "B.EML"), 0, Bytes("\0\0\x01\0\0 ")));
}

TEST_F(BaseDirFileTest, DamagedMessageFilesStayInTheirFieldsAndLongNamesAreRefused) {
    WriteFileBytes("A.EML", std::string(400, '\xFF'));
    EXPECT_EQ(mMessages.CreateDFile(), 1);
    std::string clamped = With(std::string(316, '\xFF'), 0, Bytes("\0\0\x01\xFF\x1B"));
    clamped = With(With(With(clamped, 38, Pascal("A.EML")), 72, "\x1F"), 186, "\x1F");
    EXPECT_EQ(Read(), With(clamped, 308, Bytes("\0\x10\0\x06")));
    // Cut to 33 characters, a name would be another message's.
    const std::string name(29, 'L');
    for (const auto& [file, taken] :
         {std::pair(name + ".EML", 1), std::pair('M' + name + ".EML", 0)}) {
        WriteFileBytes(file, Message("long"));
        RbFile message(file.c_str());
        EXPECT_EQ(mFile.AddMessage(&message), taken) << file;
    }
    EXPECT_EQ(Read().substr(316), Message("long", name + ".EML"));
}

TEST_F(BaseDirFileTest, AltersByPositionAndProbeInAnOpenFileAlone) {
    DirectoryRecord record, b = Record(Message("B")), c = Record(Message("C"));
    const std::string stored = Status(Message("B"), 0x81), cut = Cut(Message("cut"));
    Write(kHeader + Kind(Message("A"), 9) + stored + cut);
    EXPECT_EQ(mFile.AlterDirectoryBlock(record, 316L, 0), -1);
    EXPECT_EQ(Reports(), Base("isOpen()|" + kAlter + ", File not open") + kFileError);
    EXPECT_EQ(mFile.AlterDirectoryBlock(b, record, 0), -1);
    EXPECT_EQ(Reports(), Base("isOpen()|" + kAlter + ", file not OPEN"));

    ASSERT_TRUE(mFile.Open(keOpenUpdate));
    EXPECT_EQ(mFile.AlterDirectoryBlock(record, 316L, 0), 316);
    EXPECT_EQ(Written(record), Kind(Message("A"), 6));
    EXPECT_EQ(mFile.AlterDirectoryBlock(b, record, 0), 632);
    EXPECT_EQ(Written(record), stored);
    // What the result tells is in the file, for others too.
    EXPECT_EQ(mFile.AlterDirectoryBlock(c, 316L, 1), 316);
    EXPECT_EQ(Read(), kHeader + Message("C") + stored + cut);
    EXPECT_EQ(mFile.AlterDirectoryBlock(b, c, 1), 632);
    EXPECT_EQ(Read(), kHeader + Message("C") + Message("C") + cut);
    EXPECT_EQ(mFile.AlterDirectoryBlock(record, 948L, 0), -1);
    EXPECT_EQ(mFile.AlterDirectoryBlock(record, -2L, 1), -1);
    EXPECT_EQ(mFile.AlterDirectoryBlock(b, record, 0), -2);
    EXPECT_EQ(Reports(), kFileError + kFileError + Base("0|" + kAlter + ", Record not found"));
    mFile.setstate(std::ios::badbit);
    EXPECT_EQ(mFile.AlterDirectoryBlock(c, record, 0), -1);
    EXPECT_EQ(Reports(), Base("0|" + kAlter));
    mFile.close();
    EXPECT_EQ(Read(), kHeader + Message("C") + Message("C") + cut);
}

TEST_F(BaseDirFileTest, AltersBySlotAndLeavesTheFileAsItWas) {
    DirectoryRecord record, b = Record(Message("B"));
    Write(Message("header") + Message("A"));
    EXPECT_EQ(mFile.AlterDirectoryBlock(record, 0u, 0), 0);
    EXPECT_EQ(Written(record), Message("header"));
    ASSERT_TRUE(!mFile.isOpen() && mFile.Open(keOpenUpdate));
    mFile.seekg(5L);
    EXPECT_EQ(mFile.AlterDirectoryBlock(b, 2u, 1), 632);
    EXPECT_TRUE(mFile.isOpen() && mFile.tellg() == 5);
    mFile.close();
    EXPECT_EQ(mFile.AlterDirectoryBlock(record, 3u, 0), -1);
    EXPECT_EQ(Reports(), kFileError);
    // Counted in 32 bits, the first would be slot 1.
    for (unsigned int slot : {0x40000001u, 0xFFFFFFFFu})
        EXPECT_EQ(mFile.AlterDirectoryBlock(b, slot, 1), -1);
    EXPECT_NE(Reports(), "");
    EXPECT_EQ(Read(), Message("header") + Message("A") + Message("B"));
    EXPECT_EQ(mMissing.AlterDirectoryBlock(record, 0u, 1), -1);
    EXPECT_EQ(Reports(), Base("0|" + kAlter + ", can't OPEN file"));
}
