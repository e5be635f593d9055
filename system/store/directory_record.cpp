#include "system/store/directory_record.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>

#include "resident/core/byte_order.h"
#include "resident/users/base_mail_user.h"

static_assert(offsetof(DiskDirRec, attributes) == 36 && offsetof(DiskDirRec, sender) == 72 &&
              offsetof(DiskDirRec, date) == 300 && offsetof(DiskDirRec, kind) == 310);

static constexpr unsigned char kFirstPrintable = 0x20;
static constexpr int kMaxCount = 16;
static constexpr int kMaxKind = 5;

static unsigned short Value(const RBInt& stored) { return static_cast<unsigned short>(stored); }

DirectoryRecord::DirectoryRecord() = default;

DirectoryRecord::DirectoryRecord(const DiskDirRec* record) : moRecord(*record) {}

DirectoryRecord::~DirectoryRecord() = default;

int DirectoryRecord::isUsed() const { return IsUsed(moRecord); }

void DirectoryRecord::FixTopicAndIndex() {
    if (moRecord.topic[1] < kFirstPrintable)
        moRecord.topic[1] = kFirstPrintable;
    if (Value(moRecord.index) == DiskDirRec::keBrokenIndex)
        moRecord.index = 0;
}

int ClampRecord(DiskDirRec& record) {
    bool valid = true;
    const auto clampLength = [&valid](unsigned char* field, unsigned int size) {
        if (field[0] >= size) {
            field[0] = static_cast<unsigned char>(size - 1);
            valid = false;
        }
    };
    clampLength(record.topic, sizeof record.topic);
    clampLength(record.fileName, sizeof record.fileName);
    if (!BaseMailUser::CheckValidity(record.sender))
        valid = false;
    if (!BaseMailUser::CheckValidity(record.secondUser))
        valid = false;
    if (Value(record.count) > kMaxCount) {
        record.count = kMaxCount;
        valid = false;
    }
    // Clamped to 6, which the next check rejects again: a damaged kind stays known as damaged.
    if (Value(record.kind) > kMaxKind) {
        record.kind = kMaxKind + 1;
        valid = false;
    }
    return valid;
}

int DirectoryRecord::Check_Fixed_Validity() {
    mfValid = ClampRecord(moRecord);
    return mfValid;
}

void DirectoryRecord::SetMessageID(const unsigned char* pascalText) {
    auto* const field = const_cast<unsigned char*>(MessageIDField());
    const unsigned int length =
        pascalText ? std::min<unsigned int>(pascalText[0], keMessageIDSize - 1) : 0;
    field[0] = static_cast<unsigned char>(length);
    if (length)
        std::memcpy(field + 1, pascalText + 1, length);
}

std::ostream& operator<<(std::ostream& out, DiskDirRec& record) {
    return out.write(reinterpret_cast<const char*>(&record), sizeof record);
}

std::istream& operator>>(std::istream& in, DiskDirRec& record) {
    return in.read(reinterpret_cast<char*>(&record), sizeof record);
}

std::ostream& operator<<(std::ostream& out, DirectoryRecord& record) {
    return out << record.moRecord;
}

std::istream& operator>>(std::istream& in, DirectoryRecord& record) {
    auto* const bytes = reinterpret_cast<char*>(&record.moRecord);
    in.read(bytes, sizeof record.moRecord);
    // Whole records, nearly all of them, need no zero-fill.
    const std::size_t read = in.gcount();
    std::memset(bytes + read, 0, sizeof record.moRecord - read);
    record.Check_Fixed_Validity();
    return in;
}

int operator==(DirectoryRecord& left, DirectoryRecord& right) {
    const DiskDirRec& a = left.moRecord;
    const DiskDirRec& b = right.moRecord;
    return a.used != 0 && b.used != 0 && a.date == b.date && left.Topic() == right.Topic() &&
           Value(a.kind) == Value(b.kind) && left.SenderName() == right.SenderName() &&
           left.FileName() == right.FileName();
}
