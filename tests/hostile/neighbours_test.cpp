// Several programs at one mail folder or preference file at the same moment: of what any call told,
// nothing is lost, given twice or mixed.

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "resident/core/windows_api.h"
#include "tests/hostile/neighbours.h"
#include "tests/store/mail_folder.h"
#include "tests/support/helper_process.h"

using Neighbours::Rounds;

class NeighbourFolder : public MailFolder {
protected:
    static constexpr int kMessages = 60;

    NeighbourFolder() {
        std::string bytes = kHeader;
        for (const char* kind : {"C", "D", "M"}) {
            for (int i = 0; i < kMessages; ++i) {
                const std::string name = kind + std::to_string(i) + ".EML";
                WriteFileBytes(name, Neighbours::Mail(name) + "text");
                bytes += Neighbours::Mail(name);
            }
        }
        CreateDirectoryA("OLD", nullptr);
        WriteFileBytes("OLD\\DFile", kHeader);
        WriteFileBytes("DFile", bytes + Free(Neighbours::Mail("F.EML")));
    }

    // Runs one program for each of `kinds` at once; with `kill` ends them all after a while.
    void Run(const std::vector<std::string>& kinds, int rounds, DWORD killAfter = 0) {
        Signal start;
        std::vector<std::unique_ptr<HelperProcess>> programs;
        for (const std::string& each : kinds) {
            const std::string number = std::to_string(mNumber++);
            programs.emplace_back(new HelperProcess(
                "neighbour.exe", "\"" + mFolder.Path() + "\" " + number + " " + each + " " +
                                     std::to_string(rounds) + " " + start.Name() + " \"" +
                                     mFolder.Path("LOG" + number) + "\""));
        }
        start.Set();
        if (killAfter) {
            Sleep(killAfter);
            for (auto& program : programs)
                program->End();
        }
        for (auto& program : programs) {
            const unsigned long code = program->ExitCode();
            EXPECT_TRUE(killAfter || code == 0) << code;
        }
    }

    // The told names by what was told; fails for one that was told twice where it may not be.
    std::map<std::string, std::multiset<std::string>> Told() {
        std::map<std::string, std::multiset<std::string>> told;
        for (int i = 0; i < mNumber; ++i) {
            const std::string log = "LOG" + std::to_string(i);
            std::istringstream in(FileThere(log) ? ReadFileBytes(log) : "");
            for (std::string what, name; in >> what >> name;)
                told[what].insert(name);
        }
        return told;
    }

    static std::map<std::string, std::vector<std::string>> Listed(Text path) {
        const std::string bytes = ReadFileBytes(path);
        EXPECT_EQ(bytes.size() % 316, 0u) << path;
        EXPECT_EQ(bytes.substr(0, 316), kHeader) << path;
        std::map<std::string, std::vector<std::string>> records;
        for (std::size_t at = 316; at + 316 <= bytes.size(); at += 316)
            if (bytes[at + 2])
                records[bytes.substr(at + 39, bytes[at + 38])].push_back(bytes.substr(at, 316));
        return records;
    }

    // With `ended`, programs were ended: what was under way may have been done and not told.
    void Compare(bool ended) {
        auto told = Told();
        auto listed = Listed("DFile"), old = Listed("OLD\\DFile");
        EXPECT_TRUE(told["torn"].empty());
        for (const auto& [name, records] : listed) {
            EXPECT_EQ(records.size(), 1u) << name << " is listed twice";
            // But for marks every byte is the message's own.
            const std::string& record = records[0];
            EXPECT_EQ(With(With(record, 3, {'\0'}), 36, Bytes("\1\0")),
                      With(With(Neighbours::Mail(name), 3, {'\0'}), 36, Bytes("\1\0")))
                << name;
            const bool processed = record[3] & 1, taken = record[36] & 4;
            EXPECT_TRUE(ended || processed == (told["marked"].count(name) > 0)) << name;
            EXPECT_TRUE(!told["marked"].count(name) || processed) << name;
            EXPECT_TRUE(ended || taken == (told["taken"].count(name) > 0)) << name;
            EXPECT_TRUE(!told["taken"].count(name) || taken) << name;
            EXPECT_LE(told["taken"].count(name), 1u) << name << " is given twice";
        }
        for (const std::string& name : told["added"])
            EXPECT_EQ(listed.count(name), 1u) << name << " was told and is lost";
        for (int i = 0; i < kMessages; ++i) {
            const std::string number = std::to_string(i) + ".EML";
            EXPECT_EQ(listed.count("C" + number), 1u) << "C" << number;
            // Processed messages may have been moved, under another name.
            EXPECT_TRUE(!old.empty() || listed.count("M" + number) == 1) << "M" << number;
            const bool gone = told["deleted"].count("D" + number);
            EXPECT_TRUE(listed.count("D" + number) != gone || (ended && !gone)) << "D" << number;
            EXPECT_LE(told["deleted"].count("D" + number), 1u) << "D" << number;
        }
        std::size_t moved = 0;
        for (const auto& [name, records] : old)
            moved += records.size();
        EXPECT_TRUE(ended || moved + CountOf(listed, 'M') == std::size_t{kMessages}) << moved;
    }
    static std::size_t CountOf(const std::map<std::string, std::vector<std::string>>& listed,
                               char first) {
        std::size_t count = 0;
        for (const auto& [name, records] : listed)
            count += name[0] == first;
        return count;
    }

    int mNumber = 0;
};

TEST_F(NeighbourFolder, EightAtOnceKeepWhatTheyTold) {
    Run({"a", "aw", "mo", "c", "cz", "d", "zu", "s"}, Rounds(8));
    Compare(false);
}

TEST_F(NeighbourFolder, TheToolKeepsWhatOthersTold) {
    Run({"am", "aw", "d", "rk", "r"}, Rounds(12));
    EXPECT_TRUE(Told()["failed"].empty());
    Compare(false);
}

TEST_F(NeighbourFolder, WhoAreEndedKeepNobodyWaitingAndLoseNothingTold) {
    for (int i = 0; i < Rounds(3); ++i) {
        // Between the two renames of a rewrite there is no directory file: those stay out of it.
        Run({"a", "am", "c", "d", "cu", "aw"}, 10000, 150 + 37 * i);
        Compare(true);
    }
    Run({"a", "m", "z"}, 3);
    Compare(true);
}
