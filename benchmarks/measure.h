#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Ratios of medians: a piece of work of the library against a plain reference, by turns in the same
// run, since absolute times say little on a shared machine.

struct Contest {
    std::string name;
    double goal; // the ratio aimed at
    // Both do the work once on fresh input and return a check sum, which must be equal.
    std::function<std::uint64_t()> reference;
    std::function<std::uint64_t()> library;
    // Makes the input of either, outside the measured time; may be empty.
    std::function<void()> prepare = {};
    // A check sum of what either left on the disk, outside the measured time; may be empty.
    std::function<std::uint64_t()> inspect = {};
    int rounds = 9;
    // Both measure themselves and return nanoseconds in place of a check sum.
    bool timesItself = false;
};

// Where the middle half of some times lies, in seconds.
struct Quartiles {
    double lower;
    double median;
    double upper;
};

// What became of a contest.
struct Outcome {
    std::string name;
    double goal;
    Quartiles library;
    Quartiles reference;
    int runs;
    bool steady; // the last two runs' ratios differ by at most a tenth
    bool equal;  // the check sums do not differ

    double Ratio() const { return library.median / reference.median; }
};

// Repeats the contest's rounds until two runs in a row agree, or it gives up. The figures are those
// of the last two runs together, of all when none agreed.
Outcome Run(const Contest& contest);

void PrintHeading();
void Print(const Outcome& outcome);

// The clock of all measurements.
double Seconds();
// `times` must not be empty.
Quartiles QuartilesOf(std::vector<double> times);

// The contests of each source.
std::vector<Contest> ListingContests(const std::string& folder);
std::vector<Contest> StoreContests(const std::string& folder);
std::vector<Contest> ExtractionContests(const std::string& folder);
std::vector<Contest> StringContests(const std::string& folder);
std::vector<Contest> AccountContests(const std::string& folder);
std::vector<Contest> LoadContests(const std::string& folder);
std::vector<Contest> WindowContests(const std::string& folder);

// A notifier's walk through a D file; a check sum of what it was handed.
std::uint64_t WalkByLibrary(const std::string& path);

// Prints what a walk through 1,000 and through 1,000,000 records takes of memory.
void PrintListingMemory(const std::string& folder);
