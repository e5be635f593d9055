#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/fuzz/damage.h"

// What is fed with damaged input: a format is one kind of bytes and everything that reads them.
//
// To add one, append it in the source of its family (or make a new family, with a function here and
// in fuzz.cpp): a name, sound samples with the fields of their bytes, and a function that writes
// the input where it belongs and drives all that reads it. What the function and the library take
// they give back before it returns. Then name the files that may be there afterwards and the texts
// that may be shown, no more than the operations' descriptions call for: everything else is a
// failure.

// What a format's function is given.
struct Input {
    const std::string& bytes;
    Random& random;
    bool cut; // one of the first inputs, which show every operation that reads
};

// What may be shown or reported: any text with `part` in it, and why.
struct AllowedText {
    const char* part;
    const char* why;
};

struct Format {
    std::string name;
    unsigned int shortRun; // inputs of a short run
    Shape shape;
    std::function<void(Input&)> run;
    std::string own = ""; // the file of the current folder that the function writes the input to
    // Of the current folder: files that stand there before each input, with their bytes, and
    // patterns
    // ('*' and '?') of names that may be there or missing afterwards.
    std::map<std::string, std::string> files = {};
    std::vector<std::string> mayAppear = {};
    std::vector<std::string> mayGo = {};
    std::vector<AllowedText> texts = {};
};

void AddStoreFormats(std::vector<Format>& formats);
void AddUserFormats(std::vector<Format>& formats);
void AddPrefFormats(std::vector<Format>& formats);
void AddTextFormats(std::vector<Format>& formats);

// A result that is not as described: a failure of the current input.
void Expect(bool holds, const char* what);

// Reads a text to its end, as whoever it is handed to does.
void ReadText(const char* text);
