// Two programs whose steps alternate as a seed says, at any call of the system that opens or
// changes a file: what they told and left is what one of the serial orders of their operations
// tells and leaves. Those orders are run as well, and are all that is compared with.

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <set>

#include "resident/core/windows_api.h"
#include "tests/hostile/neighbours.h"
#include "tests/store/mail_folder.h"
#include "tests/support/folder_model.h"
#include "tests/support/helper_process.h"
#include "tests/support/pref_bytes.h"
#include "tests/support/random.h"
#include "tests/support/turns.h"

class Interleaved : public MailFolder {
protected:
    using Steps = std::array<std::string, 2>; // of each program

    Interleaved() {
        for (int number : {0, 1}) {
            const std::string name =
                "PostriderTurns" + std::to_string(GetCurrentProcessId()) + char('0' + number);
            mTurns[number] = std::make_unique<Turns>(name);
            mPrograms[number] = std::make_unique<HelperProcess>(
                "neighbour.exe",
                "\"" + mFolder.Path() + "\" " + std::to_string(number) + " " + name);
            EXPECT_TRUE(mTurns[number]->Stopped());
        }
    }
    ~Interleaved() override {
        for (int number : {0, 1}) {
            mTurns[number]->End();
            mPrograms[number]->ExitCode();
        }
    }

    void Begin(const Steps& steps) {
        for (const auto& entry : std::filesystem::directory_iterator(mFolder.Path()))
            DeleteFileA(entry.path().string().c_str());
        std::filesystem::remove_all("OLD");
        CreateDirectoryA("OLD", nullptr);
        WriteFileBytes("OLD\\DFile", kHeader);
        std::string records = kHeader;
        for (const char* name : {"C0.EML", "D0.EML", "M0.EML"}) {
            records += Neighbours::Mail(name);
            WriteFileBytes(name, Neighbours::Mail(name) + "text");
        }
        WriteFileBytes("DFile", records + Free(Neighbours::Mail("F.EML")));
        WriteFileBytes("RB.DAT", PrefHeader("\x90\x01", "RB.DAT", 1) +
                                     PrefEntry("\1\1", "\x90\x01", 1, 46 + 12, 40) +
                                     std::string(40, 'b'));
        for (int number : {0, 1}) {
            WriteFileBytes("MSGS" + std::to_string(number) + ".DAT",
                           Free(Neighbours::Mail("F.EML")) + Neighbours::Mail("X.EML"));
            Part& part = mTurns[number]->Of();
            lstrcpyA(part.steps, steps[number].c_str());
            *part.told = 0;
            part.finished = 0;
        }
    }
    // What the programs told, and every file.
    std::string Outcome() {
        std::string outcome = mTurns[0]->Of().told + std::string("|") + mTurns[1]->Of().told;
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(mFolder.Path()))
            if (!entry.is_directory())
                files[entry.path().filename().string()] = ReadFileBytes(entry.path().string());
        for (const auto& [name, bytes] : files)
            outcome += "|" + name + "=" + bytes;
        return outcome;
    }
    // What each order of whole steps comes to; `order` is made longer until it has all.
    void Serial(const Steps& steps, const std::string& order, std::set<std::string>& outcomes) {
        if (order.size() == steps[0].size() + steps[1].size()) {
            Begin(steps);
            for (const char program : order)
                ASSERT_TRUE(mTurns[program - '0']->Go(-1)) << order;
            outcomes.insert(Outcome());
            return;
        }
        for (const char program : {'0', '1'})
            if (std::count(order.begin(), order.end(), program) <
                static_cast<long>(steps[program - '0'].size()))
                Serial(steps, order + program, outcomes);
    }
    // Whoever collects while the other rewrites the file may find none, and come again later.
    void AllSerial(Steps steps, std::set<std::string>& outcomes) {
        Serial(steps, "", outcomes);
        for (int number : {0, 1})
            if (steps[1 - number].find_first_of("zs") != std::string::npos &&
                std::erase(steps[number], 'c'))
                Serial(steps, "", outcomes);
    }
    // Lets them go on in turns until both are done. Returns who went how far.
    std::string Alternate(const Steps& steps, Random& random) {
        std::string schedule;
        Begin(steps);
        const auto done = [&](int number) {
            return mTurns[number]->Of().finished == static_cast<long>(steps[number].size());
        };
        while (!done(0) || !done(1)) {
            const int number = done(0) ? 1 : done(1) ? 0 : random.Below(2);
            const long calls = 1 + random.Below(random.OneIn(2) ? 3 : 30);
            schedule += char('0' + number) + std::string(":") + std::to_string(calls) + " ";
            if (!mTurns[number]->Go(calls)) {
                ADD_FAILURE() << "does not stop: " << schedule;
                break;
            }
        }
        return schedule;
    }

    // The lines that both told.
    std::multiset<std::string> Told() {
        std::istringstream told(mTurns[0]->Of().told + std::string(mTurns[1]->Of().told));
        std::multiset<std::string> lines;
        for (std::string line; std::getline(told, line);)
            lines.insert(line);
        return lines;
    }

    std::unique_ptr<Turns> mTurns[2];
    std::unique_ptr<HelperProcess> mPrograms[2];
};

