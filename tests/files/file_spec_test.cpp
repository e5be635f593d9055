#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "postrider.h"

// The parts, each behind a bar: drive number, path, name, extension.
static std::string Parts(const FileSpec& spec) {
    return std::to_string(static_cast<short>(spec.Drive())) + "|" + spec.Path().Text() + "|" +
           spec.FileName() + "|" + spec.FileExt();
}

static std::string Of(size_t length) { return std::string(length, 'x'); }

TEST(FileSpecTest, ParsesIntoPartsAndCodes) {
    const struct {
        const char* text;
        int code;
        const char* parts; // replacing all of C:\OLD\OLD.OLD
        const char* kept;  // replacing what is given
    } specs[] = {
        {"c:\\MAIL\\INBOX.DAT", 0, "2|\\MAIL\\|INBOX|.DAT", "2|\\MAIL\\|INBOX|.DAT"},
        {"MAIL\\a.b.c", 0, "-1|\\MAIL\\|a.b|.c", "2|\\MAIL\\|a.b|.c"},
        {".BAK", 0, "-1|||.BAK", "2|\\OLD\\|OLD|.BAK"},
        {"NEW", 0, "-1||NEW|", "2|\\OLD\\|NEW|.OLD"},
        {"\\\\HOST\\SHARE\\F.X", 0, "-1|\\\\HOST\\SHARE\\|F|.X", "2|\\\\HOST\\SHARE\\|F|.X"},
        {"1:\\A\\F.X", 340, "2|\\OLD\\|OLD|.OLD", "2|\\OLD\\|OLD|.OLD"},
        {"D:\\A\\\\B\\F.X", 346, "3|\\OLD\\|F|.X", "3|\\OLD\\|F|.X"},
        {"\\\\\\A\\F", 346, "-1|\\OLD\\|F|", "2|\\OLD\\|F|.OLD"},
        {nullptr, 347, "2|\\OLD\\|OLD|.OLD", "2|\\OLD\\|OLD|.OLD"},
    };
    for (const auto& [text, code, parts, kept] : specs) {
        SCOPED_TRACE(text ? text : "null");
        FileSpec all("C:\\OLD\\OLD.OLD"), some(all);
        EXPECT_EQ(all.Parse(text, 1), code);
        EXPECT_EQ(Parts(all), parts);
        EXPECT_EQ(some.SetSpecPart(text, 0), code);
        EXPECT_EQ(Parts(some), kept);
    }
    EXPECT_EQ(Parts(FileSpec("E:MAIL\\IN.BOX", 1)), "4|\\MAIL\\IN.BOX\\||");
}

TEST(FileSpecTest, DescendsOneLevelAtATimeToTheRoot) {
    FileSpec spec("C:\\A\\BB\\CCC\\F.X"), bare("F.X");
    for (const char* path : {"\\A\\BB\\", "\\A\\", "\\", "\\"}) {
        spec.DecendPath();
        EXPECT_EQ(Parts(spec), "2|" + std::string(path) + "|F|.X");
    }
    bare.DecendPath();
    EXPECT_EQ(Parts(bare), "-1||F|.X");
}

TEST(FileSpecTest, ChangesOnePartAndKeepsTheOthers) {
    FileSpec spec("C:\\A\\F.X"), bare;
    for (const auto& [sub, path] : {std::pair("B", "\\A\\B\\"), {"\\C\\", "\\A\\B\\C\\"}}) {
        EXPECT_EQ(spec.AppendPath(sub), 0);
        EXPECT_EQ(Parts(spec), std::string("2|") + path + "|F|.X");
    }
    EXPECT_EQ(bare.AppendPath("B"), 0);
    EXPECT_EQ(Parts(bare), "-1|\\B\\||");
    for (const auto& [path, stored] : {std::pair("B", "\\B\\"), {"\\B", "\\B\\"}, {"", "\\\\"}}) {
        spec.SetPath(path);
        EXPECT_EQ(Parts(spec), std::string("2|") + stored + "|F|.X");
    }
    for (const auto& [ext, stored] : {std::pair("Y", ".Y"), {".ZZ", ".ZZ"}, {"", ""}}) {
        spec.SetFileExt(ext);
        EXPECT_STREQ(spec.FileExt(), stored);
    }
    spec.SetFileExt(Of(300).c_str());
    EXPECT_EQ(spec.FileExt(), "." + Of(259));
    spec.Reset();
    EXPECT_EQ(Parts(spec), "-1|||");
}

