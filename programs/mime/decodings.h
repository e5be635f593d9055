#pragma once

#include <functional>
#include <memory>
#include <string>

#include "programs/mime/lines.h"

namespace mime {

// What encodings.h puts in: decoded leniently, so that what is no such encoding comes out as it
// stands.

// Takes bytes in pieces.
typedef std::function<void(std::string_view bytes)> ByteSink;

// Takes the lines of a body in an encoding that a Content-Transfer-Encoding field names (RFC 2045,
// 6), and hands the bytes on. Line ends of a text come out as LF, or as they were encoded.
std::unique_ptr<LineSink> DecoderOf(std::string_view encoding, ByteSink sink);

// Bytes as "=XX"; what is none stands for itself (RFC 2045, 6.7, and RFC 2047, 4.2).
std::string DecodedHex(std::string_view text);

} // namespace mime
