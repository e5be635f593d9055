#pragma once

#include <optional>
#include <string>

#include "programs/mime/lines.h"

namespace mime {

// Encodes a text's lines as quoted-printable (RFC 2045, 6.7) into another sink's.
class QuotedPrintable : public LineSink {
public:
    explicit QuotedPrintable(LineSink& sink) : mSink(sink) {}
    void Text(std::string_view piece) override;
    void EndLine() override;
    void Finish() override;

private:
    void PutBlank(bool lineEnds);
    void Put(std::string_view token);
    void PutEncoded(unsigned char byte);

    LineSink& mSink;
    std::string mLine;
    char mBlank = 0; // held back: at a line's end it has to be encoded
};

// Encodes a text, its line ends as CR LF, as base64 (RFC 2045, 6.8) into another sink's lines.
class Base64 : public LineSink {
public:
    explicit Base64(LineSink& sink) : mSink(sink) {}
    void Text(std::string_view piece) override;
    void EndLine() override { Text("\r\n"); }
    void Finish() override;

private:
    LineSink& mSink;
    std::string mBytes; // less than a line's
};

// The whole of it in one line.
std::string Base64Of(std::string_view bytes);
// The bytes of such a line, padded or not; none when it has other characters.
std::optional<std::string> FromBase64(std::string_view text);

// RFC 2045, 6.8, table 1.
inline constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// A byte as "=XX".
std::string HexEscape(unsigned char byte);

} // namespace mime
