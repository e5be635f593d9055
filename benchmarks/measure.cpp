#include "benchmarks/measure.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "resident/core/windows_api.h"

static constexpr int kMostRuns = 6;
static constexpr double kAgreement = 1.1;

double Seconds() {
    LARGE_INTEGER now;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

Quartiles QuartilesOf(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    const std::size_t count = times.size();
    return {times[count / 4], times[count / 2], times[count - 1 - count / 4]};
}

namespace {

// The times of one run, or of several together.
struct Times {
    std::vector<double> library;
    std::vector<double> reference;

    double Ratio() const { return QuartilesOf(library).median / QuartilesOf(reference).median; }
    void Add(const Times& other) {
        library.insert(library.end(), other.library.begin(), other.library.end());
        reference.insert(reference.end(), other.reference.begin(), other.reference.end());
    }
};

} // namespace

static bool Agree(double left, double right) {
    return std::max(left, right) <= kAgreement * std::min(left, right);
}

// One run; false when the works did not do the same.
static bool RunRounds(const Contest& contest, Times& times) {
    const auto time = [&](const std::function<std::uint64_t()>& work, std::vector<double>& taken) {
        if (contest.prepare)
            contest.prepare();
        const double start = Seconds();
        const std::uint64_t sum = work();
        taken.push_back(contest.timesItself ? static_cast<double>(sum) * 1e-9 : Seconds() - start);
        return std::pair(contest.timesItself ? 0 : sum, contest.inspect ? contest.inspect() : 0);
    };
    bool equal = true;
    for (int round = 0; round <= contest.rounds; ++round) {
        equal &= time(contest.reference, times.reference) == time(contest.library, times.library);
        // The first round warms the caches.
        if (round == 0)
            times = {};
    }
    return equal;
}

Outcome Run(const Contest& contest) {
    Outcome outcome = {contest.name, contest.goal, {}, {}, 0, false, true};
    Times all;
    Times previous;
    while (!outcome.steady && outcome.runs < kMostRuns) {
        Times times;
        outcome.equal &= RunRounds(contest, times);
        outcome.steady = ++outcome.runs > 1 && Agree(times.Ratio(), previous.Ratio());
        all.Add(times);
        if (outcome.steady) {
            all = previous;
            all.Add(times);
        }
        previous = std::move(times);
    }
    outcome.library = QuartilesOf(all.library);
    outcome.reference = QuartilesOf(all.reference);
    return outcome;
}

void PrintHeading() {
    std::printf("%-52s %26s %26s  %5s  %4s  %4s\n", "milliseconds: median (middle half)", "library",
                "reference", "ratio", "goal", "runs");
}

static void Print(const Quartiles& times) {
    std::printf(" %9.3f (%6.2f -%6.2f)", times.median * 1e3, times.lower * 1e3, times.upper * 1e3);
}

void Print(const Outcome& outcome) {
    std::printf("%-52s", outcome.name.c_str());
    Print(outcome.library);
    Print(outcome.reference);
    std::printf("  %5.2f  %4.2f  %4d%s%s\n", outcome.Ratio(), outcome.goal, outcome.runs,
                outcome.steady ? "" : "  noisy", outcome.equal ? "" : "  RESULTS DIFFER");
    std::fflush(stdout);
}
