#pragma once

#include <string>

// What check finds, and what helps.
struct ProblemKind {
    const char* what;    // a word that scripts can go by
    const char* command; // that mends it; null when none does
    const char* advice;  // why none does, or what to look at first
};

// A kind by its word, which must be one.
const ProblemKind& KindOfProblem(const std::string& what);
