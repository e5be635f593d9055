#pragma once

#include <string>

// The disk of 1 MB that POSTRIDER_SMALL_DISK names and ./test mounts, for tests that fill it. While
// this lives, a folder on it is the current one; what was left on it is removed before and after.
class SmallDisk {
public:
    static constexpr unsigned int kPage = 4096; // what a file takes the disk's room in
    // The pages that so many bytes take.
    static unsigned int Pages(unsigned int bytes) { return (bytes + kPage - 1) / kPage; }
    // False where none is mounted: then nothing here does anything.
    static bool IsThere();

    SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk();

    // Fills the disk, but for so many free pages. What files have left of their last pages is
    // theirs.
    void Leave(unsigned int pages);
    void Release();

private:
    void Clear();

    std::string mRoot;
    std::string mPrevious;
};
