#pragma once

#include <istream>
#include <string_view>

// The fields of a text between single delimiters, one after another, as GetNthDelimitedWord numbers
// them; in one pass, however many there are.
class TextFields {
public:
    TextFields(std::string_view text, char delimiter) : mRest(text), mDelimiter(delimiter) {}

    // False when there is no further field. Fields may be empty.
    bool Next(std::string_view& field) {
        if (mfDone)
            return false;
        const std::size_t end = mRest.find(mDelimiter);
        field = mRest.substr(0, end);
        mfDone = end == mRest.npos;
        if (!mfDone)
            mRest.remove_prefix(end + 1);
        return true;
    }

private:
    std::string_view mRest;
    char mDelimiter;
    bool mfDone = false;
};

// Reads up to a delimiter, which is left out, or as much of a longer line as the buffer holds; the
// rest is then the next line. Returns false when there is nothing more to read.
template <std::size_t Size>
bool ReadLine(std::istream& in, char (&line)[Size], char delimiter) {
    in.getline(line, Size, delimiter);
    if (in.fail() && !in.bad() && in.gcount() == Size - 1)
        in.clear(in.rdstate() & ~std::ios::failbit);
    return !in.fail();
}
