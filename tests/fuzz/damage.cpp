#include "tests/fuzz/damage.h"

#include <algorithm>

#include "tests/support/record_bytes.h"

static constexpr unsigned int kOverlong = 10000;

SampleMaker& SampleMaker::PutStreamed(const std::string& text) {
    return PutField(Streamed(text).substr(0, 4)).Put(text);
}

SampleMaker& SampleMaker::PutRecords(const std::string& records, unsigned int size,
                                     const std::vector<Field>& fields) {
    for (unsigned int at = 0; at < records.size(); at += size)
        for (const Field& field : fields)
            mSample.fields.push_back(
                {unsigned(mSample.bytes.size()) + at + field.offset, field.size});
    return Put(records);
}

namespace {

// The values around which readers go wrong.
std::string FieldValue(std::string old, Random& random) {
    static const std::vector<unsigned int> edges = {
        0,   1,    2,    27,   28,   31,   32,    33,   34,   72,  73,  74,     110,    111,
        112, 0x7F, 0x80, 0xFD, 0xFE, 0xFF, 0x100, 1500, 8192, 316, 632, 0x7FFF, 0x8000, 0xFFFE};
    switch (random.Below(5)) {
    case 0:
        for (char& byte : old)
            byte = static_cast<char>(random.Next());
        return old;
    case 1:
        return std::string(old.size(), random.Of(std::vector<char>{'\0', '\x7F', '\x80', '\xFF'}));
    case 2:
        if (!old.empty())
            old[random.OneIn(2) ? 0 : old.size() - 1] ^= static_cast<char>(0x80);
        return old;
    case 3:
        if (!old.empty())
            old[random.OneIn(2) ? 0 : old.size() - 1] += random.OneIn(2) ? 1 : -1;
        return old;
    default: {
        // In either byte order.
        unsigned int value = random.Of(edges);
        const bool backwards = random.OneIn(2);
        for (unsigned int i = 0; i < old.size(); ++i, value >>= 8)
            old[backwards ? old.size() - 1 - i : i] = static_cast<char>(value);
        return old;
    }
    }
}

// A stretch of the bytes: a record, a line, or any.
struct Stretch {
    unsigned int from;
    unsigned int size;
};

Stretch AnyStretch(const std::string& bytes, const Shape& shape, Random& random) {
    const unsigned int size = bytes.size();
    unsigned int from = random.Below(size + 1);
    if (random.OneIn(4))
        return {from, std::min(size - from, random.Below(random.OneIn(2) ? 4 : 64))};
    if (shape.unit) {
        if (from >= shape.first)
            from -= (from - shape.first) % shape.unit;
        return {from, std::min(size - from, shape.unit)};
    }
    const std::size_t before = from ? bytes.rfind(shape.separator, from - 1) : bytes.npos;
    from = before == bytes.npos ? 0 : before + 1;
    const std::size_t end = bytes.find(shape.separator, from);
    return {from, unsigned(end == bytes.npos ? size : end + 1) - from};
}

std::string Of(const std::string& bytes, Stretch stretch) {
    return bytes.substr(stretch.from, stretch.size);
}

void MoveStretches(std::string& bytes, const Shape& shape, Random& random) {
    const Stretch stretch = AnyStretch(bytes, shape, random);
    const std::string& other = random.Of(shape.samples).bytes;
    switch (random.Below(5)) {
    case 0: // removed
        bytes.erase(stretch.from, stretch.size);
        break;
    case 1: // repeated
        for (unsigned int times = random.OneIn(8) ? 20 : 1; times--;)
            bytes.insert(stretch.from, Of(bytes, stretch));
        break;
    case 2: { // swapped with another
        const std::string moved = Of(bytes, stretch);
        bytes.erase(stretch.from, stretch.size);
        bytes.insert(AnyStretch(bytes, shape, random).from, moved);
        break;
    }
    case 3: // one of another sample put in
        bytes.insert(stretch.from, Of(other, AnyStretch(other, shape, random)));
        break;
    case 4: // goes on as another sample does
        bytes.erase(stretch.from);
        bytes += other.substr(std::min<std::size_t>(stretch.from, other.size()));
        break;
    }
}

void Damage(std::string& bytes, const Sample& sample, const Shape& shape, Random& random) {
    const unsigned int place = random.Below(bytes.size() + 1);
    const unsigned int size = std::min<unsigned int>(bytes.size() - place, 1 + random.Below(40));
    switch (random.Below(10)) {
    case 0:
    case 1:
    case 2:
        if (!sample.fields.empty()) {
            const Field field = random.Of(sample.fields);
            if (field.offset + field.size <= bytes.size()) {
                bytes.replace(field.offset, field.size,
                              FieldValue(bytes.substr(field.offset, field.size), random));
                break;
            }
        }
        [[fallthrough]];
    case 3:
        MoveStretches(bytes, shape, random);
        break;
    case 4:
        bytes.replace(place, size, FieldValue(bytes.substr(place, size), random));
        break;
    case 5:
        if (place < bytes.size())
            bytes[place] = static_cast<char>(bytes[place] ^ 1 << random.Below(8));
        break;
    case 6:
        if (!shape.words.empty()) {
            const std::string& word = random.Of(shape.words);
            // Over what is there, or between; in records often with a length byte.
            const std::string put = shape.unit && random.OneIn(2) ? Pascal(word) : word;
            const unsigned int at =
                !sample.fields.empty() && random.OneIn(2)
                    ? std::min<unsigned int>(random.Of(sample.fields).offset, bytes.size())
                    : place;
            const bool over = shape.unit || random.OneIn(2);
            bytes.replace(at, over ? std::min<unsigned int>(put.size(), bytes.size() - at) : 0,
                          put);
            break;
        }
        [[fallthrough]];
    case 7:
        bytes.insert(place, AnyText(random, shape.words));
        break;
    case 8:
        bytes.resize(place);
        break;
    case 9:
        if (random.OneIn(8))
            bytes.insert(place, kOverlong,
                         random.OneIn(2) ? 'x' : static_cast<char>(random.Next()));
        else if (random.OneIn(2))
            bytes += random.OneIn(2) ? '\x81' : '\xE0'; // the first half of a character
        else
            bytes += RandomBytes(random.Next(), random.Below(400));
        break;
    }
}

} // namespace

