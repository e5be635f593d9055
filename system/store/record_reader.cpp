#include "system/store/record_reader.h"

// As many as a 64 KiB block holds.
static constexpr unsigned int kBlockRecords = 0x10000 / sizeof(DiskDirRec);

RecordReader::RecordReader(std::istream& in)
    : mIn(in), mBlock(new DiskDirRec[kBlockRecords]), mNext(mBlock.get()), mEnd(mBlock.get()) {}

bool RecordReader::ReadBlock() {
    if (!mIn.good())
        return false;
    mIn.std::istream::read(reinterpret_cast<char*>(mBlock.get()),
                           kBlockRecords * sizeof(DiskDirRec));
    mNext = mBlock.get();
    mEnd = mNext + mIn.gcount() / sizeof(DiskDirRec);
    return mNext != mEnd;
}
