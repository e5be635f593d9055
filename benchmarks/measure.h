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
};

// Runs the contest and prints its line; returns false when the check sums differ.
bool Run(const Contest& contest);

// The clock of all measurements.
double Seconds();
double Median(std::vector<double> times);

// The contests of each source.
std::vector<Contest> ListingContests(const std::string& folder);
std::vector<Contest> AccountContests(const std::string& folder);
std::vector<Contest> StoreContests(const std::string& folder);

// Prints what a walk through 1,000 and through 1,000,000 records takes of memory.
void PrintListingMemory(const std::string& folder);

// Prints what taking a record costs in a short and in a long inbox, and how much of it is the walk
// of the list that the record is appended to.
void PrintTakingTimes(const std::string& folder);
