#pragma once

#include <string>
#include <vector>

#include "programs/mailfolder/kind.h"
#include "programs/mailfolder/path.h"

// What an interrupted rewriting of a file leaves beside it: ".TMP" files, a ".BAK" without the file
// itself; and what takes its place best.

// One file that may be, or have been, the file in question. All of it has been read.
struct Candidate {
    enum Role { Target, Backup, Temporary, WindowsCopy };

    Path path;
    Role role;
    unsigned long long written; // a FILETIME
    bool whole = false;         // no record of it is damaged or cut
    unsigned long long records = 0;
    unsigned long long covered = 0; // message files of the folder that it lists
    std::string Words() const;
};

struct Leftovers {
    enum State {
        None,
        Missing,    // the file itself is not there
        Emptied,    // it lists nothing, or is not whole; the backup has what is missing
        Unfinished, // an interrupted rewriting left a temporary file beside it
        Copied      // an interrupted update left the old file in the Windows directory
    };

    State state = None;
    Path target;
    Kind kind = Kind::DFile;
    std::vector<Candidate> candidates; // the best first
    std::string why;                   // the first is the best

    // In words that are a sentence.
    std::string Words() const;
};

// `target` need not be there.
Leftovers FindLeftovers(const Path& target);
// Fails, and names the command that helps, when an interrupted rewriting left something.
void NeedNoLeftovers(const Path& target);

// How many message files the backup lists that the file itself does not.
unsigned long long OnlyInBackup(const Path& target);
