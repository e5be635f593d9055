#include "programs/mailticker/wording.h"

#include <algorithm>

static const std::wstring kDash = L" \u2013 ";

static std::wstring Counted(std::size_t count, const wchar_t* one, const wchar_t* several) {
    return std::to_wstring(count) + L" " + (count == 1 ? one : several);
}

static std::wstring SystemMessage(unsigned long error) {
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, error, 0, text, 512, nullptr);
    while (length && text[length - 1] <= L' ')
        --length;
    return std::wstring(text, length);
}

Notice NoticeOf(const Reading& reading) {
    const std::wstring& path = reading.path;
    switch (reading.state) {
    case InboxState::Readable:
        return {};
    case InboxState::Empty:
        return {L"The inbox is empty.", L"New messages appear here by themselves."};
    case InboxState::NoUser:
        return {L"Nobody has logged in to Postrider.",
                L"The inbox appears as soon as somebody does."};
    case InboxState::NoFolder:
        return {L"The inbox\u2019s folder is not there.",
                L"There is no " + FolderOf(path) + L". It appears here when it is back."};
    case InboxState::NoFile:
        return {L"There is no inbox yet.",
                L"Postrider makes " + path + L" when the first message comes."};
    case InboxState::Held:
        return {L"Another program is holding the inbox.",
                L"It is read as soon as that program lets go of it."};
    case InboxState::Denied:
        return {L"The inbox cannot be read.", path + L": " + SystemMessage(reading.error)};
    case InboxState::Unspeakable:
        return {L"The inbox\u2019s name cannot be passed on.",
                path + L" is too long or has letters outside ASCII, and its drive keeps no short "
                       L"names. Rename the folder, or move it."};
    case InboxState::Damaged:
        return {L"The inbox is damaged. " + reading.damage,
                L"What can be read is shown. To see what is wrong: mailfolder check \"" + path +
                    L"\""};
    }
    return {};
}

Notice UserChangedNotice(const std::wstring& path) {
    return {L"Another user has logged in to Postrider.", L"This is the inbox " + path + L"."};
}

std::wstring CountLine(const Inbox& inbox) {
    std::wstring line = Counted(inbox.All().Count(), L"message", L"messages");
    if (inbox.IsFiltered())
        line = std::to_wstring(inbox.Rows().size()) + L" of " + line;
    return line + L", " + std::to_wstring(inbox.Unprocessed()) + L" unprocessed";
}

std::wstring Tooltip(const Inbox& inbox) {
    std::wstring tip = std::to_wstring(inbox.Unprocessed()) + L" unprocessed";
    if (inbox.New())
        tip += L", " + std::to_wstring(inbox.New()) + L" new";
    const auto newest = inbox.Newest(1);
    if (!newest.empty())
        tip += L", newest: " + OneLine(inbox.All(), newest[0]);
    return tip;
}

std::wstring TopicOf(const Messages& messages, std::size_t message) {
    const std::wstring topic = messages.Topic(message);
    return topic.empty() ? L"(no topic)" : topic;
}

std::wstring OneLine(const Messages& messages, std::size_t message) {
    return messages.From(message) + kDash + TopicOf(messages, message);
}

Notice ArrivalNotice(const Inbox& inbox) {
    const auto& arrived = inbox.Arrived();
    const Messages& messages = inbox.All();
    if (arrived.empty())
        return {};
    if (arrived.size() == 1)
        return {messages.From(arrived[0]), TopicOf(messages, arrived[0])};
    // What a balloon has room for.
    constexpr std::size_t kLines = 4;
    Notice notice = {Counted(arrived.size(), L"new message", L"new messages"), L""};
    const std::size_t first = arrived.size() - std::min(arrived.size(), kLines);
    for (std::size_t i = arrived.size(); i-- > first;)
        notice.detail += OneLine(messages, arrived[i]) + L"\n";
    if (first)
        notice.detail += L"and " + std::to_wstring(first) + L" more";
    else
        notice.detail.pop_back();
    return notice;
}

std::wstring TimeOfDay(const SYSTEMTIME& time) {
    wchar_t text[64];
    return GetTimeFormatW(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &time, nullptr, text, 64) ? text
                                                                                         : L"";
}

SYSTEMTIME LocalTimeIn(unsigned long long milliseconds) {
    FILETIME now, local;
    GetSystemTimeAsFileTime(&now);
    ULARGE_INTEGER time = {{now.dwLowDateTime, now.dwHighDateTime}};
    time.QuadPart += milliseconds * 10000;
    const FILETIME then = {time.LowPart, time.HighPart};
    SYSTEMTIME result;
    FileTimeToLocalFileTime(&then, &local);
    FileTimeToSystemTime(&local, &result);
    return result;
}

std::wstring KeysText() {
    return L"F5\tRead the inbox now\r\n"
           L"Ctrl+F\tFilter: words that a message has in any column, whatever case and accents\r\n"
           L"Enter\tIn the filter: to the list. In the list: open with another program\r\n"
           L"Esc\tIn the filter: clear it. Elsewhere: hide the window in the tray\r\n"
           L"Ctrl+U\tOnly unprocessed messages\r\n"
           L"Ctrl+1 to 5\tSort by a column; once more turns the order round\r\n"
           L"Ctrl+R\tReading pane\r\n"
           L"Ctrl+Up, Ctrl+Down\tLarger, smaller reading pane\r\n"
           L"Ctrl+L\tRunning line\r\n"
           L"Tab\tTo the next part of the window\r\n"
           L"Ctrl+Q\tEnd the ticker";
}
