#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// What a list of messages shows of each, in the order of its columns. kSlot stands for the place
// among the inbox's messages.
enum class Column { From, Topic, Kind, File, Slot };
constexpr int kColumns = 5;

// Kind words that a record can carry; the last is what readers take for a damaged one.
constexpr unsigned int kKinds = 7;
constexpr unsigned int kDamagedKind = 6;

// A kind in words.
const wchar_t* KindName(unsigned int kind);

// The messages that one walk through an inbox found, in the order of their slots. All texts lie in
// one block as they were read, since an inbox may hold some hundred thousand messages; what is
// shown of them is made when it is shown.
class Messages {
public:
    // Makes room for so many at once.
    void Expect(std::size_t count);
    // Texts are Windows-1252 and end with a zero.
    void Add(const char* from, const char* topic, const char* file, unsigned int kind,
             bool processed);

    std::size_t Count() const { return mEntries.size(); }
    std::wstring From(std::size_t i) const { return Text(i, Column::From); }
    std::wstring Topic(std::size_t i) const { return Text(i, Column::Topic); }
    std::wstring File(std::size_t i) const { return Text(i, Column::File); }
    unsigned int Kind(std::size_t i) const { return mEntries[i].kind; }
    bool IsProcessed(std::size_t i) const { return mEntries[i].processed; }
    bool HasFile(std::size_t i) const { return mEntries[i].lengths[2] > 0; }

    // What a column shows.
    std::wstring Text(std::size_t i, Column column) const;

    // What tells a message from others, in this walk and the next: sender, topic and file with
    // zeros between. Valid as long as the messages are.
    std::string_view Key(std::size_t i) const { return Whole(mText.get(), mEntries[i]); }

    // Without case and accents, for searching the three and for sorting by one of them.
    std::string_view FoldedKey(std::size_t i) const { return Whole(FoldedBlock(), mEntries[i]); }
    std::string_view FoldedText(std::size_t i, Column column) const {
        return Part(FoldedBlock(), mEntries[i], column);
    }

private:
    struct Entry {
        std::uint32_t start;
        std::uint8_t lengths[3];
        std::uint8_t kind : 7;
        std::uint8_t processed : 1;
    };

    static std::string_view Part(const char* block, const Entry& entry, Column column);
    static std::string_view Whole(const char* block, const Entry& entry) {
        return {block + entry.start,
                std::size_t(entry.lengths[0] + entry.lengths[1] + entry.lengths[2] + 2)};
    }
    void MakeRoom(std::size_t capacity);
    // Of all texts, with their zeros.
    std::size_t Size() const {
        return mEntries.empty() ? 0 : mEntries.back().start + Key(Count() - 1).size() + 1;
    }
    const char* FoldedBlock() const;

    std::vector<Entry> mEntries;
    // A block that grows without being cleared before it is written.
    std::unique_ptr<char[]> mText;
    std::size_t mCapacity = 0;               // while there is a block
    mutable std::unique_ptr<char[]> mFolded; // at the same places; made when it is first asked for
};
