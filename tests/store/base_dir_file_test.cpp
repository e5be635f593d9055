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

TEST(DirectoryRecord, ShortReadLeavesZerosBehindTheBytesAndFailsTheStream) {
    const std::string bytes = Kind(Message("A", "A.EML"), 5);
    for (unsigned int length : {315u, 5u, 0u}) {
        DirectoryRecord record = Record(With(bytes, 310, "\xFF"));
        std::istringstream in(bytes.substr(0, length));
        in >> record;
        EXPECT_TRUE(in.fail());
        EXPECT_EQ(record.CheckValidity(), 1);
        EXPECT_EQ(Written(record), With(kHeader, 0, bytes.substr(0, length)));
    }
}

TEST_F(BaseDirFileTest, AltersByPositionAndProbeInAnOpenFileAlone) {
    DirectoryRecord record, b = Record(Message("B"));
    Write(kHeader + Message("A"));
    EXPECT_EQ(mFile.AlterDirectoryBlock(record, 316L, 0), -1);
    EXPECT_EQ(Reports(), Base("isOpen()|" + kAlter + ", File not open") + kFileError);
    EXPECT_EQ(mFile.AlterDirectoryBlock(b, record, 0), -1);
    EXPECT_EQ(Reports(), Base("isOpen()|" + kAlter + ", file not OPEN"));
    ASSERT_TRUE(mFile.Open(keOpenUpdate));
    EXPECT_EQ(mFile.AlterDirectoryBlock(record, -2L, 1), -1);
    EXPECT_EQ(Reports(), kFileError);
    mFile.setstate(std::ios::badbit);
    EXPECT_EQ(mFile.AlterDirectoryBlock(b, record, 0), -1);
    EXPECT_EQ(Reports(), Base("0|" + kAlter));
    mFile.close();
}

TEST_F(BaseDirFileTest, SlotsAreCountedInMoreThan32Bits) {
    DirectoryRecord b = Record(Message("B"));
    Write(kHeader + Message("A"));
    // In 32 bits, the first would be slot 1.
    for (unsigned int slot : {0x40000001u, 0xFFFFFFFFu})
        EXPECT_EQ(mFile.AlterDirectoryBlock(b, slot, 1), -1);
    EXPECT_NE(Reports(), "");
    EXPECT_EQ(Read(), kHeader + Message("A"));
}
