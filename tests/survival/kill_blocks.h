#pragma once

#include <string>

#include "tests/support/record_bytes.h"

// The preference blocks that programs are ended over: more than the stream holds back.
constexpr unsigned short kKillVersion = 0x0102;

inline std::string KillBlock(unsigned int id) { return RandomBytes(id, 1000 + 300 * id); }
