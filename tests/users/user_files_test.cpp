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
    EXPECT_EQ(JxCurrentUserDataFile::GetFileSpec("A.B", path, 4), 0u);
    EXPECT_EQ(JxCurrentUserDataFile::GetFileSpec(std::string(300, 'n').c_str(), path, 300), 0u);
}

TEST_F(UserFile, MisuseIsReportedAndGoesOn) {
    EXPECT_EQ(mFile.GetStream(), nullptr);
    EXPECT_THAT(mBoxes.TakeTexts(), IsSupersetOf({Report("mpszFileSpec"), Report("mpoRbFile")}));
    mFile.Close();
    EXPECT_THAT(mBoxes.TakeTexts(), Contains(Report("mpszFileSpec != NULL")));
    Put("first");
    EXPECT_TRUE(mFile.OpenUserDataFile(0xA1) && mFile.OpenUserDataFile(0xA1));
    EXPECT_THAT(mBoxes.TakeTexts(), Contains(Report("mpoRbFile == NULL")));
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
    for (const char* length : {"\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\xFD", "\x80"}) {
        Put(Streamed("anna") + length + RandomBytes(1, 5000));
        EXPECT_EQ(Verify(), "failed");
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

static const std::string kAddress = "abcdefghijklmnopqrstuvwxyz01234-the.rest"; // 40 characters

// The logged user's file: a system record, a text and a mail user's record.
static std::string LoggedFile(const std::string& name, const std::string& address) {
    const std::string empty(164, '\0'), more = empty.substr(0, 114);
    const std::string system = With(With(empty, 0, Pascal(name)), 46, Pascal(address));
    const std::string main = With(With(more, 0, Pascal(name)), 32, "\xFF\x01\x01\x06");
    const std::string mail = With(With(main, 46, Pascal(address.substr(0, 31))), 79, "\x80");
    return system.substr(0, 82) + Streamed("C:\\MAIL") + mail +
           (address.size() < 32 ? "" : With(more, 0, "\x01+" + Pascal(address.substr(31))));
}

class LoggedUser : public Test {
protected:
    bool Write(const std::string& name, const std::string& address) {
        JxLoggedMailUser user;
        user.SetName(name.c_str());
        user.SetAddress(address.c_str());
        user.SetLoggedText("C:\\MAIL");
        user.SetSecondText("never written");
        std::fstream file(mPath, std::ios::out | std::ios::binary);
        const bool written = user.WriteInfo(file);
        EXPECT_EQ(written, file.good());
        return written;
    }
    // What a file with these bytes gives.
    std::string Read(const std::string& bytes) {
        WriteFileBytes(mPath, bytes);
        std::fstream file(mPath, std::ios::in | std::ios::binary);
        JxLoggedMailUser user;
        return user.ReadInfo(file) ? user.Name().Text() + std::string("/") + user.Address().Text() +
                                         "/" + user.LoggedText().Text()
                                   : "failed";
    }

    ScratchFolder mFolder;
    const std::string mPath = mFolder.Path("user.dat");
};

TEST_F(LoggedUser, IsWrittenTwice) {
    for (const std::string& address : {kAddress.substr(0, 31), kAddress}) {
        EXPECT_TRUE(Write("Smith|Anna", address));
        EXPECT_EQ(ReadFileBytes(mPath), LoggedFile("Smith|Anna", address));
        EXPECT_EQ(Read(ReadFileBytes(mPath) + "x"), "Smith|Anna/" + address + "/C:\\MAIL");
    }
}

TEST_F(LoggedUser, DamagedFileFailsAndLengthsStayInTheirFields) {
    const std::string name(31, 'n'), whole = LoggedFile(name, kAddress.substr(0, 31));
    for (unsigned int size = 0; size < whole.size(); size += 3)
        EXPECT_EQ(Read(whole.substr(0, size)), "failed") << size;
    EXPECT_EQ(Read(With(whole, 82, "\xFF\xFF\xFF\xFE") + std::string(9000, 'x')), "failed");
    const std::string broken = With(With(whole, 0, "\xFF"), 46, "\xFF");
    EXPECT_EQ(Read(With(broken, 93, "\xFF")), name + "/" + kAddress.substr(0, 31) + "/C:\\MAIL");
    EXPECT_THAT(Read(With(LoggedFile("Anna", kAddress), 209, "\xFF")),
                StartsWith("Anna/" + kAddress));
    EXPECT_FALSE(Write(std::string(255, 'n'), std::string(200, 'a')));
    EXPECT_EQ(ReadFileBytes(mPath), "");
    std::fstream closed;
    EXPECT_FALSE(JxLoggedMailUser().WriteInfo(closed));
    EXPECT_TRUE(Write("Anna", std::string(142, 'a')));
    EXPECT_EQ(Read(ReadFileBytes(mPath)), "Anna/" + std::string(142, 'a') + "/C:\\MAIL");
}
