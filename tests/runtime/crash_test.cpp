// A test program that crashes ends at once, and says where.

#include <gmock/gmock.h>

#include <tuple>

#include "resident/core/windows_api.h"
#include "tests/support/crash.h"
#include "tests/support/helper_process.h"
#include "tests/support/scratch.h"

using namespace testing;

TEST(Crash, IsToldWithItsCallers) {
    const ScratchFolder folder;
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"exception", "exception C0000005 at helper_process.exe+", "  CrashBy ("},
        {"trap", "exception C000001D at helper_process.exe+", "  CrashBy ("},
        {"overflow", "exception C00000FD at helper_process.exe+", "  CrashBy ("},
        {"abort", "abort", "  main ("},
        {"throw", "abort", "  main ("}};
    for (const auto& [how, what, caller] : cases) {
        HelperProcess process("helper_process.exe", std::string("crash ") + how,
                              folder.Path("errors"));
        EXPECT_EQ(process.ExitCode(), DWORD{kCrashExitCode}) << how;
        EXPECT_THAT(ReadFileBytes(folder.Path("errors")),
                    AllOf(HasSubstr(std::string("CRASHED: ") + what), HasSubstr(caller),
                          HasSubstr("helper_process.cpp:")))
            << how;
    }
}
