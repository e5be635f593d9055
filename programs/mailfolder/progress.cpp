#include "programs/mailfolder/progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <io.h>

static Progress* current;

Progress::Progress(std::string what)
    : mWhat(std::move(what)), mTerminal(_isatty(_fileno(stderr))), mShown(-1) {
    current = this;
}

Progress::~Progress() {
    current = nullptr;
    if (mShown >= 0)
        fmt::print(stderr, "\r{:{}}\r", "", mWhat.size() + 6);
}

void Progress::Show(unsigned long done, unsigned long total) {
    const int percent = total ? static_cast<int>(100ull * std::min(done, total) / total) : 100;
    if (!mTerminal || percent == mShown)
        return;
    mShown = percent;
    fmt::print(stderr, "\r{} {:3}%", mWhat, percent);
    std::fflush(stderr);
}

int Progress::Copying(unsigned int position) {
    // A copy tells of steps up to the size of its large buffer, whatever the file's size.
    constexpr unsigned int kEnd = 32000;
    if (current)
        current->Show(position, kEnd);
    return 1;
}
