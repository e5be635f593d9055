#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "programs/mailticker/messages.h"
#include "programs/mailticker/order.h"

// What the ticker knows of an inbox: its messages as they were last read, which of them are shown
// and in which order, and which of them are new. Knows neither window nor file.
class Inbox {
public:
    // The next reading. What was in no reading of the last seconds and is not processed has
    // arrived, and is new; in the first reading nothing is. `now` counts milliseconds.
    void Take(Messages messages, unsigned long long now);

    // Another inbox comes: the next reading is its first one. Filter and order stay.
    void Forget();

    const Messages& All() const { return mMessages; }
    std::size_t Unprocessed() const { return mUnprocessed; }
    // The messages of Take that have arrived, in slot order.
    const std::vector<std::size_t>& Arrived() const { return mArrived; }
    // The last `most` unprocessed messages, the newest one first: new ones are appended.
    std::vector<std::size_t> Newest(std::size_t most) const;

    // New are those that arrived, are still there and not yet processed, until they are forgotten.
    std::size_t New() const { return mNew.size(); }
    bool IsNew(std::size_t message) const;
    void ForgetNew() { mNew.clear(); }

    // Shows what has every word of `words` somewhere in its columns, whatever the case and accents.
    void Filter(std::wstring_view words);
    void OnlyUnprocessed(bool only);
    bool IsFiltered() const { return mOnlyUnprocessed || !mWords.empty() || mImpossible; }
    // Equal ones stay in slot order.
    void Sort(Column column, bool descending);

    // The messages shown, in their order.
    const std::vector<std::uint32_t>& Rows() const { return mRows; }
    // The row of the message with this key, or -1.
    int RowOf(std::string_view key) const;
    // The first row from `start` on, round the end, whose sender begins so; -1 for none.
    int RowBeginning(std::wstring_view typed, int start) const;

private:
    using Keys = std::set<std::string_view>;
    struct Word {
        std::string text;
        unsigned int kinds; // a bit for each kind that has it in its name
    };

    // The keys of the next reading that were in none of the last seconds; remembers what vanished.
    Keys Arrivals(const Messages& next, const SameEnds& same, unsigned long long now);
    void Show();
    bool Passes(std::size_t message) const;

    Messages mMessages;
    bool mTaken = false;
    std::size_t mUnprocessed = 0;
    std::vector<std::size_t> mArrived;
    std::set<std::string, std::less<>> mNew;
    // What went lately, and when: a file that is written anew is short for a moment.
    std::vector<std::pair<std::string, unsigned long long>> mVanished;

    std::vector<Word> mWords;
    bool mImpossible = false; // words that no inbox can have
    bool mOnlyUnprocessed = false;
    Order mOrder;
    std::vector<std::uint32_t> mRows; // what of them is shown
};
