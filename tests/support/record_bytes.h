#pragma once

#include <sstream>
#include <string>

// The bytes of a literal, zeros too.
template <unsigned int size>
std::string Bytes(const char (&literal)[size]) {
    return std::string(literal, size - 1);
}

inline std::string Pascal(const std::string& text) { return char(text.size()) + text; }

inline std::string With(std::string record, unsigned int offset, const std::string& bytes) {
    return record.replace(offset, bytes.size(), bytes);
}

// A string as streams hold it: its length, big-endian, and its characters.
inline std::string Streamed(const std::string& text) {
    const unsigned int size = text.size();
    return std::string{char(size >> 24), char(size >> 16), char(size >> 8), char(size)} + text;
}

// The user data record's strings in their order in the file: 16 settings, 6 of the list, the SMTP
// host, the POP account, another one and the dial-up connection.
constexpr unsigned int kUserStrings = 26;
enum { kSmtpHost = 22, kPopAccount = 23, kLastButOne = 24, kDialupName = 25 };

// "JXUSER.DAT" before it is scrambled: flags 0x12345678, value 3 0xABCD, value 4 0x0102, value 2
// 0xDEADBEEF and the strings.
template <class Strings>
std::string UserData(const Strings& strings) {
    std::string bytes = "\x78\x56\x34\x12\xCD\xAB\x02\x01\xEF\xBE\xAD\xDE";
    for (const std::string& string : strings)
        bytes += Streamed(string);
    return bytes;
}

inline std::string ScrambledUserData(std::string bytes) {
    static const unsigned char key[21] = {0x5A, 0x13, 0xC4, 0x7E, 0x99, 0x02, 0xB8,
                                          0x6D, 0x31, 0xF0, 0x4C, 0x8E, 0x27, 0xD5,
                                          0x0B, 0x96, 0xE3, 0x48, 0x7A, 0x1F, 0x00};
    for (unsigned int i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(bytes[i] ^ key[i % 21]);
    return bytes;
}

// The same bytes for the same seed, whatever the run-time library.
inline std::string RandomBytes(unsigned int seed, unsigned int size) {
    std::string bytes;
    for (unsigned int i = 0; i < size; ++i) {
        seed = seed * 1664525 + 1013904223;
        bytes += static_cast<char>(seed >> 24);
    }
    return bytes;
}

template <class T>
std::string Written(T& object) {
    std::ostringstream out;
    out << object;
    return out.str();
}
