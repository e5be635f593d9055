#pragma once

#include <optional>
#include <string>

#include "resident/files/file_handle.h"

// Opens a file or a folder for reading, and keeps nobody from anything: writers, renames and
// removals go on.
FileHandle OpenShared(const std::wstring& path, DWORD flags = FILE_FLAG_BACKUP_SEMANTICS);
// Reads as much as there is, up to `size`, and returns that; nothing when reading fails.
std::optional<std::size_t> ReadFileAt(const FileHandle& file, unsigned long long position, void* to,
                                      std::size_t size);
// The same from where the last read ended: the system has less to do for it.
std::optional<std::size_t> ReadFileOn(const FileHandle& file, void* to, std::size_t size);

// Why the last call of the system failed, in words that go on after a name.
std::string LastErrorText();
