#include <gmock/gmock.h>

#include "resident/core/windows_api.h"
#include "tests/mailfolder/tool.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

// A type 0 folder in the current one: two sound messages with their files, a free slot between.
class FolderCommands : public testing::Test {
protected:
    FolderCommands() {
        PutMessageFile("A.EML", "Hello");
        PutMessageFile("B.EML", "Good bye");
        Put(kHeader + A() + Free(A()) + B());
    }

    static std::string A() { return Date(Message("Hello", "A.EML"), kDate); }
    static std::string B() { return Status(Date(Message("Good bye", "B.EML"), kDate + 60), 1); }
    static void Put(const std::string& bytes) { WriteFileBytes("DFile", bytes); }
    static void PutMessageFile(const std::string& name, const std::string& topic) {
        WriteFileBytes(name, Date(Message(topic, "OLD.EML"), kDate) + "A text.\r\n");
    }
    // "what slot position" of each problem.
    static std::vector<std::string> Problems(const Ran& ran) {
        std::vector<std::string> problems;
        const nlohmann::json json = ran.Json();
        for (const auto& problem : json["problems"])
            problems.push_back(problem["what"].get<std::string>() + " " + problem["slot"].dump() +
                               " " + problem["position"].dump());
        return problems;
    }
    static std::vector<std::string> Check(const std::string& bytes, Text arguments = "") {
        Put(bytes);
        const Ran ran = RunTool("check . --json " + arguments);
        EXPECT_EQ(ran.code, Problems(ran).empty() ? 0u : 3u);
        return Problems(ran);
    }

    // 2001-02-03 04:05:06
    static constexpr unsigned long kDate = 2082844800ul + 981173106ul;
    ScratchFolder mFolder;
};

TEST_F(FolderCommands, ListShowsATable) {
    const Ran ran = RunTool("list .");
    EXPECT_EQ(ran.code, 0u);
    EXPECT_EQ(ran.out, mFolder.Path("DFile") + R"(

  From        Topic     Date                 Kind  Processed  File
  ----------  --------  -------------------  ----  ---------  -----
  Anna Smith  Hello     2001-02-03 04:05:06     1  -          A.EML
  Anna Smith  Good bye  2001-02-03 04:06:06     1  yes        B.EML

  2 messages, 1 processed
)");
    EXPECT_EQ(ran.err, "");
}

TEST_F(FolderCommands, ListTellsJsonInUtf8) {
    Put(kHeader + Message("Gr\xFC\xDF"
                          "e \x93\x07\"",
                          "A.EML"));
    const auto json = RunTool("list DFile --json").Json();
    ASSERT_EQ(json["messages"].size(), 1u);
    const auto& message = json["messages"][0];
    EXPECT_EQ(message["topic"], "Gr\u00FC\u00DFe \u201C\x07\"");
    EXPECT_EQ(message["slot"], 1);
    EXPECT_EQ(message["position"], 316);
    EXPECT_EQ(message["processed"], false);
    EXPECT_EQ(message["date"], "1904-01-01 00:00:01");
}

TEST_F(FolderCommands, ListOfAnEmptyFolder) {
    Put(kHeader);
    EXPECT_THAT(RunTool("list .").out, HasSubstr("No messages."));
    EXPECT_THAT(RunTool("list . --json").Json()["messages"], IsEmpty());
}

TEST_F(FolderCommands, AFolderMeansItsDFileThenItsMFile) {
    EXPECT_EQ(RunTool("info . --json").Json()["file"], mFolder.Path("DFile"));
    WriteFileBytes("MFile", kHeader);
    EXPECT_EQ(RunTool("info . --json").Json()["file"], mFolder.Path("DFile"));
    DeleteFileA("DFile");
    EXPECT_EQ(RunTool("info . --json").Json()["file"], mFolder.Path("MFile"));
    DeleteFileA("MFile");
    const Ran ran = RunTool("info .");
    EXPECT_EQ(ran.code, 1u);
    EXPECT_THAT(ran.err, HasSubstr("there is no \"DFile\" or \"MFile\" in it"));
}

