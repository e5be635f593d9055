#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/store/mail_folder.h"
#include "tests/support/scratch.h"

// What a run of the tool left: its texts with plain line ends, and its exit code.
struct Ran {
    unsigned long code;
    std::string out;
    std::string err;

    nlohmann::json Json() const { return nlohmann::json::parse(out); }
};

// Runs mailfolder.exe in the current folder. Fails the test, with code 99, when it does not end
// within half a minute: something holds it.
Ran RunTool(const std::string& arguments);
