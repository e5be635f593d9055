// Folders that come from anywhere: links out of them, rights, sizes and names that lead astray.

#include <memory>
#include <set>

#include "resident/core/windows_api.h"

#include <winioctl.h>

#include "tests/store/mail_folder.h"
#include "tests/support/message_boxes.h"

namespace {

// The path below Wine, where links are made; empty on a Windows of its own.
std::string UnixPath(const std::string& path) {
    using Function = char*(__cdecl*)(const wchar_t*);
    const auto function = reinterpret_cast<Function>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
    return function ? function(std::filesystem::path(path).c_str()) : "";
}

// Runs a program of the system below, and waits for what `done` asks.
template <class Done>
bool RunBelow(const std::string& program, const std::string& arguments, Done done) {
    std::string command = "\"Z:\\bin\\" + program + "\" " + arguments;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                   &process);
    for (int i = 0; i < 500 && !done(); ++i)
        Sleep(10);
    return done();
}

unsigned int ModeBelow(const std::string& path) {
    const std::string list = path + ".mode";
    RunBelow("sh", "-c \"stat -c %a '" + UnixPath(path) + "' >'" + UnixPath(list) + "'\"",
             [&] { return FileThere(list) && !ReadFileBytes(list).empty(); });
    const unsigned int mode = std::strtoul(ReadFileBytes(list).c_str(), nullptr, 8);
    DeleteFileA(list.c_str());
    return mode;
}

class Strangers : public MailFolder {
protected:
    Strangers() {
        CreateDirectoryA("OUTSIDE", nullptr);
        CreateDirectoryA("MAIL", nullptr);
        WriteFileBytes("OUTSIDE\\PRECIOUS.TXT", kPrecious);
        if (UnixPath(mFolder.Path()).empty())
            mSkip = true;
    }
    void Link(const std::string& target, const std::string& name) {
        // A link that leads nowhere is not seen from here: a second file tells that it is made.
        const std::string made = mFolder.Path("MADE");
        ASSERT_TRUE(RunBelow("sh",
                             "-c \"ln -s '" + UnixPath(mFolder.Path(target)) + "' '" +
                                 UnixPath(mFolder.Path("MAIL")) + name.substr(4) + "' && >'" +
                                 UnixPath(made) + "'\"",
                             [&] { return FileThere(made); }))
            << name;
        DeleteFileA(made.c_str());
    }
    static std::wstring Wide(const std::string& path) {
        return std::filesystem::path(path).wstring();
    }
    void ExpectPrecious() {
        EXPECT_EQ(ReadFileBytes("OUTSIDE\\PRECIOUS.TXT"), kPrecious);
        EXPECT_EQ(Names("OUTSIDE"), "PRECIOUS.TXT ");
    }

    const std::string kPrecious = "precious";
    bool mSkip = false;
};

} // namespace

TEST_F(Strangers, LinksOfMessagesAndFoldersLeadNowhere) {
    if (mSkip)
        GTEST_SKIP();
    Link("OUTSIDE\\PRECIOUS.TXT", "MAIL/A.EML");
    Link("OUTSIDE", "MAIL/SUB");
    EXPECT_TRUE(IsLink(Wide("MAIL\\A.EML").c_str()));
    EXPECT_TRUE(IsLink(Wide("MAIL\\SUB").c_str()));
    EXPECT_FALSE(IsLink(Wide("OUTSIDE\\PRECIOUS.TXT").c_str()));
    EXPECT_FALSE(IsLink(Wide("OUTSIDE").c_str()));

    // A short name is the file's own.
    WriteFileBytes("OUTSIDE\\A long name.letter", kPrecious);
    char shortName[MAX_PATH];
    ASSERT_TRUE(GetShortPathNameA("OUTSIDE\\A long name.letter", shortName, sizeof shortName));
    EXPECT_FALSE(IsLink(Wide(shortName).c_str())) << shortName;
    DeleteFileA("OUTSIDE\\A long name.letter");

    const std::string record = Date(Message("A", "A.EML"), 3029529600u);
    WriteFileBytes("MAIL\\INBOX.DAT", kHeader + record);
    WriteFileBytes("OLD.DAT", kHeader);
    DFile inbox(keDirFolder, "MAIL\\INBOX.DAT"), old(keDirFolder, "OLD.DAT");
    DirectoryRecord probe = Record(record);
    EXPECT_EQ(inbox.DeleteMail(probe), 0);
    inbox.DeleteOldMail(0, 0, &old);
    EXPECT_EQ(Reports(), kNotAged);
    EXPECT_EQ(ReadFileBytes("MAIL\\INBOX.DAT"), kHeader + record);
    ExpectPrecious();

    FileSpec pattern((mFolder.Path("MAIL") + "\\*.*").c_str());
    DiskDriver().DoDelDirectory(pattern.FullFileSpec());
    ExpectPrecious();
    EXPECT_FALSE(FileThere("MAIL\\INBOX.DAT"));
}

