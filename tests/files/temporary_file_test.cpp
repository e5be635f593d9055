#include <gmock/gmock.h>

#include <cstdlib>
#include <list>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/hooked_open.h"
#include "tests/support/scratch.h"

using testing::EndsWith;
using testing::StartsWith;

// A name taken in the Windows directory: by a folder when it ends in a backslash, else by a file.
struct Taken {
    explicit Taken(const std::string& name) : path(WindowsDirectory() + "\\" + name) {
        if (name.back() != '\\')
            WriteFileBytes(path, "");
        else
            CreateDirectoryA(path.c_str(), nullptr);
    }
    ~Taken() { DeleteFileA(path.c_str()) || RemoveDirectoryA(path.c_str()); }
    bool There() const { return FileThere(path); }
    const std::string path;
};

class TemporaryFiles : public testing::Test {
protected:
    TemporaryFiles() { Tmp(""); }
    ~TemporaryFiles() override { Tmp(mTmp); }
    static void Tmp(const std::string& folder) { _putenv(("TMP=" + folder).c_str()); }
    // The name a file with this extension gets, and its folder when it is not the Windows
    // directory.
    static std::string Name(const char* text, enumTempFileOptions option = keTempExtension) {
        TemporaryFile file(text, 1, option);
        EXPECT_TRUE(file.IsValid() && !file.isOpen() && ReadFileBytes(file.FullFileSpec()).empty());
        EXPECT_TRUE(file.Open(keOpenUpdate)); // is closed when destroyed
        const bool inWindows = !lstrcmpiA(file.FullFilePath(), WindowsDirectory().c_str());
        return inWindows ? file.FullFileName() : file.FullFileSpec();
    }

    const std::string mTmp = std::getenv("TMP") ? std::getenv("TMP") : "";
    ScratchFolder mFolder;
    // Leads into a folder that is not there: no numbered file can be made.
    const char* const mUnusable = "\\NONE\\A.JXT";
};

TEST_F(TemporaryFiles, TakeTheFirstFreeNumberInTheWindowsDirectory) {
    EXPECT_EQ(Name(".JXT"), "JPW00000.JXT");
    EXPECT_EQ(Name("JXT"), "JPW00000JXT");
    EXPECT_EQ(Name(".JXT", static_cast<enumTempFileOptions>(2)), "JPW00000");
    std::list<Taken> taken;
    for (int number = 0; number < 10; number++)
        taken.emplace_back("JPW0000" + std::to_string(number) + (number ? ".JXT" : ".JXT\\"));
    EXPECT_EQ(Name(".JXT"), "JPW00010.JXT");
    taken.erase(std::next(taken.begin(), 5));
    EXPECT_EQ(Name(".JXT"), "JPW00005.JXT");

    const Taken first("JPW00000.TMP");
    FileSpec where(mFolder.Path().c_str(), 1);
    TemporaryFile second(1), third(where, 1);
    EXPECT_STREQ(second.FullFileName(), "JPW00001.TMP");
    EXPECT_STREQ(third.FullFileName(), "JPW00002.TMP");
    EXPECT_EQ(Name(mFolder.Path().c_str(), keTempDirectory), "JPW00003.TMP");
    TemporaryFile(0).close();
    EXPECT_TRUE(DiskDriver::RemoveFile((WindowsDirectory() + "\\JPW00003.TMP").c_str()));
}

static unsigned int asked;
static char lastAsked[MAX_PATH];

// A folder with every file that is asked for.
static HANDLE WINAPI FindAll(const char* path, WIN32_FIND_DATAA* found) {
    ++asked;
    lstrcpynA(lastAsked, path, MAX_PATH);
    *found = {};
    lstrcpyA(found->cFileName, "FILE");
    return reinterpret_cast<HANDLE>(4);
}

TEST_F(TemporaryFiles, EndWithTheLastNumber) {
    RbFile unique;
    FileSpec where(mFolder.Path("D.DAT").c_str());
    FileSpec spec(mFolder.Path().c_str(), 1);
    const HookedImport find("JXTICDLL.DLL", "kernel32.dll", "FindFirstFileA",
                            reinterpret_cast<void*>(FindAll));
    asked = 0;
    EXPECT_FALSE(RbFile::HashUniqueFileName(&unique, where, ".TMP"));
    EXPECT_EQ(asked, 32767u);
    asked = 0;
    TemporaryFile file(spec, 1);
    EXPECT_EQ(asked, 32767u);
    EXPECT_THAT(std::string(lastAsked), EndsWith("\\JPW32766.TMP"));
    EXPECT_THAT(file.FullFileSpec(), StartsWith(mFolder.Path("JPW")));
}

TEST_F(TemporaryFiles, LeaveANameToWhoTakesItMeanwhile) {
    const std::string first = WindowsDirectory() + "\\JPW00000.JXT";
    const HookedOpen<char> open([&](const std::string& path, DWORD disposition) {
        if (disposition == CREATE_NEW && !lstrcmpiA(path.c_str(), first.c_str()))
            WriteFileBytes(path, "another program's");
        return 0;
    });
    EXPECT_EQ(Name(".JXT"), "JPW00001.JXT");
    EXPECT_EQ(ReadFileBytes(first), "another program's");
    DeleteFileA(first.c_str());
}

TEST_F(TemporaryFiles, FallBackToTmpOrAFolderOrTheCurrentOne) {
    const std::string other = mFolder.Path("OTHER");
    RBString folder(other.c_str()), missing(mFolder.Path("MISSING").c_str());
    CreateDirectoryA(other.c_str(), nullptr);
    EXPECT_THAT(Name(mUnusable), StartsWith(mFolder.Path("JPW")));
    TemporaryFile file(mUnusable, 0, keTempExtension);
    file.HashFileName(folder);
    EXPECT_THAT(file.FullFileSpec(), StartsWith(other + "\\JPW"));
    EXPECT_TRUE(file.IsValid() && file.Exists());
    file.HashFileName(missing);
    EXPECT_EQ(file.IsValid(), 0);
    Tmp(other);
    EXPECT_THAT(Name(mUnusable), StartsWith(other + "\\JPW"));
}

TEST_F(TemporaryFiles, DanglingOnesAreRemovedFromTheWindowsDirectory) {
    const Taken folder("JPWX.TMP\\"), other("JPW00000.JXT"), longer("XJPW.TMP");
    EXPECT_EQ(TemporaryFile::DelDanglingTemps(), 0);
    const Taken number("JPW00000.TMP"), text("JPWanything.tmp");
    WriteFileBytes("JPW00000.TMP", "");
    EXPECT_EQ(TemporaryFile::DelDanglingTemps(), 1);
    EXPECT_FALSE(number.There() || text.There());
    EXPECT_TRUE(folder.There() && other.There() && longer.There());
    EXPECT_TRUE(FileThere("JPW00000.TMP")); // the current folder is the same
}
