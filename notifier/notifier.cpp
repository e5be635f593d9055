// A notifier: lists an inbox through the exported functions alone.

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "resident/core/windows_api.h"
#include "ticker/ticker.h"

namespace {

struct Message {
    std::string sender;
    std::string topic;
    std::string fileName;
    int kind;
    bool processed;
};

// ANSI text as UTF-8, with what would disturb a table as a dot.
std::string Printable(const char* ansi) {
    wchar_t wide[512];
    const int length = MultiByteToWideChar(CP_ACP, 0, ansi, -1, wide, 512);
    for (int i = 0; i < length - 1; ++i)
        if (wide[i] < 0x20 || (wide[i] >= 0x7F && wide[i] < 0xA0))
            wide[i] = L'\u00B7';
    char utf8[2048] = "";
    WideCharToMultiByte(CP_UTF8, 0, wide, length, utf8, sizeof utf8, nullptr, nullptr);
    return utf8;
}

std::vector<Message> ReadInbox(const char* path) {
    std::vector<Message> messages;
    char* topic;
    char* fileName;
    char* sender;
    unsigned short kind;
    unsigned short flag;
    int more = GetFirstRecord(path, &topic, &fileName, &sender, &kind, &flag);
    for (; more; more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag))
        messages.push_back(
            {Printable(sender), Printable(topic), Printable(fileName), kind, flag != 0});
    Done();
    return messages;
}

// Characters that a UTF-8 text shows.
std::size_t Width(const std::string& text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
}

void PrintTable(const std::vector<Message>& messages) {
    std::size_t sender = Width("From");
    std::size_t topic = Width("Topic");
    for (const Message& message : messages) {
        sender = std::max(sender, Width(message.sender));
        topic = std::max(topic, Width(message.topic));
    }
    const auto row = [&](const std::string& from, const std::string& about, const std::string& kind,
                         const std::string& done, const std::string& file) {
        fmt::print("  {:<{}}  {:<{}}  {:>4}  {:<9}  {}\n", from, sender, about, topic, kind, done,
                   file);
    };
    row("From", "Topic", "Kind", "Processed", "File");
    row(std::string(sender, '-'), std::string(topic, '-'), "----", "---------", "------------");
    for (const Message& message : messages)
        row(message.sender, message.topic, std::to_string(message.kind),
            message.processed ? "yes" : "-", message.fileName);
}

// An inbox that cannot be read looks like an empty one through the exported functions, so what
// stands in the way is asked of Windows. Empty when nothing does.
std::string WhyUnreadable(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return "there is no such file";
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        return "it is a folder; name the D file in it";
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION ? "another program is holding it"
                                                         : "it may not be read";
    CloseHandle(file);
    return {};
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Lists the messages of a Postrider inbox.");
    std::string path;
    std::string shownAs;
    app.add_option("dfile", path, "A D file; the current user's inbox without one");
    app.add_option("--shown-as", shownAs, "The name to call that file by");
    CLI11_PARSE(app, argc, argv);
    if (path.empty()) {
        char* inbox;
        char* userData;
        if (!GetCurUserPath(&inbox, &userData)) {
            fmt::print(stderr, "There is no current user: JXUSER.DAT of the Windows directory is "
                               "missing or cannot be read.\n");
            return 1;
        }
        path = inbox;
    }
    if (shownAs.empty())
        shownAs = Printable(path.c_str());

    const std::string reason = WhyUnreadable(path);
    if (!reason.empty()) {
        fmt::print(stderr, "Cannot list {}: {}.\n", shownAs, reason);
        return 1;
    }
    const std::vector<Message> messages = ReadInbox(path.c_str());
    fmt::print("Inbox {}\n\n", shownAs);
    if (messages.empty()) {
        fmt::print("  No messages.\n");
        return 0;
    }
    PrintTable(messages);
    const auto processed = std::count_if(messages.begin(), messages.end(),
                                         [](const Message& message) { return message.processed; });
    fmt::print("\n  {} {}, {} processed\n", messages.size(),
               messages.size() == 1 ? "message" : "messages", processed);
    return 0;
}
