#include <gmock/gmock.h>

#include "postrider.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

using namespace testing;

class UserPrefDamage : public Test {
protected:
    static std::string Header(unsigned int count) {
        const std::string number = {char(count >> 8), char(count)};
        return "PREFRBSW" + std::string(36, '\0') + number;
    }
    // The record of application 7, with a block of 4 bytes.
    static std::string Record(const std::string& offset) {
        return Bytes("\x07\x00\x90\x01\x00\x01") + offset + Bytes("\x00\x04");
    }
    // The result of writing a block of `id` into a file of those bytes.
    int Write(const std::string& name, const std::string& bytes, unsigned short id) {
        WriteFileBytes(name, bytes);
        UserPrefFile file;
        file.SetSpecPart(mFolder.Path(name).c_str(), 0);
        char block[] = "data";
        AppPrefTag tag = {id, 400, 4, block};
        const int result = file.OpenPrefFile() && file.WriteAppPrefs(tag);
        file.ClosePrefFile();
        EXPECT_STREQ(block, "data");
        return result;
    }
    // The file must stay as it is.
    void Refuses(const std::string& name, const std::string& bytes, unsigned short id) {
        EXPECT_EQ(Write(name, bytes, id), 0);
        EXPECT_TRUE(ReadFileBytes(name) == bytes) << name;
        EXPECT_THAT(mBoxes.TakeTexts(), SizeIs(1));
    }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
};

TEST_F(UserPrefDamage, BlocksAreWrittenBehindTheRecordsAndInTheFileAlone) {
    for (const std::string& offset : {Bytes("\0\0\0\0"), Bytes("\0\0\0\x39"), Bytes("\0\0\0\x3F"),
                                      Bytes("\x7F\xFF\xFF\xF0"), Bytes("\xFF\xFF\xFF\xFF")})
        Refuses("RB.DAT", Header(1) + Record(offset) + "abcd", 7);
}

TEST_F(UserPrefDamage, AFullCountTakesNoMoreRecords) {
    std::string bytes = Header(0xFFFF);
    for (int i = 0; i < 0xFFFF; ++i)
        bytes += Record(Bytes("\0\x0C\0\0"));
    Refuses("RB.DAT", bytes, 8);
}

TEST_F(UserPrefDamage, BlocksThatADamagedCountLeavesOutStay) {
    const std::string blocks =
        Record(Bytes("\0\0\0\x46")) + Record(Bytes("\0\0\0\x4A")) + "abcdefgh";
    EXPECT_EQ(Write("RB.DAT", Header(0) + blocks, 8), 1);
    EXPECT_EQ(ReadFileBytes("RB.DAT").substr(0, 46 + blocks.size()), Header(1) + blocks);
    // What is left of a first block that was broken off makes room.
    const std::string first = Record(Bytes("\0\0\0\x3A")) + "abcd";
    for (unsigned int size = 0; size <= first.size(); ++size) {
        EXPECT_EQ(Write("RB.DAT", Header(0) + first.substr(0, size), 8), 1);
        EXPECT_EQ(ReadFileBytes("RB.DAT").size(), 46 + first.size());
    }
    EXPECT_THAT(mBoxes.TakeTexts(), IsEmpty());
}

TEST_F(UserPrefDamage, ItsOwnCopiesAreNotRebuilt) {
    for (const char* name : {"RB.BAK", "rb.tmp"})
        Refuses(name, Header(1) + Record(Bytes("\0\0\0\x3A")) + "abcd", 8);
}

TEST_F(UserPrefDamage, NoUsersFolderIsNotTheCurrentFolder) {
    WriteFileBytes("RB.DAT", "damaged");
    for (const std::string& folder : {std::string("C:\\a\\\\b"), std::string(300, 'x')}) {
        JxMailUserRepresentation user("Anna", folder.c_str());
        EXPECT_EQ(JXMailPrefs(user, 1).IsValid(), 0);
    }
    EXPECT_THAT(mBoxes.Shown(), IsEmpty());
}
