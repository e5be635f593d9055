#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "programs/mime/lines.h"

namespace mime {

// The mbox format of RFC 4155 in its "rd" variant: a "From " line before each message, an empty
// line behind it, and a ">" before each line of the message that begins with any number of ">" and
// "From ".

// The line before a message, whose sender is an address without blanks.
std::string SeparatorLine(std::string_view sender, std::chrono::sys_seconds time);

inline bool IsSeparatorLine(std::string_view line) { return line.starts_with("From "); }

// Quotes the lines of a message on their way into an mbox.
class MboxQuoting : public LineSink {
public:
    explicit MboxQuoting(LineSink& sink) : mSink(sink) {}
    void Text(std::string_view piece) override;
    void EndLine() override;
    // Ends the last line, and puts the empty one behind it.
    void Finish() override;

private:
    void Release();

    LineSink& mSink;
    std::size_t mMatched = 0; // of "From ", behind nothing but ">"
    bool mAtStart = true;     // nothing but ">" and what is matched was in this line
    bool mEmpty = true;       // nothing at all was
};

} // namespace mime
