#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "postrider.h"

TEST(FileSpecTest, TakesItsOwnTexts) {
    FileSpec spec("C:\\mail\\inbox.dat");
    EXPECT_EQ(spec.Build('D', spec.FileName(), spec.Path().Text(), spec.FileName(), 1), 0);
    EXPECT_STREQ(spec.FullSpec(), "D:\\inbox\\\\mail\\inbox");
    EXPECT_TRUE(FileSpec("C:\\A\\b.c.").IsSameFile(FileSpec("c:\\a\\B.C")));
}
