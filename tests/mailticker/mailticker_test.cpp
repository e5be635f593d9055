// The ticker's window in a process of its own, beside other programs at work on its inbox.

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <memory>

#include "tests/mailticker/ticker_process.h"
#include "tests/support/mail_bytes.h"
#include "tests/support/scratch.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

enum { kFrom, kTopic, kKind, kFile, kNumber };

// Adds bytes to a file as programs do that share it.
void Append(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::app | std::ios::binary) << bytes;
}

void Overwrite(const std::string& path, unsigned int offset, const std::string& bytes) {
    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).seekp(offset) << bytes;
}

std::string From(const std::string& sender, const std::string& record) {
    return With(record, 72, Pascal(sender));
}

class MailTicker : public testing::Test {
protected:
    MailTicker() {
        CreateDirectoryA(mInbox.c_str(), nullptr);
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Postrider");
        WriteFileBytes(mPath, kHeader + From("Okafor|Chidi", Message("Lunch?", "M1.EML")) +
                                  Free(Message("Gone", "M2.EML")) +
                                  From("M\xFCller|J\xF6rg", Status(Message("Gr\xFC\xDF"
                                                                           "e",
                                                                           "M3.EML"),
                                                                   1)) +
                                  Kind(From("Payroll", Message("Form", "M4.EML")), 5));
        WriteFileBytes(mInbox + "\\M3.EML", Message("T") + "Sch\xF6n.\r");
    }

    void Start(const std::string& more = "") {
        mTicker = std::make_unique<TickerProcess>("\"" + mPath + "\"" + more);
    }
    bool Comes(const std::function<bool()>& so) { return Until(so) < 60000; }
    void NoticeComes(const std::wstring& heading) {
        const bool came = Comes([&] { return mTicker->Notice().starts_with(heading); });
        EXPECT_TRUE(came) << testing::PrintToString(heading) << ", not "
                          << testing::PrintToString(mTicker->Notice());
    }

    std::vector<LONG> Place() const {
        RECT place;
        GetWindowRect(mTicker->Window(), &place);
        return {place.left, place.top, place.right, place.bottom};
    }

    ScratchFolder mScratch;
    const std::string mInbox = mScratch.Path("Inbox");
    const std::string mPath = mInbox + "\\DFile";
    std::unique_ptr<TickerProcess> mTicker;
};

} // namespace

TEST_F(MailTicker, ShowsTheInboxFiltersSortsAndReads) {
    Start();
    EXPECT_THAT(mTicker->Column(kFrom),
                ElementsAre(L"Chidi Okafor", L"J\u00F6rg M\u00FCller", L"Payroll"));
    EXPECT_THAT(mTicker->Column(kKind), ElementsAre(L"Message", L"Message", L"Form"));
    EXPECT_THAT(mTicker->Column(kNumber), ElementsAre(L"1", L"2", L"3"));
    EXPECT_THAT(mTicker->Status(), StartsWith(L"3 messages, 2 unprocessed, C:\\"));
    EXPECT_EQ(mTicker->RunningLine(),
              L"Payroll \u2013 Form     \u2022     Chidi Okafor \u2013 Lunch?");

    mTicker->SelectRow(1);
    EXPECT_EQ(mTicker->PaneText(), L"Sch\u00F6n.\r\n");
    mTicker->Filter(L"GRU m3");
    EXPECT_THAT(mTicker->Column(kTopic), ElementsAre(L"Gr\u00FC\u00DFe"));
    EXPECT_THAT(mTicker->Status(), StartsWith(L"1 of 3 messages, 2 unprocessed"));
    mTicker->Filter(L"");
    mTicker->Command(ID_SORT + kTopic);
    EXPECT_THAT(mTicker->Column(kFile), ElementsAre(L"M4.EML", L"M3.EML", L"M1.EML"));
    mTicker->Command(ID_SORT + kTopic);
    mTicker->Command(ID_ONLY_UNPROCESSED);
    EXPECT_THAT(mTicker->Column(kFile), ElementsAre(L"M1.EML", L"M4.EML"));
}

