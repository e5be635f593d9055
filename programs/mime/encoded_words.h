#pragma once

#include <string>
#include <string_view>

// Text in fields that hold ASCII alone: encoded words (RFC 2047).
namespace mime {

// Encoded words with a blank between them, each of whole characters (RFC 2047, 5). In windows-1252
// where that has the characters, else in UTF-8.
std::string EncodedWords(std::wstring_view text);

// A field's body as a line of text: unfolded, its encoded words decoded, what stands between them
// taken for windows-1252, and control characters as blanks. Words in an encoding or a character set
// that nobody knows are left as they stand.
std::wstring FieldText(std::string_view body);

// Control characters, and what else ends a line, as blanks.
std::wstring OneLine(std::wstring_view text);

} // namespace mime
