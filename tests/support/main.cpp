#include <gmock/gmock.h>

#include <cstdio>

#include "resident/core/windows_api.h"
#include "tests/support/crash.h"

// Over guarded memory, whether every block was guarded.
static bool AllGuarded() {
    const HMODULE guard = GetModuleHandleA("guarded_memory.dll");
    if (!guard)
        return true;
    const auto unguarded = reinterpret_cast<unsigned long (*)()>(
        reinterpret_cast<void*>(GetProcAddress(guard, "UnguardedBlocks")));
    const unsigned long count = unguarded();
    if (count)
        std::printf("%lu blocks were not guarded\n", count);
    return count == 0;
}

static void TellTest(const char*) {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    Tell(test ? test->test_suite_name() : "outside of tests");
    Tell(test ? "." : "");
    Tell(test ? test->name() : "");
    Tell(": ");
}

int main(int argc, char** argv) {
    EndOnCrash(TellTest);
    testing::InitGoogleMock(&argc, argv);
    const int result = RUN_ALL_TESTS();
    return AllGuarded() ? result : 1;
}
