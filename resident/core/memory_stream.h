#pragma once

#include <streambuf>

// Streams over a block of memory that the caller owns: writing past its end fails the stream, and
// so does reading past what it holds.
class MemoryBuffer : public std::streambuf {
public:
    // For writing into `block`, or for reading what is in it.
    MemoryBuffer(char* block, unsigned int size) {
        setp(block, block + size);
        setg(block, block, block + size);
    }
    unsigned int Written() const { return static_cast<unsigned int>(pptr() - pbase()); }
};
