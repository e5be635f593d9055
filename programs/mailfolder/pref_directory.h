#pragma once

#include <string>
#include <vector>

#include "postrider.h"
#include "programs/mailfolder/path.h"

// What a preference file says that it holds. The library's own reading would show failures in
// boxes, and stops at the first.
struct PrefDirectory {
    // Fails for a file that cannot be read.
    explicit PrefDirectory(const Path& path);

    bool Holds(const AppRecHeader& block) const;

    unsigned long long size;
    std::string damage; // of header and list, in words that go on after the file's name; or empty
    std::vector<AppRecHeader> blocks;
};
