#pragma once

#include <string>

#include "tests/support/record_bytes.h"

// A message's record of 316 bytes, as it stands in D files and at the start of message files.

using Text = const std::string&;

inline const std::string kHeader(316, '\0');

// A used, unprocessed record of index 7, kind 1 and date 1.
inline std::string Message(Text topic, Text fileName = "GONE.EML") {
    std::string bytes = With(kHeader, 0, Bytes("\0\x07\x01\0") + Pascal(topic));
    bytes = With(With(bytes, 38, Pascal(fileName)), 72, Pascal("Smith|Anna"));
    return With(bytes, 300, Bytes("\0\0\0\x01pppp\0\x02\0\x01qqqq"));
}
inline std::string Free(Text record) { return With(record, 2, {'\0'}); }
inline std::string Broken(Text record) { return With(record, 0, "\xFF\xFF"); }
inline std::string Cut(Text record) { return record.substr(0, 315); }
inline std::string Kind(Text record, char kind) { return With(record, 311, {kind}); }
inline std::string Status(Text record, int bits) { return With(record, 3, {char(bits)}); }
inline std::string Attributes(Text record, int bits) {
    return With(record, 36, {char(bits >> 8), char(bits)});
}
inline std::string Date(Text record, unsigned long date) {
    return With(record, 300, {char(date >> 24), char(date >> 16), char(date >> 8), char(date)});
}
inline std::string MessageID(Text record, Text text) { return With(record, 112, Pascal(text)); }
