#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "tests/support/random.h"

// The library and a model of it, which knows no file system and is shorter than the code, go
// through the same random steps; what both answer is compared after each, and nothing may be left
// behind. To add one: derive from SideBySide, draw and do a step in Step, and call
// Compare<Derived>(runs, steps) in a test.
//
// A run that differs is repeated with fewer and fewer steps; what is left of it is printed with the
// seed. POSTRIDER_SEED gives other steps, POSTRIDER_RUNS more runs, POSTRIDER_TRIES more tries
// (200) to leave steps out.
class SideBySide {
public:
    virtual ~SideBySide() = default;
    virtual void Step(Random& random) = 0;

    // What the step is, as the failure prints it.
    std::string Told() const { return mTold.str(); }
    // The first difference; empty while there is none.
    const std::string& Difference() const { return mDifference; }
    void Begin() { mTold.str(""); }

protected:
    template <class... Parts>
    void Say(const Parts&... parts) {
        ((mTold << parts << ' '), ...);
    }
    void Same(const char* what, const std::string& library, const std::string& model);
    void Same(const char* what, long long library, long long model) {
        Same(what, std::to_string(library), std::to_string(model));
    }

private:
    std::ostringstream mTold;
    std::string mDifference;
};

// A text with its bytes readable, and long runs of one byte short.
std::string Shown(const std::string& bytes);

void CompareRuns(const std::function<std::unique_ptr<SideBySide>()>& begin, unsigned int runs,
                 unsigned int steps);

template <class Sides, class... Arguments>
void Compare(unsigned int runs, unsigned int steps, Arguments... arguments) {
    CompareRuns([=]() { return std::unique_ptr<SideBySide>(new Sides(arguments...)); }, runs,
                steps);
}
