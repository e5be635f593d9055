#include "programs/console/text.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

#include <algorithm>

#include "programs/console/output.h"
#include "resident/core/windows_api.h"

// What MultiByteToWideChar takes.
static std::wstring Wide(unsigned int codePage, std::string_view text) {
    const int length = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    wide.resize(MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), length));
    return wide;
}

std::wstring WideOfAnsi(std::string_view ansi) { return Wide(CP_ACP, ansi); }

std::wstring WideOfUtf8(std::string_view utf8) { return Wide(CP_UTF8, utf8); }

std::string Utf8(std::wstring_view wide) {
    const int length = static_cast<int>(wide.size());
    // A UTF-16 unit takes three bytes at most.
    std::string utf8(3 * wide.size(), '\0');
    utf8.resize(WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(),
                                    static_cast<int>(utf8.size()), nullptr, nullptr));
    return utf8;
}

std::string Utf8(std::string_view ansi) { return Utf8(WideOfAnsi(ansi)); }

static bool IsControl(wchar_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

// Separators of lines count, too.
bool DisturbsLine(wchar_t c) {
    return IsControl(c) || c == 0x061C || (c >= 0x200E && c <= 0x200F) ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

std::string Printable(std::wstring_view wide) {
    std::wstring shown;
    for (const wchar_t c : wide) {
        if (IsControl(c))
            shown += L'\u00B7';
        else if (DisturbsLine(c))
            shown += fmt::format(L"<U+{:04X}>", static_cast<unsigned int>(c));
        else
            shown += c;
    }
    return Utf8(shown);
}

std::string Printable(std::string_view ansi) { return Printable(WideOfAnsi(ansi)); }

// Whether a terminal gives a character two places: those of East Asia, and pictures.
static bool IsDouble(wchar_t c) {
    return c >= 0x1100 &&
           (c <= 0x115F || (c >= 0x2E80 && c <= 0xA4CF) || (c >= 0xAC00 && c <= 0xD7A3) ||
            (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFE30 && c <= 0xFE6F) ||
            (c >= 0xFF00 && c <= 0xFF60) || (c >= 0xFFE0 && c <= 0xFFE6));
}

// Places that a UTF-8 text takes.
static std::size_t Width(const std::string& text) {
    const auto one = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (std::all_of(text.begin(), text.end(), one))
        return text.size();
    // Each half of a character outside the first plane counts one: they are pictures.
    const std::wstring wide = WideOfUtf8(text);
    return wide.size() + std::count_if(wide.begin(), wide.end(), IsDouble);
}

void PrintTable(const std::vector<Column>& columns,
                const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::string> titles;
    std::vector<std::string> lines;
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::size_t width = Width(columns[i].title);
        for (const auto& row : rows)
            width = std::max(width, Width(row[i]));
        titles.push_back(columns[i].title);
        lines.emplace_back(width, '-');
        widths.push_back(width);
    }
    const auto print = [&](const std::vector<std::string>& cells) {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string blanks(widths[i] - Width(cells[i]), ' ');
            line += "  " + (columns[i].alignRight ? blanks + cells[i] : cells[i] + blanks);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        Write(line += '\n');
    };
    print(titles);
    print(lines);
    for (const auto& row : rows)
        print(row);
}

std::string WhyUnreadable(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return "there is no such file";
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        return "it is a folder; name the file in it";
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION ? "another program is holding it"
                                                         : "it may not be read";
    CloseHandle(file);
    return {};
}
