#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/mail_bytes.h"

// What a mail folder does, told by bytes alone: a D file is a row of 316-byte records behind a
// header, and every operation a rule about them.

inline int Byte(Text bytes, unsigned int at) { return static_cast<unsigned char>(bytes[at]); }
inline int Word(Text bytes, unsigned int at) { return Byte(bytes, at) << 8 | Byte(bytes, at + 1); }
inline unsigned long Long(Text bytes, unsigned int at) {
    return static_cast<unsigned long>(Word(bytes, at)) << 16 | Word(bytes, at + 2);
}

// The text of a Pascal string in a field of `size` bytes.
inline std::string FieldText(Text record, unsigned int at, int size) {
    const int length = Byte(record, at) < size ? Byte(record, at) : size - 1;
    return record.substr(at + 1, length).c_str();
}

inline bool IsUsed(Text record) {
    return Byte(record, 2) && (Byte(record, 5) >= 0x20 || !Byte(record, 5)) &&
           Word(record, 0) != 0xFFFF;
}

// Every field in its range.
inline std::string Clamped(std::string record) {
    const int lengths[][2] = {{4, 28}, {38, 34}, {72, 32}, {186, 32}};
    for (const auto& [at, size] : lengths)
        if (Byte(record, at) >= size)
            record[at] = static_cast<char>(size - 1);
    if (Word(record, 308) > 16)
        record.replace(308, 2, Bytes("\0\x10"));
    if (Word(record, 310) > 5)
        record.replace(310, 2, Bytes("\0\x06"));
    return record;
}

// What makes a record readable again.
inline std::string Fixed(std::string record) {
    if (Byte(record, 5) < 0x20)
        record[5] = ' ';
    return Word(record, 0) == 0xFFFF ? With(record, 0, Bytes("\0\0")) : record;
}

inline bool SameMessage(Text a, Text b) {
    const auto key = [](Text record) {
        return record.substr(300, 4) + FieldText(record, 4, 28) + '/' + record.substr(310, 2) +
               FieldText(record, 72, 32) + '/' + FieldText(record, 38, 34);
    };
    return Byte(a, 2) && Byte(b, 2) && key(a) == key(b);
}

// What an action of MarkRecord does.
inline std::string Marked(std::string record, int action) {
    int status = Byte(record, 3), attributes = Word(record, 36);
    const int rules[][4] = {// status: cleared, set; attributes: cleared, set
                            {3, 1, 0, 0},           {1, 0, 0, 0},      {0, 0, 0, 0},
                            {0, 0, 0, 0x0400},      {0, 0, 0x0400, 0}, {0, 0, 0x0400, 0x0100},
                            {0, 0, 0x0700, 0x0200}, {2, 0, 0, 0},      {0, 0, 0x0700, 0}};
    if (action > 8)
        return record;
    status = (status & ~rules[action][0]) | rules[action][1];
    attributes = (attributes & ~rules[action][2]) | rules[action][3];
    record = Attributes(Status(record, status), attributes);
    return action == 2 ? Free(record) : record;
}

inline bool IsProcessable(Text record) {
    return IsUsed(record) && !(Byte(record, 3) & 1) && !(Word(record, 36) & 0x0F00) &&
           Word(record, 310);
}
inline bool IsInstallable(Text record) { return Word(record, 36) & 0x3000; }

// Pieces of 316 bytes from a position on; what is left over is none.
inline std::vector<std::string> Slots(Text file, unsigned int from) {
    std::vector<std::string> slots;
    for (; from + 316 <= file.size(); from += 316)
        slots.push_back(file.substr(from, 316));
    return slots;
}

// The used records, each after a change.
template <class Change>
std::string UsedRecords(Text file, Change change) {
    std::string records;
    for (const std::string& slot : Slots(file, 0))
        if (IsUsed(slot))
            records += change(Clamped(slot));
    return records;
}