TEST(FileSpecTest, JoinsItsParts) {
    const auto joined = [](const FileSpec& spec) {
        std::string texts;
        for (const auto form :
             {&FileSpec::FullSpec, &FileSpec::FullFileSpec, &FileSpec::FullFilePath,
              &FileSpec::FullPath, &FileSpec::FullFileName, &FileSpec::ShortFileExt})
            if (const char* const text = (spec.*form)())
                texts += std::string(text) + " ";
        return texts;
    };
    EXPECT_EQ(joined(FileSpec("C:\\A\\F.X")), "C:\\A\\F.X C:\\A\\F.X C:\\A C:\\A\\ F.X X ");
    EXPECT_EQ(joined(FileSpec("F.")), "F. F   F. ");
    EXPECT_EQ(joined(FileSpec("C:\\", 1)), "C:\\ C:\\ C:\\ C:\\  ");
    EXPECT_EQ(joined(FileSpec("\\AB\\", 1)), "\\AB\\ \\AB \\AB \\AB\\  ");
}

TEST(FileSpecTest, OrdersByTheNameAndComparesTheWhole) {
    const FileSpec spec("C:\\B\\b.x"), upper("C:\\B\\B.X"), other("D:\\A\\B.Y");
    EXPECT_FALSE(spec < upper || upper < spec || other < spec);
    EXPECT_TRUE(spec < other && FileSpec("B") < spec);
    EXPECT_TRUE(spec == FileSpec(spec) && spec != upper);
    for (const char* differs : {"D:\\B\\b.x", "C:\\b.x", "C:\\B\\c.x", "C:\\B\\b"})
        EXPECT_FALSE(spec == FileSpec(differs));
}

TEST(FileSpecTest, JudgesNamesAndPathsByTheirForbiddenCharacters) {
    FileSpec spec("C:\\OLD\\OLD.OLD");
    const struct {
        const char* text;
        int name, path, strict; // the code as a name without extension, as a path, as a strict one
    } texts[] = {{"", 0, 0, 0},           {"a b", 0, 0, 0},        {"a.b.", 346, 0, 0},
                 {"C:\\a", 346, 0, 346},  {"\\a", 346, 0, 346},    {"CC:", 346, 346, 346},
                 {":", 346, 346, 346},    {"a:b:", 346, 346, 346}, {"a*", 346, 346, 346},
                 {"a.\"", 346, 346, 346}, {"\\a?", 346, 346, 346}, {"a/b", 346, 346, 346},
                 {"<", 346, 346, 346},    {"a\\>", 346, 346, 346}};
    for (const auto& [text, name, path, strict] : texts) {
        SCOPED_TRACE(text);
        RBString string(text);
        EXPECT_EQ(FileSpec::isValidFileNoExt(string, spec.InvalidSet()), name);
        EXPECT_EQ(FileSpec::isValidPathName(string, spec.InvalidSet(), 0), path);
        EXPECT_EQ(FileSpec::isValidPathName(string, spec.InvalidSet(), 1), strict);
        EXPECT_EQ(FileSpec::isValidPathName(string, "", 0), 347);
    }
    RBString bad("D:\\N*\\"), folder("D:\\N"), ext(".X");
    EXPECT_EQ(spec.SetValidSpecPart(bad, 1), 346);
    EXPECT_EQ(Parts(spec), "2|\\OLD\\|OLD|.OLD");
    EXPECT_EQ(spec.SetValidSpecPart(folder, 1) + spec.SetValidSpecPart(ext, 0), 0);
    EXPECT_EQ(Parts(spec), "3|\\N\\|OLD|.X");
}

TEST(FileSpecTest, LimitsEveryPartTo260Characters) {
    const auto build = [](std::string path, std::string name = "", std::string ext = "") {
        return FileSpec().Build(0, path.c_str(), name.c_str(), ext.c_str(), 1);
    };
    EXPECT_EQ(build("", Of(260), Of(260)), 0);
    EXPECT_EQ(build("", Of(261)), 344);
    EXPECT_EQ(build("", "", Of(261)), 345);
    EXPECT_EQ(build("\\" + Of(259) + "\\"), 0);
    EXPECT_EQ(build(Of(260)), 342);
    EXPECT_EQ(build("\\" + Of(260) + "\\"), 342);
    EXPECT_EQ(build("A\\" + Of(261)), 343);
    FileSpec spec("C:\\A\\B.C");
    EXPECT_NE(spec.Parse(("D:\\" + Of(10000) + "\\" + Of(100) + ".X").c_str(), 0), 0);
    EXPECT_EQ(Parts(spec), "3|\\A\\|" + Of(100) + "|.X");
}

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
