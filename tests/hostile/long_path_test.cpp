// Paths around and beyond the 259 characters that the file system takes: a path that does not fit
// is refused, and never shortened to another file's.

#include <gmock/gmock.h>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/message_boxes.h"
#include "tests/support/resource_text.h"

static constexpr unsigned int kLongest = 259;

class LongPaths : public MailFolder {
protected:
    // A name that makes a path of this length in the scratch folder.
    std::string LongName(unsigned int length, Text ext = ".DAT") const {
        return mFolder.Path(std::string(length - mFolder.Path("").size() - 1 - ext.size(), 'N') +
                            ext);
    }
    // A path of this length with INBOX.DAT in folders of its own, which are made.
    std::string Deep(unsigned int length, Text name = "INBOX.DAT") const {
        std::string path = mFolder.Path();
        unsigned int left = length - path.size() - name.size() - 1;
        while (left > 0) {
            const unsigned int part = left > 151 ? 100 : left - 1;
            path += "\\" + std::string(part, 'F');
            std::filesystem::create_directory(path);
            left -= part + 1;
        }
        return path + "\\" + name;
    }
    // The lengths that are tried.
    static std::vector<unsigned int> Lengths() {
        std::vector<unsigned int> lengths = {300, 350, 399, 400};
        for (unsigned int length = 250; length <= 275; length++)
            lengths.push_back(length);
        return lengths;
    }
    // Whether the file is open; it is closed then.
    static bool Closed(RbFile& file) {
        const bool opened = file.good();
        EXPECT_EQ(opened, file.isOpen());
        if (opened)
            file.close();
        return opened;
    }
    // A D file of the path, and whether the path fits into a specification.
    static bool Set(FileSpec& spec, Text path) {
        const int result = spec.Parse(path.c_str(), 1);
        EXPECT_TRUE(result == FileSpec::keSpecOk || result == FileSpec::keSpecPathTooLong);
        EXPECT_EQ(result == FileSpec::keSpecOk, spec.FullFileSpec() == path);
        return result == FileSpec::keSpecOk;
    }

    // What stands where a path leads that lost its folders, or its end.
    const std::string mDecoy = kHeader + Message("decoy");
};

TEST_F(LongPaths, OpenTheFileThatTheyNameOrNone) {
    const std::string own = kHeader + Message("own");
    for (unsigned int length : Lengths()) {
        SCOPED_TRACE(length);
        const bool fits = length <= kLongest;
        for (Text path : {Deep(length), LongName(std::min(length, 265u))}) {
            const std::string cut = path.substr(0, kLongest);
            if (!fits && length <= 265)
                WriteFileBytes(cut, mDecoy);
            Write(mDecoy);
            WriteFileBytes(path, own);
            EXPECT_EQ(First(path), fits ? "own/GONE.EML" : "");
            for (int mode : {keOpenRead, keOpenUpdate, keOpenAppend, keOpenRewrite, keOpenWrite}) {
                WriteFileBytes(path, own);
                RbFile file;
                EXPECT_TRUE(file.DoOpen(path.c_str(), mode, 0) == fits && Closed(file) == fits);
                file.open(path.c_str(), mode);
                EXPECT_EQ(Closed(file), fits);
                RbFileRetryOpen held;
                EXPECT_TRUE(held.DoOpen(path.c_str(), mode, 0) == fits && Closed(held) == fits);
                if (RbFile named; Set(named, path)) {
                    EXPECT_EQ(named.Exists(), fits);
                    EXPECT_TRUE(named.Open(mode) == fits && Closed(named) == fits);
                }
            }
            EXPECT_EQ(ReadFileBytes(path), fits ? "" : own);
            EXPECT_EQ(Read(), mDecoy);
            if (!fits && length <= 265) {
                EXPECT_EQ(ReadFileBytes(cut), mDecoy);
            }
            std::filesystem::remove(path);
            std::filesystem::remove(cut);
        }
    }
}