TEST_F(MailTicker, TellsOfMailThatArrivesWhileNobodyLooks) {
    Start(" /tray");
    EXPECT_FALSE(IsWindowVisible(mTicker->Window()));
    Append(mPath, From("Sato|Yuki", Message("Re: Minutes", "M5.EML")));
    EXPECT_LT(Until([&] { return mTicker->Rows() == 4; }), 2000u);
    EXPECT_TRUE(Comes([&] {
        return mTicker->TrayTexts().find(
                   L"3 unprocessed, 1 new, newest: Yuki Sato \u2013 Re: Minutes") !=
               std::wstring::npos;
    })) << testing::PrintToString(mTicker->TrayTexts());
    // The balloon.
    EXPECT_TRUE(Comes([&] {
        return mTicker->TrayTexts().find(L"\nRe: Minutes\n") != std::wstring::npos;
    })) << testing::PrintToString(mTicker->TrayTexts());
    // A free slot that is used again, a mark that is taken back: arrived is what was not there.
    Overwrite(mPath, 2 * 316 + 2, "\1");
    Overwrite(mPath, 3 * 316 + 3, Bytes("\0"));
    EXPECT_TRUE(Comes([&] {
        return mTicker->TrayTexts().find(L"5 unprocessed, 2 new") != std::wstring::npos;
    })) << testing::PrintToString(mTicker->TrayTexts());
    // A click on the icon shows the window; after a look nothing is new.
    mTicker->Tray(NIN_SELECT);
    EXPECT_TRUE(IsWindowVisible(mTicker->Window()));
    mTicker->Command(ID_HIDE);
    EXPECT_TRUE(Comes([&] {
        return mTicker->TrayTexts().find(L"5 unprocessed, newest: Yuki Sato") != std::wstring::npos;
    })) << testing::PrintToString(mTicker->TrayTexts());
}

TEST_F(MailTicker, RestsWhilePaused) {
    Start(" /tray");
    mTicker->Command(ID_PAUSE_UNTIL_SHOWN);
    Append(mPath, Message("Later", "M5.EML"));
    EXPECT_EQ(Until([&] { return mTicker->Rows() != 3; }, 1500), 60000u);
    EXPECT_THAT(mTicker->TrayTexts(),
                HasSubstr(L"paused until the window is shown; 2 unprocessed"));
    mTicker->Tray(NIN_SELECT);
    EXPECT_EQ(mTicker->Rows(), 4);
    EXPECT_THAT(mTicker->TrayTexts(), HasSubstr(L"\n3 unprocessed, 1 new"));
}

TEST_F(MailTicker, SaysHowThingsStand) {
    const std::string sound = ReadFileBytes(mPath);
    Start();
    EXPECT_EQ(mTicker->Notice(), L"");
    {
        const HeldFile held(mPath);
        Append(mInbox + "\\CHANGE", "so that it looks");
        NoticeComes(L"Another program is holding the inbox.");
        EXPECT_EQ(mTicker->Rows(), 3);
    }
    NoticeComes(L"");
    Append(mPath, Cut(Message("Half")));
    NoticeComes(L"The inbox is damaged. It ends in the middle of a record.");
    WriteFileBytes(mPath, sound + Kind(Message("Odd"), 9));
    NoticeComes(L"The inbox is damaged. One of its records is damaged.");
    WriteFileBytes(mPath, kHeader);
    NoticeComes(L"The inbox is empty.");
    DeleteFileA(mPath.c_str());
    NoticeComes(L"There is no inbox yet.");
    CreateDirectoryA(mPath.c_str(), nullptr);
    mTicker->Command(ID_READ_NOW);
    NoticeComes(L"The inbox cannot be read.");
    RemoveDirectoryA(mPath.c_str());
    WriteFileBytes(mPath, sound);
    NoticeComes(L"");
    EXPECT_TRUE(Comes([&] { return mTicker->Rows() == 3; }));
    // Nobody tells of what happens here: it looks from time to time.
    const std::string away = mScratch.Path("Away");
    MoveFileA(mInbox.c_str(), away.c_str());
    mTicker->Command(ID_READ_NOW);
    NoticeComes(L"The inbox\u2019s folder is not there.");
    MoveFileA(away.c_str(), mInbox.c_str());
    NoticeComes(L"");
    // A path that has no shorter form.
    std::string deep = mInbox;
    for (; deep.size() < 240; CreateDirectoryA(deep.c_str(), nullptr))
        deep += "\\SUB";
    WriteFileBytes(deep + "\\DFile", sound);
    HelperProcess("mailticker.exe", "\"" + deep + "\"").ExitCode();
    NoticeComes(L"The inbox\u2019s name cannot be passed on.");
    // Nothing of all this was new mail.
    EXPECT_EQ(mTicker->TrayTexts().find(L"new,"), std::wstring::npos);
}

