// File names inside records that lead elsewhere, to many files, to devices or nowhere: operations
// that remove or move a record's message file touch none of what such a name could reach.

#include <gmock/gmock.h>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"

// The mail folder stands in the scratch folder, whose files are the parent's; the current folder
// is another one, and so is that of drive Z.
class RecordNames : public MailFolder {
protected:
    RecordNames() {
        for (const char* folder : {"MAIL", "MAIL\\SUB", "CURRENT", "OLD"})
            CreateDirectoryA(folder, nullptr);
        mOld.CreateDFile();
        mCanaries = {"C:\\X.EML", mOnZ + "\\X.EML"};
        for (const char* name : {"X.EML", "MAIL\\X.EML", "MAIL\\SUB\\X.EML", "MAIL\\Y.EML",
                                 "CURRENT\\X.EML", "OLD\\X.EML", "OLD\\OLD.DAT"})
            mCanaries.push_back(mFolder.Path(name));
        for (Text canary : mCanaries)
            if (!FileThere(canary))
                WriteFileBytes(canary, Message(canary.substr(0, 27)));
        SetEnvironmentVariableA("=Z:", mOnZ.c_str());
        SetCurrentDirectoryA(mFolder.Path("CURRENT").c_str());
        mBefore = Canaries();
    }
    ~RecordNames() override {
        SetEnvironmentVariableA("=Z:", nullptr);
        SetCurrentDirectoryA(mFolder.Path().c_str());
        DeleteFileA((mOnZ + "\\X.EML").c_str());
        RemoveDirectoryA(mOnZ.c_str());
    }
    // What there is of them.
    std::string Canaries() {
        std::string bytes = Names(mFolder.Path()) + Names(mFolder.Path("MAIL")) +
                            Names(mFolder.Path("MAIL\\SUB")) + Names(mFolder.Path("CURRENT")) +
                            Names(mFolder.Path("OLD")) + Names(mOnZ);
        for (Text canary : mCanaries)
            bytes += FileThere(canary) ? ReadFileBytes(canary) : canary + " is gone";
        return bytes;
    }
    // A message of the year 2000 with this file name; its length byte may lie.
    static std::string Named(Text name, unsigned int length) {
        const std::string record = Date(Message("A"), 3029529600u);
        return With(record, 38, char(length) + (name + std::string(33 - name.size(), '\0')));
    }

    // With a short name, and made here: the drive is no prefix's own.
    static std::string NewFolderOnZ() {
        for (int number = 0;; ++number)
            if (const std::string path = "Z:\\tmp\\H" + std::to_string(number);
                CreateDirectoryA(path.c_str(), nullptr) || number == 99999)
                return path;
    }

    const std::string mOnZ = NewFolderOnZ();
    const KeptFile mKept{"C:\\X.EML"};
    DFile mInbox{keDirFolder, "MAIL\\INBOX.DAT"}, mMail{keDirMessages, "MAIL\\INBOX.DAT"};
    std::vector<std::string> mCanaries;
    std::string mBefore;
};

TEST_F(RecordNames, ThatLeadElsewhereReachNothing) {
    ASSERT_TRUE(FileThere("C:X.EML") && FileThere("Z:X.EML") && FileThere("..\\MAIL\\Y.EML"));
    const std::string path = mFolder.Path("MAIL\\INBOX.DAT"), onZ = mOnZ.substr(2) + "\\X.EML";
    const std::string full33(33, 'X');
    std::vector<std::string> names = {
        // with a folder or a drive
        "..\\X.EML", "../X.EML", "SUB\\X.EML", "SUB/X.EML", ".\\X.EML", "SUB\\..\\X.EML",
        "..\\CURRENT\\X.EML", "..\\OLD\\OLD.DAT", "\\X.EML", "/X.EML", "C:X.EML", "C:\\X.EML",
        "Z:X.EML", "Z:" + onZ, onZ, "\\\\?\\Z:" + onZ, "\\\\?\\unix" + onZ, "\\\\.\\C:\\X.EML",
        "\\??\\C:\\X.EML", mFolder.Path("X.EML"), "C:", "\\", "/", "..\\", "SUB\\",
        // of many files
        "*.EML", "?.EML", "*", "*.*", "X.*", "X.EM?", "<.EML", "X.>>>", "X\"EML", "*\\X.EML",
        // streams
        "X.EML:s", "X.EML:s:$DATA", "X.EML::$DATA", ":s", "SUB:$I30:$INDEX_ALLOCATION",
        // devices
        "NUL", "CON", "AUX.EML", "COM1.EML", "LPT1", "NUL.DAT", "nul", "NUL.", "NUL ", "PRN .TXT",
        "Com9", "CON.EML.", "CONIN$", "CONOUT$", "COM\xB9", "LPT\xB3.EML", "COM1:",
        // dots, blanks and what is left of a name without them
        "", " ", ".", ". ", "..", ".. ", "...", "....", ". .", "\x85\x85", "X.EML..", "X.EML ",
        "X.EML. .", "SUB.",
        // no characters of a name, and too long a name
        "X.EML|", "X\x01.EML", "X.EML\n", "\x7F\x85\xFF.EML", full33, std::string(33, '\\')};
    for (Text name : names) {
        SCOPED_TRACE(name);
        const std::string record = Named(name, name.size()), bytes = kHeader + record;
        const auto untouched = [&](Text what) {
            EXPECT_EQ(mBefore + "INBOX.DAT", Canaries() + "INBOX.DAT") << what;
        };
        WriteFileBytes(path, bytes);
        mBefore = Canaries();
        DirectoryRecord probe = Record(record);
        mInbox.DeleteOldMail(0, 0, &mOld);
        EXPECT_THAT(Reports(), testing::AnyOf(kNotAged, kNotRenamed + kNotAged));
        EXPECT_EQ(ReadFileBytes(path), bytes);
        untouched("DeleteOldMail");
        EXPECT_EQ(mInbox.DeleteMail(probe), 1);
        EXPECT_EQ(ReadFileBytes(path), kHeader + Free(record));
        untouched("DeleteMail");
        WriteFileBytes(path, record);
        EXPECT_EQ(mMail.DeleteMail(probe), 1);
        EXPECT_EQ(ReadFileBytes(path), Free(record));
        untouched("DeleteMail of type 2");
    }
    EXPECT_EQ(Reports(), "");
}

// The D file itself is open while its messages are removed or moved.
TEST_F(RecordNames, ThatAreTheDFilesOwnLeaveIt) {
    const std::string path = mFolder.Path("MAIL\\INBOX.DAT");
    for (const char* name : {"INBOX.DAT", "inbox.dat"}) {
        const std::string record = Named(name, 9), bytes = kHeader + record;
        WriteFileBytes(path, bytes);
        mBefore = Canaries();
        DirectoryRecord probe = Record(record);
        EXPECT_EQ(mInbox.DeleteMail(probe), 0);
        EXPECT_EQ(Reports(), kNotRemoved);
        mInbox.DeleteOldMail(0, 0, &mOld);
        EXPECT_EQ(Reports(), kNotRenamed + kNotAged);
        EXPECT_EQ(ReadFileBytes(path), bytes);
        EXPECT_EQ(Canaries(), mBefore);
    }
}