TEST_F(Strangers, LinkedDirectoryFilesAreNotWritten) {
    if (mSkip)
        GTEST_SKIP();
    const std::string record = Message("A", "A.EML");
    const std::string bytes = kHeader + record + Free(record);
    const std::set<std::string> reads = {"count", "find", "copy", "read a slot", "list", "check"};
    WriteFileBytes("OUTSIDE\\PRECIOUS.TXT", bytes);
    WriteFileBytes("NEW.EML", record);
    mProbe = Record(record);
    Link("OUTSIDE\\PRECIOUS.TXT", "MAIL/INBOX.DAT");
    Link("OUTSIDE\\NEW.DAT", "MAIL/DANGLING.DAT");
    WriteFileBytes("MAIL\\A.EML", record);
    DFile inbox(keDirFolder, "MAIL\\INBOX.DAT"), dangling(keDirFolder, "MAIL\\DANGLING.DAT");
    RbFile message(mFolder.Path("NEW.EML").c_str());
    for (const Operation& each : Operations(keDirFolder))
        EXPECT_EQ(each.run(inbox), reads.count(each.name) ? each.works : each.fails) << each.name;
    Reports();
    EXPECT_EQ(dangling.AddMessage(&message), 0);
    EXPECT_EQ(dangling.CreateDFile(), 1);
    EXPECT_EQ(ReadFileBytes("OUTSIDE\\PRECIOUS.TXT"), bytes);
    EXPECT_EQ(Names("OUTSIDE"), "PRECIOUS.TXT ");
    // It can be read all the same.
    EXPECT_EQ(First(mFolder.Path("MAIL\\INBOX.DAT")), "A/A.EML");
}

TEST_F(Strangers, LinksInTheWayOfRewritingAreLeft) {
    if (mSkip)
        GTEST_SKIP();
    const std::string record = MessageID(Message("A", "A.EML"), "id");
    WriteFileBytes("MAIL\\INBOX.DAT", kHeader + record);
    DFile inbox(keDirFolder, "MAIL\\INBOX.DAT");
    Link("OUTSIDE\\PRECIOUS.TXT", "MAIL/INBOX.BAK");
    EXPECT_EQ(inbox.CompressDFile(), 0);
    EXPECT_EQ(inbox.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 0);
    Link("OUTSIDE\\NEW.DAT", "MAIL/INBOX.TMP");
    EXPECT_EQ(inbox.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 0);
    Reports();
    EXPECT_EQ(ReadFileBytes("MAIL\\INBOX.DAT"), kHeader + record);
    ExpectPrecious();

    MessageBoxes boxes;
    std::string first(40, 'F'), second(40, 'S');
    UserPrefFile prefs(first.data(), 1, 40, 400);
    ASSERT_TRUE(prefs.CreatePrefsFile(mFolder.Path("MAIL\\RB.DAT").c_str()));
    for (const char* target : {"OUTSIDE\\PRECIOUS.TXT", "OUTSIDE\\NEW.DAT"}) {
        Link(target, "MAIL/RB.BAK");
        AppPrefTag tag{2, 400, 40, second.data()};
        EXPECT_EQ(prefs.WriteAppPrefs(tag), 0);
        ExpectPrecious();
        const std::string gone = mFolder.Path("GONE");
        RunBelow("sh",
                 "-c \"rm '" + UnixPath(mFolder.Path("MAIL")) + "/RB.BAK' && >'" + UnixPath(gone) +
                     "'\"",
                 [&] { return FileThere(gone); });
        DeleteFileA(gone.c_str());
    }
    prefs.ClosePrefFile();
}

