#pragma once

#include "resident/core/rb_string.h"

// The texts behind the pointers that the ticker's functions hand out. Each string is made when it
// is first needed and lives until Done.
struct TickerResults {
    RBString* topic;
    RBString* fileName;
    RBString* inboxPath;
    RBString* sender;
    RBString* userDataPath;

    static void Make(RBString*& result);
    // Makes those that a record call needs.
    void MakeForRecord();
    // What every record call begins with. The inbox path keeps its text, so that it can be opened;
    // the user data path does not.
    void Reset();
    // In its place: the pointer handed out stays valid until Done, and then reads as empty.
    void EmptyUserDataPath();
    void Free();

    static char* TextOf(RBString* result) { return const_cast<char*>(result->Text()); }
};

extern TickerResults tickerResults;
