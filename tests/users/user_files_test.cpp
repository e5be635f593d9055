// The two files of the Windows directory, and what is written in them.

#include <gmock/gmock.h>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/helper_process.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

using namespace testing;

static auto Report(const std::string& lines) {
    return AllOf(StartsWith("Assert Failed!\n" + lines + "\n"),
                 EndsWith("\nJXRESIDT\\JXUSRFIL.CPP\n"));
}

class UserFile : public Test {
protected:
    UserFile() { mKept.Remove(); }
    void Put(const std::string& bytes) { mKept.Remove(), WriteFileBytes(mPath, bytes); }
    std::string Verify() {
        RBString name, password, address, dialup;
        return JxPopUserVerify().ReadDataFromUserFile(name, password, address, dialup)
                   ? name.Text() + std::string("/") + password.Text() + "/" + address.Text() + "/" +
                         dialup.Text()
                   : "failed";
    }
    bool Hidden() { return GetFileAttributesA(mPath.c_str()) & FILE_ATTRIBUTE_HIDDEN; }

    ScratchFolder mFolder;
    MessageBoxes mBoxes;
    const KeptFile mKept{WindowsDirectory() + "\\JXUSER.DAT"};
    const std::string& mPath = mKept.Path();
    JxCurrentUserDataFile mFile;
};

TEST_F(UserFile, IsHiddenWhileClosed) {
    WriteFileBytes(mFolder.Path("JXUSER.DAT"), "another");
    Put("kept");
    for (DWORD attribute : {FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_READONLY}) {
        SetFileAttributesA(mPath.c_str(), attribute);
        ASSERT_TRUE(mFile.OpenUserDataFile(0xA3));
        EXPECT_EQ(GetFileAttributesA(mPath.c_str()), DWORD{FILE_ATTRIBUTE_ARCHIVE});
        EXPECT_EQ(mFile.GetStream()->get(), 'k');
        mFile.Close();
        EXPECT_TRUE(Hidden() && mBoxes.Shown().empty());
    }
    // A missing file: the object holds it all the same, and closing cannot hide it.
    mKept.Remove();
    EXPECT_TRUE(!mFile.OpenUserDataFile(0xA1) && mBoxes.Shown().empty() && !FileThere(mPath));
    mFile.Close();
    EXPECT_THAT(mBoxes.Texts(),
                ElementsAre(Report("iiResult == 0\nCan't set JxBackgnd file attributes")));
    const KeptFile logged(WindowsDirectory() + "\\JXLGDUSR.DAT");
    WriteFileBytes(logged.Path(), "logged");
    EXPECT_TRUE(mFile.OpenLoggedUserFile(0xA1) && mFile.GetStream()->get() == 'l');
    mFile.Close();
    char path[300];
    const unsigned short length = WindowsDirectory().size(), whole = length + sizeof "\\A.B";
    for (const unsigned short size : {4, length + 1, whole - 1})
        EXPECT_EQ(JxCurrentUserDataFile::GetFileSpec("A.B", path, size), 0u) << size;
    EXPECT_EQ(JxCurrentUserDataFile::GetFileSpec("A.B", path, whole), length);
    EXPECT_EQ(JxCurrentUserDataFile::GetFileSpec(std::string(300, 'n').c_str(), path, 300), 0u);
}

TEST_F(UserFile, MisuseIsReportedAndGoesOn) {
    EXPECT_EQ(mFile.GetStream(), nullptr);
    EXPECT_THAT(mBoxes.TakeTexts(), IsSupersetOf({Report("mpszFileSpec"), Report("mpoRbFile")}));
    mFile.Close();
    EXPECT_THAT(mBoxes.TakeTexts(), Contains(Report("mpszFileSpec != NULL")));
    Put("first");
    EXPECT_TRUE(mFile.OpenUserDataFile(0xA1) && mFile.OpenUserDataFile(0xA1));
    EXPECT_THAT(mBoxes.TakeTexts(), ElementsAre(Report("mpoRbFile == NULL")));
    EXPECT_EQ(mFile.GetStream()->get(), 'f');
    mFile.Close();
    JxPopUserVerify().WriteDataToUserFile(); // null pointers
    EXPECT_THAT(mBoxes.Texts(), AllOf(SizeIs(4), Each(HasSubstr("\nmpszOutput"))));
}

TEST_F(UserFile, HandsOverVerificationDataInPlainText) {
    Put(std::string(500, 'x'));
    EXPECT_EQ(JxPopUserVerify("anna", "", "10.0.0.7", "Home").WriteDataToUserFile(), 1);
    EXPECT_TRUE(Hidden());
    EXPECT_EQ(ReadFileBytes(mPath), Bytes("\0\0\0\4anna\0\0\0\0\0\0\0\x08"
                                          "10.0.0.7\0\0\0\4Home"));
    EXPECT_EQ(Verify(), "anna//10.0.0.7/Home");
    EXPECT_TRUE(mBoxes.Shown().empty());
}

TEST_F(UserFile, DamagedVerificationDataFails) {
    const std::string whole = Streamed("anna") + Streamed("pw") + Streamed("") + Streamed("Home");
    EXPECT_EQ(Verify(), "failed");
    for (unsigned int size = 0; size < whole.size(); ++size) {
        Put(whole.substr(0, size));
        EXPECT_EQ(Verify(), "failed") << size;
        EXPECT_TRUE(Hidden()); // closed all the same
    }
    EXPECT_TRUE(mBoxes.Shown().empty());
}

TEST_F(UserFile, ThatCannotBeOpenedIsLeftAsItWas) {
    JxPopUserVerify verify("anna", "pw", "", "Home");
    const auto fails = [&] { EXPECT_TRUE(!verify.WriteDataToUserFile() && Verify() == "failed"); };
    Put(Streamed("kept"));
    SetFileAttributesA(mPath.c_str(), FILE_ATTRIBUTE_HIDDEN);
    {
        const HeldFile held(mPath);
        fails();
        EXPECT_TRUE(Hidden());
        EXPECT_FALSE(mFile.OpenUserDataFile(0xA1));
        mFile.Close();
        EXPECT_TRUE(Hidden());
    }
    EXPECT_EQ(ReadFileBytes(mPath), Streamed("kept"));
    mKept.Remove();
    CreateDirectoryA(mPath.c_str(), nullptr);
    fails();
    EXPECT_TRUE(RemoveDirectoryA(mPath.c_str()) && mBoxes.Shown().empty());
}

TEST_F(UserFile, WithANameThatIsNoneNeverTouchesTheDirectory) {
    const DWORD before = GetFileAttributesA(WindowsDirectory().c_str());
    for (const std::string& name : {std::string(), std::string(300, 'n')}) {
        EXPECT_EQ(mFile.Open(name.c_str(), keOpenRead), 0);
        EXPECT_EQ(GetFileAttributesA(WindowsDirectory().c_str()), before);
        mFile.Close();
        EXPECT_EQ(GetFileAttributesA(WindowsDirectory().c_str()), before);
        EXPECT_THAT(mBoxes.TakeTexts(),
                    ElementsAre(Report("iiResult == 0\nCan't set JxBackgnd file attributes")));
    }
}
