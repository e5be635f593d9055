#include <gmock/gmock.h>

#include "postrider.h"
#include "programs/mailfolder/quiet.h"
#include "resources/jxsysres.h"
#include "tests/support/debug_output.h"
#include "tests/support/message_boxes.h"

TEST(Quiet, RefusesMessageBoxesAndReportDialogs) {
    MessageBoxes boxes; // answers what shows all the same
    DebugOutput output;
    const unsigned int reports = RbAssertGetCount();
    {
        const Quiet quiet;
        PrintError(701, 110, 0, GetJxSystemResHandle(), "RB.DAT");
        RbAssertDispatch(0, "expression", "message", 1, "source", 0);
    }
    EXPECT_THAT(boxes.Texts(), testing::IsEmpty());
    EXPECT_FALSE(output.Texts().empty());

    PrintError(701, 110, 0, GetJxSystemResHandle(), "RB.DAT");
    EXPECT_EQ(boxes.Texts().size(), 1u);
    RbAssertSelectOutput(RB_OUTPUT_DIALOG, nullptr);
    RbErrorSelectOutput(RB_OUTPUT_DIALOG, nullptr);
    RbAssertSetCount(static_cast<int>(reports));
}