TEST_F(Strangers, RewritingKeepsWhoMayRead) {
    if (mSkip)
        GTEST_SKIP();
    const std::string path = mFolder.Path("INBOX.DAT");
    Write(kHeader + Message("A"));
    ASSERT_TRUE(RunBelow("chmod", "600 \"" + UnixPath(path) + "\"",
                         [&] { return ModeBelow(path) == 0600; }));
    // Wine gives the owner's rights to the group as well when it sets rights; others get none.
    EXPECT_EQ(mFile.CompressDFile(), 1);
    EXPECT_EQ(ModeBelow(path) & 0607, 0600u);
    EXPECT_EQ(mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 1);
    EXPECT_EQ(ModeBelow(path) & 0607, 0600u);
    // What everybody may read anyway keeps its rights to the bit.
    ASSERT_TRUE(RunBelow("chmod", "644 \"" + UnixPath(path) + "\"",
                         [&] { return ModeBelow(path) == 0644; }));
    EXPECT_EQ(mFile.CompressDFile(), 1);
    EXPECT_EQ(ModeBelow(path), 0644u);
}

// A file of 4 GB and some records, of which the disk holds next to nothing.
TEST_F(Strangers, HugeFilesAreLeftAsTheyAre) {
    Write(kHeader + Message("A") + Free(Message("B")));
    const HANDLE file =
        CreateFileA("INBOX.DAT", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD returned;
    DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    LARGE_INTEGER size;
    size.QuadPart = 0x100000000 + 948;
    const bool made = SetFilePointerEx(file, size, nullptr, FILE_BEGIN) && SetEndOfFile(file);
    CloseHandle(file);
    if (!made)
        GTEST_SKIP() << "no room for a sparse file";
    WriteFileBytes("C.EML", Message("C"));
    RbFile message(mFolder.Path("C.EML").c_str());
    EXPECT_EQ(mFile.AddMessage(&message), 0);
    mFile.UpdateDFile();
    mMessages.UpdateDFile();
    EXPECT_FALSE(Reports().empty());
    WIN32_FILE_ATTRIBUTE_DATA now;
    GetFileAttributesExA("INBOX.DAT", GetFileExInfoStandard, &now);
    EXPECT_EQ(now.nFileSizeHigh, 1u);
    EXPECT_EQ(now.nFileSizeLow, 948u);
}

TEST_F(Strangers, FoundNamesAndNotShortOnesDecide) {
    for (const char* name : {"A.EML", "B.EMLX", "C.EML~"})
        WriteFileBytes(name, Message(std::string(name, 1), name));
    EXPECT_EQ(mMessages.CreateDFile(), 1);
    EXPECT_EQ(Read(), Message("A", "A.EML"));
    char windows[MAX_PATH];
    GetWindowsDirectoryA(windows, sizeof windows);
    const std::string kept = std::string(windows) + "\\JPWreport.tmpl";
    WriteFileBytes(kept, "");
    WriteFileBytes(std::string(windows) + "\\JPW00007.TMP", "");
    EXPECT_EQ(TemporaryFile::DelDanglingTemps(), 1);
    EXPECT_TRUE(FileThere(kept));
    DeleteFileA(kept.c_str());
}

// Four hundred levels: paths end long before.
TEST_F(Strangers, RemovingAFolderStopsWherePathsEnd) {
    std::wstring path = L"\\\\?\\" + Wide(mFolder.Path("DEEP"));
    CreateDirectoryW(path.c_str(), nullptr);
    for (int level = 0; level < 400; ++level)
        CreateDirectoryW((path += L"\\D").c_str(), nullptr);
    FileSpec deep(mFolder.Path("DEEP").c_str(), 1);
    DiskDriver driver;
    driver.CurrentDir();
    driver.RemoveDir(deep);
    for (; path.size() > 10; path.resize(path.rfind(L'\\')))
        if (!RemoveDirectoryW(path.c_str()) && GetLastError() == ERROR_DIR_NOT_EMPTY)
            break;
}