TEST_F(MailTicker, FollowsTheCurrentUser) {
    const KeptFile user(WindowsDirectory() + "\\JXUSER.DAT");
    const auto logIn = [&](const std::string& folder) {
        std::vector<std::string> strings(kUserStrings);
        strings[2] = folder;
        strings[3] = "DFile";
        WriteFileBytes(user.Path(), ScrambledUserData(UserData(strings)));
    };
    user.Remove();
    mTicker = std::make_unique<TickerProcess>("");
    EXPECT_EQ(mTicker->Notice(), L"Nobody has logged in to Postrider.");
    logIn(mInbox);
    EXPECT_TRUE(Comes([&] { return mTicker->Rows() == 3; }));
    NoticeComes(L"");
    // A name that changes on its way through the library.
    const std::string other = mScratch.Path("B\xFCro und mehr");
    CreateDirectoryA(other.c_str(), nullptr);
    WriteFileBytes(other + "\\DFile", kHeader + Message("Other", "O.EML"));
    logIn(other);
    NoticeComes(L"Another user has logged in to Postrider.");
    EXPECT_THAT(mTicker->Column(kTopic), ElementsAre(L"Other"));
}

TEST_F(MailTicker, ShowsWhatIsThereWhateverOthersDoMeanwhile) {
    Start();
    Signal start;
    // Adds, deletes, cuts and compresses.
    HelperProcess other("neighbour.exe", "\"" + mInbox + "\" 1 aaduz 30 " + start.Name() + " \"" +
                                             mScratch.Path("LOG") + "\"");
    start.Set();
    for (int i = 0; i < 20; ++i) {
        mTicker->Command(ID_READ_NOW);
        mTicker->Filter(i % 2 ? L"m" : L"");
        Sleep(50);
    }
    EXPECT_EQ(other.ExitCode(), 0u);
    // In the end it shows the used records.
    const std::string bytes = ReadFileBytes(mPath);
    std::vector<std::wstring> files;
    for (unsigned int at = 316; at + 316 <= bytes.size(); at += 316)
        if (bytes[at + 2] && bytes.compare(at, 2, "\xFF\xFF"))
            files.emplace_back(bytes.begin() + at + 39, bytes.begin() + at + 39 + bytes[at + 38]);
    mTicker->Filter(L"");
    EXPECT_TRUE(Comes([&] { return mTicker->Column(kFile) == files; }))
        << testing::PrintToString(mTicker->Column(kFile)) << " instead of "
        << testing::PrintToString(files);
    EXPECT_EQ(mTicker->Notice(), L"");
}

TEST_F(MailTicker, DoesNotDelayAWriter) {
    WriteFileBytes(mPath, kHeader);
    Start(" /tray");
    const auto append8000 = [&] {
        const DWORD start = GetTickCount();
        for (int i = 0; i < 8000; ++i)
            Append(mPath, Message("Number " + std::to_string(i), "N" + std::to_string(i)));
        return GetTickCount() - start;
    };
    append8000();
    // What else is at work on the machine comes and goes: there and back.
    DWORD time[2] = {}, used[2] = {};
    for (const bool reads : {false, true, true, false}) {
        mTicker->Command(reads ? ID_RESUME : ID_PAUSE_UNTIL_SHOWN);
        const DWORD usedBefore = mTicker->ProcessorTime();
        time[reads] += append8000();
        used[reads] += mTicker->ProcessorTime() - usedBefore;
    }
    mTicker->Command(ID_RESUME);
    EXPECT_LT(Until([&] { return mTicker->Rows() == 40000; }), 2000u);
    EXPECT_LT(time[true], 2 * time[false] + 500);
    // It reads for a fifth of the time at most, and shows what it read.
    EXPECT_LE(used[true], time[true] / 4 + 50);
    EXPECT_LE(used[false], 30u);
    for (const bool reads : {false, true})
        RecordProperty(reads ? "beside" : "alone", static_cast<int>(time[reads]));
    RecordProperty("used", static_cast<int>(used[true]));
}

TEST_F(MailTicker, IsThereOnce) {
    Start(" /tray");
    EXPECT_EQ(HelperProcess("mailticker.exe", "").ExitCode(), 0u);
    EXPECT_TRUE(IsWindowVisible(mTicker->Window()));
    EXPECT_EQ(mTicker->Rows(), 3);
    const std::string other = mScratch.Path("Other");
    CreateDirectoryA(other.c_str(), nullptr);
    WriteFileBytes(other + "\\DFile", kHeader + Message("Other", "O.EML"));
    EXPECT_EQ(HelperProcess("mailticker.exe", "\"" + other + "\"").ExitCode(), 0u);
    EXPECT_THAT(mTicker->Column(kTopic), ElementsAre(L"Other"));
    EXPECT_EQ(HelperProcess("mailticker.exe", "/exit").ExitCode(), 0u);
    EXPECT_EQ(WaitForSingleObject(mTicker->Process(), 0), WAIT_OBJECT_0);
}

