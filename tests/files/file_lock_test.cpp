// The lock of a change and the replacement of a file, as other programs see them.

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <optional>
#include <thread>

#include "postrider.h"
#include "resident/files/file_handle.h"
#include "resident/files/file_identity.h"
#include "tests/support/hooked_open.h"
#include "tests/support/reports.h"
#include "tests/support/scratch.h"
#include "tests/support/unrenamed_file.h"

#include <sddl.h>

// Another program's handle on the byte at 1 TB.
class OtherLock {
public:
    explicit OtherLock(const char* path)
        : mFile(CreateFileA(path, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr)) {
        mPlace.OffsetHigh = 0x100;
    }
    bool Take() {
        return LockFileEx(mFile.Get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                          &mPlace);
    }
    void Release() { UnlockFileEx(mFile.Get(), 0, 1, 0, &mPlace); }

private:
    const FileHandle mFile;
    OVERLAPPED mPlace = {};
};

static int sleeps;

static void WINAPI CountSleep(DWORD milliseconds) {
    ++sleeps;
    SleepEx(milliseconds, FALSE);
}

// How often the library gives the processor away while it waits.
struct CountedSleeps : HookedImport {
    CountedSleeps()
        : HookedImport("JXTICDLL.DLL", "kernel32.dll", "Sleep",
                       reinterpret_cast<void*>(CountSleep)) {
        sleeps = 0;
    }
};

TEST(FileLock, KeepsOtherProgramsAwayUntilItsLastHolderReleasesIt) {
    const ScratchFolder folder;
    const CountedSleeps counted;
    WriteFileBytes("A.DAT", "a");
    WriteFileBytes("B.DAT", "b");
    const FileSpec a(folder.Path("A.DAT").c_str()), b(folder.Path("B.DAT").c_str());
    OtherLock other("A.DAT"), otherB("B.DAT");
    {
        FileLock first, second;
        EXPECT_TRUE(first.Take(a, 0) == keLockTaken && first.IsHeld());
        EXPECT_EQ(second.Take(a, 0), keLockTaken); // this process has it
        EXPECT_FALSE(other.Take());
        first.Release();
        first.Release();
        EXPECT_FALSE(first.IsHeld() || other.Take());
        EXPECT_TRUE(otherB.Take());
        EXPECT_EQ(second.Take(b, 0), keLockTimedOut); // gives up the first one all the same
        EXPECT_TRUE(!second.IsHeld() && other.Take());
        otherB.Release();
        EXPECT_EQ(second.Take(b, 0), keLockTaken);
    }
    EXPECT_TRUE(otherB.Take()); // a holder that is destroyed releases
    EXPECT_EQ(sleeps, 0);       // what has no time does not wait
    FileLock late;
    const DWORD start = GetTickCount();
    EXPECT_EQ(late.Take(a, 120), keLockTimedOut);
    EXPECT_GE(GetTickCount() - start, 100u);
    EXPECT_GT(sleeps, 1);
    EXPECT_EQ(late.Take(FileSpec(folder.Path("NONE.DAT").c_str()), 1000), keLockNoFile);
    EXPECT_EQ(late.Take(static_cast<const wchar_t*>(nullptr)), keLockNoFile);
}

static DWORD WINAPI Appear(void* path) {
    Sleep(20);
    WriteFileBytes(*static_cast<const std::string*>(path), "new");
    return 0;
}

TEST(FileLock, WaitsForAFileThatARewriteIsGivingItsName) {
    const ScratchFolder folder;
    std::string name = folder.Path("D.DAT");
    WriteFileBytes("D.BAK", "old");
    enumFileLockResult result = keLockNoFile;
    // On a busy machine the name may come too late, for some.
    for (int tries = 0; tries < 20 && result != keLockTaken; ++tries) {
        DeleteFileA(name.c_str());
        const HANDLE rewrite = CreateThread(nullptr, 0, Appear, &name, 0, nullptr);
        FileLock lock;
        result = lock.Take(FileSpec(name.c_str()));
        WaitForSingleObject(rewrite, INFINITE);
        CloseHandle(rewrite);
    }
    EXPECT_EQ(result, keLockTaken);
}

// What is left of "D.DAT", "D.BAK" and "NEW".
static std::string Left() {
    std::string left;
    for (const char* name : {"D.DAT", "D.BAK", "NEW"})
        left += (FileThere(name) ? ReadFileBytes(name) : "-") + " ";
    return left;
}

