#pragma once

#include <functional>
#include <string>
#include <vector>

// How a work's cost grows with the number of records it is given.
struct Growth {
    std::string name;
    std::vector<unsigned int> counts;
    // Makes the input, outside the measured time.
    std::function<void(unsigned int count)> prepare;
    std::function<void()> work;
};

struct GrowthOutcome {
    std::string name;
    std::vector<unsigned int> counts; // ends early where the work would take too long
    std::vector<double> perRecord;    // seconds, for each count
    // The exponent over the last two steps, of the flatter one: 1 when the cost a record stays.
    double Exponent() const;
    bool Linear() const;
};

GrowthOutcome Run(const Growth& growth);
void Print(const GrowthOutcome& outcome);

std::vector<Growth> Growths(const std::string& folder);