TEST_F(MailTicker, RemembersItsPlaceAndOrder) {
    Start();
    MoveWindow(mTicker->Window(), 40, 50, 610, 470, FALSE);
    mTicker->Command(ID_SORT + kTopic);
    const auto list = [&] { return GetDlgItem(mTicker->Window(), ID_LIST); };
    SendMessageW(list(), LVM_SETCOLUMNWIDTH, kFile, 77);
    EXPECT_EQ(mTicker->Exit(), 0u);
    mTicker.reset();
    const char* const key = "Software\\Postrider\\Ticker";
    const auto place = [](int column) { return "Place" + std::to_string(column); };
    for (DWORD i = 0; i < 5; ++i) {
        const DWORD column = 4 - i;
        RegSetKeyValueA(HKEY_CURRENT_USER, key, place(i).c_str(), REG_DWORD, &column, 4);
    }
    Start();
    EXPECT_THAT(Place(), ElementsAre(40, 50, 650, 520));
    EXPECT_THAT(mTicker->Column(kTopic), ElementsAre(L"Form", L"Gr\u00FC\u00DFe", L"Lunch?"));
    EXPECT_EQ(SendMessageW(list(), LVM_GETCOLUMNWIDTH, kFile, 0), 77);
    mTicker.reset();
    // On a screen with smaller dots; the columns are where somebody dragged them.
    DWORD size = sizeof(DWORD), left = 0, dpi = 192;
    RegGetValueA(HKEY_CURRENT_USER, key, place(0).c_str(), RRF_RT_REG_DWORD, nullptr, &left, &size);
    EXPECT_EQ(left, 4u);
    RegSetKeyValueA(HKEY_CURRENT_USER, "Control Panel\\Desktop", "LogPixels", REG_DWORD, &dpi, 4);
    Start();
    RegDeleteKeyValueA(HKEY_CURRENT_USER, "Control Panel\\Desktop", "LogPixels");
    EXPECT_EQ(SendMessageW(list(), LVM_GETCOLUMNWIDTH, kFile, 0), 2 * 77);
}

TEST_F(MailTicker, FollowsItsScreen) {
    Start();
    mTicker->MoveToScreen(96, {30, 20, 530, 420});
    EXPECT_THAT(Place(), ElementsAre(30, 20, 530, 420));
}

TEST_F(MailTicker, DoesAllByKeys) {
    Start();
    enum { kPaneText = 0 };
    const struct {
        std::initializer_list<unsigned char> keys;
        int focus, rows;
        const wchar_t* first; // file in the first row
    } steps[] = {
        {{VK_DOWN}, ID_LIST, 3, L"M1.EML"},
        {{VK_TAB}, kPaneText, 3, L"M1.EML"},
        {{VK_TAB}, ID_FILTER_BOX, 3, L"M1.EML"},
        {{VK_TAB}, ID_ONLY_UNPROCESSED, 3, L"M1.EML"},
        {{VK_SPACE}, ID_ONLY_UNPROCESSED, 2, L"M1.EML"},
        {{VK_CONTROL, 'F'}, ID_FILTER_BOX, 2, L"M1.EML"},
        {{'4'}, ID_FILTER_BOX, 1, L"M4.EML"},
        {{VK_RETURN}, ID_LIST, 1, L"M4.EML"},
        {{VK_CONTROL, 'F'}, ID_FILTER_BOX, 1, L"M4.EML"},
        {{VK_ESCAPE}, ID_FILTER_BOX, 2, L"M1.EML"},
        {{VK_CONTROL, 'U'}, ID_FILTER_BOX, 3, L"M1.EML"},
        {{VK_CONTROL, '4'}, ID_FILTER_BOX, 3, L"M1.EML"},
        {{VK_CONTROL, '4'}, ID_FILTER_BOX, 3, L"M4.EML"},
        {{VK_SHIFT, VK_TAB}, kPaneText, 3, L"M4.EML"},
    };
    for (const auto& step : steps) {
        mTicker->Press(step.keys);
        const int number = static_cast<int>(&step - steps);
        ASSERT_TRUE(Comes([&] {
            return mTicker->Focus() == step.focus && mTicker->Rows() == step.rows &&
                   mTicker->Cell(0, kFile) == step.first;
        })) << "step "
            << number << ": " << mTicker->Focus() << ", " << mTicker->Rows();
    }
    Append(mInbox + "\\M4.EML", Message("T") + "Here it is.");
    mTicker->Press({VK_F5});
    EXPECT_TRUE(Comes([&] { return mTicker->PaneText() == L"Here it is."; }));
    mTicker->Press({VK_F1});
    EXPECT_TRUE(Comes([&] { return mTicker->PaneText().starts_with(L"F5\t"); }));
    mTicker->Press({VK_ESCAPE});
    EXPECT_TRUE(Comes([&] { return !IsWindowVisible(mTicker->Window()); }));
    EXPECT_EQ(WaitForSingleObject(mTicker->Process(), 0), WAIT_TIMEOUT);
}

