#pragma once

#include <string_view>

// Stands between this process and the system wherever files are opened or changed: kernelbase.dll
// has all of that from ntdll.dll, whichever library asks.

struct FileCall {
    const char* what; // "open", "make", "write", "rename", "remove", "cut", "set", "flush"
    // Of what is opened, and the new one of what is renamed, as the system has it; else empty.
    std::wstring_view path;
    bool changes; // or is opened to change something
};

// `before` is called before each of them and `after` behind it, on the caller's thread. They take
// no memory of the heap. Either may be null. Once for the life of the process.
void StandBetweenFiles(void (*before)(const FileCall&), void (*after)(const FileCall&));
