#include <gmock/gmock.h>

#include <cstring>

#include "tests/store/mail_folder.h"

// With something in every field.
static const std::string kMessage = [] {
    std::string bytes = With(kHeader, 0, Bytes("\x01\x02\x01\x81\x05Lunch tail kept"));
    bytes = With(With(bytes, 32, "abcd\x12\x34"), 38, Pascal("00000007.EML"));
    bytes = With(With(bytes, 72, Pascal("Smith|Anna")), 186, Pascal("Jones|Bo"));
    return With(bytes, 300, "\x99\x22\x33\x44" + Bytes("efgh\x00\x10\x00\x05ijkl"));
}();

TEST(DirectoryRecord, ReadsItsFieldsAndWritesEveryByteBack) {
    DirectoryRecord empty, record = Record(kMessage);
    EXPECT_TRUE(record.Record().index == 0x0102 && record.Record().attributes == 0x1234);
    EXPECT_EQ(FlipLong(record.Record().date), 0x99223344u);
    EXPECT_EQ(Written(record), kMessage);
    EXPECT_EQ(Written(empty), kHeader);
    EXPECT_TRUE(empty.CheckValidity() == 1 && empty.isUsed() == 0);
}

TEST(DirectoryRecord, IsUsedByUsedByteTopicsFirstByteAndIndexUntilFixed) {
    const struct {
        std::string start, fixed;
        int used;
    } cases[] = {{"\x01\x02\xFF\x81\x05\xE4", "\x01\x02\xFF\x81\x05\xE4", 1},
                 {Bytes("\xFF\xFE\x01\x81\0\0"), Bytes("\xFF\xFE\x01\x81\0 "), 1},
                 {Bytes("\x01\x02\x01\x81\0\x1F"), Bytes("\x01\x02\x01\x81\0 "), 0},
                 {Bytes("\x01\x02\0\x81\x05 "), Bytes("\x01\x02\0\x81\x05 "), 0},
                 {"\xFF\xFF\x01\x81\x05 ", Bytes("\0\0\x01\x81\x05 "), 0}};
    for (const auto& [start, fixed, used] : cases) {
        DirectoryRecord record = Record(With(kMessage, 0, start));
        EXPECT_EQ(record.isUsed(), used) << start;
        record.FixTopicAndIndex();
        EXPECT_EQ(Written(record), With(kMessage, 0, fixed));
    }
}

TEST(DirectoryRecord, ClampsWhatIsOutOfRangeOnReading) {
    // Text lengths, the count's low byte and the kind's, whose clamp is itself out of range.
    for (const auto& [offset, limit] : std::initializer_list<std::pair<int, int>>{
             {4, 27}, {38, 33}, {72, 31}, {186, 31}, {309, 16}, {311, 5}}) {
        const std::string clamped(1, char(limit + (offset == 311)));
        EXPECT_EQ(Record(With(kMessage, offset, {char(limit)})).CheckValidity(), 1) << offset;
        for (int damage : {limit + 1, 0xFF}) {
            DirectoryRecord record = Record(With(kMessage, offset, {char(damage)}));
            EXPECT_EQ(record.CheckValidity(), 0) << offset;
            EXPECT_EQ(Written(record), With(kMessage, offset, clamped));
            EXPECT_EQ(record.Check_Fixed_Validity(), offset != 311);
        }
    }
    DirectoryRecord record = Record(With(kMessage, 308, "\xFF\xFF\xFF\xFF"));
    EXPECT_EQ(Written(record), With(kMessage, 308, Bytes("\0\x10\0\x06")));
}

TEST(DirectoryRecord, TakesADiskRecordUncheckedAndNeverReadsPastAField) {
    const std::string damaged = With(With(kMessage, 4, "\xFF"), 38, "\xFF");
    std::istringstream in(damaged + "next");
    DiskDirRec bytes;
    in >> bytes;
    DirectoryRecord record(&bytes);
    EXPECT_TRUE(record.CheckValidity() == 1 && record == record);
    EXPECT_EQ(Written(record), damaged);
    EXPECT_TRUE(record.Topic().Length() <= 27 && record.FileName().Length() <= 33);
}

TEST(DirectoryRecord, ShortReadLeavesZerosBehindTheBytesAndFailsTheStream) {
    for (unsigned int length : {315u, 5u, 0u}) {
        DirectoryRecord record = Record(With(kMessage, 310, "\xFF"));
        std::istringstream in(kMessage.substr(0, length));
        in >> record;
        EXPECT_TRUE(in.fail());
        EXPECT_EQ(record.CheckValidity(), 1);
        EXPECT_EQ(Written(record), With(kHeader, 0, kMessage.substr(0, length)));
    }
}

TEST(DirectoryRecord, EqualsWhatIsTheSameMessage) {
    DirectoryRecord message = Record(kMessage), other, unused = Record(With(kMessage, 2, {'\0'}));
    const auto equals = [&](unsigned int offset, char byte) {
        return message == (other = Record(With(kMessage, offset, {byte})));
    };
    // Index, used, status; what stands behind the texts; the second user; words without meaning.
    for (unsigned int offset : {0, 1, 2, 3, 10, 32, 37, 60, 90, 112, 190, 304, 309, 312})
        EXPECT_EQ(equals(offset, 3), 1) << offset;
    for (unsigned int offset : {4, 39, 73, 300, 303, 311})
        EXPECT_EQ(equals(offset, 3), 0) << offset;
    EXPECT_TRUE(equals(5, 'l') == 0 && (unused == unused) == 0);
}

TEST(DirectoryRecord, MessageIdentifierStaysInTheSendersField) {
    const std::string most(73, 'i'), tooLong = Pascal(std::string(255, 'i'));
    DirectoryRecord record = Record(kMessage);
    record.SetMessageID(reinterpret_cast<const unsigned char*>(Pascal(most).data()));
    EXPECT_EQ(Written(record), With(kMessage, 112, Pascal(most)));
    record.SetMessageID(nullptr);
    EXPECT_EQ(Written(record), With(kMessage, 112, Bytes("\0") + most));
    record.SetMessageID(reinterpret_cast<const unsigned char*>(tooLong.data()));
    EXPECT_EQ(Written(record).substr(186), kMessage.substr(186));
}
