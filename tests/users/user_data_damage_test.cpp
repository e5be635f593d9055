#include <gmock/gmock.h>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"

TEST(UserDataDamage, AnAddressThatNoRecordHoldsLeavesTheFileAsItWas) {
    const ScratchFolder folder;
    const std::string bytes(400, 'x');
    WriteFileBytes("USER.DAT", bytes);
    MailUser anna("Anna", std::string(200, 'a').c_str(), keUserOrdinary);
    JxLoggedMailUser user(anna);
    RbFile file("USER.DAT");
    ASSERT_TRUE(file.Open(keOpenUpdate));
    EXPECT_FALSE(user.WriteInfo(file) || file.good());
    file.close();
    EXPECT_EQ(ReadFileBytes("USER.DAT"), bytes);
}

TEST(UserDataDamage, ANameThatIsNoneNeverTouchesTheDirectory) {
    const DWORD before = GetFileAttributesA(WindowsDirectory().c_str());
    for (const std::string& name : {std::string(), std::string(300, 'n')}) {
        JxCurrentUserDataFile file;
        EXPECT_EQ(file.Open(name.c_str(), keOpenRead), 0);
    }
    EXPECT_EQ(GetFileAttributesA(WindowsDirectory().c_str()), before);
}

TEST(UserDataDamage, AHeldFileStaysHidden) {
    const std::string path = WindowsDirectory() + "\\JXUSER.DAT";
    const KeptFile kept(path);
    const MessageBoxes boxes;
    WriteFileBytes(path, "x");
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_HIDDEN);
    {
        const HeldFile held(path);
        RBString text;
        EXPECT_EQ(JxPopUserVerify().ReadDataFromUserFile(text, text, text, text), 0);
        EXPECT_EQ(JxPopUserVerify("a", "b", "c", "d").WriteDataToUserFile(), 0);
        EXPECT_TRUE(GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_HIDDEN);
    }
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(boxes.Shown().empty());
}

// Values besides the library's own are other programs'.
TEST(UserDataDamage, SettingsOfOtherProgramsAreKept) {
    MailUser user("Anna", "a", keFormat1, static_cast<enumEnclosureEncode>(99)), copy(user);
    EXPECT_TRUE(copy.EnclosureEncode() == 99 && copy.IsEqual(user));
    JxLoggedMailUser logged, assigned;
    logged.SetUserStatus(static_cast<enumLoggedUserStatus>(5));
    assigned = logged;
    EXPECT_EQ(assigned.UserStatus(), 5);
}
