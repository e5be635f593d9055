#pragma once

#include <string>

#include "tests/support/record_bytes.h"

// What is done to a preference file, one after another: an application's block is added the first
// time and changed afterwards. Sizes below and above what the stream holds back.
struct PrefStep {
    unsigned short id;
    unsigned short size;

    std::string Block(unsigned int step) const { return RandomBytes(step + 1, size); }
};

constexpr PrefStep kPrefSteps[] = {{1, 1500}, {1, 1500},  {2, 60000}, {3, 45},    {2, 60000},
                                   {4, 500},  {5, 40000}, {3, 45},    {6, 65535}, {7, 511},
                                   {4, 500},  {8, 20000}, {6, 65535}, {9, 1024}};
constexpr unsigned short kPrefVersion = 0x0102;
