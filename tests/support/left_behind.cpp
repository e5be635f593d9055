#include "tests/support/left_behind.h"

#include <vector>

#include "resident/core/windows_api.h"

static long UsedBlocks() {
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    long count = 0;
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heap, &entry))
            count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    }
    return count;
}

// A new handle takes the lowest place that is free.
static long UsedHandles() {
    const HANDLE probe = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(probe);
    return reinterpret_cast<long>(probe) / 4;
}

long LeftBehind(const std::function<void()>& step) {
    static constexpr long kTurns = 2;
    const auto turns = [&] {
        for (long turn = 0; turn < kTurns; ++turn)
            step();
        return UsedBlocks() + UsedHandles();
    };
    // What lasts is made by the first turns, and what the system keeps of the last few files by
    // many: a leak comes again each time.
    long before = turns();
    long left = 1;
    for (int tries = 0; left > 0 && tries < 10; ++tries) {
        const long after = turns();
        left = (after - before) / kTurns;
        before = after;
    }
    return left;
}