TEST(FileReplacement, LeavesOneOfTheTwoFilesWholeUnderAKnownName) {
    const ScratchFolder folder;
    Reports reports;
    const FileSpec target(folder.Path("D.DAT").c_str()), backup(folder.Path("D.BAK").c_str()),
        fresh(folder.Path("NEW").c_str());
    const struct {
        const char* held; // that cannot be renamed, nor removed
        int options, result;
        const char* left;
    } cases[] = {{"", keReplacePlain, 1, "new old - "},
                 {"", keReplaceDropBackup | keReplaceFlush, 1, "new - - "},
                 {"D.DAT", keReplacePlain, 0, "old - - "},
                 {"D.DAT", keReplaceKeepNew, 0, "old - new "},
                 {"D.DAT", keReplaceKeepOlder, 0, "old older - "},
                 {"D.BAK", keReplacePlain, 0, "old older - "},
                 {"NEW", keReplaceKeepNew, 0, "old - new "},
                 {"NEW", keReplaceNoWayBack, 0, "- old new "}};
    for (const auto& [held, options, result, left] : cases) {
        WriteFileBytes("D.DAT", "old");
        WriteFileBytes("D.BAK", "older");
        WriteFileBytes("NEW", "new");
        {
            const UnrenamedFile kept(*held ? held : "nothing");
            EXPECT_EQ(ReplaceFileBy(fresh, target, backup, options), result) << held << options;
        }
        EXPECT_EQ(Left(), left) << held << options;
        EXPECT_EQ(reports.Take().empty(), result == 1);
    }
}

TEST(FileReplacement, WaitsForWhoHasAFileForAMoment) {
    const ScratchFolder folder;
    const CountedSleeps counted;
    for (const char* held : {"D.DAT", "D.BAK"}) {
        WriteFileBytes("D.DAT", "old");
        WriteFileBytes("D.BAK", "older");
        WriteFileBytes("NEW", "new");
        std::optional<UnrenamedFile> kept(held);
        std::thread other([&] {
            Sleep(100);
            kept.reset();
        });
        sleeps = 0;
        EXPECT_EQ(ReplaceFileBy(L"NEW", L"D.DAT", L"D.BAK", keReplacePlain), 1) << held;
        EXPECT_GT(sleeps, 1) << held; // who waits gives the processor away
        other.join();
        EXPECT_EQ(Left(), "new old - ") << held;
    }
}

static std::string AccessRights(const char* path) {
    char rights[1000] = "";
    DWORD size = 0;
    GetFileSecurityA(path, DACL_SECURITY_INFORMATION, rights, sizeof rights, &size);
    return std::string(rights, size);
}

TEST(FileReplacement, KeepsTheAccessRights) {
    const ScratchFolder folder;
    WriteFileBytes("D.DAT", "old");
    WriteFileBytes("NEW", "new");
    for (const auto& [path, rights] :
         {std::pair("D.DAT", "D:P(A;;FA;;;BA)"), {"NEW", "D:P(A;;FA;;;BA)(A;;FA;;;WD)"}}) {
        PSECURITY_DESCRIPTOR own = nullptr;
        ConvertStringSecurityDescriptorToSecurityDescriptorA(rights, 1, &own, nullptr);
        EXPECT_TRUE(SetFileSecurityA(path, DACL_SECURITY_INFORMATION, own));
        LocalFree(own);
    }
    const std::string rights = AccessRights("D.DAT");
    ASSERT_NE(rights, AccessRights("NEW"));
    EXPECT_EQ(ReplaceFileBy(L"NEW", L"D.DAT", L"D.BAK", keReplacePlain), 1);
    EXPECT_EQ(Left(), "new old - ");
    EXPECT_EQ(AccessRights("D.DAT"), rights);
}

