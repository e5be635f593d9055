#pragma once

#include <fmt/format.h>

#include <string>

// How commands end: they return an exit code, or throw a Failure.

enum ExitCode { keFine = 0, keCouldNot = 1, keWrongUse = 2, keDamage = 3 };

// What ends the command: its words go to standard error.
struct Failure {
    std::string text; // UTF-8
    ExitCode code = keCouldNot;
};

template <class... Args>
[[noreturn]] void Fail(fmt::format_string<Args...> format, Args&&... args) {
    throw Failure{fmt::format(format, std::forward<Args>(args)...)};
}