TEST_F(FolderCommands, InfoCounts) {
    Put(kHeader + A() + Free(A()) + B() + Broken(A()) + "rest");
    auto json = RunTool("info . --json").Json();
    json.erase("file"), json.erase("typeBecause");
    EXPECT_EQ(json, nlohmann::json::parse(R"({
        "type": 0, "size": 1584, "slots": 4, "messages": 2, "unprocessed": 1,
        "unprocessedKind1": true, "freeSlots": 1, "brokenSlots": 1,
        "bytesBehindLastRecord": 4, "newest": "2001-02-03 04:06:06"})"));
    EXPECT_THAT(RunTool("info .").out, HasSubstr("Slots         4, 1 free, 1 broken"));
}

TEST_F(FolderCommands, InfoGuessesTheType) {
    const auto type = [](const std::string& bytes) {
        Put(bytes);
        return RunTool("info . --json").Json()["type"].get<int>();
    };
    EXPECT_EQ(type(kHeader), 0);
    EXPECT_EQ(type(""), 2);
    EXPECT_EQ(type(A() + B()), 2);
    EXPECT_EQ(type(Free(A()) + B()), 2);
    EXPECT_EQ(type(With(kHeader, 300, "\x01") + A()), 0);
    EXPECT_EQ(RunTool("info . --type 2 --json").Json()["slots"], 2);
}

TEST_F(FolderCommands, CheckFindsNoDamageInASoundFolder) {
    const Ran ran = RunTool("check .");
    EXPECT_EQ(ran.code, 0u);
    EXPECT_EQ(ran.out,
              mFolder.Path("DFile") + ": type 0, 3 slots, 2 messages, 1 free\nNo damage found.\n");
}

TEST_F(FolderCommands, CheckTellsWhatIsDamagedAndWhatWouldBeLost) {
    Put(kHeader + A() + Broken(B()));
    const Ran ran = RunTool("check .");
    EXPECT_EQ(ran.code, 3u);
    EXPECT_THAT(ran.out, HasSubstr("Slot 2, byte 632: The record is marked as broken"));
    EXPECT_THAT(ran.out, HasSubstr("Lost: The message is not listed"));
    EXPECT_THAT(ran.out, HasSubstr("The message file B.EML has only a record that cannot be read"));
    EXPECT_THAT(ran.out, HasSubstr("2 problems found."));
    EXPECT_EQ(ReadFileBytes("DFile"), kHeader + A() + Broken(B()));
}

TEST_F(FolderCommands, CheckFindsDamagedFields) {
    const std::string topic = With(A(), 4, "\x1C");
    const std::string name = With(A(), 38, "\x22");
    EXPECT_THAT(Check(kHeader + topic + B()), ElementsAre("field-length 1 316"));
    EXPECT_THAT(Check(kHeader + B() + With(A(), 72, "\x20")), ElementsAre("field-length 2 632"));
    EXPECT_THAT(Check(kHeader + B() + With(A(), 186, "\xFF")), ElementsAre("field-length 2 632"));
    EXPECT_THAT(Check(kHeader + B() + With(A(), 309, "\x11")), ElementsAre("field-range 2 632"));
    EXPECT_THAT(Check(kHeader + B() + Kind(A(), 6)), ElementsAre("field-range 2 632"));
    EXPECT_THAT(Check(kHeader + B() + With(A(), 5, "\x07")),
                ElementsAre("control-topic 2 632", "file-of-broken-record null null"));
    // The whole field is the name: the text, up to the zero behind it.
    EXPECT_THAT(Check(kHeader + B() + name), ElementsAre("field-length 2 632"));
}

TEST_F(FolderCommands, CheckFindsWhereTheFileIsCut) {
    EXPECT_THAT(Check(kHeader + A() + Cut(B())),
                ElementsAre("cut-record 2 632", "file-without-record null null"));
    EXPECT_THAT(Check(kHeader.substr(1), "--type 0"),
                ElementsAre("no-header 0 0", "file-without-record null null",
                            "file-without-record null null"));
    EXPECT_THAT(Check(A() + B() + "x"), ElementsAre("cut-record 2 632"));
}

