#include "system/store/record_reader.h"

// As many as a block of 64 KiB holds.
static constexpr unsigned int kMostRecords = 0x10000 / sizeof(DiskDirRec);

RecordReader::RecordReader(std::istream& in)
    : mIn(in), mBlockRecords(kMostRecords), mBlock(new DiskDirRec[kMostRecords]),
      mNext(mBlock.get()), mEnd(mBlock.get()) {}

bool RecordReader::ReadBlock() {
    while (mIn.good()) {
        const std::istream::pos_type start = mIn.tellg();
        mIn.std::istream::read(reinterpret_cast<char*>(mBlock.get()),
                               mBlockRecords * sizeof(DiskDirRec));
        mNext = mBlock.get();
        mEnd = mNext + mIn.gcount() / sizeof(DiskDirRec);
        if (!mIn.bad() || mBlockRecords == 1)
            return mNext != mEnd;
        // Somewhere in the block is a place that cannot be read: smaller blocks end before it.
        mBlockRecords /= 2;
        mNext = mEnd = mBlock.get();
        mIn.clear();
        if (!mIn.seekg(start))
            mIn.setstate(std::ios::badbit);
    }
    return false;
}
