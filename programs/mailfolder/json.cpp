#include "programs/mailfolder/json.h"

#include "programs/mailfolder/tool.h"

// A value's text, its lines after the first indented by that many blanks; all in one line when that
// is -1. What disturbs a line of text is escaped, so that programs get it as it is.
static std::string Dump(const Json& value, int indent) {
    const std::string plain =
        value.dump(indent < 0 ? -1 : 2, ' ', false, Json::error_handler_t::replace);
    std::string text;
    text.reserve(plain.size());
    std::size_t done = 0;
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(plain[at]); };
        if (byte(i) == '\n') {
            text.append(plain, done, i + 1 - done).append(indent, ' ');
            done = i + 1;
            continue;
        }
        if (byte(i) < 0x7F)
            continue;
        // Valid UTF-8; what disturbs has three bytes at most.
        const std::size_t length = byte(i) == 0x7F  ? 1
                                   : byte(i) < 0xE0 ? 2
                                   : byte(i) < 0xF0 ? 3
                                                    : 4;
        const unsigned int c = length == 1   ? 0x7F
                               : length == 2 ? (byte(i) & 0x1F) << 6 | (byte(i + 1) & 0x3F)
                               : length == 3 ? (byte(i) & 0x0F) << 12 | (byte(i + 1) & 0x3F) << 6 |
                                                   (byte(i + 2) & 0x3F)
                                             : 0xFFFF;
        if (DisturbsLine(static_cast<wchar_t>(c))) {
            text.append(plain, done, i - done) += fmt::format("\\u{:04x}", c);
            done = i + length;
        }
        i += length - 1;
    }
    return text.append(plain, done);
}

void PrintJson(const Json& value) { Print("{}\n", Dump(value, 0)); }

void PrintJsonLine(const Json& value) { Print("{}\n", Dump(value, -1)); }

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

Json DateJson(unsigned long seconds) {
    const std::string text = DateText(seconds);
    return text.empty() ? Json() : Json(text);
}
