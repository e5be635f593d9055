#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "postrider.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"

using testing::ElementsAre;
using testing::UnorderedElementsAre;

class DiskDriverTest : public testing::Test {
protected:
    DiskDriverTest() {
        DiskDriver::MakeDir("TREE");
        DiskDriver::MakeDir("TREE\\SUB");
        for (const char* name : {"TREE\\A.DAT", "TREE\\SUB\\B.DAT", "TREE\\SUB\\C"})
            WriteFileBytes(name, "12345");
        SetFileAttributesA("TREE\\SUB\\B.DAT", FILE_ATTRIBUTE_READONLY);
    }
    static std::string Here() {
        char folder[MAX_PATH];
        GetCurrentDirectoryA(sizeof folder, folder);
        return folder;
    }
    FileSpec Folder(const char* name) const { return FileSpec(mFolder.Path(name).c_str(), 1); }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
};

TEST_F(DiskDriverTest, MovesTheProcessAndPutsItBack) {
    {
        DiskDriver driver;
        EXPECT_TRUE(driver.ChangeLocation(Folder("TREE")));
        EXPECT_EQ(driver.CurrentDir().FullPath(), mFolder.Path("TREE\\"));
        EXPECT_FALSE(driver.ChangeLocation(FileSpec("\\", 1)));
        EXPECT_EQ(Here(), mFolder.Path("TREE"));
        EXPECT_TRUE(driver.ChangeLocation(FileSpec(("A" + mFolder.Path().substr(1)).c_str(), 1)));
        EXPECT_EQ(Here(), mFolder.Path());
        EXPECT_FALSE(driver.ChangeVolume('Q'));
        EXPECT_FALSE(driver.ChangeVolume(-1));
        EXPECT_TRUE(driver.ChangeDir(FileSpec("C:\\", 1)));
    }
    EXPECT_EQ(Here(), mFolder.Path());
    {
        DiskDriver nowhere(FileSpec("Z:\\MISSING\\", 1));
        EXPECT_TRUE(!nowhere.IsLocationValid() && Here() == mFolder.Path());
    }
    EXPECT_EQ(Here(), mFolder.Path());
    EXPECT_NE(DiskDriver(Folder("TREE")).IsLocationValid(), 0);
    EXPECT_EQ(Here(), mFolder.Path("TREE"));
    SetCurrentDirectoryA(mFolder.Path().c_str());
}

TEST_F(DiskDriverTest, ASearchEndsWhereItIsClosed) {
    FileSearch search;
    ffblk found;
    EXPECT_EQ(search.Next(found), 0);
    EXPECT_EQ(search.First(mFolder.Path("TREE\\*.*").c_str(), found, 0), 1);
    search.Close();
    EXPECT_EQ(search.Next(found), 0);
}

TEST_F(DiskDriverTest, ListsAFolder) {
    DiskDriver driver;
    driver.SetSearchPattern(FileSpec(mFolder.Path("TREE\\*.*").c_str()));
    const auto valid = [&](unsigned short attributes) {
        std::vector<std::string> names;
        driver.SetSearchAttributes(attributes);
        while (driver.FindFile()) {
            FileSpec entry("C:\\IN\\OLD");
            EXPECT_TRUE(driver.FoundFile(entry));
            if (driver.ValidFind())
                names.push_back(entry.FullSpec());
        }
        driver.EndSearch();
        return names;
    };
    EXPECT_THAT(valid(0), UnorderedElementsAre("C:\\IN\\A.DAT", "C:\\IN\\SUB\\OLD"));
    EXPECT_THAT(valid(keAttrDirectory), ElementsAre("C:\\IN\\SUB\\OLD"));
    EXPECT_THAT(valid(keAttrArchive), ElementsAre("C:\\IN\\A.DAT"));
    driver.SetSearchPattern(FileSpec(mFolder.Path("*.NONE").c_str()));
    FileSpec found;
    driver.FindFile();
    EXPECT_FALSE(driver.FoundFile(found));
    EXPECT_THAT(mBoxes.Texts(),
                ElementsAre("Assert Failed!\n0\nInvalid file found in DiskDriver::FoundFile\n151\n"
                            "JXRESIDT\\DISKDRVR.CPP\n"));
}

TEST_F(DiskDriverTest, RemovesATreeWithReadOnlyFiles) {
    DiskDriver driver;
    FileSpec tree(mFolder.Path("TREE").c_str());
    EXPECT_EQ(driver.RemoveDir(tree), 1);
    EXPECT_FALSE(FileThere("TREE"));
    EXPECT_EQ(Here(), mFolder.Path());
}

TEST_F(DiskDriverTest, ARelativeFoldersEntriesAreItsOwn) {
    DiskDriver::MakeDir("TREE\\TREE");
    DiskDriver::MakeDir("TREE\\SUB\\TREE");
    WriteFileBytes("TREE\\SUB\\TREE\\D", "12345");
    DiskDriver driver;
    EXPECT_EQ(driver.DoDelDirectory("TREE\\*.*"), 3);
    EXPECT_TRUE(std::filesystem::is_empty(mFolder.Path("TREE")));
    EXPECT_FALSE(DiskDriver::FileExists(std::string(300, 'x').c_str(), 0));
    EXPECT_EQ(driver.DoDelDirectory((std::string(250, 'x') + "\\*.*").c_str()), 0);
}
