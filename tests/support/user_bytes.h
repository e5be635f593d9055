#pragma once

#include <algorithm>
#include <string>

#include "tests/support/record_bytes.h"

// Users as they stand in files: the mail user's record of 114 bytes, the system user's of 82, each
// with a continuation for addresses of 32 characters and more.

inline std::string LittleEndian16(unsigned int value) { return {char(value), char(value >> 8)}; }

// A name that is longer than its field runs on behind it; the fields there are put over it.
inline std::string UserRecord(const std::string& name, const std::string& settings,
                              const std::string& address, unsigned int type,
                              unsigned int extension) {
    std::string bytes = With(std::string(114, '\0'), 0, Pascal(name));
    bytes = With(With(bytes, 32, "\xFF" + settings), 46, Pascal(address.substr(0, 31)));
    bytes = With(With(bytes, 78, LittleEndian16(type)), 80, LittleEndian16(extension));
    if (address.size() < 32)
        return bytes;
    return bytes + With(std::string(114, '\0'), 0, "\x01+" + Pascal(address.substr(31)));
}

inline std::string SystemUserRecord(const std::string& name, const std::string& address) {
    const std::string zeros(82, '\0');
    const std::string bytes = With(With(zeros, 0, Pascal(name)), 46, Pascal(address.substr(0, 31)));
    return bytes +
           (address.size() < 32 ? "" : With(zeros, 0, "\x01+" + Pascal(address.substr(31))));
}
