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
    std::function<void()> prepare;
};

// Runs the contest and prints its line; returns false when the check sums differ.
bool Run(const Contest& contest, int rounds = 9);

// The contests of each source.
std::vector<Contest> ListingContests(const std::string& folder);
std::vector<Contest> AccountContests(const std::string& folder);

// Prints what a walk through 1,000 and through 1,000,000 records takes of memory.
void PrintListingMemory(const std::string& folder);
