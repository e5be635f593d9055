#pragma once

#include <string>
#include <vector>

#include "tests/fuzz/watch.h"
#include "tests/support/random.h"

// The files of a folder that are inputs of a format: FORMAT-*.bin, by their names.
std::vector<std::string> InputFiles(const std::string& folder, const std::string& format);

// The inputs of one format that took an edge which none had taken before, or more often; what comes
// next is one of them, damaged further. Where edges are not told, these are the inputs given.
class Guided {
public:
    // An edge, and how often it was taken, roughly.
    struct Step {
        unsigned int edge;
        unsigned char often;
    };

    // What is kept anew goes into the folder `keep`, too, unless it is "".
    Guided(const Format& format, const std::string& keep);

    // Runs an input that was kept before, and one that is damaged. Returns whether all was well.
    bool RunKept(Watch& watch, const std::string& input);
    bool RunDamaged(Watch& watch, Random& random);

    unsigned int Kept() const { return mKept.size(); }

private:
    std::vector<Step> Steps() const;
    std::vector<Step> News() const;
    void Keep(const std::string& input);
    std::string Trimmed(Watch& watch, std::string input, const std::vector<Step>& steps);

    const Format& mFormat;
    const std::string mKeep;
    std::vector<std::string> mKept;
    std::vector<unsigned char> mSeen; // each edge's bits
};
