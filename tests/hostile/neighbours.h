#pragma once

#include <cstdlib>

#include "tests/support/mail_bytes.h"

// What the programs of the neighbour tests write, and what the test looks for.
namespace Neighbours {

// The record of a message whose texts belong together. D and M messages are not to be processed.
inline std::string Mail(const std::string& name) {
    const std::string record = Date(Message(name.substr(0, name.size() - 4), name), 3029529600u);
    return name[0] == 'D' || name[0] == 'M' ? Attributes(record, 0x0100) : record;
}

// More than a stream holds back.
inline std::string Block(int id) { return RandomBytes(id, 1000 + 300 * (id / 1000 % 8)); }

// How many rounds; POSTRIDER_ROUNDS makes it more.
inline int Rounds(int usual) {
    const char* const rounds = std::getenv("POSTRIDER_ROUNDS");
    return rounds ? std::atoi(rounds) : usual;
}

} // namespace Neighbours
