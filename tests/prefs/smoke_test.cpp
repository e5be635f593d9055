#include <gtest/gtest.h>

#include "postrider.h"
#include "tests/support/message_boxes.h"

TEST(Smoke, ReportsAreSeen) {
    MessageBoxes boxes;
    RbAssertDispatch(0, "a != 0", nullptr, 0, nullptr, 0);
    ASSERT_EQ(boxes.Shown().size(), 1u);
    EXPECT_EQ(boxes.Shown()[0].text, ReportText("a != 0", "", 0, ""));
    EXPECT_EQ(boxes.Shown()[0].enabledButtons, (std::vector<int>{1, 2, 3}));
}
