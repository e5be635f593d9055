#include "programs/mailticker/inbox.h"

#include <algorithm>
#include <iterator>

#include "programs/mailticker/text.h"

static constexpr unsigned long long kVanishedFor = 5000; // milliseconds

// The keys of `these` that are none of `others`; only what differs between the same ends is looked
// at twice.
static std::set<std::string_view> KeysWithout(const Messages& these, const Messages& others,
                                              const SameEnds& same) {
    std::set<std::string_view> keys;
    for (std::size_t i = same.first; i < these.Count() - same.last; ++i)
        keys.insert(these.Key(i));
    for (std::size_t i = 0; i < others.Count() && !keys.empty(); ++i)
        keys.erase(others.Key(i));
    return keys;
}

Inbox::Keys Inbox::Arrivals(const Messages& next, const SameEnds& same, unsigned long long now) {
    std::erase_if(mVanished, [&](const auto& one) { return now - one.second > kVanishedFor; });
    for (const std::string_view key : KeysWithout(mMessages, next, same))
        mVanished.emplace_back(key, now);
    if (!mTaken)
        return {};
    Keys keys = KeysWithout(next, mMessages, same);
    for (const auto& vanished : mVanished)
        keys.erase(vanished.first);
    return keys;
}

void Inbox::Take(Messages messages, unsigned long long now) {
    const SameEnds same(mMessages, messages);
    const Keys arrived = Arrivals(messages, same, now);
    mArrived.clear();
    mUnprocessed = 0;
    std::set<std::string, std::less<>> stillNew;
    for (std::size_t i = 0; i < messages.Count(); ++i) {
        if (messages.IsProcessed(i))
            continue;
        ++mUnprocessed;
        if (arrived.empty() && mNew.empty())
            continue;
        const std::string_view key = messages.Key(i);
        if (arrived.contains(key))
            mArrived.push_back(i);
        if (arrived.contains(key) || mNew.contains(key))
            stillNew.emplace(key);
    }
    mNew = std::move(stillNew);
    mOrder.Follow(messages, mMessages.Count(), same);
    mMessages = std::move(messages);
    mTaken = true;
    Show();
}

void Inbox::Forget() {
    mTaken = false;
    mNew.clear();
    mVanished.clear();
    Take({}, 0);
    mTaken = false;
}

std::vector<std::size_t> Inbox::Newest(std::size_t most) const {
    std::vector<std::size_t> newest;
    for (std::size_t i = mMessages.Count(); i-- > 0 && newest.size() < most;)
        if (!mMessages.IsProcessed(i))
            newest.push_back(i);
    return newest;
}

bool Inbox::IsNew(std::size_t message) const {
    return !mNew.empty() && mNew.contains(mMessages.Key(message));
}

static unsigned int KindsWith(std::string_view word) {
    unsigned int kinds = 0;
    for (unsigned int kind = 0; kind < kKinds; ++kind)
        if (Folded(KindName(kind))->find(word) != std::string::npos)
            kinds |= 1u << kind;
    return kinds;
}

void Inbox::Filter(std::wstring_view words) {
    mWords.clear();
    const auto folded = Folded(words);
    mImpossible = !folded;
    for (std::size_t at = 0; folded && at < folded->size();) {
        const std::size_t end = std::min(folded->find(' ', at), folded->size());
        const std::string word = folded->substr(at, end - at);
        if (!word.empty())
            mWords.push_back({word, KindsWith(word)});
        at = end + 1;
    }
    Show();
}

void Inbox::OnlyUnprocessed(bool only) {
    mOnlyUnprocessed = only;
    Show();
}

void Inbox::Sort(Column column, bool descending) {
    mOrder.By(mMessages, column, descending);
    Show();
}

bool Inbox::Passes(std::size_t message) const {
    if (mOnlyUnprocessed && mMessages.IsProcessed(message))
        return false;
    const std::string_view texts = mMessages.FoldedKey(message);
    return std::all_of(mWords.begin(), mWords.end(), [&](const Word& word) {
        return word.kinds >> mMessages.Kind(message) & 1 ||
               texts.find(word.text) != std::string_view::npos;
    });
}

void Inbox::Show() {
    const std::vector<std::uint32_t>& all = mOrder.Sequence();
    mRows.clear();
    if (mImpossible)
        return;
    if (!IsFiltered())
        mRows = all;
    else
        std::copy_if(all.begin(), all.end(), std::back_inserter(mRows),
                     [&](std::uint32_t message) { return Passes(message); });
}

int Inbox::RowOf(std::string_view key) const {
    const auto row = std::find_if(mRows.begin(), mRows.end(), [&](std::uint32_t message) {
        return mMessages.Key(message) == key;
    });
    return row == mRows.end() ? -1 : static_cast<int>(row - mRows.begin());
}

int Inbox::RowBeginning(std::wstring_view typed, int start) const {
    const auto folded = Folded(typed);
    const int count = static_cast<int>(mRows.size());
    for (int i = 0; folded && i < count; ++i) {
        const int row = (start + i) % count;
        if (mMessages.FoldedText(mRows[row], Column::From).starts_with(*folded))
            return row;
    }
    return -1;
}
