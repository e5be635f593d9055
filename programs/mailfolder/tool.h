#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "postrider.h"
#include "programs/mailfolder/failure.h"

// What every command of the tool shares.

// Keys stay in the order in which they are put in.
using Json = nlohmann::ordered_json;

void PrintJson(const Json& value);

// The full path of an argument, as the library can open it. Fails for a name that it cannot.
std::string FullPath(const std::string& argument);
// A specification for it.
FileSpec SpecOf(const std::string& path);
bool IsFolder(const std::string& path);
bool IsThere(const std::string& path);
// Fails, in plain words, when the file cannot be opened for reading.
void NeedReadable(const std::string& path);

// "2 messages", "1 message".
std::string Count(unsigned long number, const char* one, const char* many = nullptr);

// Seconds from 1904-01-01, local time, as "2025-04-06 07:08:09"; empty for 0.
std::string DateText(unsigned long seconds);
