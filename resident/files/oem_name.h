#pragma once

#include "resident/files/file_spec.h"

// Converts `name` from ANSI into `buffer`, which may be `name`. Empties it, which is nobody's name,
// for a null name and for one that does not fit: a shortened name would be another file's.
void ConvertToOem(const char* name, char (&buffer)[keOemNameSize]);

// A private copy of a name in the OEM code page.
class OemName {
public:
    explicit OemName(const char* name) { ConvertToOem(name, mszName); }
    explicit operator bool() const { return *mszName; }
    const char* Text() const { return mszName; }

private:
    char mszName[keOemNameSize];
};
