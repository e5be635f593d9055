#pragma once

#include <optional>
#include <string>

#include "programs/mailfolder/folder.h"
#include "programs/mailfolder/problems.h"

struct Problem {
    const char* what; // of a ProblemKind
    std::optional<unsigned long long> slot;
    std::optional<unsigned long long> position;
    std::wstring file; // the message file concerned, if any
    std::string text;
    std::string lost;
};

struct Checked {
    Folder folder;
    unsigned long long messages = 0;
    unsigned long long freeSlots = 0;
};

// Takes what a look at all of a folder brings to light, while it does: a large folder may have more
// than fits into memory.
class Findings {
public:
    virtual ~Findings() = default;
    // Comes first.
    virtual void Begin(const Checked& checked) = 0;
    // In the file's order, those of message files behind.
    virtual void Add(const Problem& problem) = 0;
    // What is no damage.
    virtual void Note(const std::string& text) = 0;
};

// `argument` is a D file or its folder. Fails for one that cannot be read, and for a file that was
// named itself and is some other of the files that the tool knows.
void CheckFolder(const Path& argument, int type, Findings& findings);
