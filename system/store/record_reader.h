#pragma once

#include <istream>
#include <memory>

#include "system/store/directory_record.h"

// Reads a stream's records one after another, out of large blocks: a scan costs what the disk
// costs. The stream runs ahead of the record handed out; whoever goes on using it seeks first.
class RecordReader {
public:
    // Starts at the stream's position. The stream must outlive the reader.
    explicit RecordReader(std::istream& in);

    // The next whole record, as it stands in the file, or null: at the end, also inside a record,
    // the stream's state has eof and fail, at one that cannot be read it has bad. Valid, and free
    // to be changed, until the next call.
    DiskDirRec* Next() {
        if (mNext == mEnd && !ReadBlock())
            return nullptr;
        return mNext++;
    }

    // To be called when the stream was moved, or written to: the next block is then read from where
    // the last one ended.
    void StreamMoved() { mfMoved = true; }

private:
    enum { keMostRecords = 0x20000 / sizeof(DiskDirRec) }; // what a block of 128 KiB holds

    bool ReadBlock();

    std::istream& mIn;
    std::streamoff mPosition; // of the next block
    bool mfMoved = false;
    unsigned int mBlockRecords = keMostRecords; // read at once
    std::unique_ptr<DiskDirRec[]> mBlock;
    DiskDirRec* mNext;
    DiskDirRec* mEnd;
};
