#pragma once

#include <string>
#include <string_view>

#include "programs/mailfolder/shared_read.h"

// Writes a file from its start, in large pieces. Failures are Failures: `failed` is how their
// words begin, "Cannot write X".
class FileWriter {
public:
    FileWriter(FileHandle file, std::string failed);

    void Write(std::string_view bytes);
    unsigned long long Size() const { return mWritten + mBuffer.size(); }
    // Takes back what is behind that size.
    void CutTo(unsigned long long size);
    // Sees all bytes on the disk, and closes the file.
    void Finish();

private:
    void Flush();
    void Need(bool done) const;

    FileHandle mFile;
    std::string mFailed;
    std::string mBuffer;
    unsigned long long mWritten = 0;
};
