#pragma once

#include <string>

// One line on standard error that tells how far a long work is, while it lives and when that is a
// terminal. Not with --quiet.
class Progress {
public:
    explicit Progress(std::string what);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Show(unsigned long long done, unsigned long long total);

private:
    std::string mWhat;
    bool mTerminal;
    int mShown;
};
