#pragma once

// A checking heap for the programs of build/checked/guarded. Loaded before their first allocation,
// it takes the place of malloc and free in every module that lies beside it (the C++ run-time's
// operators new and delete come down to these):
//
//   each block ends where an inaccessible page begins, or, with POSTRIDER_GUARD=before in the
//   environment, begins where one ends; the few bytes between the block's other end and its page's
//   are looked at when it is freed;
//   a freed block stays inaccessible until tens of thousands of others have been freed;
//   new memory holds the byte that POSTRIDER_FILL says (two hexadecimal digits; CD without it).
//
// An access outside a block, a block freed twice and one that was never allocated are told on the
// standard error stream; then the exception kGuardComplaint is raised, whose argument points to the
// CONTEXT of the access. It ends the process, and is its exit code.
constexpr unsigned long kGuardComplaint = 0xE0475244;

#ifdef GUARDED_MEMORY_EXPORTS
#define GUARD_API extern "C" __declspec(dllexport)
#else
#define GUARD_API extern "C" __declspec(dllimport)
#endif

// Blocks that are allocated and not freed.
GUARD_API unsigned long GuardedBlocks();
// Blocks that had to come from the ordinary heap, because there was no room left for guarded ones.
GUARD_API unsigned long UnguardedBlocks();
// The byte that new memory holds from now on.
GUARD_API void FillNewMemory(int byte);
