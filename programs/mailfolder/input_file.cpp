#include "programs/mailfolder/input_file.h"

#include "programs/console/text.h"
#include "programs/mailfolder/tool.h"

void NeedReadable(const Path& path) {
    const std::string reason =
        path.What() == Path::keDevice ? "it is a device" : WhyUnreadable(path.Full());
    if (!reason.empty())
        Fail("Cannot read {}: {}.", path.Shown(), reason);
}

InputFile::InputFile(const Path& path) : mPath(path) {
    NeedReadable(path);
    mFile = WinHandle(CreateFileW(path.Full().c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    LARGE_INTEGER size;
    if (!mFile || GetFileType(mFile.Get()) != FILE_TYPE_DISK || !GetFileSizeEx(mFile.Get(), &size))
        Fail("Cannot read {}: opening it failed.", path.Shown());
    mSize = static_cast<unsigned long long>(size.QuadPart);
}

std::size_t InputFile::ReadAt(unsigned long long position, void* to, std::size_t size) const {
    std::size_t done = 0;
    while (done < size) {
        OVERLAPPED at = {};
        at.Offset = static_cast<DWORD>(position + done);
        at.OffsetHigh = static_cast<DWORD>((position + done) >> 32);
        DWORD count = 0;
        if (!ReadFile(mFile.Get(), static_cast<char*>(to) + done, static_cast<DWORD>(size - done),
                      &count, &at) &&
            GetLastError() != ERROR_HANDLE_EOF)
            Fail("Cannot read {} at byte {}.", mPath.Shown(), position + done);
        if (count == 0)
            break;
        done += count;
    }
    return done;
}

std::string InputFile::BytesAt(unsigned long long position, std::size_t size) const {
    std::string bytes(size, '\0');
    bytes.resize(ReadAt(position, bytes.data(), size));
    return bytes;
}