bool IsCut(const Shape& shape, std::uint64_t index) {
    return index < shape.samples.front().bytes.size();
}

std::string MakeInput(const Shape& shape, std::uint64_t index, Random& random) {
    if (IsCut(shape, index)) {
        const std::string& whole = shape.samples.front().bytes;
        return (shape.scramble ? shape.scramble(whole) : whole)
            .substr(0, static_cast<std::size_t>(index));
    }
    const Sample& sample = random.Of(shape.samples);
    std::string bytes = sample.bytes;
    // Half of the scrambled ones are damaged where their texts can still be read.
    const bool plain = shape.scramble && random.OneIn(2);
    if (shape.scramble && !plain)
        bytes = shape.scramble(bytes);
    if (random.OneIn(50))
        bytes = RandomBytes(random.Next(), random.Below(3000));
    unsigned int times = 1;
    while (times < 12 && random.OneIn(2))
        ++times;
    for (; times; --times)
        Damage(bytes, sample, shape, random);
    return plain ? shape.scramble(bytes) : bytes;
}

std::string AnyText(Random& random, const std::vector<std::string>& words) {
    static const std::string kSpecial = " !@#$%&*()-+={}[]|:;\"`<>,.?/\n\r\t\\'_0123456789";
    std::string text;
    const unsigned int pieces = random.Below(8);
    for (unsigned int i = 0; i < pieces; ++i) {
        switch (random.Below(6)) {
        case 0:
            if (!words.empty()) {
                text += random.Of(words);
                break;
            }
            [[fallthrough]];
        case 1:
            for (unsigned int n = random.Below(12); n--;)
                text += static_cast<char>('a' + random.Below(26));
            break;
        case 2: // delimiters and what else is special
            text += kSpecial[random.Below(kSpecial.size())];
            break;
        case 3: // high characters, and halves of two-byte ones
            text += static_cast<char>(0x80 + random.Below(0x80));
            break;
        case 4:
            text += static_cast<char>(1 + random.Below(0xFF));
            break;
        case 5:
            text += std::string(random.OneIn(300) ? kOverlong : random.Below(40),
                                "xX \\.|:\x81\xE9"[random.Below(9)]);
            break;
        }
    }
    return text;
}
