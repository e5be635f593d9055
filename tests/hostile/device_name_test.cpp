// D files and semaphores with the names of devices, which have a place in every folder.

#include <gmock/gmock.h>

#include <cstring>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"

class DeviceNames : public MailFolder {
protected:
    // A port or a console that answers is not for a test to talk to.
    static bool Answers(Text name) {
        if (_strnicmp(name.c_str(), "NUL", 3) == 0)
            return false;
        const HANDLE device =
            CreateFileA(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_EXISTING, 0, nullptr);
        return device != INVALID_HANDLE_VALUE && CloseHandle(device);
    }
};

TEST_F(DeviceNames, HoldNoRecords) {
    const std::string record = Date(Message("A", "A.EML"), 3029529600u);
    WriteFileBytes("A.EML", record);
    const std::string names = Names();
    DirectoryRecord probe = Record(record);
    RbFile message(mFolder.Path("A.EML").c_str()), copy(mFolder.Path("COPY").c_str());
    int tried = 0;
    for (const char* device : {"NUL", "nul.dat", "NUL.", "NUL ", "NUL .DAT", "CON", "PRN.DAT",
                               "AUX", "COM1.DAT", "COM9", "LPT1", "CONIN$", "CONOUT$.DAT"}) {
        SCOPED_TRACE(device);
        if (Answers(device))
            continue;
        EXPECT_EQ(First(device), "");
        // Looking for a file that is missing takes its time: each type has its turn.
        const TypeDirFile types[] = {keDirFolder, keDirForeign, keDirMessages};
        DFile file(types[tried++ % 3], "INBOX.DAT"), target(keDirFolder, "TARGET.DAT");
        file.SetSpecPart(device, 0);
        file.SetFileExt(std::strchr(device, '.') ? std::strchr(device, '.') : "");
        file.AddMessage(&message);
        EXPECT_LT(file.FindRecord(probe, keFindPosition), 0);
        file.GetInfo(keInfoAll);
        EXPECT_EQ(file.UsedCount(), 0);
        EXPECT_EQ(file.MarkRecord(probe, keMarkUnused), 0);
        EXPECT_EQ(file.DeleteMail(probe), 0);
        EXPECT_EQ(file.CompressDFile(), 0);
        EXPECT_EQ(file.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 0);
        file.GetUIDList(&mItems);
        EXPECT_NE(file.CheckUnprocessedDDRs(keCheckAlways, nullptr), keCheckSome);
        EXPECT_NE(file.GetUnprocessedDDRs(&mTaken, nullptr, keGetProcessable), keGetSome);
        file.DeleteOldMail(0, 0, &target);
        file.UpdateDFile();
        EXPECT_EQ(file.GetDFile(copy), 0);
        EXPECT_TRUE(!mTaken.GetFirstObject() && !mItems.GetFirstObject());
        DeleteFileA("COPY");
        EXPECT_EQ(Names(), names);
        Reports();
    }
    EXPECT_GE(tried, 5);
    EXPECT_EQ(ReadFileBytes("A.EML"), record);
}
