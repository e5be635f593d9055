#include "programs/mailticker/inbox.h"

#include <algorithm>
#include <numeric>

#include "programs/mailticker/text.h"

static constexpr unsigned long long kVanishedFor = 5000; // milliseconds

// How many messages at the beginning of both are the same, and how many at the end of the rest.
static std::pair<std::size_t, std::size_t> SameEnds(const Messages& a, const Messages& b) {
    const std::size_t least = std::min(a.Count(), b.Count());
    std::size_t first = 0;
    while (first < least && a.Key(first) == b.Key(first))
        ++first;
    std::size_t last = 0;
    while (last < least - first && a.Key(a.Count() - 1 - last) == b.Key(b.Count() - 1 - last))
        ++last;
    return {first, last};
}

// The keys of `these` that are none of `others`; only what differs between the same ends is looked
// at twice.
static std::set<std::string_view> KeysWithout(const Messages& these, const Messages& others,
                                              std::pair<std::size_t, std::size_t> ends) {
    std::set<std::string_view> keys;
    for (std::size_t i = ends.first; i < these.Count() - ends.second; ++i)
        keys.insert(these.Key(i));
    for (std::size_t i = 0; i < others.Count() && !keys.empty(); ++i)
        keys.erase(others.Key(i));
    return keys;
}

Inbox::Keys Inbox::Arrivals(const Messages& next, unsigned long long now) {
    const auto ends = SameEnds(mMessages, next);
    std::erase_if(mVanished, [&](const auto& one) { return now - one.second > kVanishedFor; });
    for (const std::string_view key : KeysWithout(mMessages, next, ends))
        mVanished.emplace_back(key, now);
    if (!mTaken)
        return {};
    Keys keys = KeysWithout(next, mMessages, ends);
    for (const auto& vanished : mVanished)
        keys.erase(vanished.first);
    return keys;
}

void Inbox::Take(Messages messages, unsigned long long now) {
    const Keys arrived = Arrivals(messages, now);
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
    mColumn = column;
    mDescending = descending;
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
    mRows.clear();
    if (mImpossible)
        return;
    if (IsFiltered()) {
        for (std::size_t i = 0; i < mMessages.Count(); ++i)
            if (Passes(i))
                mRows.push_back(static_cast<std::uint32_t>(i));
    } else {
        mRows.resize(mMessages.Count());
        std::iota(mRows.begin(), mRows.end(), 0u);
    }
    Order();
}

// The text's first eight characters as a number that compares as they do.
static std::uint64_t Beginning(std::string_view text) {
    std::uint64_t beginning = 0;
    for (std::size_t i = 0; i < 8; ++i)
        beginning = beginning << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0);
    return beginning;
}

void Inbox::Order() {
    if (mColumn == Column::Slot) {
        if (mDescending)
            std::reverse(mRows.begin(), mRows.end());
        return;
    }
    struct Place {
        std::uint64_t beginning;
        std::uint32_t message;
    };
    std::uint64_t kinds[kKinds];
    for (unsigned int kind = 0; kind < kKinds; ++kind)
        kinds[kind] = Beginning(*Folded(KindName(kind)));
    std::vector<Place> places;
    places.reserve(mRows.size());
    const bool byKind = mColumn == Column::Kind;
    for (const std::uint32_t row : mRows)
        places.push_back(
            {byKind ? kinds[mMessages.Kind(row)] : Beginning(mMessages.FoldedText(row, mColumn)),
             row});
    // Most texts differ in the beginning, which lies at hand.
    const auto compare = [&](const Place& a, const Place& b) {
        if (a.beginning != b.beginning)
            return a.beginning < b.beginning ? -1 : 1;
        return byKind ? 0
                      : mMessages.FoldedText(a.message, mColumn)
                            .compare(mMessages.FoldedText(b.message, mColumn));
    };
    std::sort(places.begin(), places.end(), [&](const Place& a, const Place& b) {
        const int order = mDescending ? compare(b, a) : compare(a, b);
        return order ? order < 0 : a.message < b.message;
    });
    std::transform(places.begin(), places.end(), mRows.begin(),
                   [](const Place& place) { return place.message; });
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
