#pragma once

#include <algorithm>
#include <string>

#include "postrider.h"
#include "programs/console/output.h"
#include "programs/console/text.h"
#include "programs/mailfolder/failure.h"

// What every command of the tool shares.

// How much is told beside results: --quiet tells of failures alone, --verbose of each step.
enum class Talk { Quiet, Normal, Verbose };
extern Talk talk;

// What accompanies a result: nothing with --quiet.
template <class... Args>
void Tell(fmt::format_string<Args...> format, Args&&... args) {
    if (talk != Talk::Quiet)
        Print(format, std::forward<Args>(args)...);
}
// A step on the way, to standard error: with --verbose alone.
template <class... Args>
void Detail(fmt::format_string<Args...> format, Args&&... args) {
    if (talk == Talk::Verbose)
        Warn(format, std::forward<Args>(args)...);
}

// The text of a length-prefixed field, cut at the field's end.
template <std::size_t kSize>
std::string FieldText(const unsigned char (&field)[kSize]) {
    return std::string(reinterpret_cast<const char*>(field) + 1,
                       std::min<std::size_t>(field[0], kSize - 1));
}

// "2 messages", "1 message".
std::string Count(unsigned long long number, const char* one, const char* many = nullptr);

// Seconds from 1904-01-01, local time, as "2025-04-06 07:08:09"; empty for 0.
std::string DateText(unsigned long seconds);
