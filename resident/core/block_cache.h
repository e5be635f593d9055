#pragma once

#include <cstddef>

// Small blocks for string texts and representations, kept for the next taker instead of going back
// to the heap: a string changes its text by taking a block of the new size and giving up the old
// one, and the run-time's heap costs more than the change itself.
//
// Safe on any thread: the cache serves the first thread that uses it, all others the heap. Blocks
// may be given up on another thread than they were taken on. Never null: allocation failures are
// the process's allocation-failure handler's.
void* TakeBlock(std::size_t size);
void GiveBlock(void* block);
