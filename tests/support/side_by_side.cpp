#include "tests/support/side_by_side.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "resident/core/windows_api.h"
#include "tests/guarded/guarded_memory.h"
#include "tests/support/left_behind.h"

using Seeds = std::vector<std::uint32_t>;
using Begin = std::function<std::unique_ptr<SideBySide>()>;

std::string Shown(const std::string& bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size() && text.size() < 2000;) {
        const std::size_t end = std::min(bytes.find_first_not_of(bytes[i], i), bytes.size());
        const auto byte = static_cast<unsigned char>(bytes[i]);
        char code[8];
        std::snprintf(code, sizeof code, byte < 32 || byte > 126 ? "\\x%02X" : "%c", byte);
        const std::size_t run = end - i > 4 ? end - i : 1;
        text += code + (run > 1 ? "{" + std::to_string(run) + "}" : "");
        i += run;
    }
    return '"' + text + '"';
}

void SideBySide::Same(const char* what, const std::string& library, const std::string& model) {
    if (!mDifference.empty() || library == model)
        return;
    const auto [first, second] =
        std::mismatch(library.begin(), library.end(), model.begin(), model.end());
    const std::size_t at = first - library.begin(), from = at > 40 ? at - 40 : 0;
    mDifference = std::string(what) + ": " + Shown(library.substr(from)) +
                  "\n  the model: " + Shown(model.substr(from)) + "\n  at byte " +
                  std::to_string(at) + " of " + std::to_string(library.size()) + " and " +
                  std::to_string(model.size());
}

// What the next call finds on the stack and in new memory of the guarded heap: a byte that nobody
// has set and that reaches a file or a result is not the model's.
[[gnu::noinline]] static void LeaveBehind(int byte) {
    char stack[0x10000];
    std::memset(stack, byte, sizeof stack);
    asm volatile("" : : "r"(stack) : "memory");
    static const auto fill = reinterpret_cast<decltype(&FillNewMemory)>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("guarded_memory.dll"), "FillNewMemory")));
    if (fill)
        fill(byte);
}

// Does the steps until a difference; cuts them behind it. Returns what was done, empty without one.
static std::string Differs(const Begin& begin, Seeds& steps) {
    const std::unique_ptr<SideBySide> sides = begin();
    std::string done;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        Random random(steps[i]);
        sides->Begin();
        LeaveBehind(steps[i] & 0xFF);
        sides->Step(random);
        done += "  " + sides->Told() + "\n";
        if (!sides->Difference().empty()) {
            steps.resize(i + 1);
            return done + "  " + sides->Difference();
        }
    }
    return "";
}

static unsigned int Setting(const char* name, unsigned int otherwise) {
    const char* const value = std::getenv(name);
    return value ? std::strtoul(value, nullptr, 10) : otherwise;
}

static std::string Shorten(const Begin& begin, Seeds steps, std::string done) {
    unsigned int tries = Setting("POSTRIDER_TRIES", 200);
    for (std::size_t part = std::max<std::size_t>(steps.size() / 2, 1); part && tries; part /= 2)
        for (std::size_t from = 0; from + part < steps.size() && tries; --tries) {
            Seeds fewer = steps;
            fewer.erase(fewer.begin() + from, fewer.begin() + from + part);
            const std::string still = Differs(begin, fewer);
            if (still.empty())
                from += part;
            else
                done = still, steps = fewer;
        }
    return done;
}

void CompareRuns(const Begin& begin, unsigned int runs, unsigned int steps) {
    const unsigned int seed = Setting("POSTRIDER_SEED", 1);
    runs *= Setting("POSTRIDER_RUNS", 1);
    // Guarded memory takes its time.
    const bool guarded = GetModuleHandleA("guarded_memory.dll");
    if (guarded)
        runs = (runs + 29) / 30;
    Seeds drawn(steps);
    for (unsigned int run = 0; run < runs; ++run) {
        Random random(seed, testing::UnitTest::GetInstance()->current_test_info()->name(), run);
        std::generate(drawn.begin(), drawn.end(), [&] { return random.Next(); });
        const std::string done = Differs(begin, drawn);
        if (!done.empty()) {
            ADD_FAILURE() << "POSTRIDER_SEED=" << seed << ", run " << run << ":\n"
                          << Shorten(begin, drawn, done);
            return;
        }
    }
    // The last run again.
    EXPECT_EQ(guarded ? 0 : LeftBehind([&] { Differs(begin, drawn); }), 0);
}
