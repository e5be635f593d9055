#pragma once

// Ends a program that crashes at once, and says where: what was running, the exception, and the
// callers with functions and lines where a module has debug information, on the standard error
// stream.
//
// A crash is an unhandled exception, a trap of the undefined-behaviour checks, a stack overflow, an
// abort, an uncaught C++ exception, or what guarded memory complains of.

// The exit code of a program that crashed; of a complaint of guarded memory: guarded_memory.h.
constexpr int kCrashExitCode = 70;

// To be called once, at the program's start. `running` is called first when the program crashes,
// with the exception in words; it says what was running. It runs where the program crashed: it
// takes no memory of the heap, which may be damaged.
void EndOnCrash(void (*running)(const char* what) = nullptr);

// Ends the program as if this thread had crashed, or, from another one, as if the thread that
// called EndOnCrash had.
[[noreturn]] void Crash(const char* what);

// Writes to the standard error stream, past its buffers.
void Tell(const char* text);