TEST(FileReplacement, MakesAnOrdinaryFileOfAReadOnlyOne) {
    const ScratchFolder folder;
    WriteFileBytes("D.DAT", "old");
    SetFileAttributesA("D.DAT", FILE_ATTRIBUTE_READONLY);
    WriteFileBytes("NEW", "new");
    EXPECT_EQ(ReplaceFileBy(L"NEW", L"D.DAT", L"D.BAK", keReplacePlain), 1);
    EXPECT_EQ(Left(), "new old - ");
    EXPECT_FALSE(GetFileAttributesA("D.DAT") & FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(GetFileAttributesA("D.BAK") & FILE_ATTRIBUTE_READONLY);
    SetFileAttributesA("D.BAK", FILE_ATTRIBUTE_NORMAL);
    SetFileAttributesA("D.DAT", FILE_ATTRIBUTE_READONLY);
    WriteFileBytes("NEW", "newer");
    EXPECT_EQ(ReplaceFileBy(L"NEW", L"D.DAT", L"D.BAK", keReplaceDropBackup), 1);
    EXPECT_EQ(Left(), "newer - - ");
}

TEST(FileReplacement, UniqueNamesAreTriedAgainWhenOthersTakeThem) {
    const ScratchFolder folder;
    int makes = 0;      // new files that the library asked for
    int makesTaken = 0; // so many of them are another program's
    DWORD madeError = 0;
    const HookedOpen<wchar_t> open([&](const std::wstring&, DWORD disposition) {
        return disposition == CREATE_NEW && ++makes <= makesTaken ? madeError : 0;
    });
    FileSpec where(folder.Path("D.DAT").c_str());
    RbFile unique;
    const auto made = [&](int taken, DWORD error) {
        makes = 0;
        makesTaken = taken;
        madeError = error;
        return std::pair(MakeUniqueFile(&unique, where, ".TMP"), makes);
    };
    for (const DWORD error : {ERROR_FILE_EXISTS, ERROR_ALREADY_EXISTS}) {
        EXPECT_EQ(made(2, error), std::pair(true, 3));
        EXPECT_EQ(made(1000, error), std::pair(false, 100)); // there is an end to it
    }
    EXPECT_EQ(made(1, ERROR_ACCESS_DENIED), std::pair(false, 1));
}

TEST(FileReplacement, NewFilesTakeNobodysPlace) {
    const ScratchFolder folder;
    Reports reports;
    WriteFileBytes("A.TMP", "kept");
    EXPECT_FALSE(MakeNewFile(L"A.TMP"));
    EXPECT_TRUE(MakeNewFile(L"B.TMP"));
    EXPECT_EQ(ReadFileBytes("A.TMP") + ReadFileBytes("B.TMP"), "kept");
    FileSpec where(folder.Path("D.DAT").c_str());
    RbFile unique, again, anew(folder.Path("A.TMP").c_str());
    const std::time_t before = std::time(nullptr);
    EXPECT_TRUE(MakeUniqueFile(&unique, where, ".TMP") && unique.Exists());
    // Named by the time, in seconds and their thousandths together, from its last digit on.
    const auto isName = [&](std::time_t seed) {
        std::string digits = std::to_string(seed);
        std::reverse(digits.begin(), digits.end());
        return digits.substr(0, 8) == unique.FileName();
    };
    std::time_t seed = before;
    while (!isName(seed) && seed < std::time(nullptr) + 1000)
        ++seed;
    EXPECT_TRUE(isName(seed)) << unique.FileName();
    EXPECT_TRUE(MakeUniqueFile(&again, where, ".TMP") && again != unique);
    EXPECT_TRUE(OpenAnew(anew));
    anew.close();
    EXPECT_EQ(ReadFileBytes("A.TMP"), "");
    EXPECT_TRUE(MakeUniqueFile(&unique, where, "TMP"));
    EXPECT_EQ(reports.Take(), "strchr(pszExtension, '.')|361|JXRESIDT\\RBFILE2.CPP\n");
    FileSpec nowhere(folder.Path("NONE\\D.DAT").c_str());
    EXPECT_FALSE(MakeUniqueFile(&unique, nowhere, ".TMP"));
}

// What a file system of links tells of one.
static BOOL WINAPI TellLink(HANDLE, FILE_INFO_BY_HANDLE_CLASS, void* information, DWORD) {
    *static_cast<FILE_ATTRIBUTE_TAG_INFO*>(information) = {
        FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_REPARSE_POINT, IO_REPARSE_TAG_SYMLINK};
    return TRUE;
}

static HANDLE WINAPI FindNoFile(const wchar_t*, WIN32_FIND_DATAW*) {
    ADD_FAILURE() << "a search costs more, the larger the folder is";
    return INVALID_HANDLE_VALUE;
}

static DWORD WINAPI TellNoPath(HANDLE, wchar_t*, DWORD, DWORD) { return 0; }

TEST(FileIdentity, IsTheFilesAndNotItsNames) {
    const ScratchFolder folder;
    WriteFileBytes("A.DAT", "a");
    WriteFileBytes("B.DAT", "a");
    FileIdentity a, b, lower;
    EXPECT_TRUE(GetFileIdentity(L"A.DAT", a) && GetFileIdentity(L"B.DAT", b) &&
                GetFileIdentity(L".\\a.dat", lower));
    EXPECT_TRUE(a == lower && !(a == b));
    EXPECT_FALSE(GetFileIdentity(L"NONE", a));
    {
        const HookedImport hook("JXTICDLL.DLL", "kernel32.dll", "FindFirstFileW",
                                reinterpret_cast<void*>(FindNoFile));
        const KeptFile root("C:\\X.EML");
        WriteFileBytes(root.Path(), "");
        EXPECT_FALSE(IsLink(L"A.DAT") || IsLink(L"NONE") || IsLink(L"C:\\X.EML"));
    }
    {
        const HookedImport hook("JXTICDLL.DLL", "kernel32.dll", "GetFinalPathNameByHandleW",
                                reinterpret_cast<void*>(TellNoPath));
        EXPECT_FALSE(IsLink(L"A.DAT")); // on a disk that does not tell
    }
    const HookedImport asked("JXTICDLL.DLL", "kernel32.dll", "GetFileInformationByHandleEx",
                             reinterpret_cast<void*>(TellLink));
    EXPECT_TRUE(IsLink(L"A.DAT"));
    EXPECT_TRUE(WideName(FileSpec("C:\\A\\B.C")) == L"C:\\A\\B.C");
    EXPECT_TRUE(OpenedName(FileSpec("C:\\A\\B.C")) == L"C:\\A\\B.C");
    EXPECT_TRUE(WideName(FileSpec((std::string("C:\\") + std::string(258, 'x')).c_str())).empty());
}