TEST_F(LongPaths, AreDoneByTheDiskDriverWholeOrNotAtAll) {
    for (unsigned int length : Lengths()) {
        SCOPED_TRACE(length);
        const bool fits = length <= kLongest;
        const std::string path = Deep(length), folder = path.substr(0, path.rfind('\\'));
        const std::string cut = path.substr(0, kLongest), inside = folder + "\\SUBFOLDER";
        ffblk found;
        Write(mDecoy);
        WriteFileBytes(path, "own");
        if (!fits && length < kLongest + 8)
            WriteFileBytes(cut, "cut");
        EXPECT_EQ(DiskDriver::FileExists(path.c_str(), 0), fits);
        EXPECT_EQ(DiskDriver::GetFileInfo(path.c_str(), &found, 0), fits);
        EXPECT_EQ(DiskDriver::MakeDir(inside.c_str()), fits);
        EXPECT_EQ(FileThere(inside), fits);
        std::filesystem::remove(inside);
        {
            DiskDriver driver;
            FileSpec pattern;
            if (Set(pattern, path)) {
                driver.SetSearchPattern(pattern);
                EXPECT_EQ(driver.FindFile(), fits);
                driver.EndSearch();
            }
            const std::string there = std::filesystem::current_path().string();
            if (FileSpec place; place.Parse((inside + "\\").c_str(), 1) == 0) {
                EXPECT_FALSE(driver.ChangeLocation(place));
            }
            EXPECT_EQ(std::filesystem::current_path().string(), there);
        }
        EXPECT_EQ(DiskDriver::Rename("INBOX.DAT", path.c_str()), false);
        EXPECT_EQ(Reports(), kNotRenamed);
        EXPECT_EQ(DiskDriver::Rename(path.c_str(), "MOVED.DAT"), fits);
        EXPECT_EQ(Reports(), fits ? "" : kNotRenamed);
        EXPECT_EQ(FileThere("MOVED.DAT"), fits);
        EXPECT_EQ(DiskDriver::Rename("INBOX.DAT", path.c_str()), fits);
        EXPECT_EQ(Reports(), fits ? "" : kNotRenamed);
        EXPECT_EQ(DiskDriver::RemoveFile(path.c_str()), fits);
        EXPECT_EQ(FileThere(path), !fits);
        EXPECT_EQ(FileThere("INBOX.DAT"), !fits);
        if (!fits && length < kLongest + 8) {
            EXPECT_EQ(ReadFileBytes(cut), "cut");
        }
        for (Text file : {path, cut, std::string("MOVED.DAT")})
            std::filesystem::remove(file);
    }
}

// A D file of a short name leaves no room for its backup's or its temporary file's.
TEST_F(LongPaths, LeaveADFileWholeWhatItsOthersNamesAre) {
    const std::string record = MessageID(Message("A"), "id"),
                      bytes = kHeader + record + Free(record);
    int compressed = 0, stripped = 0;
    for (unsigned int length = 240; length <= 261; length++) {
        SCOPED_TRACE(length);
        const std::string path = Deep(length, "D"), folder = path.substr(0, path.size() - 2);
        DFile file(keDirFolder);
        if (!Set(file, path))
            continue;
        WriteFileBytes(path, bytes);
        const int done = file.CompressDFile();
        EXPECT_EQ(ReadFileBytes(path), done ? kHeader + record : bytes);
        EXPECT_EQ(Names(folder), "D ");
        compressed += done;
        WriteFileBytes(path, bytes);
        const int bare = file.RemoveAllMessageIDs(BaseDirFile::keRemoveAll);
        EXPECT_EQ(ReadFileBytes(path), bare ? kHeader + With(record, 112, {'\0'}) : bytes);
        EXPECT_EQ(Names(folder), bare ? "D D.BAK " : "D ");
        stripped += bare;
        EXPECT_EQ(Reports(), bare ? "" : kNotStripped);
        std::filesystem::remove(folder + "\\D.BAK");
        EXPECT_EQ(file.GetInfo(keInfoAll), length <= kLongest);
    }
    EXPECT_EQ(compressed, 248 - 239);
    EXPECT_EQ(stripped, 255 - 239);
}

