#pragma once

#include <vector>

#include "programs/mailticker/messages.h"

// Where two readings of an inbox are the same: so many messages at their beginning, and so many at
// the end of the rest.
struct SameEnds {
    SameEnds(const Messages& before, const Messages& after);
    std::size_t first = 0;
    std::size_t last = 0;
};

// All messages of an inbox in the order of a column; equal ones stay in the order of their slots.
class Order {
public:
    void By(const Messages& messages, Column column, bool descending);
    // The messages that were ordered, of which there were `before`, have become these: only what is
    // none of the same is put in its place.
    void Follow(const Messages& messages, std::size_t before, const SameEnds& same);

    const std::vector<std::uint32_t>& Sequence() const { return mSequence; }

private:
    using Iterator = std::vector<std::uint32_t>::iterator;
    void Sort(const Messages& messages, Iterator begin, Iterator end) const;

    Column mColumn = Column::Slot;
    bool mDescending = false;
    std::vector<std::uint32_t> mSequence;
};
