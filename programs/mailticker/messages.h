#pragma once

#include <cstdint>
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
// one block, since an inbox may hold some hundred thousand messages.
class Messages {
public:
    // Texts are Windows-1252 and end with a zero.
    void Add(const char* from, const char* topic, const char* file, unsigned int kind,
             bool processed);

    std::size_t Count() const { return mEntries.size(); }
    std::wstring_view From(std::size_t i) const { return View(mShown, mEntries[i], 0); }
    std::wstring_view Topic(std::size_t i) const { return View(mShown, mEntries[i], 1); }
    std::wstring_view File(std::size_t i) const { return View(mShown, mEntries[i], 2); }
    unsigned int Kind(std::size_t i) const { return mEntries[i].kind; }
    bool IsProcessed(std::size_t i) const { return mEntries[i].processed; }

    // What a column shows. Valid as long as the messages are.
    std::wstring_view Text(std::size_t i, Column column) const;

    // What tells a message from others, in this walk and the next: sender, topic and file.
    std::wstring_view Key(std::size_t i) const { return Whole(mShown, mEntries[i]); }

    // One column's text folded, for sorting (kFrom, kTopic and kFile alone).
    std::string_view FoldedText(std::size_t i, Column column) const;
    // The three texts folded, with zeros between.
    std::string_view FoldedKey(std::size_t i) const { return Whole(mFolded, mEntries[i]); }

private:
    struct Entry {
        std::uint32_t start;
        std::uint8_t lengths[3];
        std::uint8_t kind : 7;
        std::uint8_t processed : 1;
    };

    template <class Character>
    static std::basic_string_view<Character> View(const std::basic_string<Character>& block,
                                                  const Entry& entry, int which) {
        std::size_t start = entry.start;
        for (int i = 0; i < which; ++i)
            start += entry.lengths[i] + 1;
        return {block.data() + start, entry.lengths[which]};
    }
    template <class Character>
    static std::basic_string_view<Character> Whole(const std::basic_string<Character>& block,
                                                   const Entry& entry) {
        return {block.data() + entry.start,
                std::size_t(entry.lengths[0] + entry.lengths[1] + entry.lengths[2] + 2)};
    }
    std::uint8_t Append(const char* text);

    std::vector<Entry> mEntries;
    std::wstring mShown;
    std::string mFolded; // at the same places
};
