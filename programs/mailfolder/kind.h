#pragma once

#include "postrider.h"
#include "programs/mailfolder/path.h"

// What a file is by its bytes, whatever it is called: commands write to nothing that is not theirs.
enum class Kind { DFile, Empty, MessageFile, PrefFile, UserFile, UserList, Text, Other };

// A file that cannot be read is a Failure. Of a large file, slots all over it are looked at.
Kind KindOf(const Path& path);
// "a message file".
const char* Words(Kind kind);

// Whether bytes have the form of a record that names a message file: lengths and numbers are in
// range but for one. Free slots have it too.
bool LooksLikeRecord(const DiskDirRec& record);
bool IsZero(const DiskDirRec& record);

// By its name, "*.EML".
bool IsMessageFileName(const std::wstring& name);
