#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "postrider.h"

TEST(FileSpecTest, HashesAnyTextToAName) {
    const char* const set = FileSpec().InvalidSet();
    const auto hash = [&](const std::string& text, const char* ext, const char* forbidden) {
        RBString result("before"), source(text.c_str()), extension(ext ? ext : "");
        const int done =
            FileSpec::HashFileName(result, source, ext ? &extension : nullptr, forbidden);
        return std::to_string(done) + result.Text();
    };
    EXPECT_EQ(hash("\\*:\".?/<>", nullptr, set), "15C2A3A222E3F2F3C3E");
    EXPECT_EQ(hash("", nullptr, set), "0NO_NAME");
    EXPECT_EQ(hash("a*b", nullptr, "x"), "0NO_NAME");
    EXPECT_EQ(hash("\xE9t\x7F \x80", nullptr, set), "1E9T\x7F 80");
    EXPECT_EQ(hash("report.t x*\xE9t", ".EML", set), "1REPORT.TXT");
    EXPECT_EQ(hash("a.b.c", ".EML", set), "1A.BC");
    EXPECT_EQ(hash("report", "eml", set), "1REPORT.EML");
    EXPECT_EQ(hash(".hidden.", ".EML", set), "12EHIDDEN2E.EML");
    EXPECT_EQ(hash("a.***", ".EML", set), "1A..EML");
    EXPECT_EQ(hash(std::string(10000, 'X') + ".txt", ".EML", set),
              "1" + std::string(260, 'X') + ".TXT");
    EXPECT_EQ(hash("a." + std::string(10000, 'X'), ".EML", set), "1A." + std::string(259, 'X'));
}

TEST(FileSpecTest, TakesItsOwnTexts) {
    FileSpec spec("C:\\mail\\inbox.dat");
    EXPECT_EQ(spec.Build('D', spec.FileName(), spec.Path().Text(), spec.FileName(), 1), 0);
    EXPECT_STREQ(spec.FullSpec(), "D:\\inbox\\\\mail\\inbox");
    EXPECT_TRUE(FileSpec("C:\\A\\b.c.").IsSameFile(FileSpec("c:\\a\\B.C")));
}
