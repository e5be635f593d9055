#pragma once

#include <iosfwd>

#include "resident/core/rb_container.h"
#include "resident/core/rb_int.h"
#include "resident/users/user_record.h"

// One message's entry in a D file, exactly as it stands there: 316 bytes, integers big-endian,
// texts length-prefixed. What stands behind a text inside its field, and what has no meaning here,
// is kept as it is. docs/formats/directory_record.md describes the fields.
struct DiskDirRec {
    enum { keTopicSize = 28, keFileNameSize = 34, keBrokenIndex = 0xFFFF };

    RBInt index;                            // 0: keBrokenIndex marks a broken entry
    unsigned char used;                     // 2: 0 when the slot is free
    unsigned char status;                   // 3: keStatus bits
    unsigned char topic[keTopicSize];       // 4: at most 27 characters
    unsigned char reserved32[4];            // 32
    RBInt attributes;                       // 36: bits, which DirectoryFile names
    unsigned char fileName[keFileNameSize]; // 38: at most 33 characters
    UserLRec sender;                        // 72: holds the message identifier as well
    UserLRec secondUser;                    // 186
    unsigned long date;                     // 300: when the message was filed, big-endian
    unsigned char reserved304[4];           // 304
    RBInt count;                            // 308: 0 to 16
    RBInt kind;                             // 310: 0 to 5; 0 is not processable
    unsigned char reserved312[4];           // 312
};
static_assert(sizeof(DiskDirRec) == 316);

// 1 when the slot holds a readable message: it is used, its index is not the broken one, and the
// topic's first byte, whatever the topic's length, is 0 or from 0x20 on.
inline int IsUsed(const DiskDirRec& record) {
    return record.used != 0 && (record.topic[1] >= 0x20 || record.topic[1] == 0) &&
           static_cast<unsigned short>(record.index) != DiskDirRec::keBrokenIndex;
}

// Clamps what is out of range; returns 1 when nothing was.
JX_API int ClampRecord(DiskDirRec& record);

// Bits of DiskDirRec::status. Others are kept.
enum {
    keStatusProcessed = 0x01,
    keStatusReturnReceipt = 0x02,
    keStatusKeepMessageID = 0x20,
    keStatusInstallRequest = 0x40
};

// A message's entry in memory.
class JX_API DirectoryRecord {
public:
    enum { keMessageIDOffset = 112, keMessageIDSize = 74 }; // to the end of the sender's field

    // All zero, and valid.
    DirectoryRecord();
    // Copies the record without checking it.
    explicit DirectoryRecord(const DiskDirRec* record);
    DirectoryRecord(const DirectoryRecord& other) = default;
    DirectoryRecord& operator=(const DirectoryRecord& other) = default;
    virtual ~DirectoryRecord();

    // 1 when the last check found every field in range, else 0.
    int CheckValidity() const { return mfValid; }
    // 1 when the slot holds a readable message: it is used, its index is not the broken one, and
    // the topic's first byte, whatever the topic's length, is 0 or from 0x20 on.
    int isUsed() const;
    // Repairs what isUsed looks at besides the used byte.
    void FixTopicAndIndex();
    // ClampRecord; returns the validity, as CheckValidity does from then on.
    int Check_Fixed_Validity();
    // Stores a message identifier, a Pascal string, cut at 73 characters; null clears it. It begins
    // six bytes before the sender's address, and writes over that.
    void SetMessageID(const unsigned char* pascalText);

    // The fields' texts, cut at their fields' ends.
    RBString Topic() const { return FieldString(moRecord.topic, sizeof moRecord.topic); }
    RBString FileName() const { return FieldString(moRecord.fileName, sizeof moRecord.fileName); }
    RBString SenderName() const {
        return FieldString(moRecord.sender.name, sizeof moRecord.sender.name);
    }
    RBString MessageID() const { return FieldString(MessageIDField(), keMessageIDSize); }

    DiskDirRec& Record() { return moRecord; }
    const DiskDirRec& Record() const { return moRecord; }

    // The 316 bytes. Reading zero-fills first, so that a short record ends in zeros, and clamps.
    friend JX_API std::ostream& operator<<(std::ostream& out, DirectoryRecord& record);
    friend JX_API std::istream& operator>>(std::istream& in, DirectoryRecord& record);
    // 1 when both are used, by the used byte alone, and date, topic, kind, sender's name and file
    // name are equal: the same message.
    friend JX_API int operator==(DirectoryRecord& left, DirectoryRecord& right);

private:
    const unsigned char* MessageIDField() const {
        return reinterpret_cast<const unsigned char*>(&moRecord) + keMessageIDOffset;
    }

    int mfValid = 1;
    DiskDirRec moRecord{};
};

// The 316 bytes as they are.
JX_API std::ostream& operator<<(std::ostream& out, DiskDirRec& record);
JX_API std::istream& operator>>(std::istream& in, DiskDirRec& record);

JX_EXPORTED_CONTAINER(DirectoryRecord);