TEST_F(Interleaved, ComesToWhatASerialOrderComesTo) {
    const int rounds = Neighbours::Rounds(400);
    std::map<Steps, std::set<std::string>> serial;
    Random random(1);
    std::size_t turns = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        // A few pairs of programs, many orders of each.
        const std::string kinds = "amdczsupwU";
        Random part(1 + round % (rounds / 20 + 1));
        Steps steps = {
            std::string{kinds[part.Below(kinds.size())], kinds[part.Below(kinds.size())]},
            std::string{kinds[part.Below(kinds.size())]}};
        // Whatever is drawn: of two that add preference blocks, none is lost.
        if (round % 10 == 0)
            steps = {"pp", "pp"};
        if (!serial.count(steps))
            AllSerial(steps, serial[steps]);
        const std::string schedule = Alternate(steps, random);
        turns += std::count(schedule.begin(), schedule.end(), ' ');
        const std::string outcome = Outcome();
        if (!serial[steps].count(outcome)) {
            ADD_FAILURE() << "round " << round << ": " << steps[0] << " beside " << steps[1]
                          << ", turns " << schedule << "come to\n"
                          << testing::PrintToString(outcome);
            for (Text each : serial[steps])
                std::printf("not to\n%s\n", testing::PrintToString(each).c_str());
        }
    }
    std::printf("    %d interleavings of %u turns, of %u pairs\n", rounds,
                static_cast<unsigned int>(turns), static_cast<unsigned int>(serial.size()));
}

// What a collector has at hand while it is idle, read and not yet marked, is taken once, too.
TEST_F(Interleaved, GivesEachMessageAndASemaphoreToOneAlone) {
    Random random(2);
    for (int round = 0; round < 60 && !HasFailure(); ++round) {
        SCOPED_TRACE(Alternate({"aCl", "laC"}, random));
        EXPECT_EQ(Told(),
                  (std::multiset<std::string>{"added A0-0.EML", "added A1-0.EML", "seized LOCK",
                                              "taken A0-0.EML", "taken A1-0.EML", "taken C0.EML"}));
    }
}

// Moving old mail is a step for each message, and its new name is the moment's: all are listed
// once, with their files, in one of the two folders.
TEST_F(Interleaved, OldMailIsInOneOfTheFolders) {
    Random random(3);
    for (int round = 0; round < Neighbours::Rounds(80) && !HasFailure(); ++round) {
        const std::string others = "amdczsuoUw";
        const std::string other{others[round % others.size()]};
        SCOPED_TRACE(other + ": " + Alternate({"mo", other}, random));
        std::multiset<std::string> listed, expected = {"C0", "M0"};
        for (const std::string folder : {"", "OLD\\"})
            for (Text record : Slots(ReadFileBytes(folder + "DFile"), 316))
                if (IsUsed(record)) {
                    listed.insert(FieldText(record, 4, 28));
                    EXPECT_TRUE(FileThere(folder + FieldText(record, 38, 34)));
                }
        if (!Told().count("deleted D0.EML"))
            expected.insert("D0");
        if (Told().count("added A1-0.EML"))
            expected.insert("A1-0");
        EXPECT_EQ(listed, expected);
        EXPECT_GE(Told().count("marked M0.EML"), 1u);
    }
}

// Who comes while the other writes may be refused, and is told so.
TEST_F(Interleaved, VerificationDataIsOneProgramsOwn) {
    const KeptFile kept(WindowsDirectory() + "\\JXUSER.DAT");
    const std::string zeros = "0000", ones = "111111111111";
    const auto all = [](Text text) {
        return "read " + text + "/" + text + "/" + text + "/" + text;
    };
    Random random(4);
    unsigned int read = 0;
    for (int round = 0; round < Neighbours::Rounds(60) && !HasFailure(); ++round) {
        kept.Remove();
        SCOPED_TRACE(Alternate({"vV", round % 2 ? "Vv" : "vV"}, random));
        for (Text line : Told()) {
            EXPECT_TRUE(line == all(zeros) || line == all(ones) || line.rfind("wrote ", 0) == 0)
                << line;
            read += line[0] == 'r';
        }
    }
    EXPECT_GT(read, 30u);
}
