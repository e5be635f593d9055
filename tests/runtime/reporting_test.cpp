#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "postrider.h"
#include "tests/support/debug_output.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"

using testing::ElementsAre;
using testing::IsEmpty;

// What the two dispatchers do alike. `fail` reports with nothing but an expression.
struct Dispatcher {
    void (*fail)(const char* expression, int buttonMask);
    void (*select)(int outputs, const char* logFileName);
    unsigned int (*count)();
    void (*setCount)(int count);
    std::string source, invalidCount;
};

static void FailAssert(const char* text, int mask) {
    RbAssertDispatch(0, text, nullptr, 0, nullptr, mask);
}
static void FailError(const char* text, int mask) {
    EXPECT_EQ(RbErrorDispatch(-5, text, nullptr, 0, nullptr, mask), -5);
}

static const Dispatcher kDispatchers[] = {
    {FailAssert, RbAssertSelectOutput, RbAssertGetCount, RbAssertSetCount, "RBASSERT", "RbAssert"},
    {FailError, RbErrorSelectOutput, RbErrorGetCount, RbErrorSetCount, "RBERROR", "RbError"}};

class Reporting : public testing::TestWithParam<int> {
protected:
    Reporting() { ResetBoth(); }
    ~Reporting() override { ResetBoth(); }

    // The log's name cannot be unset: back to the one that programs start with.
    static void ResetBoth() {
        for (const Dispatcher& each : kDispatchers) {
            each.select(4, "RBERROR.LOG");
            each.select(2, nullptr);
            each.setCount(0);
        }
    }
    std::string Complaint(const std::string& text) const {
        return "Assert Failed!\n" + text + "\nJXRESIDT\\" + mThis.source + ".CPP\n";
    }

    const Dispatcher& mThis = kDispatchers[GetParam()];
    const Dispatcher& mOther = kDispatchers[1 - GetParam()];
    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    DebugOutput mDebug;
};

INSTANTIATE_TEST_SUITE_P(Dispatchers, Reporting, testing::Values(0, 1));

TEST_P(Reporting, GoesToTheSelectedOutputsAndCounts) {
    const std::vector<std::string> report = {"Assert Failed!\na != 0\n"}, none;
    for (int outputs = 0; outputs < 8; ++outputs) {
        SCOPED_TRACE(outputs);
        DeleteFileA("here.log");
        mThis.setCount(0);
        mThis.select(outputs, outputs & 4 ? "here.log" : nullptr);
        mThis.fail("a != 0", 0);
        EXPECT_EQ(mThis.count(), 1u);
        EXPECT_EQ(mDebug.TakeTexts(), outputs & 1 ? report : none);
        EXPECT_EQ(mBoxes.TakeTexts(), outputs & 2 ? report : none);
        EXPECT_EQ(FileThere("here.log"), outputs >= 4);
    }
    EXPECT_EQ(mOther.count(), 0u);
    mOther.fail("has outputs of its own", 0);
    EXPECT_THAT(mBoxes.Texts(), testing::SizeIs(1));
}

TEST_P(Reporting, ComplainsAboutSelectionsAndStoresThem) {
    const std::string noName = Complaint("File name NOT given but file output selected");
    const std::string idleName = Complaint("File name given but file output NOT selected");
    const std::string unknown = Complaint("RbAssertSelectOutput: undocumented flag used");

    mThis.select(4, "first.log");
    mThis.select(4 | INT_MIN, nullptr);
    EXPECT_THAT(mDebug.TakeTexts(), ElementsAre(noName, unknown));
    mThis.fail("kept name", 0);
    EXPECT_EQ(ReadFileBytes("first.log"), "Assert Failed!\r\nkept name\r\n");

    mThis.select(8, "second.log");
    EXPECT_THAT(mDebug.TakeTexts(), ElementsAre(idleName, unknown));
    mThis.fail("nowhere", 0);
    EXPECT_EQ(mThis.count(), 6u);
    EXPECT_THAT(mBoxes.Shown(), IsEmpty());
    mThis.select(4, nullptr);
    mThis.fail("new name", 0);
    EXPECT_EQ(ReadFileBytes("second.log"), "Assert Failed!\r\nnew name\r\n");
}

TEST_P(Reporting, KeepsANegativeCountAndComplains) {
    mThis.setCount(-1);
    EXPECT_EQ(mThis.count(), 0xFFFFFFFFu);
    EXPECT_THAT(mDebug.TakeTexts(),
                ElementsAre(Complaint(mThis.invalidCount + "SetCount: Invalid parameter")));
    mThis.setCount(INT_MAX);
    mThis.fail("one more than a signed count holds", 0);
    EXPECT_EQ(mThis.count(), 0x80000000u);
}

TEST_P(Reporting, DisablesButtonsByTheMask) {
    const auto enabled = [&](int mask) {
        mThis.fail("x", mask);
        return mBoxes.Shown().back().enabledButtons;
    };
    EXPECT_THAT(enabled(0x8F), ElementsAre(1, 2, 3));
    EXPECT_THAT(enabled(0x10), ElementsAre(1, 3));
    EXPECT_THAT(enabled(0x40), ElementsAre(1, 2));
    EXPECT_THAT(enabled(0x70), IsEmpty());
    EXPECT_THAT(mDebug.Texts(), ElementsAre("Assert Failed!\nAll buttons cannot be disabled in "
                                            "RbLogErrorAIDDialog\nLOGERR\n"));
}

TEST(ReportOutputs, HaveALineForEveryFieldThatIsNotNull) {
    DebugOutput debug;
    MessageBoxes boxes;
    RbAssertDispatch(-1, "holds", nullptr, 0, nullptr, 0);
    EXPECT_EQ(RbErrorDispatch(0, "none", nullptr, 0, nullptr, 0), 0);
    RbLogErrorAIDDialog(nullptr, "five", -7, "HERE.CPP", 0);
    EXPECT_THAT(boxes.Texts(), ElementsAre("Assert Failed!\nfive\n-7\nHERE.CPP\n"));
    const std::string longText(10000, '%');
    RbLogErrorOutputString("", longText.c_str(), 1, "");
    EXPECT_THAT(debug.Texts(), ElementsAre("Assert Failed!\n\n" + longText + "\n1\n\n"));
}

TEST(ReportProcess, StartsWithTheDialogAndTheDefaultLogAndAbortsBeforeIt) {
    ScratchFolder folder;
    EXPECT_EQ(HelperProcess("report -1 1").ExitCode(), 1u + 16);
    EXPECT_EQ(HelperProcess("report 6 2").ExitCode(), 65535u);
    EXPECT_FALSE(FileThere("RBERROR.LOG"));
    EXPECT_EQ(HelperProcess("report 4 1").ExitCode(), 2u + 256);
    EXPECT_EQ(ReadFileBytes("RBERROR.LOG"), "Assert Failed!\r\na != 0\r\n");
    DeleteFileA("RBERROR.LOG"); // the errors' own name is the same
    EXPECT_EQ(HelperProcess("report e4 1").ExitCode(), 2u + 256);
    EXPECT_EQ(ReadFileBytes("RBERROR.LOG"), "Assert Failed!\r\na != 0\r\n");
}
