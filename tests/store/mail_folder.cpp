#include "tests/store/mail_folder.h"

#include <regex>
#include <set>

MailFolder::~MailFolder() {
    EXPECT_EQ(Reports(), "");
    EXPECT_FALSE(FileThere("MISSING.DAT"));
    RbAssertSelectOutput(RB_OUTPUT_DIALOG, nullptr);
    RbAssertSetCount(static_cast<int>(mReportCount));
}

std::string MailFolder::Names(Text folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string() + " ");
    std::string text;
    for (Text name : names)
        text += name;
    return text;
}

std::string MailFolder::Reports() {
    std::string reports;
    // Failed expectations are sent to the debugger output, too.
    for (Text text : mOutput.TakeTexts())
        if (text.compare(0, 15, "Assert Failed!\n") == 0)
            reports += std::regex_replace(text.substr(15), std::regex("\n([0-9]+\n)?"), "|");
    return reports;
}

std::string MailFolder::First(Text path) {
    char *topic, *file, *sender;
    unsigned short kind, flag;
    const int found = GetFirstRecord(path.c_str(), &topic, &file, &sender, &kind, &flag);
    const std::string first = found ? topic + std::string("/") + file : "";
    Done();
    return first;
}
