#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/random.h"

// Sound inputs, and what damages them.
//
// An input is a function of seed, format and index alone. The first inputs of a format are its
// first sample cut at each of its bytes; the others are damaged at random, once or several times
// over.

// Bytes whose value decides how others are read: a length, a count, an offset, a mark.
struct Field {
    unsigned int offset;
    unsigned int size;
};

struct Sample {
    std::string bytes;
    std::vector<Field> fields;
};

// Puts a sample together and notes its fields on the way.
class SampleMaker {
public:
    SampleMaker& Put(const std::string& bytes) {
        mSample.bytes += bytes;
        return *this;
    }
    SampleMaker& PutField(const std::string& bytes) {
        mSample.fields.push_back({unsigned(mSample.bytes.size()), unsigned(bytes.size())});
        return Put(bytes);
    }
    SampleMaker& PutStreamed(const std::string& text); // a string as streams hold it
    // Records of `size` bytes, each with these fields.
    SampleMaker& PutRecords(const std::string& records, unsigned int size,
                            const std::vector<Field>& fields);
    operator Sample() const { return mSample; }

private:
    Sample mSample;
};

// A format as its damager sees it.
struct Shape {
    std::vector<Sample> samples;
    // What is swapped, repeated, removed and spliced: records of `unit` bytes from `first` on, or
    // without a unit the lines that end in `separator`.
    unsigned int unit = 0;
    unsigned int first = 0;
    char separator = '\n';
    // Bytes that mean something to a reader, to be put in at any place.
    std::vector<std::string> words;
    // Of the last step from the bytes as they are damaged to those in the file.
    std::string (*scramble)(std::string) = nullptr;
};

// Whether an index is one of the cuts.
bool IsCut(const Shape& shape, std::uint64_t index);
std::string MakeInput(const Shape& shape, std::uint64_t index, Random& random);
// A text of any characters, with `words` among them; over-long now and then.
std::string AnyText(Random& random, const std::vector<std::string>& words = {});
