#include "programs/mailfolder/file_writer.h"

#include "programs/mailfolder/failure.h"

static constexpr std::size_t kBuffer = 0x40000;

FileWriter::FileWriter(FileHandle file, std::string failed)
    : mFile(std::move(file)), mFailed(std::move(failed)) {
    mBuffer.reserve(kBuffer);
}

void FileWriter::Need(bool done) const {
    if (!done)
        Fail("{}: {}.", mFailed, LastErrorText());
}

void FileWriter::Write(std::string_view bytes) {
    if (mBuffer.size() + bytes.size() > kBuffer)
        Flush();
    mBuffer += bytes;
    if (mBuffer.size() > kBuffer)
        Flush();
}

void FileWriter::Flush() {
    DWORD written = 0;
    Need(WriteFile(mFile.Get(), mBuffer.data(), static_cast<DWORD>(mBuffer.size()), &written,
                   nullptr));
    if (written != mBuffer.size())
        SetLastError(ERROR_DISK_FULL);
    Need(written == mBuffer.size());
    mWritten += written;
    mBuffer.clear();
}

void FileWriter::CutTo(unsigned long long size) {
    if (size >= mWritten) {
        mBuffer.resize(static_cast<std::size_t>(size - mWritten));
        return;
    }
    mBuffer.clear();
    LARGE_INTEGER end;
    end.QuadPart = static_cast<long long>(size);
    Need(SetFilePointerEx(mFile.Get(), end, nullptr, FILE_BEGIN) && SetEndOfFile(mFile.Get()));
    mWritten = size;
}

void FileWriter::Finish() {
    Flush();
    Need(FlushFileBuffers(mFile.Get()));
    mFile = FileHandle();
}
