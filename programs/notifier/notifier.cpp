// A notifier: lists an inbox through the exported functions alone.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "programs/console/output.h"
#include "programs/console/text.h"
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

// Of other bytes most records have a kind out of range, which the library gives as 6.
bool ComesFromDFile(const std::vector<Message>& messages) {
    const auto damaged = std::count_if(messages.begin(), messages.end(),
                                       [](const Message& message) { return message.kind == 6; });
    return 2 * static_cast<std::size_t>(damaged) <= messages.size();
}

// Whether a file has bytes, but fewer than the header or a record takes.
bool EndsInFirstRecord(const char* path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return GetFileAttributesExA(path, GetFileExInfoStandard, &data) && data.nFileSizeHigh == 0 &&
           data.nFileSizeLow > 0 && data.nFileSizeLow < 316;
}

void PrintMessages(const std::vector<Message>& messages) {
    std::vector<std::vector<std::string>> rows;
    for (const Message& message : messages)
        rows.push_back({message.sender, message.topic, std::to_string(message.kind),
                        message.processed ? "yes" : "-", message.fileName});
    PrintTable({{"From"}, {"Topic"}, {"Kind", true}, {"Processed"}, {"File"}}, rows);
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
            Warn("There is no current user: JXUSER.DAT of the Windows directory is "
                 "missing or cannot be read.\n");
            return 1;
        }
        path = inbox;
    }
    shownAs = Printable(shownAs.empty() ? path : shownAs);

    // An inbox that cannot be read looks like an empty one through the exported functions.
    const std::string reason = WhyUnreadable(WideOfAnsi(path));
    if (!reason.empty()) {
        Warn("Cannot list {}: {}.\n", shownAs, reason);
        return 1;
    }
    const std::vector<Message> messages = ReadInbox(path.c_str());
    if (EndsInFirstRecord(path.c_str()) || !ComesFromDFile(messages)) {
        Warn("Cannot list {}: it is no D file.\n", shownAs);
        return 1;
    }
    Print("Inbox {}\n\n", shownAs);
    if (messages.empty()) {
        Print("  No messages.\n");
        return 0;
    }
    PrintMessages(messages);
    const auto processed = std::count_if(messages.begin(), messages.end(),
                                         [](const Message& message) { return message.processed; });
    Print("\n  {} {}, {} processed\n", messages.size(),
          messages.size() == 1 ? "message" : "messages", processed);
    return 0;
}
