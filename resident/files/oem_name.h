#pragma once

#include "resident/files/file_spec.h"

// Converts `name` from ANSI into `buffer`, which may be `name`. Returns false, with an empty
// buffer, for a null name and for one that does not fit: a shortened name would be another file's.
bool ConvertToOem(const char* name, char (&buffer)[keOemNameSize]);

// A private copy of a name in the OEM code page.
class OemName {
public:
    explicit OemName(const char* name) : mfFits(ConvertToOem(name, mszName)) {}
    explicit operator bool() const { return mfFits; }
    const char* Text() const { return mszName; }

private:
    char mszName[keOemNameSize];
    bool mfFits;
};
