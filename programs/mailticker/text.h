#pragma once

#include <optional>
#include <string>
#include <string_view>

// The inbox's texts are Windows-1252, one byte a character; the window's are UTF-16.

// A character for a line of text: what would disturb the line becomes a dot.
wchar_t Shown(unsigned char c);
std::wstring Shown(std::string_view text);

// Without case and accents, in Windows-1252 still: what searching and sorting compare.
unsigned char Folded(unsigned char c);

// Typed text, folded; nothing when it has characters that no text of an inbox can have.
std::optional<std::string> Folded(std::wstring_view typed);

// Several lines of text: CR, LF and CR LF end a line, other control characters but tabs are dots.
std::wstring ShownLines(std::string_view text);

// A name of the file system, which the library gives in the system's own code page.
std::wstring FromAnsi(const char* name);
