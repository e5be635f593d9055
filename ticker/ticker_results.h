#pragma once

#include <cstring>

#include "resident/core/rb_string.h"

// A text of a record, behind a pointer that the ticker's functions hand out. It has room for the
// longest one from the start and is refilled in place, since nobody shares it: a walk makes no
// decision about memory, and the pointer stays the same until Done.
class ResultText : public RBString {
public:
    ResultText() {
        AllocMem(kRoom + 2);
        Empty();
    }

    void Empty() {
        *WritableText() = 0;
        SetLength(0);
    }
    // A Pascal string in a field of a record that was clamped; what stands behind it comes along.
    template <unsigned int Size>
    void Fill(const unsigned char (&field)[Size]) {
        static_assert(Size <= kRoom);
        char* const text = WritableText();
        std::memcpy(text, field + 1, Size - 1);
        text[field[0]] = 0;
        SetLength(field[0]);
    }
    // What `put` writes, with its NUL, to the address that it is given; it returns the length.
    template <class Put>
    void FillBy(Put put) {
        SetLength(put(WritableText()));
    }

private:
    static constexpr unsigned int kRoom = 80;
};

// The texts behind the pointers that the ticker's functions hand out. Each string is made when it
// is first needed and lives until Done.
struct TickerResults {
    ResultText* topic;
    ResultText* fileName;
    RBString* inboxPath;
    ResultText* sender;
    RBString* userDataPath;

    template <class Text>
    static void Make(Text*& result) {
        if (!result)
            result = new Text;
    }
    // What every record call begins with. The inbox path keeps its text, so that it can be opened;
    // the user data path does not.
    void Reset();
    // In its place: the pointer handed out stays valid until Done, and then reads as empty.
    void EmptyUserDataPath() {
        if (userDataPath->Length())
            userDataPath->Truncate(0);
    }
    void Free();

    static char* TextOf(RBString* result) { return const_cast<char*>(result->Text()); }
};

extern TickerResults tickerResults;
