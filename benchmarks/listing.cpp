// A notifier's walk through an inbox, against block reads that copy the same five fields out of the
// same used records.

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "benchmarks/measure.h"
#include "benchmarks/records.h"
#include "resident/core/windows_api.h"
#include "ticker/ticker.h"

#include <psapi.h>

static constexpr unsigned int kRecords = 200000;

std::uint64_t WalkByLibrary(const std::string& path) {
    char *topic, *fileName, *sender;
    unsigned short kind, flag;
    std::uint64_t sum = 0;
    int more = GetFirstRecord(path.c_str(), &topic, &fileName, &sender, &kind, &flag);
    for (; more; more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag))
        sum += kind + flag + topic[0] + fileName[1] + 1;
    Done();
    return sum;
}

static std::uint64_t WalkByBlocks(const std::string& path) {
    static char block[0x10000];
    static char topic[28], fileName[34], sender[32];
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    std::uint64_t sum = 0;
    DWORD held = 0;
    for (DWORD read; ReadFile(file, block + held, sizeof block - held, &read, nullptr) && read;) {
        held += read;
        DWORD at = 0;
        for (; at + 316 <= held; at += 316) {
            const auto* record = reinterpret_cast<const unsigned char*>(block) + at;
            if (!record[2])
                continue;
            std::memcpy(topic, record + 4, sizeof topic);
            std::memcpy(fileName, record + 38, sizeof fileName);
            std::memcpy(sender, record + 72, sizeof sender);
            // The copies are made, whoever looks at them.
            asm volatile("" ::"r"(topic), "r"(fileName), "r"(sender) : "memory");
            const unsigned short kind = static_cast<unsigned short>(record[310] << 8 | record[311]);
            sum += kind + (record[3] & 1) + topic[1] + fileName[2] + 1;
        }
        held -= at;
        std::memmove(block, block + at, held);
    }
    CloseHandle(file);
    return sum;
}

std::vector<Contest> ListingContests(const std::string& folder) {
    const std::string path = folder + "\\LISTING.DAT";
    WriteDFile(path, kRecords);
    return {{"list 200,000 records (GetFirstRecord, GetNextRecord)",
             1.75,
             [path] { return WalkByBlocks(path); },
             [path] { return WalkByLibrary(path); },
             {}}};
}

static unsigned long PeakMemory() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage / 1024;
}

void PrintListingMemory(const std::string& folder) {
    for (const unsigned int count : {1000u, 1000000u}) {
        const std::string path = folder + "\\MEMORY.DAT";
        WriteDFile(path, count);
        const unsigned long before = PeakMemory();
        char *topic, *fileName, *sender;
        unsigned short kind, flag;
        unsigned long most = before;
        unsigned int walked = 0;
        int more = GetFirstRecord(path.c_str(), &topic, &fileName, &sender, &kind, &flag);
        for (; more; more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag))
            if (++walked % 1000 == 0)
                most = std::max(most, PeakMemory());
        Done();
        std::printf("walk of %u records: %lu KiB of memory more than before\n", walked,
                    most - before);
        DeleteFileA(path.c_str());
    }
}
