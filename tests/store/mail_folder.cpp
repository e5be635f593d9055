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

std::vector<Operation> MailFolder::Operations(TypeDirFile type) {
    using File = DirectoryFile;
    const auto kReads = Operation::keReads, kChanges = Operation::keChanges;
    const auto kRewrites = Operation::keRewrites;
    const std::string alter = "Error BaseDirFile: AlterDirectoryBlock(), ";
    const std::string notAltered = Base("0|" + alter + "can't OPEN file");
    const bool inbox = type == keDirFolder, foreign = type == keDirForeign;
    return {
        {"count", kReads, 1, 0, "", [](File& file) { return file.GetInfo(keInfoAll); }},
        {"find", kReads, 316, keDirError, "",
         [&](File& file) { return file.FindRecord(mProbe, keFindPosition); }},
        {"add", kChanges, 1, 0, "",
         [&](File& file) {
             RbFile message(mFolder.Path("NEW.EML").c_str());
             return file.AddMessage(&message);
         }},
        {"create", kChanges, 1, !foreign, "", [](File& file) { return file.CreateDFile(); }},
        {"read a slot", kChanges, 316, keDirError, notAltered,
         [](File& file) {
             DirectoryRecord record;
             return file.AlterDirectoryBlock(record, 1u, 0);
         }},
        {"write a slot", kChanges, 316, keDirError, notAltered,
         [&](File& file) { return file.AlterDirectoryBlock(mProbe, 1u, 1); }},
        {"mark", kChanges, 1, 0, Base("0|Error BaseDirFile: MarkRecord(), can't open file"),
         [&](File& file) { return file.MarkRecord(mProbe, keMarkProcessed); }},
        {"delete", kChanges, 1, 0, Base("isOpen()|" + alter + "file not OPEN"),
         [&](File& file) { return file.DeleteMail(mProbe); }},
        {"compress", kRewrites, 1, 0, "", [](File& file) { return file.CompressDFile(); }},
        {"strip", kRewrites, 1, 0, foreign ? "" : kNotStripped,
         [](File& file) { return file.RemoveAllMessageIDs(File::keRemoveAll); }},
        {"list", kChanges, 1, 0, Base("0|Can't open Inbox D File"),
         [&](File& file) { return file.GetUIDList(&mItems); }},
        {"check", kChanges, keCheckSome, keCheckCannotOpen, "",
         [](File& file) { return file.CheckUnprocessedDDRs(keCheckProcessable, nullptr); }},
        {"take", kChanges, keGetSome, keGetNone, Inbox("fGood"),
         [&](File& file) { return file.GetUnprocessedDDRs(&mTaken, nullptr, keGetProcessable); }},
        {"move", kChanges, 1, 0, inbox ? kNotAged : "",
         [&](File& file) {
             file.DeleteOldMail(0, 0, &mOld);
             return !FileThere(file.Beside("A.EML").FullFileSpec());
         }},
        {"trim", kChanges, 0, 0, "", [](File& file) { return file.UpdateDFile(), 0; }},
        {"copy", kReads, 1, 0, "",
         [&](File& file) {
             RbFile copy(mFolder.Path("COPY").c_str());
             return file.GetDFile(copy);
         }},
    };
}
