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

TEST(DirectoryRecord, MessageIdentifierStaysInTheSendersField) {
    const std::string tooLong = Pascal(std::string(255, 'i'));
    DirectoryRecord record = Record(kMessage);
    record.SetMessageID(nullptr);
    EXPECT_EQ(Written(record), With(kMessage, 112, {'\0'}));
    record.SetMessageID(reinterpret_cast<const unsigned char*>(tooLong.data()));
    EXPECT_EQ(Written(record).substr(186), kMessage.substr(186));
}
