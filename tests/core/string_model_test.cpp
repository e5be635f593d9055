// A string is a text, a length byte and whoever shares them.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/record_bytes.h"
#include "tests/support/side_by_side.h"

namespace {

struct Shared {
    std::string text;
    unsigned char lengthByte;
};
using Model = std::shared_ptr<Shared>;

Model New(const std::string& text, unsigned int lengthByte = 256) {
    const unsigned int byte =
        lengthByte < 256 ? lengthByte : std::min<std::size_t>(text.size(), 253);
    return Model(new Shared{text, static_cast<unsigned char>(byte)});
}

std::string Cased(std::string text, bool upper) {
    (upper ? CharUpperBuffA : CharLowerBuffA)(text.data(), text.size());
    return text;
}

const std::string kDelimiters = " !@#$%&*()-+={}[]|:;\"`<>,.?/\n\r\t";
bool IsDelimiter(char c) { return kDelimiters.find(c) != kDelimiters.npos; }

// The fields between single delimiters.
std::vector<std::string> Fields(const std::string& text, char delimiter) {
    std::vector<std::string> fields(1);
    for (const char c : text)
        c == delimiter ? fields.emplace_back() : fields.back() += c;
    return fields;
}

// "word first last" of the word at or after a position; empty for none.
std::string Word(const std::string& text, unsigned int position, bool overPeriod) {
    if (position == 0 || position >= text.size())
        return "";
    unsigned int at = position - 1;
    while (at + 1 < text.size() && IsDelimiter(text[at]))
        ++at;
    std::size_t end = text.find_first_of(kDelimiters, at);
    if (end != text.npos && overPeriod && text[end] == '.')
        ++end;
    if (end == text.npos || end == at)
        end = text.size();
    return text.substr(at, end - at) + " " + std::to_string(at + 1) + " " + std::to_string(end);
}

class Strings : public SideBySide {
public:
    Strings() {
        for (Model& model : mModels)
            model = New("");
    }
    void Step(Random& random) override {
        const unsigned int i = random.Below(4), j = random.Below(4);
        RBString &string = mStrings[i], &other = mStrings[j];
        Model &model = mModels[i], &otherModel = mModels[j];
        const std::string text = AnyText(random), counted = Pascal(text.substr(0, 255));
        const auto* const bytes = reinterpret_cast<const unsigned char*>(counted.c_str());
        const unsigned int length = model->text.size(), n = random.Below(length + 3);
        Say("string", i, ':');
        switch (const unsigned int operation = random.Below(23)) {
        case 0:
            Say("share", j);
            random.OneIn(2) ? void(string.puts(other)) : void(string = other);
            model = otherModel;
            break;
        case 1: {
            const unsigned int most = random.OneIn(2) ? 0 : random.Below(text.size() + 3);
            Say("put", Shown(text), most);
            string.puts(text.c_str(), most);
            model = New(most ? text.substr(0, most) : text);
            break;
        }
        case 2:
            Say("put Pascal", Shown(text));
            string.puts(bytes);
            model = New(counted.substr(1), counted.size() - 1);
            break;
        case 3:
            Say("concat", j);
            string.concat(other);
            if (!otherModel->text.empty())
                model = New(model->text + otherModel->text);
            break;
        case 4:
        case 5:
        case 6: {
            Say("append", operation, Shown(text));
            const char c = text.empty() ? '\0' : text[0];
            const std::string more = operation == 4   ? text
                                     : operation == 5 ? counted.substr(1)
                                                      : std::string(c != 0, c);
            operation == 4   ? string.concat(text.c_str())
            : operation == 5 ? string.concat(bytes)
                             : string.concat(c);
            if (!more.empty())
                model = New(model->text + more);
            break;
        }
        case 7:
            Say("truncate", n);
            string.Truncate(n);
            if (n < length)
                model = New(model->text.substr(0, n));
            break;
        case 8:
            Say("reset");
            string.reset();
            model = New("");
            break;
        case 9: {
            const bool upper = random.OneIn(2);
            Say(upper ? "upper" : "lower");
            upper ? string.Upper() : string.Lower();
            model->text = Cased(model->text, upper);
            break;
        }
        case 10:
            if (n >= 1 && n <= length) {
                Say("upper character", n);
                Same("is upper", string.IsCharUpperA(n), IsCharUpperA(model->text[n - 1]) != 0);
                Same("character", *string.charAt(n), model->text[n - 1]);
                Same("is a character", string.SetCharUpper(n), 1);
                model->text.replace(n - 1, 1, Cased({model->text[n - 1]}, true));
            }
            break;
        case 11: {
            const char c = random.Of<char>({' ', 'a', '|'});
            const unsigned int where = random.Below(4);
            Say("strip", c, where);
            string.StripChars(c, where);
            std::string left = model->text;
            if (where & 1)
                left.erase(0, std::min(left.find_first_not_of(c), left.size()));
            if (where & 2)
                left.erase(left.find_last_not_of(c) + 1);
            model = New(left);
            break;
        }
        case 12: {
            const unsigned int from = 1 + random.Below(length + 1), to = random.Below(length + 1);
            Say("replace", from, to, Shown(text));
            Same("behind", string.Replace(from, to, text.c_str()), from + text.size());
            // A range that ends before it begins comes twice.
            model = New(model->text.substr(0, from - 1) + text + model->text.substr(to));
            break;
        }
        case 13:
        case 14: {
            const bool own = random.OneIn(2), toPC = operation == 13;
            Say(toPC ? "to PC" : "to Macintosh", own ? "own" : Shown(text));
            std::string result;
            for (const char c : own ? model->text : text)
                if (toPC || c != '\n')
                    result += c == '\r' && toPC ? std::string("\r\n") : std::string(1, c);
            const char* const source = own ? nullptr : text.c_str();
            Same("text", toPC ? string.MacToPC(source) : string.PCToMac(source), result);
            model = New(result);
            break;
        }
        case 15:
            Say("format", Shown(text), n);
            Same("text", string.Sprintf("%s|%u", text.c_str(), n), text + "|" + std::to_string(n));
            model = New(text + "|" + std::to_string(n));
            break;
        case 16: {
            Say("write into", Shown(text));
            const bool was = length != 0;
            char* const room = string.AdjustSize(text.size() + random.Below(9) + length + 1);
            Same("room", std::string(string.Text(), string.Length()), was ? model->text : "");
            std::strcpy(room, text.c_str());
            string.AdjustSize(0);
            model = New(text);
            break;
        }
        case 17: {
            std::string read = random.OneIn(4) ? text + std::string("\0a", 2) : text;
            const unsigned int cut =
                random.OneIn(3) ? random.Below(read.size() + 4) : read.size() + 4;
            Say("read", Shown(read), cut);
            std::istringstream in(Streamed(read).substr(0, cut) +
                                  (cut < read.size() + 4 ? "" : "x"));
            in >> string;
            const bool whole = cut == read.size() + 4;
            Same("good", in.good(), whole);
            Same("read", Image(string), Image(*New(whole ? read : "")));
            // A zero among the characters counts until they are counted again.
            string.Truncate(text.size());
            model = New(whole ? text : "");
            break;
        }
        case 18:
            Say("write");
            Same("bytes", Written(string), Streamed(model->text));
            break;
        case 19: {
            Say("compare", j);
            const char *a = model->text.c_str(), *b = otherModel->text.c_str();
            const int order = lstrcmpA(a, b);
            const auto sign = [](int value) { return (value > 0) - (value < 0); };
            Same("order",
                 (string == other) + 2 * (string < other) + 4 * (string > other) +
                     8 * (string != other) + 16 * (string == b) + 32 * (string != b),
                 (order ? 8 + 32 : 1 + 16) + 2 * (order < 0) + 4 * (order > 0));
            Same("without case", sign(string.StrICmp(other)), sign(lstrcmpiA(a, b)));
            const std::string image = char(otherModel->lengthByte) + otherModel->text;
            const unsigned int claimed = model->lengthByte + 1u;
            const bool same = (char(model->lengthByte) + model->text).substr(0, claimed) ==
                              image.substr(0, claimed);
            Same("as Pascal", (string == other.Pascal()) + 2 * (string != other.Pascal()),
                 same ? 1 : 2);
            break;
        }
        case 20: {
            const char delimiter = random.Of<char>({':', 'a', ' '});
            const std::vector<std::string> fields = Fields(model->text.c_str(), delimiter);
            const unsigned int number = 1 + random.Below(fields.size() + 1);
            Say("field", number, delimiter, "into", j);
            const bool there = number <= fields.size();
            const std::string field = there ? fields[number - 1] : "";
            Same("field is there", string.GetNthDelimitedWord(other, number, delimiter), there);
            if (there)
                otherModel = New(field);
            break;
        }
        case 21: {
            const bool overPeriod = random.OneIn(2);
            Say("word at", n, overPeriod);
            RBString word;
            unsigned int first = 0, last = 0;
            const int found =
                string.GetWord(word, &first, &last, n, enumGetWordOptions(overPeriod));
            Same("word",
                 found ? word.Text() + (" " + std::to_string(first)) + " " + std::to_string(last)
                       : "",
                 length ? Word(model->text.c_str(), n, overPeriod) : "");
            break;
        }
        case 22: {
            Say("construct from", Shown(text), j);
            const char* const c = text.c_str();
            const RBString built[] = {RBString(c, random.Below(2) * 3000), RBString(bytes),
                                      RBString(text.empty() ? '\0' : text[0]), RBString(other),
                                      RBString(3, c, other.Text(), c, c)};
            const std::string texts[] = {text, counted.substr(1), text.substr(0, 1),
                                         otherModel->text, text + otherModel->text.c_str() + text};
            for (unsigned int k = 0; k < 5; ++k)
                Same("built", Image(built[k]),
                     Image(k == 1   ? *New(texts[k], counted.size() - 1)
                           : k == 3 ? *otherModel
                                    : *New(texts[k])));
            break;
        }
        }
        for (unsigned int k = 0; k < 4; ++k)
            Same("string", Image(mStrings[k]), Image(*mModels[k]));
    }

private:
    static std::string AnyText(Random& random) {
        if (random.OneIn(6))
            return std::string(random.Of<unsigned int>({252, 253, 254, 255, 256, 300}), 'x');
        return random.Text(12,
                           "aab Bc:.|-\r\n\xE4\xC4" + (random.OneIn(2) ? kDelimiters + "_'~" : ""));
    }
    static std::string Image(const RBString& string) {
        return std::string(reinterpret_cast<const char*>(string.Pascal()), string.Length() + 2);
    }
    static std::string Image(const Shared& model) {
        return char(model.lengthByte) + model.text + '\0';
    }

