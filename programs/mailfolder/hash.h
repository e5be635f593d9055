#pragma once

#include <string_view>
#include <type_traits>

// FNV-1a in 64 bits: stands for texts that would take too much memory.
class Hash {
public:
    template <class Char>
    Hash& Add(std::basic_string_view<Char> text) {
        for (const Char c : text)
            Add(static_cast<unsigned int>(static_cast<std::make_unsigned_t<Char>>(c)));
        return *this;
    }
    Hash& Add(unsigned int unit) {
        mValue = (mValue ^ unit) * 0x100000001B3u;
        return *this;
    }
    unsigned long long Value() const { return mValue; }

private:
    unsigned long long mValue = 0xCBF29CE484222325u;
};
