#include <cstdio>

#include "benchmarks/measure.h"
#include "resident/core/windows_api.h"

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : "C:\\Bench";
    CreateDirectoryA(folder.c_str(), nullptr);
    std::printf("%-58s %12s %12s   %5s   %4s\n", "", "library", "reference", "ratio", "goal");
    bool sound = true;
    for (const auto contests : {ListingContests, StoreContests, AccountContests})
        for (const Contest& contest : contests(folder))
            sound &= Run(contest);
    PrintTakingTimes(folder);
    PrintListingMemory(folder);
    return sound ? 0 : 1;
}