    std::array<RBString, 4> mStrings;
    std::array<Model, 4> mModels;
};

// A list is a vector and a cursor.
class Lists : public SideBySide {
public:
    void Step(Random& random) override {
        char *const item = random.OneIn(9) ? nullptr : &mItems[random.Below(6)],
                    *const existing = random.OneIn(9) ? nullptr : &mItems[random.Below(6)];
        const auto at = std::find(mModel.begin(), mModel.end(), existing);
        const auto insert = [&](std::vector<char*>::iterator where, bool known) {
            if (item) {
                const std::size_t place = known ? where - mModel.begin() : mModel.size();
                mModel.insert(mModel.begin() + place, item);
                mCursor += mCursor >= 0 && place <= std::size_t(mCursor);
            }
            return item != nullptr;
        };
        const bool known = existing && at != mModel.end();
        const unsigned int operation = random.Below(9);
        Say("operation", operation, item - mItems, existing - mItems);
        switch (operation) {
        case 0:
            Same("append", mList.AppendItem(item), insert(mModel.end(), true));
            break;
        case 1:
            Same("after", mList.InsertAfter(item, existing), insert(at + known, known));
            break;
        case 2:
            Same("before", mList.InsertBefore(item, existing), insert(at, known));
            break;
        case 3:
        case 4: {
            // By the current item: the first node that has it.
            const bool after = operation == 3, there = mCursor >= 0;
            auto node = there ? std::find(mModel.begin(), mModel.end(), mModel[mCursor]) + after
                              : mModel.end();
            const int result =
                after ? mList.InsertAfterCurrent(item) : mList.InsertBeforeCurrent(item);
            Same("beside the current", result, insert(node, there));
            break;
        }
        case 5: {
            const auto found = std::find(mModel.begin(), mModel.end(), item);
            const bool there = item && found != mModel.end();
            Same("remove", mList.RemoveItem(item), there);
            if (there) {
                const int place = found - mModel.begin();
                mModel.erase(found);
                mCursor -= place < mCursor;
                mCursor = mCursor < int(mModel.size()) ? mCursor : -1;
            }
            break;
        }
        case 6:
        case 7:
            mList.Next();
            mCursor = mCursor + 1 < int(mModel.size()) ? mCursor + 1 : -1;
            break;
        case 8:
            if (random.OneIn(8)) {
                mList.ClearList();
                mModel.clear();
                mCursor = -1;
            }
            break;
        }
        std::string items, model;
        for (ListNode* node = mList.mpoHead; node; node = node->next)
            items += char('a' + (static_cast<char*>(node->data) - mItems));
        for (char* one : mModel)
            model += char('a' + (one - mItems));
        Same("items", items, model);
        Same("count", mList.mlCount, mModel.size());
        const long index = long(random.Below(8)) - 1;
        ListNode* const indexed = mList[index];
        Same("indexed", indexed ? static_cast<char*>(indexed->data) - mItems : -1,
             index >= 0 && index < long(mModel.size()) ? mModel[index] - mItems : -1);
        Same("cursor", mList.mpoCurrent ? static_cast<char*>(mList.mpoCurrent->data) - mItems : -1,
             mCursor >= 0 ? mModel[mCursor] - mItems : -1);
    }

private:
    char mItems[6];
    S_List mList;
    std::vector<char*> mModel;
    int mCursor = -1;
};

// 16 bits, high byte first, that computes with 32.
class Integers : public SideBySide {
public:
    void Step(Random& random) override {
        const unsigned int operation = random.Below(13);
        short by = static_cast<short>(random.OneIn(2) ? random.Below(40) - 20 : random.Next());
        by = by ? by : short(7);
        const int value = mModel, shift = by & 31;
        RBInt& x = mValue;
        const std::array<std::pair<RBInt (*)(RBInt&, short), long long>, 13> all = {
            {{[](RBInt& v, short n) { return v += n; }, value + by},
             {[](RBInt& v, short n) { return v -= n; }, value - by},
             {[](RBInt& v, short n) { return v *= n; }, static_cast<long long>(value) * by},
             {[](RBInt& v, short n) { return v /= n; }, value / by},
             {[](RBInt& v, short n) { return v %= n; }, value % by},
             {[](RBInt& v, short n) { return v &= n; }, value & by},
             {[](RBInt& v, short n) { return v ^= n; }, value ^ by},
             {[](RBInt& v, short n) { return v |= n; }, value | by},
             {[](RBInt& v, short n) { return v <<= n; }, static_cast<long long>(value) << shift},
             {[](RBInt& v, short n) { return v >>= n; }, value >> shift},
             {[](RBInt& v, short) { return ++v; }, value + 1},
             {[](RBInt& v, short) { return --v; }, value - 1},
             {[](RBInt& v, short n) { return v = n, RBInt(v); }, by}}};
        Say("operation", operation, value, by);
        const RBInt returned = all[operation].first(x, by);
        mModel = static_cast<unsigned short>(all[operation].second);
        // What is returned has its bytes exchanged, but for an assignment's.
        const auto exchanged = static_cast<unsigned short>(mModel << 8 | mModel >> 8);
        Same("returned", static_cast<unsigned short>(returned),
             operation == 12 ? mModel : exchanged);
        Same("bytes", Written(x), {char(mModel >> 8), char(mModel)});
        Same("flipped", FlipWord(mModel), exchanged);
        Same("flipped long", FlipLong(0x11220000ul | mModel), exchanged * 0x10000u + 0x2211);
    }

private:
    RBInt mValue;
    unsigned short mModel = 0;
};

TEST(Models, Strings) { Compare<Strings>(60, 300); }
TEST(Models, Lists) { Compare<Lists>(60, 300); }
TEST(Models, Integers) { Compare<Integers>(5, 500); }

} // namespace
