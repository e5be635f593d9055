#include "programs/mailticker/order.h"

#include <algorithm>
#include <numeric>

#include "programs/mailticker/text.h"

SameEnds::SameEnds(const Messages& before, const Messages& after) {
    const auto same = [&](std::size_t a, std::size_t b) {
        return before.Kind(a) == after.Kind(b) && before.Key(a) == after.Key(b);
    };
    const std::size_t least = std::min(before.Count(), after.Count());
    while (first < least && same(first, first))
        ++first;
    while (last < least - first && same(before.Count() - 1 - last, after.Count() - 1 - last))
        ++last;
}

namespace {

// A message among others of its inbox, with what most of them differ in at hand.
struct Place {
    std::uint64_t beginning; // the text's first eight characters, which compare as they do
    std::uint32_t message;
};

class Comparison {
public:
    Comparison(const Messages& messages, Column column, bool descending)
        : mMessages(messages), mColumn(column), mDescending(descending) {
        for (unsigned int kind = 0; kind < kKinds; ++kind)
            mKinds[kind] = Beginning(*Folded(KindName(kind)));
    }

    Place PlaceOf(std::uint32_t message) const {
        return {mColumn == Column::Slot   ? 0
                : mColumn == Column::Kind ? mKinds[mMessages.Kind(message)]
                                          : Beginning(mMessages.FoldedText(message, mColumn)),
                message};
    }
    bool operator()(const Place& a, const Place& b) const {
        const int order = mDescending ? Compare(b, a) : Compare(a, b);
        return order ? order < 0 : a.message < b.message;
    }

private:
    static std::uint64_t Beginning(std::string_view text) {
        std::uint64_t beginning = 0;
        for (std::size_t i = 0; i < 8; ++i)
            beginning =
                beginning << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0);
        return beginning;
    }
    int Compare(const Place& a, const Place& b) const {
        if (mColumn == Column::Slot)
            return a.message < b.message ? -1 : a.message > b.message;
        if (a.beginning != b.beginning)
            return a.beginning < b.beginning ? -1 : 1;
        return mColumn == Column::Kind ? 0
                                       : mMessages.FoldedText(a.message, mColumn)
                                             .compare(mMessages.FoldedText(b.message, mColumn));
    }

    const Messages& mMessages;
    Column mColumn;
    bool mDescending;
    std::uint64_t mKinds[kKinds];
};

} // namespace

void Order::By(const Messages& messages, Column column, bool descending) {
    mColumn = column;
    mDescending = descending;
    mSequence.resize(messages.Count());
    std::iota(mSequence.begin(), mSequence.end(), 0u);
    Sort(messages, mSequence.begin(), mSequence.end());
}

void Order::Sort(const Messages& messages, Iterator begin, Iterator end) const {
    // Slots are in order already.
    if (mColumn == Column::Slot)
        return mDescending ? std::reverse(begin, end) : void();
    const Comparison comparison(messages, mColumn, mDescending);
    std::vector<Place> places;
    places.reserve(end - begin);
    std::transform(begin, end, std::back_inserter(places),
                   [&](std::uint32_t message) { return comparison.PlaceOf(message); });
    std::sort(places.begin(), places.end(), comparison);
    std::transform(places.begin(), places.end(), begin,
                   [](const Place& place) { return place.message; });
}

void Order::Follow(const Messages& messages, std::size_t before, const SameEnds& same) {
    const std::size_t shift = messages.Count() - before; // modulo 2^32 where they became fewer
    if (shift == 0 && same.first + same.last == before)
        return;
    std::vector<std::uint32_t> others(messages.Count() - same.first - same.last);
    std::iota(others.begin(), others.end(), static_cast<std::uint32_t>(same.first));
    Sort(messages, others.begin(), others.end());

    std::erase_if(mSequence,
                  [&](std::size_t i) { return i >= same.first && i < before - same.last; });
    for (std::uint32_t& message : mSequence)
        if (message >= same.first)
            message += shift;
    const Comparison comparison(messages, mColumn, mDescending);
    std::vector<std::uint32_t> merged;
    merged.reserve(messages.Count());
    auto kept = mSequence.begin();
    for (const std::uint32_t other : others) {
        const Place place = comparison.PlaceOf(other);
        const auto behind = std::partition_point(kept, mSequence.end(), [&](std::uint32_t one) {
            return comparison(comparison.PlaceOf(one), place);
        });
        merged.insert(merged.end(), kept, behind);
        merged.push_back(other);
        kept = behind;
    }
    merged.insert(merged.end(), kept, mSequence.end());
    mSequence = std::move(merged);
}
