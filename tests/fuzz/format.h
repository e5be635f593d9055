#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

// What is fed with damaged input: a format is one kind of bytes and everything that reads them.
//
// To add one, append it in the source of its family (or make a new family, with a function here and
// in fuzz.cpp): a name, words that mean something to its readers, and a function that writes the
// input where it belongs and drives one operation that reads it, or a few; the input itself chooses
// which. What the function and the library take they give back before it returns. Then name the
// files that may be there afterwards and the texts that may be shown, no more than the operations'
// descriptions call for: everything else is a failure. At last put a sound sample into corpus/, as
// NAME-sound.bin: sixteen bytes of choices, then the bytes.

class Input {
public:
    static constexpr unsigned int keChoices = 16;

    explicit Input(const std::string& whole);

    std::string bytes;

    // Choices, which the first bytes of the whole input make, over and over again.
    unsigned int Number();
    // From 0 to below `limit`; 0 without one.
    unsigned int Below(unsigned int limit);
    bool OneIn(unsigned int n) { return Below(n) == 0; }
    template <class T>
    T Of(const std::vector<T>& choices) {
        return choices[Below(choices.size())];
    }
    // Does one of these.
    template <class... Things>
    void DoOne(Things... things) {
        const unsigned int chosen = Below(sizeof...(things));
        unsigned int i = 0;
        ((i++ == chosen ? things() : void()), ...);
    }
    // A piece of the input as a text for another argument; overlong now and then.
    std::string Text();

private:
    unsigned char Choice() { return static_cast<unsigned char>(mChoices[mNext++ % keChoices]); }

    std::string mChoices;
    unsigned int mNext = 0;
};

// What may be shown or reported: any text with `part` in it, and why.
struct AllowedText {
    const char* part;
    const char* why;
};

struct Format {
    std::string name;
    std::function<void(Input&)> run;
    // Bytes that mean something to a reader, and the size of records that are put in, left out and
    // exchanged as one.
    std::vector<std::string> words = {};
    unsigned int unit = 0;
    std::string own = ""; // the file of the current folder that the function writes the input to
    // Of the current folder: files that stand there before each input, with their bytes ("folder"
    // for a folder), and patterns ('*' and '?') of names that may be there or missing afterwards.
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
