#include "resident/core/block_cache.h"

#include <atomic>
#include <new>

namespace {

// What stands before each block. Eight bytes keep the block aligned as the heap aligns.
struct alignas(8) BlockHeader {
    unsigned int sizeClass;
};

constexpr std::size_t kSizes[] = {24, 56, 120, 264};
constexpr unsigned int kClasses = sizeof kSizes / sizeof kSizes[0];
constexpr unsigned int kDepth = 64; // blocks kept of each size

struct Shelf {
    BlockHeader* blocks[kDepth];
    unsigned int count;
};

Shelf shelves[kClasses];
std::atomic_flag busy;

// Holds the cache, or finds it held: it never waits.
class Turn {
public:
    Turn() : mfOurs(!busy.test_and_set(std::memory_order_acquire)) {}
    ~Turn() {
        if (mfOurs)
            busy.clear(std::memory_order_release);
    }
    explicit operator bool() const { return mfOurs; }

private:
    bool mfOurs;
};

BlockHeader* FromShelf(unsigned int sizeClass) {
    const Turn turn;
    Shelf& shelf = shelves[sizeClass];
    return turn && shelf.count ? shelf.blocks[--shelf.count] : nullptr;
}

bool ToShelf(BlockHeader* header) {
    const Turn turn;
    Shelf& shelf = shelves[header->sizeClass];
    if (!turn || shelf.count == kDepth)
        return false;
    shelf.blocks[shelf.count++] = header;
    return true;
}

} // namespace

void* TakeBlock(std::size_t size) {
    unsigned int sizeClass = 0;
    while (sizeClass < kClasses && size > kSizes[sizeClass])
        ++sizeClass;
    BlockHeader* header = nullptr;
    if (sizeClass < kClasses) {
        header = FromShelf(sizeClass);
        size = kSizes[sizeClass];
    }
    if (!header) {
        if (size > SIZE_MAX - sizeof(BlockHeader))
            size = SIZE_MAX - sizeof(BlockHeader);
        header = static_cast<BlockHeader*>(::operator new(sizeof(BlockHeader) + size));
        header->sizeClass = sizeClass;
    }
    return header + 1;
}

void GiveBlock(void* block) {
    BlockHeader* header = static_cast<BlockHeader*>(block) - 1;
    if (header->sizeClass >= kClasses || !ToShelf(header))
        ::operator delete(header);
}