TEST_F(MailTicker, HandsMessagesToOtherPrograms) {
    const std::string opened = mScratch.Path("OPENED");
    const auto set = [](const char* key, const std::string& value) {
        RegSetKeyValueA(HKEY_CLASSES_ROOT, key, nullptr, REG_SZ, value.c_str(), value.size() + 1);
    };
    set(".eml", "PostriderTest");
    set("PostriderTest\\shell\\open\\command", "cmd /c copy \"%1\" \"" + opened + "\"");
    const std::string mail = "Subject: a\r\n\r\nb";
    WriteFileBytes(mInbox + "\\M1.EML", Message("T") + mail);
    Start();
    mTicker->SelectRow(0);
    mTicker->Command(ID_OPEN);
    EXPECT_TRUE(Comes([&] { return FileThere(opened) && ReadFileBytes(opened) == mail; }));
    RegDeleteTreeA(HKEY_CLASSES_ROOT, ".eml");
    RegDeleteTreeA(HKEY_CLASSES_ROOT, "PostriderTest");
    mTicker->SelectRow(2);
    mTicker->Command(ID_OPEN);
    EXPECT_EQ(mTicker->PaneText(), L"The message\u2019s file is not in the folder.");
}

TEST_F(MailTicker, StartsWithWindowsWhenItIsTold) {
    Start();
    const auto command = [] {
        char text[MAX_PATH] = "";
        DWORD size = sizeof text;
        RegGetValueA(HKEY_CURRENT_USER, "Software\\Microsoft\\Windows\\CurrentVersion\\Run",
                     "Postrider Ticker", RRF_RT_REG_SZ, nullptr, text, &size);
        return std::string(text);
    };
    mTicker->Command(ID_START_WITH_WINDOWS);
    EXPECT_THAT(command(), AllOf(StartsWith("\""), EndsWith("\\mailticker.exe\" /tray")));
    mTicker->Command(ID_START_WITH_WINDOWS);
    EXPECT_EQ(command(), "");
}

TEST_F(MailTicker, HoldsNothingMoreAfterAThousandReadings) {
    Start();
    const auto read = [&](int times) {
        while (times-- > 0) {
            // Another number in the tray each time.
            Overwrite(mPath, 3 * 316 + 3, std::string(1, times % 2));
            mTicker->Command(ID_READ_NOW);
        }
        return std::vector<unsigned int>{mTicker->KernelHandles(), mTicker->GdiObjects(),
                                         mTicker->Windows()};
    };
    const auto before = read(10);
    EXPECT_GT(before[1], 5u);
    const auto after = read(1000);
    // One kept at each reading would be a thousand; some are made once, when they are first drawn,
    // and those of the system's own threads come and go.
    for (int i = 0; i < 3; ++i)
        EXPECT_LE(after[i], before[i] + 20) << i;
}

TEST_F(MailTicker, CostsNothingWhileHiddenAndNothingHappens) {
    Start(" /tray");
    Sleep(1000);
    const unsigned int before = mTicker->ProcessorTime();
    EXPECT_GT(before, 0u);
    Sleep(3000);
    EXPECT_LE(mTicker->ProcessorTime() - before, 10u);
}

TEST_F(MailTicker, CanBeSeen) {
    Start();
    RECT place;
    GetWindowRect(GetDlgItem(mTicker->Window(), ID_LIST), &place);
    const HDC screen = GetDC(nullptr);
    unsigned int dark = 0;
    // Letters, and more that is none.
    EXPECT_TRUE(Comes([&] {
        dark = 0;
        for (int y = place.top + 30; y < place.top + 60; ++y)
            for (int x = place.left + 4; x < place.left + 200; ++x)
                dark += GetRValue(GetPixel(screen, x, y)) < 100;
        return dark > 100 && dark < 2000;
    })) << dark;
    ReleaseDC(nullptr, screen);
}
