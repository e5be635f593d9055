#include "tests/fuzz/damage.h"

#include <algorithm>

namespace {

constexpr unsigned int kLongest = 40000;

// The numbers around which readers go wrong, in either byte order.
std::string Number(unsigned int size, Random& random) {
    static const std::vector<unsigned int> edges = {
        0,   1,    2,      31,     32,     33,     34,         72,         73,
        111, 112,  114,    0x7F,   0x80,   0xFD,   0xFE,       0xFF,       0x100,
        316, 1500, 0x7FFF, 0x8000, 0xFFFE, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    unsigned int value = random.OneIn(3) ? random.Next() : random.Of(edges);
    std::string number(size, '\0');
    for (char& byte : number) {
        byte = static_cast<char>(value);
        value >>= 8;
    }
    if (random.OneIn(2))
        std::reverse(number.begin(), number.end());
    return number;
}

// From where to where: a record, a line, or anything.
std::string::size_type Piece(const std::string& bytes, unsigned int unit, Random& random,
                             std::string::size_type& size) {
    std::string::size_type from = random.Below(bytes.size() + 1);
    size = random.OneIn(2) ? random.Below(8) : random.Below(random.OneIn(4) ? 2000 : 80);
    if (unit && random.OneIn(2)) {
        from -= from % unit;
        size = unit;
    } else if (random.OneIn(3)) {
        const auto line = from ? bytes.rfind('\n', from - 1) : bytes.npos;
        from = line == bytes.npos ? 0 : line + 1;
        const auto end = bytes.find('\n', from);
        size = (end == bytes.npos ? bytes.size() : end + 1) - from;
    }
    size = std::min(size, bytes.size() - from);
    return from;
}

} // namespace

void Damage(std::string& bytes, const std::string& other, const std::vector<std::string>& words,
            unsigned int unit, Random& random) {
    const std::string::size_type place = random.Below(bytes.size() + 1);
    std::string::size_type size, otherSize;
    const auto put = [&](const std::string& what, bool over) {
        bytes.replace(place, over ? what.size() : 0, what);
    };
    switch (random.Below(11)) {
    case 0:
        if (place < bytes.size())
            bytes[place] = static_cast<char>(bytes[place] ^ 1 << random.Below(8));
        break;
    case 1:
        if (place < bytes.size())
            bytes[place] = static_cast<char>(bytes[place] + (random.OneIn(2) ? 1 : -1));
        break;
    case 2:
    case 3:
        put(Number(1 << random.Below(3), random), true);
        break;
    case 4:
        bytes.erase(Piece(bytes, unit, random, size), size);
        break;
    case 5: {
        const auto from = Piece(bytes, unit, random, size);
        const std::string piece = bytes.substr(from, size);
        for (unsigned int times = random.OneIn(8) ? 20 : 1; times--;)
            bytes.insert(from, piece);
        break;
    }
    case 6:   // somewhere else
    case 7: { // from another input
        const std::string source = random.OneIn(2) ? bytes : other;
        const auto from = Piece(source, unit, random, otherSize);
        auto to = Piece(bytes, unit, random, size);
        bytes.replace(to, random.OneIn(2) ? 0 : otherSize, source, from, otherSize);
        break;
    }
    case 8: // in records often with a length byte
        if (!words.empty()) {
            const std::string& word = random.Of(words);
            put(random.OneIn(2) ? word : static_cast<char>(word.size()) + word,
                unit || random.OneIn(2));
            break;
        }
        [[fallthrough]];
    case 9:
        put(random.Bytes(random.Below(12)), random.OneIn(2));
        break;
    case 10:
        if (random.OneIn(2))
            bytes.resize(place);
        else
            put(std::string(random.OneIn(8) ? 10000 : random.Below(300),
                            random.OneIn(2) ? 'x' : static_cast<char>(random.Next())),
                random.OneIn(2));
        break;
    }
    if (bytes.size() > kLongest)
        bytes.resize(kLongest);
}
