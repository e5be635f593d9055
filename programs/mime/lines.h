#pragma once

#include <string_view>

namespace mime {

// Takes a text line by line, whatever its line ends were, and each line in pieces.
class LineSink {
public:
    virtual ~LineSink() = default;
    virtual void Text(std::string_view piece) = 0;
    virtual void EndLine() = 0;
    // The text is over. Its last line may not have ended.
    virtual void Finish() {}

    void Line(std::string_view line) {
        Text(line);
        EndLine();
    }
};

// Finds the lines of a text that comes in pieces: CR, LF and CR LF alike end one.
class LineSplitter {
public:
    explicit LineSplitter(LineSink& sink) : mSink(sink) {}
    void Add(std::string_view piece);
    void Finish() { mSink.Finish(); }

private:
    LineSink& mSink;
    bool mAfterCr = false;
};

// What decides how a text may travel.
class TextShape : public LineSink {
public:
    // RFC 5322, 2.1.1: without the line's end.
    enum { keLongestLine = 998 };

    void Text(std::string_view piece) override;
    void EndLine() override { mColumn = 0; }

    bool IsAscii() const { return mEightBit == 0; }
    // RFC 2045, 2.7 and 2.8: no line is too long, and no byte is zero.
    bool FitsLines() const { return !mTooLong && mZeros == 0; }
    // Quoted-printable takes three characters for each of these, base64 four for every three bytes.
    bool IsMostlyBinary() const { return mEightBit + mControls + mZeros > mSize / 6; }

private:
    unsigned long long mSize = 0;
    unsigned long long mEightBit = 0;
    unsigned long long mControls = 0;
    unsigned long long mZeros = 0;
    unsigned long long mColumn = 0;
    bool mTooLong = false;
};

} // namespace mime
