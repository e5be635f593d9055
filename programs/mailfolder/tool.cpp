#include "programs/mailfolder/tool.h"

#include <chrono>

Talk talk = Talk::Normal;

// A value's text, its lines after the first indented by that many blanks.
static std::string Dump(const Json& value, int indent) {
    const std::string plain = value.dump(2, ' ', false, Json::error_handler_t::replace);
    std::string text;
    text.reserve(plain.size());
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const auto byte = [&](std::size_t at) {
            return at < plain.size() ? static_cast<unsigned char>(plain[at]) : 0u;
        };
        // Outside texts there is nothing but ASCII, and no delete.
        unsigned int escaped = 0;
        std::size_t length = 1;
        if (byte(i) == 0x7F) {
            escaped = 0x7F;
        } else if (byte(i) == 0xC2 && byte(i + 1) < 0xA0) {
            escaped = byte(i + 1);
            length = 2;
        } else if (byte(i) == 0xE2 && (byte(i + 1) == 0x80 || byte(i + 1) == 0x81)) {
            const unsigned int c = 0x2000 + ((byte(i + 1) & 0x3F) << 6) + (byte(i + 2) & 0x3F);
            if ((c >= 0x200E && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
                (c >= 0x2066 && c <= 0x2069)) {
                escaped = c;
                length = 3;
            }
        }
        if (escaped) {
            text += fmt::format("\\u{:04x}", escaped);
            i += length - 1;
        } else {
            text += plain[i];
            if (plain[i] == '\n')
                text.append(indent, ' ');
        }
    }
    return text;
}

void PrintJson(const Json& value) { Print("{}\n", Dump(value, 0)); }

// The members of an object, each on a line.
static void PrintMembers(const Json& object, const char* before, const char* after) {
    for (const auto& [key, value] : object.items())
        Print("{}  {}: {}{}", before, Json(key).dump(), Dump(value, 2), after);
}

JsonArray::JsonArray(int indent) : mIndent(indent) { Print("["); }

void JsonArray::Add(const Json& element) {
    Print("{}{:{}}{}", mEmpty ? "\n" : ",\n", "", mIndent + 2, Dump(element, mIndent + 2));
    mEmpty = false;
}

void JsonArray::Finish() {
    if (!mEmpty)
        Print("\n{:{}}", "", mIndent);
    Print("]{}", mIndent ? "" : "\n");
}

JsonList::JsonList(const Json& head, const char* key) {
    Print("{{\n");
    PrintMembers(head, "", ",\n");
    Print("  {}: ", Json(key).dump());
    mList.emplace(2);
}

void JsonList::Finish(const Json& tail) {
    mList->Finish();
    PrintMembers(tail, ",\n", "");
    Print("\n}}\n");
}

std::string Count(unsigned long long number, const char* one, const char* many) {
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

Json DateJson(unsigned long seconds) {
    const std::string text = DateText(seconds);
    return text.empty() ? Json() : Json(text);
}
