#include "programs/console/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "resident/core/windows_api.h"

static std::wstring Wide(const std::string& ansi) {
    const int length = static_cast<int>(ansi.size());
    std::wstring wide(ansi.size(), L'\0');
    wide.resize(MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, wide.data(), length));
    return wide;
}

static std::string Narrow(const std::wstring& wide) {
    const int length = static_cast<int>(wide.size());
    // A UTF-16 unit takes three bytes at most.
    std::string utf8(3 * wide.size(), '\0');
    utf8.resize(WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(),
                                    static_cast<int>(utf8.size()), nullptr, nullptr));
    return utf8;
}

std::string Utf8(const std::string& ansi) { return Narrow(Wide(ansi)); }

std::string Printable(const std::string& ansi) {
    std::wstring wide = Wide(ansi);
    for (wchar_t& c : wide)
        if (c < 0x20 || (c >= 0x7F && c < 0xA0))
            c = L'\u00B7';
    return Narrow(wide);
}

// Characters that a UTF-8 text shows.
static std::size_t Width(const std::string& text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
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
        fmt::print("{}\n", line);
    };
    print(titles);
    print(lines);
    for (const auto& row : rows)
        print(row);
}

std::string WhyUnreadable(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return "there is no such file";
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        return "it is a folder; name the file in it";
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION ? "another program is holding it"
                                                         : "it may not be read";
    CloseHandle(file);
    return {};
}
