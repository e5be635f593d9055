#pragma once

#include <string>

#include "programs/mailticker/inbox.h"
#include "programs/mailticker/inbox_reader.h"
#include "programs/mailticker/windows_api.h"

// What the ticker says: sentences made of what is known, whoever shows them.

// A heading and what follows from it; both empty where there is nothing to say.
struct Notice {
    std::wstring heading;
    std::wstring detail;
};

Notice NoticeOf(const Reading& reading);
Notice UserChangedNotice(const std::wstring& path);

// "11 messages, 7 unprocessed", and how many of them are shown where not all are.
std::wstring CountLine(const Inbox& inbox);

// "7 unprocessed, 2 new, newest: Payroll – Form to install"
std::wstring Tooltip(const Inbox& inbox);

// "Payroll – Form to install"
std::wstring OneLine(const Messages& messages, std::size_t message);

// What has just arrived: the sender and the topic of one, a line each of the first of several.
Notice ArrivalNotice(const Inbox& inbox);

// The time of day as the user writes it, without seconds.
std::wstring TimeOfDay(const SYSTEMTIME& time);

// The local time in so many milliseconds.
SYSTEMTIME LocalTimeIn(unsigned long long milliseconds);

// What the keys do, a line each.
std::wstring KeysText();

// A topic as it is shown.
std::wstring TopicOf(const Messages& messages, std::size_t message);
