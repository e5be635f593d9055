#include <gmock/gmock.h>

#include <cstring>

#include "postrider.h"
#include "tests/support/record_bytes.h"

static const std::string kZeros(316, '\0');

static std::string Message() {
    std::string bytes = With(kZeros, 0, Bytes("\x01\x02\x01\x81\x05Lunch tail kept"));
    bytes = With(With(bytes, 32, "abcd\x12\x34"), 38, Pascal("00000007.EML"));
    bytes = With(With(bytes, 72, Pascal("Smith|Anna")), 186, Pascal("Jones|Bo"));
    return With(bytes, 300, "\x99\x22\x33\x44" + Bytes("efgh\x00\x10\x00\x05ijkl"));
}

static DirectoryRecord Read(const std::string& bytes) {
    std::istringstream in(bytes);
    DirectoryRecord record;
    in >> record;
    return record;
}

TEST(DirectoryRecord, ReadsItsFieldsAndWritesEveryByteBack) {
    DirectoryRecord empty, record = Read(Message());
    EXPECT_TRUE(record.Record().index == 0x0102 && record.Record().attributes == 0x1234);
    EXPECT_EQ(FlipLong(record.Record().date), 0x99223344u);
    EXPECT_EQ(Written(record), Message());
    EXPECT_EQ(Written(empty), kZeros);
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
        DirectoryRecord record = Read(With(Message(), 0, start));
        EXPECT_EQ(record.isUsed(), used) << start;
        record.FixTopicAndIndex();
        EXPECT_EQ(Written(record), With(Message(), 0, fixed));
    }
}

TEST(DirectoryRecord, ClampsWhatIsOutOfRangeOnReading) {
    // Text lengths, the count's low byte and the kind's, whose clamp is itself out of range.
    for (const auto& [offset, limit] : std::initializer_list<std::pair<int, int>>{
             {4, 27}, {38, 33}, {72, 31}, {186, 31}, {309, 16}, {311, 5}}) {
        const std::string clamped(1, char(limit + (offset == 311)));
        EXPECT_EQ(Read(With(Message(), offset, {char(limit)})).CheckValidity(), 1) << offset;
        for (int damage : {limit + 1, 0xFF}) {
            DirectoryRecord record = Read(With(Message(), offset, {char(damage)}));
            EXPECT_EQ(record.CheckValidity(), 0) << offset;
            EXPECT_EQ(Written(record), With(Message(), offset, clamped));
            EXPECT_EQ(record.Check_Fixed_Validity(), offset != 311);
        }
    }
    DirectoryRecord record = Read(With(Message(), 308, "\xFF\xFF\xFF\xFF"));
    EXPECT_EQ(Written(record), With(Message(), 308, Bytes("\0\x10\0\x06")));
}

TEST(DirectoryRecord, TakesADiskRecordUncheckedAndNeverReadsPastAField) {
    const std::string damaged = With(With(Message(), 4, "\xFF"), 38, "\xFF");
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
        DirectoryRecord record = Read(With(Message(), 310, "\xFF"));
        std::istringstream in(Message().substr(0, length));
        in >> record;
        EXPECT_TRUE(in.fail());
        EXPECT_EQ(record.CheckValidity(), 1);
        EXPECT_EQ(Written(record), With(kZeros, 0, Message().substr(0, length)));
    }
}

TEST(DirectoryRecord, EqualsWhatIsTheSameMessage) {
    DirectoryRecord message = Read(Message()), other, unused = Read(With(Message(), 2, {'\0'}));
    const auto equals = [&](unsigned int offset, char byte) {
        return message == (other = Read(With(Message(), offset, {byte})));
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
    DirectoryRecord record = Read(Message());
    record.SetMessageID(reinterpret_cast<const unsigned char*>(Pascal(most).data()));
    EXPECT_EQ(Written(record), With(Message(), 112, Pascal(most)));
    record.SetMessageID(nullptr);
    EXPECT_EQ(Written(record), With(Message(), 112, Bytes("\0") + most));
    record.SetMessageID(reinterpret_cast<const unsigned char*>(tooLong.data()));
    EXPECT_EQ(Written(record).substr(186), Message().substr(186));
}
