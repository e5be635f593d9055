#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

// Standard output and standard error in large blocks, whatever they lead to: a terminal and a null
// device take as long as a file. UTF-8; each "\n" becomes a line end of Windows. What is left goes
// out when the program ends.

// Throw std::system_error when what they lead to cannot be written; its code is EPIPE when nobody
// reads any more.
void Write(std::string_view text);
void WriteError(std::string_view text);
// As they are, to standard output.
void WriteBytes(std::string_view bytes);
// Hands over what is buffered, standard output first.
void FlushOutput();

template <class... Args>
void Print(fmt::format_string<Args...> format, Args&&... args) {
    Write(fmt::format(format, std::forward<Args>(args)...));
}

// To standard error.
template <class... Args>
void Warn(fmt::format_string<Args...> format, Args&&... args) {
    WriteError(fmt::format(format, std::forward<Args>(args)...));
}
