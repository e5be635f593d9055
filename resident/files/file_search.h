#pragma once

#include "resident/core/jx_api.h"

// DOS attributes of files.
enum {
    keAttrReadOnly = 0x01,
    keAttrHidden = 0x02,
    keAttrSystem = 0x04,
    keAttrVolume = 0x08,
    keAttrDirectory = 0x10,
    keAttrArchive = 0x20
};

// One entry of a folder, as DOS told it. The time is that of the last write, in UTC.
struct ffblk {
    long ff_reserved;
    long ff_fsize; // the low 32 bits
    unsigned long ff_attrib;
    unsigned short ff_ftime; // 5 bits hour, 6 minute, 5 two seconds
    unsigned short ff_fdate; // 7 bits year from 1980, 4 month, 5 day
    char ff_name[256];
};

// One search through a folder by the Windows find functions. Never gives "." and "..".
// The attributes do not filter: callers judge what is found.
class JX_API FileSearch {
public:
    FileSearch();
    FileSearch(const FileSearch&) = delete;
    FileSearch& operator=(const FileSearch&) = delete;
    ~FileSearch();

    // `name` goes to FindFirstFileA as it is. Return 1 with `record` filled, or 0.
    int First(const char* name, ffblk& record, int attributes);
    int Next(ffblk& record);
    // Ends the search; the destructor does too.
    void Close();

private:
    struct State;

    State* mpState;
};
