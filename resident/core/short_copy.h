#pragma once

#include <cstdint>
#include <cstring>

// Copies `size` bytes between places that do not overlap; returns the end of the copy. For texts of
// a few words: it is done before a call into the run-time would have begun.
__attribute__((always_inline)) inline char* CopyShort(char* to, const char* from,
                                                      unsigned int size) {
    using Word = std::uint32_t;
    const auto copyWord = [](char* target, const char* source) {
        Word word;
        std::memcpy(&word, source, sizeof word);
        std::memcpy(target, &word, sizeof word);
        // Keeps the compiler from making a call of the loop after all.
        asm volatile("" ::: "memory");
    };
    char* const end = to + size;
    if (size >= sizeof(Word)) {
        const char* const last = from + size - sizeof(Word);
        for (; from < last; from += sizeof(Word), to += sizeof(Word))
            copyWord(to, from);
        // The last word may overlap the one before.
        copyWord(end - sizeof(Word), last);
    } else {
        while (to != end)
            *to++ = *from++;
    }
    return end;
}
