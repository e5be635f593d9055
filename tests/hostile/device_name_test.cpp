// D files and semaphores with the names of devices, which have a place in every folder.

#include <gmock/gmock.h>

#include <cstring>
#include <set>

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
    WriteFileBytes("NEW.EML", record);
    const std::string names = Names();
    mProbe = Record(record);
    const std::set<std::string> kTellNothing = {"count", "list", "trim", "add", "write a slot"};
    int tried = 0;
    for (const char* device : {"NUL", "nul.dat", "NUL.", "NUL ", "NUL .DAT", "CON", "PRN.DAT",
                               "AUX", "COM1.DAT", "COM9", "LPT1", "CONIN$", "CONOUT$.DAT"}) {
        if (Answers(device))
            continue;
        EXPECT_EQ(First(device), "");
        // Looking for a file that is missing takes its time: each type has its turn.
        const TypeDirFile types[] = {keDirFolder, keDirForeign, keDirMessages};
        const TypeDirFile type = types[tried++ % 3];
        DFile file(type);
        file.SetSpecPart(device, 0);
        file.SetFileExt(std::strchr(device, '.') ? std::strchr(device, '.') : "");
        for (const Operation& each : Operations(type)) {
            SCOPED_TRACE(std::string(device) + ", " + each.name);
            if (each.name == std::string("create"))
                continue;
            const long result = each.run(file);
            EXPECT_TRUE(result != each.works || kTellNothing.count(each.name));
            DeleteFileA("COPY");
            EXPECT_EQ(Names(), names);
        }
        EXPECT_TRUE(!file.UsedCount() && !mTaken.GetFirstObject() && !mItems.GetFirstObject());
        Reports();
    }
    EXPECT_GE(tried, 5);
    EXPECT_EQ(ReadFileBytes("A.EML"), record);
}
