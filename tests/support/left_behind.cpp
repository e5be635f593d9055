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
    turns();
    const long before = turns();
    return (turns() - before) / kTurns;
}
