#pragma once

#include <string>
#include <string_view>
#include <vector>

// Text for a terminal or a pipe. The library's texts are ANSI, the system's names are UTF-16, what
// the programs print is UTF-8.

std::wstring WideOfAnsi(std::string_view ansi);
std::wstring WideOfUtf8(std::string_view utf8);

std::string Utf8(std::wstring_view wide);
std::string Utf8(std::string_view ansi);

// Whether a character disturbs a line of text: controls, which terminals obey, and marks that turn
// the text's direction around.
bool DisturbsLine(wchar_t c);
// As UTF-8, with a dot for each control, and its number for what turns the direction around:
// "<U+202E>".
std::string Printable(std::wstring_view wide);
std::string Printable(std::string_view ansi);

// A table's column: as wide as its longest cell.
struct Column {
    std::string title;
    bool alignRight = false;
};

// Prints the titles, a line, and the rows, each of as many cells as there are columns.
void PrintTable(const std::vector<Column>& columns,
                const std::vector<std::vector<std::string>>& rows);

// What stands in the way of reading a file, in words that go on after its name; empty when nothing
// does. The library's own failures look alike, so it is asked of Windows.
std::string WhyUnreadable(const std::wstring& path);
