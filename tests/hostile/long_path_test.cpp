// Paths around and beyond the 259 characters that the file system takes: a path that does not fit
// is refused, and never shortened to another file's.

#include <gmock/gmock.h>

#include "resident/core/windows_api.h"
#include "tests/store/mail_folder.h"
#include "tests/support/message_boxes.h"

static constexpr unsigned int kLongest = 259;

class LongPaths : public MailFolder {
protected:
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

TEST_F(LongPaths, MeanTheFileThatTheyNameOrNone) {
    const std::string own = kHeader + Message("own");
    MessageBoxes boxes;
    // What is done to a path of 259 characters, and not to one of 260; and what is reported then.
    const struct {
        const char* name;
        std::string report;
        std::function<bool(Text)> run;
    } uses[] = {
        {"walk", "", [](Text path) { return First(path) == "own/GONE.EML"; }},
        {"open", "",
         [](Text path) {
             unsigned int opened = 0, tried = 0;
             for (int mode : {keOpenRead, keOpenUpdate, keOpenAppend, keOpenRewrite, keOpenWrite}) {
                 RbFile done, plain, named;
                 RbFileRetryOpen waiting;
                 plain.open(path.c_str(), mode);
                 opened += plain.isOpen() + done.DoOpen(path.c_str(), mode, 0) +
                           waiting.DoOpen(path.c_str(), mode, 0) +
                           (Set(named, path) && named.Exists() && named.Open(mode));
                 tried += 4;
                 for (RbFile* file : {&done, &plain, &named, static_cast<RbFile*>(&waiting)})
                     if (file->isOpen())
                         file->close();
             }
             EXPECT_EQ(opened % tried, 0u);
             return opened > 0;
         }},
        {"exists", "", [](Text path) { return DiskDriver::FileExists(path.c_str(), 0); }},
        {"tell", "",
         [](Text path) {
             ffblk found;
             return DiskDriver::GetFileInfo(path.c_str(), &found, 0);
         }},
        {"find", "",
         [](Text path) {
             DiskDriver driver;
             FileSpec pattern;
             const bool fits = Set(pattern, path);
             driver.SetSearchPattern(pattern);
             return fits && driver.FindFile();
         }},
        {"make folder", "",
         [](Text path) {
             std::filesystem::remove(path);
             const bool made = DiskDriver::MakeDir(path.c_str());
             EXPECT_EQ(made, FileThere(path));
             std::filesystem::remove(path);
             WriteFileBytes(path, "");
             DiskDriver driver;
             FileSpec place;
             EXPECT_FALSE(!place.Parse((path + "\\").c_str(), 1) && driver.ChangeLocation(place));
             return made;
         }},
        {"rename", kNotRenamed,
         [](Text path) {
             const bool renamed = DiskDriver::Rename(path.c_str(), "MOVED.DAT");
             return renamed && DiskDriver::Rename("MOVED.DAT", path.c_str());
         }},
        {"rename to", kNotRenamed,
         [](Text path) {
             RemoveAll(path);
             const bool renamed = DiskDriver::Rename("INBOX.DAT", path.c_str());
             WriteFileBytes(renamed ? "INBOX.DAT" : path, kHeader + Message("decoy"));
             return renamed;
         }},
        {"rename to what is there", kNotRenamed,
         [](Text path) {
             EXPECT_FALSE(DiskDriver::Rename("INBOX.DAT", path.c_str()));
             return FileThere(path) && path.size() <= kLongest;
         }},
        {"preferences", "",
         [&](Text path) {
             char block[5] = "text";
             UserPrefFile file(block, 1, sizeof block, 1);
             static_cast<FileSpec&>(file).Parse("C:\\OTHER.DAT", 1);
             const bool made = file.CreatePrefsFile(path.c_str());
             file.ClosePrefFile();
             EXPECT_EQ(boxes.TakeTexts().size(), !made);
             return made;
         }},
        {"remove", "", [](Text path) { return DiskDriver::RemoveFile(path.c_str()); }},
    };
    Write(mDecoy);
    Deep(400);
    const std::string names = Names();
    for (unsigned int length = 248; length <= 400; length += length < 275 ? 1 : 25) {
        const bool fits = length <= kLongest;
        const std::string path = Deep(length), cut = path.substr(0, kLongest);
        const bool cutThere = !fits && length < 268;
        if (cutThere)
            WriteFileBytes(cut, mDecoy);
        for (const auto& [name, report, run] : uses) {
            SCOPED_TRACE(name + (" of " + std::to_string(length)));
            WriteFileBytes(path, own);
            EXPECT_EQ(run(path), fits);
            EXPECT_EQ(Reports(),
                      fits && std::string(name) != "rename to what is there" ? "" : report);
            EXPECT_EQ(Read(), mDecoy);
            if (cutThere) {
                EXPECT_EQ(ReadFileBytes(cut), mDecoy);
            }
        }
        EXPECT_EQ(FileThere(path), !fits);
        std::filesystem::remove(path);
        if (cutThere)
            std::filesystem::remove(cut);
    }
    EXPECT_EQ(Names(), names);
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
    for (unsigned int length = 250; length <= 275; ++length) {
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
