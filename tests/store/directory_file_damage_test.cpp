#include <gmock/gmock.h>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

using namespace testing;

// A D file with one record of the message file `name`, with a message identifier.
static std::string WithRecordOf(const std::string& name) {
    const std::string zeros(316, '\0'), used = With(zeros, 2, "\x01");
    return zeros + With(With(With(used, 38, Pascal(name)), 112, Pascal("id")), 300, "\x90");
}

class DirectoryFileDamage : public Test {
protected:
    void Use(const std::string& name, const std::string& bytes) {
        WriteFileBytes(name, bytes);
        static_cast<FileSpec&>(mFile) = FileSpec(mFolder.Path(name).c_str());
    }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    DirectoryFile mFile{keDirFolder};
};

TEST_F(DirectoryFileDamage, NamesThatLeadToFoldersMoveAndRemoveNone) {
    CreateDirectoryA("sub", nullptr);
    CreateDirectoryA("other", nullptr);
    WriteFileBytes("other\\DFILE", std::string(316, '\0'));
    DirectoryFile target(keDirFolder);
    static_cast<FileSpec&>(target) = FileSpec(mFolder.Path("other\\DFILE").c_str());
    for (const char* name : {" ", ". ", ".. ", "...", ". .", "sub", "sub."}) {
        Use("DFILE", WithRecordOf(name));
        mFile.DeleteOldMail(0, 0, &target);
        EXPECT_EQ(ReadFileBytes("DFILE"), WithRecordOf(name));
        EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(HasSubstr("DirectoryFile: DeleteOldMail()")));
        EXPECT_TRUE(GetFileAttributesA("sub") & FILE_ATTRIBUTE_DIRECTORY) << name;
    }
    for (const char* name : {" ", ". ", ".. ", "..."}) {
        const std::string bytes = WithRecordOf(name);
        Use("DFILE", bytes);
        std::istringstream in(bytes.substr(316));
        DirectoryRecord probe;
        in >> probe;
        EXPECT_EQ(mFile.DeleteMail(probe), 1) << name;
    }
    EXPECT_THAT(mBoxes.Shown(), IsEmpty());
}

TEST_F(DirectoryFileDamage, AFileWithABackupsNameIsNotItsOwnBackup) {
    const std::string bytes = WithRecordOf("a.EML");
    for (const char* name : {"D.BAK", "D.bak", "D.TMP"}) {
        Use(name, bytes);
        EXPECT_EQ(mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 0);
        EXPECT_EQ(ReadFileBytes(name), bytes) << name;
        EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(HasSubstr("RemoveAllMessageIDs()")));
        const bool backup = std::string(name) != "D.TMP";
        EXPECT_EQ(mFile.CompressDFile(), !backup);
        EXPECT_EQ(ReadFileBytes(name), bytes) << name;
        if (backup) {
            EXPECT_EQ(mFile.RenameToBak(nullptr), 0);
        }
        EXPECT_EQ(ReadFileBytes(name), bytes) << name;
        DeleteFileA(name);
    }
    EXPECT_THAT(mBoxes.TakeTexts(), IsEmpty());
}
