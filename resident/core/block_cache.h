#pragma once

#include <cstddef>
#include <cstring>

// Small blocks for string texts and representations, kept for the next taker instead of going back
// to the heap: a string changes its text by taking a block of the new size and giving up the old
// one, and the run-time's heap costs more than the change itself.
//
// Safe on any thread: the cache serves the first thread that uses it, all others the heap. Blocks
// may be given up on another thread than they were taken on. Never null: allocation failures are
// the process's allocation-failure handler's.
void* TakeBlock(std::size_t size);
void GiveBlock(void* block);

// What stands before each block. Eight bytes keep the block aligned as the heap aligns.
struct alignas(8) BlockHeader {
    unsigned int smallest; // the sizes that the block is taken for
    unsigned int largest;
};

// Whether `block` is the one that giving it up and taking `size` bytes would bring. Copies the
// header: a checking heap hands out blocks as unaligned as their size.
inline bool IsBlockFor(const void* block, std::size_t size) {
    BlockHeader header;
    std::memcpy(&header, static_cast<const char*>(block) - sizeof header, sizeof header);
    return size >= header.smallest && size <= header.largest;
}