TEST_F(FolderCommands, CheckComparesRecordsWithMessageFiles) {
    EXPECT_THAT(Check(kHeader + A() + B() + Message("Gone", "C.EML")),
                ElementsAre("missing-file 3 948"));
    EXPECT_THAT(Check(kHeader + A() + B() + Message("Out", "..\\C.EML")),
                ElementsAre("name-leaves-folder 3 948"));
    EXPECT_THAT(Check(kHeader + A() + B() + Message("No name", "")),
                ElementsAre("no-file-name 3 948"));
    EXPECT_THAT(Check(kHeader + A() + B() + Message("Again", "a.eml")),
                ElementsAre("second-record 3 948"));
    WriteFileBytes("C.EML", std::string(315, 'x'));
    EXPECT_THAT(Check(kHeader + A() + B()),
                ElementsAre("short-message-file null null", "file-without-record null null"));
    EXPECT_THAT(Check(A() + A(), "--type 0"),
                ElementsAre("used-header 0 0", "file-without-record null null",
                            "short-message-file null null", "file-without-record null null"));
}

TEST_F(FolderCommands, RebuildAsksFirst) {
    const std::string before = ReadFileBytes("DFile");
    const Ran ran = RunTool("rebuild .");
    EXPECT_EQ(ran.code, 2u);
    EXPECT_THAT(ran.out, HasSubstr("2 message files to make a record from"));
    EXPECT_EQ(ran.err, "Nothing was changed: say --yes to do it.\n");
    EXPECT_EQ(ReadFileBytes("DFile"), before);
    EXPECT_FALSE(FileThere("DFile.BAK"));
}

TEST_F(FolderCommands, RebuildMakesTheRecordsAnewAndKeepsTheOldFile) {
    const std::string damaged = kHeader + Broken(A()) + "rest";
    Put(damaged);
    const Ran ran = RunTool("rebuild . --yes");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("Rebuilt with 2 records."));
    const auto record = [](Text topic, Text name) {
        const std::string old = Date(Message(topic, "OLD.EML"), kDate);
        return With(old, 38, Pascal(name));
    };
    EXPECT_EQ(ReadFileBytes("DFile"),
              kHeader + record("Hello", "A.EML") + record("Good bye", "B.EML"));
    EXPECT_EQ(ReadFileBytes("DFile.BAK"), damaged);
    EXPECT_EQ(RunTool("check .").code, 0u);

    // An older copy is not lost unasked.
    const Ran again = RunTool("rebuild . --yes");
    EXPECT_EQ(again.code, 1u);
    EXPECT_THAT(again.err, HasSubstr("DFile.BAK is there already"));
    EXPECT_EQ(ReadFileBytes("DFile.BAK"), damaged);
    EXPECT_EQ(RunTool("rebuild . --yes --replace-backup").code, 0u);
    EXPECT_EQ(ReadFileBytes("DFile.BAK"), ReadFileBytes("DFile"));
}

TEST_F(FolderCommands, RebuildOfType2HasNoHeader) {
    Put("");
    const Ran ran = RunTool("rebuild . --yes");
    EXPECT_EQ(ran.code, 0u) << ran.err;
    EXPECT_EQ(ReadFileBytes("DFile").size(), 2u * 316);
    EXPECT_EQ(RunTool("check . --type 2").code, 0u);
}

TEST_F(FolderCommands, RebuildMakesAMissingFileAndTellsOfShortMessageFiles) {
    DeleteFileA("DFile");
    WriteFileBytes("C.EML", "short");
    const Ran ran = RunTool("rebuild . --yes");
    EXPECT_EQ(ran.code, 3u);
    EXPECT_EQ(ran.err, "C.EML is shorter than a record: it gets none.\n");
    EXPECT_EQ(ReadFileBytes("DFile").size(), 3u * 316);
    EXPECT_FALSE(FileThere("DFile.BAK"));
    EXPECT_EQ(RunTool("rebuild . --type 1 --yes").code, 1u);
}

TEST_F(FolderCommands, RebuildTellsOfMessageFilesWithoutASoundRecord) {
    WriteFileBytes("C.EML", std::string(400, 'x'));
    const Ran ran = RunTool("rebuild . --yes");
    EXPECT_EQ(ran.code, 3u);
    EXPECT_THAT(ran.err, HasSubstr("C.EML begins with a damaged record, or none"));
    EXPECT_EQ(ReadFileBytes("DFile").size(), 4u * 316);
}

