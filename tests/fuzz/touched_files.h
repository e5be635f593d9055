#pragma once

#include <string>

#include "tests/fuzz/format.h"

// The files that an input works on, and those it must not reach: each call that changes a file is
// seen, wherever it leads.
class TouchedFiles {
public:
    // Makes `folder`, the current folder of all inputs, and things beside it that nobody may reach.
    explicit TouchedFiles(const std::string& folder);

    // Before an input: puts the format's files where they stand.
    void Stand(const Format& format);
    // After it: what is wrong with what it has made, removed and changed; "" for nothing. Puts back
    // what it has changed.
    std::string Check(const Format& format);

private:
    void PutStanding(const Format& format) const;
    void RemoveStanding(const Format& format) const;
    std::string Wrong(const std::string& path, const Format& format) const;

    std::string mFolder;
    const Format* mStanding = nullptr;
};
