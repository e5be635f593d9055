#pragma once

#include <nlohmann/json.hpp>
#include <optional>

// JSON for scripts, on standard output.

// Keys stay in the order in which they are put in.
using Json = nlohmann::ordered_json;

// What disturbs a line of text is escaped.
void PrintJson(const Json& value);
// All of it in one line.
void PrintJsonLine(const Json& value);

// A long array, which goes out as it is made.
class JsonArray {
public:
    explicit JsonArray(int indent = 0);
    void Add(const Json& element);
    void Finish();

private:
    int mIndent;
    bool mEmpty = true;
};

// An object with one long list, which goes out as it is made: it needs no memory for what it has.
class JsonList {
public:
    // Prints the members of `head`, and opens the list.
    JsonList(const Json& head, const char* key);
    void Add(const Json& element) { mList->Add(element); }
    // Closes the list; prints the members of `tail` behind it.
    void Finish(const Json& tail = Json::object());

private:
    std::optional<JsonArray> mList;
};

// A date as DateText has it; null for 0.
Json DateJson(unsigned long seconds);
