#include "system/store/record_reader.h"

#include <utility>

RecordReader::RecordReader(std::istream& in)
    : mIn(in), mPosition(in.good() ? std::streamoff(in.tellg()) : -1),
      mBlock(new DiskDirRec[keMostRecords]), mNext(mBlock.get()), mEnd(mNext) {}

bool RecordReader::ReadBlock() {
    if (std::exchange(mfMoved, false))
        mIn.seekg(mPosition);
    while (mIn.good()) {
        mIn.std::istream::read(reinterpret_cast<char*>(mBlock.get()),
                               mBlockRecords * sizeof(DiskDirRec));
        mNext = mBlock.get();
        mEnd = mNext + mIn.gcount() / sizeof(DiskDirRec);
        if (!mIn.bad() || mBlockRecords == 1) {
            // Without a record's beginning at the file's end, which may grow.
            mPosition += (mEnd - mNext) * sizeof(DiskDirRec);
            return mNext != mEnd;
        }
        // Somewhere in the block is a place that cannot be read: one by one the records end before
        // it.
        mBlockRecords = 1;
        mNext = mEnd = mBlock.get();
        mIn.clear();
        if (!mIn.seekg(mPosition))
            mIn.setstate(std::ios::badbit);
    }
    return false;
}