TEST_F(FolderCommands, ListTellsThatRecordsAreDamaged) {
    Put(kHeader + Kind(A(), 9) + Broken(B()) + Free(Broken(B())));
    const Ran ran = RunTool("list . --json");
    EXPECT_EQ(ran.code, 0u);
    EXPECT_EQ(ran.Json()["messages"].size(), 1u);
    EXPECT_THAT(ran.err, HasSubstr("2 records are damaged"));
}

TEST_F(FolderCommands, CompressAsksAndTellsWhatItSaves) {
    const std::string before = ReadFileBytes("DFile");
    const Ran asked = RunTool("compress .");
    EXPECT_EQ(asked.code, 2u);
    EXPECT_THAT(asked.out, HasSubstr("saves 316 of 1264 bytes"));
    EXPECT_EQ(ReadFileBytes("DFile"), before);

    const Ran ran = RunTool("compress . --yes");
    EXPECT_EQ(ran.code, 0u);
    EXPECT_THAT(ran.out, HasSubstr("Saved 316 bytes: 1264 bytes before, 948 after."));
    EXPECT_EQ(ReadFileBytes("DFile"), kHeader + A() + B());
    EXPECT_FALSE(FileThere("DFile.BAK"));
    EXPECT_THAT(RunTool("compress . --yes").out, HasSubstr("There is nothing to save."));
    // The rest of a record goes, too.
    Put(kHeader + A() + Cut(B()));
    EXPECT_EQ(RunTool("compress . --yes").code, 0u);
    EXPECT_EQ(ReadFileBytes("DFile"), kHeader + A());
}

TEST_F(FolderCommands, CompressKeepsDamagedRecordsAndOldCopiesUnlessTold) {
    const std::string damaged = kHeader + A() + Broken(B());
    Put(damaged);
    const Ran refused = RunTool("compress . --yes");
    EXPECT_EQ(refused.code, 3u);
    EXPECT_THAT(refused.err, HasSubstr("1 record cannot be read, and would be lost"));
    EXPECT_EQ(ReadFileBytes("DFile"), damaged);

    WriteFileBytes("DFile.BAK", "old");
    EXPECT_EQ(RunTool("compress . --yes --drop-damaged").code, 1u);
    EXPECT_EQ(ReadFileBytes("DFile.BAK"), "old");
    EXPECT_EQ(RunTool("compress . --yes --drop-damaged --replace-backup").code, 0u);
    EXPECT_EQ(ReadFileBytes("DFile"), kHeader + A());
}

TEST_F(FolderCommands, WorksInFoldersWithLettersOutsideAscii) {
    const std::string folder = "Gr\xFC\xDF"
                               "e";
    CreateDirectoryA(folder.c_str(), nullptr);
    WriteFileBytes(folder + "\\DFile", kHeader + Free(A()) + A());
    EXPECT_EQ(RunTool("list " + folder + " --json").Json()["messages"].size(), 1u);
    EXPECT_EQ(RunTool("compress " + folder + " --yes").code, 0u);
    EXPECT_EQ(ReadFileBytes(folder + "\\DFile"), kHeader + A());
}

TEST_F(FolderCommands, HelpHasExamples) {
    for (const char* command : {"list", "info", "check", "rebuild", "compress", "export", "import",
                                "prefs show", "user show"}) {
        const Ran ran = RunTool(std::string(command) + " --help");
        EXPECT_EQ(ran.code, 0u);
        EXPECT_THAT(ran.out, HasSubstr(std::string("Examples:\n  mailfolder ") + command));
    }
    EXPECT_THAT(RunTool("--help").out, HasSubstr("3 damage found"));
}

TEST_F(FolderCommands, WrongUse) {
    for (const char* arguments : {"", "lsit .", "list", "list . --type 3"})
        EXPECT_EQ(RunTool(arguments).code, 2u) << arguments;
    EXPECT_THAT(RunTool("list . --no-such").err, Not(IsEmpty()));
}

TEST_F(FolderCommands, TellsWhatItCannotRead) {
    const Ran missing = RunTool("check NOWHERE");
    EXPECT_EQ(missing.code, 1u);
    EXPECT_EQ(missing.err, "Cannot read " + mFolder.Path("NOWHERE") + ": there is no such file.\n");
    const HANDLE held = CreateFileA("DFile", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_THAT(RunTool("list .").err, HasSubstr("another program is holding it"));
    CloseHandle(held);
}

} // namespace
