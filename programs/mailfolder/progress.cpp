#include "programs/mailfolder/progress.h"

#include <algorithm>
#include <cstdio>
#include <io.h>

#include "programs/mailfolder/tool.h"

Progress::Progress(std::string what)
    : mWhat(std::move(what)), mTerminal(talk != Talk::Quiet && _isatty(_fileno(stderr))),
      mShown(-1) {}

Progress::~Progress() {
    if (mShown >= 0)
        fmt::print(stderr, "\r{:{}}\r", "", mWhat.size() + 6);
}

void Progress::Show(unsigned long long done, unsigned long long total) {
    const int percent = total ? static_cast<int>(100 * std::min(done, total) / total) : 100;
    if (!mTerminal || percent == mShown)
        return;
    mShown = percent;
    fmt::print(stderr, "\r{} {:3}%", mWhat, percent);
    std::fflush(stderr);
}
