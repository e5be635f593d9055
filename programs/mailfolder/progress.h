#pragma once

#include <string>

// One line on standard error that tells how far a long work is, while it lives and when that is a
// terminal. One at a time.
class Progress {
public:
    explicit Progress(std::string what);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Show(unsigned long done, unsigned long total);

    // The library's copy callback: tells of the Progress that lives. Never stops the copy.
    static int Copying(unsigned int position);

private:
    std::string mWhat;
    bool mTerminal;
    int mShown;
};
