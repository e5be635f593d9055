#include "tests/support/small_disk.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "resident/core/windows_api.h"

static std::string Root() {
    const char* const root = std::getenv("POSTRIDER_SMALL_DISK");
    return root ? root : "";
}

bool SmallDisk::IsThere() {
    ULARGE_INTEGER free, total;
    if (Root().empty() || !GetDiskFreeSpaceExA(Root().c_str(), &free, &total, nullptr))
        return false;
    // What it names is filled: never a disk that others use.
    if (total.QuadPart > 4 << 20)
        throw std::runtime_error("not a small disk: " + Root());
    return true;
}

SmallDisk::SmallDisk() : mRoot(IsThere() ? Root() : "") {
    if (mRoot.empty())
        return;
    mPrevious = std::filesystem::current_path().string();
    Clear();
    std::filesystem::create_directory(mRoot + "\\T");
    std::filesystem::current_path(mRoot + "\\T");
}

SmallDisk::~SmallDisk() {
    if (mRoot.empty())
        return;
    std::filesystem::current_path(mPrevious);
    Clear();
}

void SmallDisk::Clear() {
    for (const auto& entry : std::filesystem::directory_iterator(mRoot))
        std::filesystem::remove_all(entry);
}

void SmallDisk::Leave(unsigned int pages) {
    Release();
    const HANDLE file = CreateFileA((mRoot + "\\FILLER").c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_ALWAYS, 0, nullptr);
    const std::string block(64 * kPage, 'x');
    DWORD written = 0;
    unsigned int size = 0;
    while (WriteFile(file, block.data(), block.size(), &written, nullptr) && written > 0)
        size += written;
    SetFilePointer(file, static_cast<long>(size - pages * kPage), nullptr, FILE_BEGIN);
    const bool cut = pages == 0 || (size >= pages * kPage && SetEndOfFile(file));
    CloseHandle(file);
    if (size == 0 || !cut)
        throw std::runtime_error("the small disk has too little room");
}

void SmallDisk::Release() { DeleteFileA((mRoot + "\\FILLER").c_str()); }
