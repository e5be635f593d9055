#pragma once

#include <optional>
#include <string>

// A message's own file, in its inbox's folder: its record, and then its text. Opened for a moment
// and shared with everybody.

struct MessageText {
    std::wstring fields; // header fields with encoded words decoded, a line each; often none
    std::wstring text;
    bool isCut = false; // there is more than is shown
};

// Reads the text for the reading pane. Nothing where the file cannot be read; then `why` is a
// sentence.
std::optional<MessageText> ReadMessageText(const std::wstring& folder, const std::wstring& name,
                                           std::wstring& why);

// Copies of messages without their records, for other programs, in a folder of the ticker's own
// among the temporary files; gone with this.
class MessageCopies {
public:
    MessageCopies();
    MessageCopies(const MessageCopies&) = delete;
    MessageCopies& operator=(const MessageCopies&) = delete;
    ~MessageCopies();

    // Makes a copy, as mail where it begins with header fields and as text elsewhere, whatever the
    // message's name ends in. Returns its path; empty where it cannot be made.
    std::wstring Make(const std::wstring& folder, const std::wstring& name, std::wstring& why);

private:
    void Remove();

    std::wstring mFolder;
};