TEST_F(LongPaths, HoldBackMessagesThatDoNotFit) {
    // In a folder of 245 characters a message of 13 fits, and one of 14 does not.
    const std::string path = Deep(255, "INBOX.DAT"), folder = path.substr(0, path.size() - 10);
    ASSERT_EQ(folder.size(), 245u);
    const std::string fits = "FITTINGXX.EML", longer = "TOOLONGXXX.EML", cut = "TOOLONGXXX.EM";
    for (Text name : {fits, longer, cut})
        WriteFileBytes(folder + "\\" + name, Message("from disk"));
    DFile messages(keDirMessages);
    ASSERT_TRUE(Set(messages, path));
    messages.CreateDFile();
    EXPECT_EQ(ReadFileBytes(path), With(Message("from disk"), 38, Pascal(fits)));
    EXPECT_EQ(Reports(), Base("0|Error BaseDirFile: CreateDFile(), writing record") +
                             Base("0|Error BaseDirFile: CreateDFile()"));

    const std::string record = Message("A", longer);
    WriteFileBytes(path, record);
    DirectoryRecord probe = Record(record);
    // Its file cannot be named, and so is none that is there.
    EXPECT_EQ(messages.DeleteMail(probe), 1);
    EXPECT_EQ(ReadFileBytes(path), Free(record));
    // There is no name for it in a folder so deep, either.
    CreateDirectoryA("FROM", nullptr);
    WriteFileBytes("FROM\\A.EML", Message("A"));
    const std::string old = kHeader + Date(Message("A", "A.EML"), 3029529600u);
    WriteFileBytes("FROM\\INBOX.DAT", old);
    DFile from(keDirFolder, "FROM\\INBOX.DAT");
    DFile target(keDirFolder);
    ASSERT_TRUE(Set(target, Deep(259, "D")));
    from.DeleteOldMail(0, 0, &target);
    EXPECT_EQ(Reports(), kNotRenamed + kNotAged);
    EXPECT_EQ(ReadFileBytes("FROM\\INBOX.DAT"), old);
    EXPECT_EQ(Names("FROM"), "A.EML INBOX.DAT ");
    for (Text name : {fits, longer, cut})
        EXPECT_EQ(ReadFileBytes(folder + "\\" + name), Message("from disk"));
}

TEST_F(LongPaths, SeizeNoOtherSemaphore) {
    for (unsigned int length : Lengths()) {
        const std::string path = Deep(length, "LOCK");
        const bool fits = length + 4 <= kLongest;
        JxMailMessageSemaphore semaphore;
        EXPECT_EQ(semaphore.CreateSemaphoreA(path.c_str()), fits) << length;
        EXPECT_EQ(FileThere(path + ".SEM"), fits);
        WriteFileBytes("LOCK.SEM", "");
        EXPECT_EQ(semaphore.RemoveSemaphore(nullptr), fits) << length;
        EXPECT_TRUE(FileThere("LOCK.SEM"));
        DeleteFileA("LOCK.SEM");
        EXPECT_EQ(Reports(), fits ? "" : "fReturn|JXRESIDT\\JXMSGSEM.CPP|");
    }
}

TEST_F(LongPaths, MakeNoOtherPreferenceFile) {
    MessageBoxes boxes;
    char block[5] = "text";
    WriteFileBytes("RB.DAT", "decoy");
    for (unsigned int length : Lengths()) {
        SCOPED_TRACE(length);
        const bool fits = length <= kLongest;
        const std::string path = Deep(length, "RB.DAT"), before = Names();
        UserPrefFile file(block, 1, sizeof block, 1);
        static_cast<FileSpec&>(file).Parse(mFolder.Path("OTHER.DAT").c_str(), 1);
        EXPECT_EQ(file.CreatePrefsFile(path.c_str()), fits);
        EXPECT_EQ(boxes.TakeTexts().size(), fits ? 0u : 1u);
        EXPECT_EQ(FileThere(path), fits);
        EXPECT_EQ(Names(), before);
        EXPECT_EQ(ReadFileBytes("RB.DAT"), "decoy");
        file.ClosePrefFile();
    }
}
