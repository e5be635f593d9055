#pragma once

#include <optional>
#include <string>
#include <vector>

#include "programs/mailfolder/folder.h"
#include "programs/mailfolder/problems.h"

struct Problem {
    std::string what; // of a ProblemKind
    std::optional<unsigned long long> slot;
    std::optional<unsigned long long> position;
    std::wstring file; // the message file concerned, if any
    std::string text;
    std::string lost;
};

// What a look at all of a folder brought to light.
struct Checked {
    Folder folder;
    unsigned long long messages = 0;
    unsigned long long freeSlots = 0;
    std::vector<Problem> problems;  // in the file's order, those of message files behind
    std::vector<std::string> notes; // what is no damage
};

// `argument` is a D file or its folder. Fails for one that cannot be read, and for a file that was
// named itself and is some other of the files that the tool knows.
Checked CheckFolder(const Path& argument, int type);
