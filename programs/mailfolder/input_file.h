#pragma once

#include <string>

#include "programs/mailfolder/path.h"
#include "programs/mailfolder/shared_read.h"

// A file opened for reading alone, which others may read, write and rename meanwhile. Failures,
// also to open it, are Failures.
class InputFile {
public:
    explicit InputFile(const Path& path);

    // When it was opened.
    unsigned long long Size() const { return mSize; }
    // Returns how many bytes there were; fewer than asked for at the end alone.
    std::size_t ReadAt(unsigned long long position, void* to, std::size_t size) const;
    // The bytes from there on, `size` at most.
    std::string BytesAt(unsigned long long position, std::size_t size) const;

private:
    Path mPath;
    FileHandle mFile;
    unsigned long long mSize = 0;
};

// Fails, in plain words, when the file cannot be opened for reading.
void NeedReadable(const Path& path);
