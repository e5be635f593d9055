#pragma once

#include <string>
#include <vector>

#include "programs/mailfolder/folder.h"

// What single records are worth, and how damaged ones are mended.

// One field that readers bring into range, or show what they should not.
struct Fault {
    const char* what; // a word that scripts can go by
    std::string text;
    std::string lost;
};

// The faults of a used record's fields; what makes it none that readers list is told as well.
std::vector<Fault> FaultsOf(const DiskDirRec& record);
inline bool IsSound(const DiskDirRec& record) { return FaultsOf(record).empty(); }

// What tells a message from others: its topic, date and sender, as a number. Records that are
// mended, marked or moved keep it.
unsigned long long Fingerprint(const DiskDirRec& record);
// The sender's name in the usual order, "Anna Smith", in ANSI.
std::string ShownSender(const DirectoryRecord& record);
// Whether it tells of no message at all, whatever file it names.
bool IsBlank(const DiskDirRec& record);

// The record with all fields in range, and blanks for control characters.
DiskDirRec Mended(const DiskDirRec& record);

// The record that a message file begins with.
struct OwnRecord {
    enum State { Sound, Damaged, Garbage, Zero, Short, Link, Unreadable };

    bool IsKnown() const { return state == Sound || state == Damaged; }

    State state = Unreadable;
    DiskDirRec record = {}; // of a sound or damaged one, with the file's name and used
};
OwnRecord ReadOwnRecord(const Path& message, const std::string& recordName);

// A record for a message file without a readable one: its topic says so.
DiskDirRec RecordThatSaysSo(const FileEntry& entry, const std::string& recordName);
