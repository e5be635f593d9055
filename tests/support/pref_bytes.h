#pragma once

#include <vector>

#include "postrider.h"
#include "tests/support/record_bytes.h"

// The bytes of "RB.DAT", written out.

inline std::string BigEndian(unsigned long value, unsigned int size) {
    std::string bytes;
    while (size--)
        bytes += static_cast<char>(value >> 8 * size);
    return bytes;
}

// The key runs along a block from its end.
inline std::string ScrambledBlock(std::string block) {
    static const unsigned char key[20] = {0x3D, 0xA7, 0x52, 0xEC, 0x19, 0x8B, 0xF4,
                                          0x66, 0x21, 0xD9, 0x0E, 0x73, 0xB5, 0x48,
                                          0x9C, 0xC1, 0x2F, 0xE3, 0x5A, 0x84};
    for (unsigned int i = 0; i < block.size(); ++i) {
        char& byte = block[block.size() - 1 - i];
        byte = static_cast<char>(byte ^ key[19 - i % 20]);
    }
    return block;
}

// `version` and `id` are two bytes, as the machine has them.
inline std::string PrefHeader(const std::string& version, const std::string& name,
                              unsigned int count) {
    const std::string header = With(std::string(46, '\0'), 0, "PREFRBSW" + version);
    const std::string named = With(header, 11, name.substr(0, 32));
    return With(With(named, 10, std::string(1, char(name.size()))), 44, BigEndian(count, 2));
}
inline std::string PrefEntry(const std::string& id, const std::string& version,
                             unsigned int ordinal, unsigned long offset, unsigned int size) {
    return id + version + BigEndian(ordinal, 2) + BigEndian(offset, 4) + BigEndian(size, 2);
}

// The texts of the block of mail preferences, each with its length byte and closing zero, and
// whether they are OEM in the file.
struct PrefText {
    unsigned short offset, size;
    bool converted;
};
inline const std::vector<PrefText> kPrefTexts = {
    {168, 6, true},    {174, 6, true},   {180, 32, true},  {212, 34, true},  {246, 34, true},
    {280, 66, true},   {346, 34, true},  {380, 134, true}, {514, 134, true}, {648, 134, true},
    {782, 134, false}, {922, 33, false}, {955, 33, false}, {988, 256, true}, {1244, 256, false}};

// One application's block in memory.
struct PrefApp {
    PrefApp(unsigned short id, const std::string& block)
        : bytes(block), tag{id, 0x0102, static_cast<unsigned short>(block.size()), bytes.data()} {}
    std::string bytes;
    AppPrefTag tag;
};
