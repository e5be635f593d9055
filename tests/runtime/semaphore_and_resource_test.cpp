#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "postrider.h"
#include "tests/support/debug_output.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"

TEST(MessageSemaphore, IsHeldByWhoeverMakesTheFileFirst) {
    ScratchFolder folder;
    MessageBoxes boxes;
    {
        JxMailMessageSemaphore first;
        EXPECT_EQ(first.CreateSemaphoreA(folder.Path("MSG").c_str()), 1);
        EXPECT_EQ(first.IsCreated(), 1);
    }
    EXPECT_EQ(ReadFileBytes("MSG.SEM"), "");
    JxMailMessageSemaphore umlaut; // created and removed under one name
    EXPECT_EQ(umlaut.CreateSemaphoreA(folder.Path("GR\xDCN").c_str()), 1);
    EXPECT_EQ(umlaut.RemoveSemaphore(nullptr), 1);
    EXPECT_EQ(umlaut.CreateSemaphoreA(folder.Path("GR\xDCN").c_str()), 1);
    EXPECT_EQ(umlaut.RemoveSemaphore(nullptr), 1);
    WriteFileBytes("MSG.SEM", "theirs");
    WriteFileBytes("OTHER.SEM", "");
    JxMailMessageSemaphore second;
    EXPECT_EQ(second.CreateSemaphoreA(folder.Path("missing\\MSG").c_str()), 0);
    EXPECT_EQ(second.CreateSemaphoreA(folder.Path("MSG").c_str()), 0);
    EXPECT_EQ(second.RemoveSemaphore("OTHER"), 1);
    EXPECT_EQ(ReadFileBytes("MSG.SEM"), "theirs");
    EXPECT_EQ(second.RemoveSemaphore(nullptr), 1);
    EXPECT_FALSE(FileThere("MSG.SEM") || FileThere("OTHER.SEM"));
    EXPECT_THAT(boxes.Shown(), testing::IsEmpty());
    EXPECT_EQ(second.RemoveSemaphore(nullptr), 0);
    EXPECT_THAT(boxes.Texts(),
                testing::ElementsAre("Assert Failed!\nfReturn\n76\nJXRESIDT\\JXMSGSEM.CPP\n"));
}

static const char kBroken[] = "Safe assertion failed";

// The product's name is string 110 of the system resources.
static std::string Product(RbResFileRef& reference, int size = 64) {
    char buffer[64] = "";
    const int length = reference.LoadStringA(110, buffer, size);
    return std::string(buffer) + "/" + std::to_string(length);
}

TEST(ResFileRef, TellsBrokenPreconditionsAndGoesOn) {
    DebugOutput debug;
    RbResFileRef loaded(GetTaskInstance()), empty;
    loaded.EndUsingResourceFile();
    EXPECT_EQ(loaded.UsageCount(), -1);
    empty.BeginUsingResourceFile();
    EXPECT_EQ(empty.UsageCount(), 1);
    RbResFileRef(empty).EndUsingResourceFile(); // a copy is valid
    EXPECT_THAT(debug.TakeTexts(), testing::ElementsAre(kBroken, kBroken));

    loaded.DecrementUsage();
    EXPECT_THAT(debug.TakeTexts(), testing::IsEmpty());
    // Without a file each step says so.
    EXPECT_EQ(loaded.DecrementUsage() + loaded.UsageCount(), 0);
    EXPECT_THAT(debug.TakeTexts(), testing::SizeIs(1));
    EXPECT_EQ(Product(loaded), "/0");
    EXPECT_THAT(debug.TakeTexts(), testing::SizeIs(3));
    { const RbResFileRef copy(loaded); }
    EXPECT_THAT(debug.TakeTexts(), testing::SizeIs(2));
    loaded = RbResFileRef(GetTaskInstance());
    EXPECT_THAT(debug.TakeTexts(), testing::SizeIs(1));
    EXPECT_EQ(Product(loaded), "Postrider/9");
    EXPECT_EQ(loaded.UsageCount(), 0);
}
