#include <gmock/gmock.h>

#include <sstream>

#include "tests/core/settings.h"

TEST(RbRefCounter, TellsOfZeroAndReportsACountOutOfRange) {
    Reports reports;
    RbRefCounter counter(1), full(0);
    counter.Increment();
    EXPECT_FALSE(counter.Decrement());
    EXPECT_TRUE(counter.Decrement());
    EXPECT_EQ(reports.Shown().size(), 0u);
    std::stringstream counts;
    counter.Decrement();
    counts << counter << ' ';
    counter.Increment();
    std::istringstream("2147483647") >> full;
    full.Increment();
    counts << counter << ' ' << full;
    EXPECT_EQ(counts.str(), "-1 0 -2147483648");
    const std::string over = ReportText("(mlCount+1) > 0", "", 67, "JXRESIDT\\RBCOUNTR.CPP");
    const std::string under = ReportText("mlCount >= 1", "", 77, "JXRESIDT\\RBCOUNTR.CPP");
    EXPECT_THAT(reports.Texts(), testing::ElementsAre(under, over, over));
}
