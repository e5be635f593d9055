#include "benchmarks/measure.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "resident/core/windows_api.h"

double Seconds() {
    LARGE_INTEGER now;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double Median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

bool Run(const Contest& contest) {
    std::vector<double> reference;
    std::vector<double> library;
    bool equal = true;
    const auto time = [&](const std::function<std::uint64_t()>& work, std::vector<double>& times) {
        if (contest.prepare)
            contest.prepare();
        const double start = Seconds();
        const std::uint64_t sum = work();
        times.push_back(Seconds() - start);
        return std::pair(sum, contest.inspect ? contest.inspect() : 0);
    };
    for (int round = 0; round <= contest.rounds; ++round) {
        equal &= time(contest.reference, reference) == time(contest.library, library);
        // The first round warms the caches.
        if (round == 0) {
            reference.clear();
            library.clear();
        }
    }
    const double ours = Median(library);
    const double theirs = Median(reference);
    std::printf("%-58s %9.2f ms %9.2f ms   %5.2f   %4.1f%s\n", contest.name.c_str(), ours * 1e3,
                theirs * 1e3, ours / theirs, contest.goal, equal ? "" : "   RESULTS DIFFER");
    std::fflush(stdout);
    return equal;
}
