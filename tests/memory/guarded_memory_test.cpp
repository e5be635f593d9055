// That the checking heap sees what it is there for: in another process, which it stops.

#include <gtest/gtest.h>

#include "resident/core/rb_string.h"
#include "resident/core/s_list.h"
#include "resident/core/windows_api.h"
#include "tests/guarded/guarded_memory.h"
#include "tests/support/helper_process.h"

// Whether the process that misuses a block of this size is stopped by the guard.
static bool Stopped(const std::string& misuse, unsigned int size, const char* guard = "behind") {
    SetEnvironmentVariableA("POSTRIDER_GUARD", guard);
    const unsigned long code =
        HelperProcess("misuse " + misuse + " " + std::to_string(size)).ExitCode();
    SetEnvironmentVariableA("POSTRIDER_GUARD", nullptr);
    EXPECT_TRUE(code <= 1 || code == kGuardComplaint) << misuse << " " << size << ": " << code;
    return code == kGuardComplaint;
}

TEST(GuardedMemory, StopsAProgramAtTheFirstByteOutsideABlock) {
    for (unsigned int size : {1u, 13u, 4096u, 4097u, 70001u}) {
        EXPECT_FALSE(Stopped("use", size));
        EXPECT_TRUE(Stopped("read-behind", size));
        EXPECT_TRUE(Stopped("write-behind", size));
        EXPECT_TRUE(Stopped("read-before", size, "before"));
        EXPECT_TRUE(Stopped("read-freed", size));
        EXPECT_TRUE(Stopped("free-twice", size));
    }
    // At the other end, what is written is seen when the block is freed.
    EXPECT_TRUE(Stopped("write-before", 13) && Stopped("write-behind", 13, "before"));
}

TEST(GuardedMemory, TextsAndNodesAreBlocksOfTheirOwn) {
    const unsigned long before = GuardedBlocks();
    {
        const RBString text("text");
        S_List list;
        int item;
        const unsigned long withText = GuardedBlocks();
        EXPECT_GE(withText, before + 2); // a representation and its buffer
        list.AppendItem(&item);
        EXPECT_EQ(GuardedBlocks(), withText + 1);
    }
    EXPECT_EQ(GuardedBlocks(), before);
    EXPECT_EQ(UnguardedBlocks(), 0u);
}
