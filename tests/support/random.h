#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Random choices: the same ones for the same seed.
class Random {
public:
    explicit Random(std::uint32_t seed) : mEngine(seed) {}
    // For the `index`-th thing of a kind.
    Random(std::uint32_t seed, const std::string& kind, std::uint64_t index) {
        std::vector<std::uint32_t> all(kind.begin(), kind.end());
        all.insert(all.end(), {seed, std::uint32_t(index), std::uint32_t(index >> 32)});
        std::seed_seq sequence(all.begin(), all.end());
        mEngine.seed(sequence);
    }

    std::uint32_t Next() { return mEngine(); }
    // From 0 to below `limit`; 0 without one.
    unsigned int Below(unsigned int limit) { return limit ? Next() % limit : 0; }
    bool OneIn(unsigned int n) { return Below(n) == 0; }
    template <class T>
    T Of(const std::vector<T>& choices) {
        return choices[Below(choices.size())];
    }
    // A text of up to `most` of these characters.
    std::string Text(unsigned int most, const std::string& characters) {
        std::string text(Below(most + 1), ' ');
        for (char& c : text)
            c = characters[Below(characters.size())];
        return text;
    }
    // Any bytes.
    std::string Bytes(unsigned int size) {
        std::string bytes(size, ' ');
        for (char& byte : bytes)
            byte = static_cast<char>(Next());
        return bytes;
    }

private:
    std::mt19937 mEngine;
};
