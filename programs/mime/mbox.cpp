#include "programs/mime/mbox.h"

#include "programs/mime/date.h"

namespace mime {

static constexpr std::string_view kFrom = "From ";

std::string SeparatorLine(std::string_view sender, std::chrono::sys_seconds time) {
    return std::string(kFrom) + std::string(sender) + " " + AscTime(time);
}

// A quote may stand anywhere among the others, so that only what is matched has to wait.
void MboxQuoting::Text(std::string_view piece) {
    mEmpty &= piece.empty();
    while (mAtStart && !piece.empty()) {
        const char c = piece.front();
        if (mMatched == 0 && c == '>') {
            mSink.Text(piece.substr(0, 1));
        } else if (c == kFrom[mMatched]) {
            if (++mMatched == kFrom.size()) {
                mSink.Text(">");
                Release();
            }
        } else {
            Release();
            break;
        }
        piece.remove_prefix(1);
    }
    if (!piece.empty())
        mSink.Text(piece);
}

void MboxQuoting::Release() {
    mSink.Text(kFrom.substr(0, mMatched));
    mMatched = 0;
    mAtStart = false;
}

void MboxQuoting::EndLine() {
    Release();
    mSink.EndLine();
    mAtStart = mEmpty = true;
}

void MboxQuoting::Finish() {
    if (!mEmpty)
        EndLine();
    mSink.EndLine();
    mSink.Finish();
}

} // namespace mime
