#include "programs/mailfolder/tool.h"

#include <algorithm>
#include <chrono>

#include "programs/console/text.h"
#include "resident/core/windows_api.h"

void PrintJson(const Json& value) {
    fmt::print("{}\n", value.dump(2, ' ', false, Json::error_handler_t::replace));
}

static bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; });
}

std::string FullPath(const std::string& argument) {
    char buffer[MAX_PATH];
    char* name = nullptr;
    const DWORD length = GetFullPathNameA(argument.c_str(), sizeof buffer, buffer, &name);
    if (length == 0 || length >= sizeof buffer)
        Fail("Cannot use {}: the name is empty or too long.", Printable(argument));
    std::string path(buffer, length);
    // A drive's root keeps its backslash.
    if (path.size() > 3 && path.back() == '\\')
        path.pop_back();
    // The library passes names on in another code page: letters outside ASCII would be lost, and
    // the short forms of the folders' names have none.
    if (!IsAscii(path)) {
        const std::size_t start = IsFolder(path) ? path.size() : path.rfind('\\');
        char folder[MAX_PATH];
        const DWORD size = GetShortPathNameA(path.substr(0, start).c_str(), folder, sizeof folder);
        if (size > 0 && size < sizeof folder)
            path.replace(0, start, folder);
    }
    if (!IsAscii(path))
        Fail("Cannot use {}: its name has letters that the library does not take; rename it.",
             Printable(path));
    return path;
}

FileSpec SpecOf(const std::string& path) {
    FileSpec spec;
    if (spec.SetSpecPart(path.c_str(), 0) != FileSpec::keSpecOk || path != spec.FullFileSpec())
        Fail("Cannot use {}: the library does not take that name.", Printable(path));
    return spec;
}

bool IsThere(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsFolder(const std::string& path) {
    return IsThere(path) && (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY);
}

void NeedReadable(const std::string& path) {
    const std::string reason = WhyUnreadable(path);
    if (!reason.empty())
        Fail("Cannot read {}: {}.", Printable(path), reason);
}

std::string Count(unsigned long number, const char* one, const char* many) {
    return number == 1 ? fmt::format("1 {}", one)
           : many      ? fmt::format("{} {}", number, many)
                       : fmt::format("{} {}s", number, one);
}

std::string DateText(unsigned long seconds) {
    using namespace std::chrono;
    if (seconds == 0)
        return {};
    const sys_days epoch = sys_days(year(1904) / January / 1);
    const year_month_day date(epoch + days(seconds / 86400));
    const unsigned long time = seconds % 86400;
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", int(date.year()),
                       unsigned(date.month()), unsigned(date.day()), time / 3600, time / 60 % 60,
                       time % 60);
}
