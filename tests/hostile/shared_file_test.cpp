// Two programs of the mail client at work on the same files.

#include <functional>
#include <set>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/helper_process.h"

static std::string Name(int number) { return "M" + std::to_string(number) + ".EML"; }

// The record of a message whose three texts belong together.
static std::string Numbered(int number) {
    const std::string text = std::to_string(number);
    return With(Message("Topic " + text, Name(number)), 72, Pascal("Sender " + text));
}

class SharedFiles : public MailFolder {
protected:
    // The lines of a file that another process wrote.
    static std::multiset<std::string> Lines(Text path) {
        std::istringstream in(ReadFileBytes(path));
        std::multiset<std::string> lines;
        for (std::string line; in >> line;)
            lines.insert(line);
        return lines;
    }
    static std::string Quoted(Text path) { return "\"" + path + "\" "; }
    std::string CollectCommand(Text list, const Signal& stop) const {
        return "collect " + Quoted(mFolder.Path("INBOX.DAT")) + Quoted(mFolder.Path(list)) +
               stop.Name();
    }
    void AddMessages(int count) {
        for (const int last = mCount + count; mCount < last; mCount++) {
            WriteFileBytes(Name(mCount), Numbered(mCount));
            RbFile message(mFolder.Path(Name(mCount)).c_str());
            ASSERT_EQ(mFile.AddMessage(&message), 1);
        }
    }
    // What each of the two collectors takes.
    std::multiset<std::string> TakeHere() {
        mTaken.ClearContainer();
        mFile.GetUnprocessedDDRs(&mTaken, mIdle, keGetProcessable);
        std::multiset<std::string> names;
        for (auto* record = mTaken.GetFirstObject(); record; record = mTaken.GetNextObject())
            names.insert(record->FileName().Text());
        return names;
    }
    std::multiset<std::string> TakeThere() {
        Signal stop;
        stop.Set();
        EXPECT_EQ(HelperProcess("mail_process.exe", CollectCommand("LIST", stop)).ExitCode(), 0u);
        return Lines("LIST");
    }
    // Each message once.
    std::multiset<std::string> AllOnce() const {
        std::multiset<std::string> names;
        for (int number = 0; number < mCount; number++)
            names.insert(Name(number));
        return names;
    }

    int mCount = 0;
    void (*mIdle)() = nullptr;
};

TEST_F(SharedFiles, CollectorsThatTakeTurnsTakeEachMessageOnce) {
    Write(kHeader);
    std::multiset<std::string> here, there;
    for (int round = 0; round < 8; round++) {
        AddMessages(3 + round);
        // In every second round both come at what one has just taken.
        if (round % 4 < 2)
            here.merge(TakeHere());
        AddMessages(round % 3);
        there.merge(TakeThere());
        if (round % 4 >= 2)
            here.merge(TakeHere());
    }
    here.merge(TakeHere());
    EXPECT_TRUE(here.size() > 20 && there.size() > 20);
    here.merge(there);
    EXPECT_EQ(here, AllOnce());
}

static std::function<void()> atIdle;
static int idleCalls;

// One collector lets the other one run at each of its steps: also the record that it has at hand
// then, read and not yet marked, is taken once.
TEST_F(SharedFiles, WhatIsTakenWhileACollectorIsIdleIsNotTakenAgain) {
    const std::string done = Status(Numbered(0), 1);
    for (int step = 1; step <= 12; step++) {
        SCOPED_TRACE(step);
        Write(kHeader + done + Numbered(1) + done + Numbered(2) + Numbered(3));
        std::multiset<std::string> there;
        idleCalls = 0;
        atIdle = [&] {
            if (++idleCalls == step)
                there = TakeThere();
        };
        mIdle = [] { atIdle(); };
        std::multiset<std::string> here = TakeHere();
        EXPECT_GE(idleCalls, step);
        here.merge(there);
        for (int number : {1, 2, 3})
            EXPECT_EQ(here.count(Name(number)), 1u) << number;
    }
}

TEST_F(SharedFiles, CollectorsThatRaceTakeEachRecordOnce) {
    Write(kHeader);
    Signal stop;
    HelperProcess first("mail_process.exe", CollectCommand("FIRST", stop));
    HelperProcess second("mail_process.exe", CollectCommand("SECOND", stop));
    for (int i = 0; i < 100; i++)
        AddMessages(5);
    stop.Set();
    EXPECT_EQ(first.ExitCode() + second.ExitCode(), 0u);
    std::multiset<std::string> taken = Lines("FIRST");
    taken.merge(Lines("SECOND"));
    std::string bytes = kHeader;
    for (int number = 0; number < mCount; number++)
        bytes += Attributes(Numbered(number), 0x0400);
    EXPECT_TRUE(Read() == bytes);
    EXPECT_EQ(taken, AllOnce());
}

TEST_F(SharedFiles, AMessageSemaphoreIsSeizedByOneOfThoseThatRaceForIt) {
    constexpr int kRaces = 100;
    const auto command = [&](Text list) {
        return "seize " + Quoted(mFolder.Path("LOCK")) + std::to_string(kRaces) + " " +
               Quoted(mFolder.Path(list));
    };
    HelperProcess first("mail_process.exe", command("FIRST"));
    HelperProcess second("mail_process.exe", command("SECOND"));
    EXPECT_EQ(first.ExitCode() + second.ExitCode(), 0u);
    std::multiset<std::string> seized = Lines("FIRST"), all;
    seized.merge(Lines("SECOND"));
    for (int number = 0; number < kRaces; number++)
        all.insert(std::to_string(number));
    EXPECT_EQ(seized, all);
}

TEST_F(SharedFiles, ANotifierListsWhatIsThereWhileOthersChangeIt) {
    constexpr int kMessages = 500;
    Write(kHeader);
    AddMessages(kMessages);
    Signal stop;
    HelperProcess other("mail_process.exe", "change " + Quoted(mFolder.Path("INBOX.DAT")) +
                                                std::to_string(kMessages) + " " + stop.Name());
    const std::string path = mFolder.Path("INBOX.DAT");
    char *topic, *file, *sender;
    unsigned short kind, flag;
    int walks = 0, records = 0;
    for (const DWORD start = GetTickCount(); GetTickCount() - start < 1500; walks++) {
        int more = GetFirstRecord(path.c_str(), &topic, &file, &sender, &kind, &flag);
        for (; more; records++) {
            const std::string text = std::string(topic).substr(6);
            EXPECT_EQ(std::string(topic) + "/" + file + "/" + sender,
                      "Topic " + text + "/" + Name(std::stoi(text)) + "/Sender " + text);
            EXPECT_TRUE(std::stoi(text) < kMessages && kind == 1 && flag == 0);
            more = GetNextRecord(&topic, &file, &sender, &kind, &flag);
        }
        Done();
        if (walks % 16 == 0)
            Sleep(20); // and nobody reads
    }
    stop.Set();
    const unsigned long rounds = other.ExitCode();
    EXPECT_TRUE(rounds > 0 && rounds < 100000) << rounds;
    EXPECT_TRUE(walks > 2 && records > 500);
    RecordProperty("walks", walks);
    RecordProperty("records", records);
    RecordProperty("rewrites", static_cast<int>(rounds));
}
