#include "programs/mailfolder/input_file.h"

#include "programs/console/text.h"
#include "programs/mailfolder/tool.h"

void NeedReadable(const Path& path) {
    const std::string reason = path.IsDevice()                  ? "it is a device"
                               : path.What() == Path::keSpecial ? "it is no plain file"
                                                                : WhyUnreadable(path.Full());
    if (!reason.empty())
        Fail("Cannot read {}: {}.", path.Shown(), reason);
}

InputFile::InputFile(const Path& path) : mPath(path) {
    if (!path.IsDevice())
        mFile = OpenShared(path.Full(), FILE_FLAG_SEQUENTIAL_SCAN);
    LARGE_INTEGER size;
    if (!mFile || GetFileType(mFile.Get()) != FILE_TYPE_DISK ||
        !GetFileSizeEx(mFile.Get(), &size)) {
        NeedReadable(path);
        Fail("Cannot read {}: opening it failed.", path.Shown());
    }
    mSize = static_cast<unsigned long long>(size.QuadPart);
}

std::size_t InputFile::ReadAt(unsigned long long position, void* to, std::size_t size) const {
    const auto read = ReadFileAt(mFile, position, to, size);
    if (!read)
        Fail("Cannot read {} at byte {}: {}.", mPath.Shown(), position, LastErrorText());
    return *read;
}

std::string InputFile::BytesAt(unsigned long long position, std::size_t size) const {
    std::string bytes(size, '\0');
    bytes.resize(ReadAt(position, bytes.data(), size));
    return bytes;
}
