// No byte of memory that nobody has set reaches a file: every writer runs with its memory filled
// by one pattern and then by another, and both leave the same bytes.

#include <gmock/gmock.h>

#include <cstring>
#include <ctime>
#include <filesystem>
#include <map>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/guarded/guarded_memory.h"
#include "tests/support/message_boxes.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

using namespace testing;

// The stack that the next call will use.
[[gnu::noinline]] static void FillStack(int byte) {
    char stack[256 * 1024];
    for (volatile char& place : stack)
        place = static_cast<char>(byte);
}

using Files = std::map<std::string, std::string>;

static Files FilesHere() {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("."))
        if (entry.is_regular_file())
            files[entry.path().string()] = ReadFileBytes(entry.path().string());
    return files;
}

// What the writer leaves in an empty folder, which has the same name each time.
template <class Writer>
static Files FilesWith(int byte, Writer write) {
    std::filesystem::create_directory("RUN");
    std::filesystem::current_path("RUN");
    FillNewMemory(byte);
    FillStack(byte);
    write();
    FillNewMemory(0xCD);
    const Files files = FilesHere();
    std::filesystem::current_path("..");
    std::filesystem::remove_all("RUN");
    return files;
}

template <class Writer>
static void ExpectSameFiles(std::initializer_list<const char*> names, Writer write) {
    const MessageBoxes boxes;
    const ScratchFolder folder;
    const Files one = FilesWith(0x5A, write), other = FilesWith(0xA5, write);
    for (const char* name : names)
        EXPECT_TRUE(one.count(name) && !one.at(name).empty()) << name;
    ASSERT_EQ(one.size(), other.size());
    for (const auto& [name, bytes] : one) {
        ASSERT_TRUE(other.count(name)) << name;
        const std::string& others = other.at(name);
        ASSERT_EQ(bytes.size(), others.size()) << name;
        for (unsigned int i = 0; i < bytes.size(); ++i)
            ASSERT_EQ(bytes[i], others[i]) << name << " at " << i;
    }
    EXPECT_THAT(boxes.Texts(), IsEmpty());
}

template <class... Objects>
static void Stream(const char* path, Objects&&... objects) {
    RbFile file(path);
    ASSERT_TRUE(file.Open(keOpenRewrite));
    (void(file << objects), ...);
    file.close();
}

TEST(Leftovers, ObjectsThatNothingWasSetIn) {
    ExpectSameFiles({".\\USERS", ".\\RECORDS", ".\\VALUES"}, [] {
        BaseMailUser base;
        MailUser user;
        SysMailUser system;
        JxLoggedMailUser logged;
        JxBackgndData data;
        Stream("USERS", base, user, system, logged, data);
        DirectoryRecord record;
        JXDatHeader header;
        JXExtendDatHeader extended;
        Stream("RECORDS", record, header, extended);
        RBInt integer;
        RBString text;
        JxDownloadItem item;
        RbRefCounter counter(7);
        Stream("VALUES", integer, text, item, counter);
    });
}

TEST(Leftovers, UsersWithShortAndLongTexts) {
    ExpectSameFiles({".\\USERS", ".\\LIST.TXT"}, [] {
        RbFile list("LIST.TXT");
        ASSERT_TRUE(list.Open(keOpenWrite));
        for (unsigned int size : {0, 1, 30, 31, 32, 33, 111}) {
            const std::string address(size, 'a');
            MailUser user("Smith|Anna", address.c_str(), keUserOrdinary);
            SysMailUser system(user);
            JxLoggedMailUser logged(user);
            logged.SetLoggedText("C:\\USER");
            Stream("USERS", user, system, logged);
            EXPECT_EQ(user.Export(list), keUserListDone);
            // The records stand in a buffer that the next one uses again.
            std::filesystem::rename("USERS", "USERS" + std::to_string(size));
        }
        list.close();
        Stream("USERS", UserLRec{}, SysUserLRec{});
    });
}

TEST(Leftovers, DirectoryFilesFromTheirMakingToTheirUpkeep) {
    ExpectSameFiles(
        {".\\INBOX.DAT", ".\\INBOX.BAK", ".\\MAIL.DAT", ".\\OLD\\OLD.DAT", ".\\OLD\\MOVED.EML"},
        [] {
            const auto message = [](const char* name, const std::string& topic, char date) {
                std::string bytes = With(std::string(316, '\0'), 1, Bytes("\x07\x01"));
                bytes = With(With(bytes, 4, Pascal(topic)), 38, Pascal(name));
                bytes = With(bytes, 300, {date, 0, 0, 0}); // seconds from 1904
                WriteFileBytes(name, With(bytes, 310, Bytes("\0\x01")) + "text");
            };
            message("A.EML", "of 1999", '\xB4');
            message("B.EML", "", '\xFF');
            message("C.EML", "third", '\xFE');
            std::filesystem::create_directory("OLD");
            const auto full = [](const char* name) {
                return std::filesystem::absolute(name).string();
            };
            DirectoryFile inbox(keDirFolder), mail(keDirMessages), old(keDirFolder);
            inbox.Parse(full("INBOX.DAT").c_str(), 1);
            mail.Parse(full("MAIL.DAT").c_str(), 1);
            old.Parse(full("OLD\\OLD.DAT").c_str(), 1);
            EXPECT_TRUE(inbox.CreateDFile() && mail.CreateDFile() && old.CreateDFile());
            for (const char* name : {"A.EML", "B.EML", "C.EML"}) {
                RbFile file(full(name).c_str());
                EXPECT_EQ(inbox.AddMessage(&file), 1) << name;
            }
            DirectoryRecord record, probe;
            ASSERT_TRUE(inbox.Open(keOpenUpdate));
            EXPECT_EQ(inbox.AlterDirectoryBlock(probe, 2u, 0), 632);
            record = probe;
            record.SetMessageID(reinterpret_cast<const unsigned char*>("\x02id"));
            EXPECT_EQ(inbox.AlterDirectoryBlock(probe, record, 1), 632);
            inbox.close();
            EXPECT_EQ(inbox.MarkRecord(probe, keMarkSet0100), 1);
            inbox.DeleteOldMail(60, 0, &old);
            RB_Container<DirectoryRecord> list(1);
            inbox.GetUnprocessedDDRs(&list, nullptr, keGetProcessable);
            EXPECT_EQ(inbox.RemoveAllMessageIDs(BaseDirFile::keRemoveAll), 1);
            EXPECT_EQ(inbox.CompressDFile(), 1);
            RbFile copy(full("COPY.DAT").c_str());
            EXPECT_GT(inbox.GetDFile(copy), 0);
            for (DirectoryFile* file : {&inbox, &mail}) {
                file->MarkUnUsed(probe, 1);
                file->UpdateDFile();
            }
            EXPECT_EQ(inbox.AlterDirectoryBlock(record, 2u, 0), 632);
            EXPECT_EQ(inbox.DeleteMail(record), 1);
            EXPECT_FALSE(FileThere("C.EML"));
            // Moved messages are named after the time.
            std::string moved = ReadFileBytes("OLD\\OLD.DAT");
            ASSERT_EQ(moved.size(), 632u);
            const std::string name = moved.substr(316 + 39, moved[316 + 38]);
            std::filesystem::rename("OLD\\" + name, "OLD\\MOVED.EML");
            WriteFileBytes("OLD\\OLD.DAT", With(moved, 316 + 39, std::string(name.size(), '#')));
            // Compressing removes its backup; the one before stays as evidence.
            EXPECT_EQ(inbox.RemoveAllMessageIDs(BaseDirFile::keRemoveUnkept), 1);
        });
}

TEST(Leftovers, PreferenceFiles) {
    ExpectSameFiles({".\\RB.DAT", ".\\RB.BAK", ".\\USER.INI", ".\\MORE\\RB.DAT"}, [] {
        std::filesystem::create_directory("MORE");
        const auto path = std::filesystem::absolute("RB.DAT").string();
        const auto more = std::filesystem::absolute("MORE\\RB.DAT").string();
        JXMailPrefs prefs(JXMailPrefs::keAllowWriting);
        prefs.SetSpecPart(path.c_str(), 0);
        EXPECT_EQ(prefs.CreatePrefsFile(path.c_str()), 1);
        prefs.SetDialupConnection("Home");
        prefs.SetReturnAddress("anna@host");
        prefs.SetFullSmtpHost("smtp:25");
        prefs.SetPriority("Urgent", 1);
        prefs.SetDefaultDsApiName(std::string(31, 'd').c_str());
        prefs.SetDisconnectFlag(1);
        FileSpec directory(("C:\\" + std::string(58, 'm')).c_str(), 1);
        prefs.SetMailDirectory(directory);
        JxLoggedMailUser user;
        user.SetAddress((std::string(100, 'a') + ":110").c_str());
        user.SetSecondText(std::string(253, 's').c_str());
        prefs.SetUserData(user);
        EXPECT_EQ(prefs.WriteJXPrefs(), 1);
        char block[100] = "block";
        UserPrefFile other(block, 7, sizeof block, 1);
        other.Parse(path.c_str(), 1);
        ASSERT_EQ(other.OpenPrefFile(), 1);
        for (unsigned short id = 8; id < 11; ++id) {
            AppPrefTag tag = {id, 1, static_cast<unsigned short>(id * 9), block};
            EXPECT_EQ(id % 2 ? other.WriteAppPrefs(tag) : other.ReadAppPrefs(tag, 1), 1);
        }
        other.close();
        UserPrefFile third;
        EXPECT_EQ(third.CreatePrefsFile(more.c_str()), 1);
        third.close();
    });
}

TEST(Leftovers, SettingsFiles) {
    ExpectSameFiles({".\\SET.INI", ".\\defaults.ini"}, [] {
        SystemPrefFile file(RBString(std::filesystem::absolute("SET.INI").string().c_str()));
        EXPECT_TRUE(file.SetPrefToken("A", "text", "value"));
        EXPECT_TRUE(file.SetToken("A", "number", 7, 0));
        EXPECT_TRUE(RbIniStringEntry("B", "text", "value").StreamOut(file));
        EXPECT_TRUE(RbIniIntEntry("B", "number", -7).StreamOut(file));
        JxMailUserRepresentation user("Smith|Anna", "C:\\ANNA");
        EXPECT_TRUE(user.StreamOut(file));

        const std::string here = std::filesystem::current_path().string();
        std::filesystem::create_directory("FROM");
        WriteFileBytes("FROM\\defaults.ini", "[Address Defaults]\r\nPlatform=Other\r\n");
        JxInstallableDefaults& defaults = *JxInstallableDefaults::GetInstance();
        EXPECT_EQ(defaults.SetupInstallableDefaults((here + "\\FROM").c_str(), here.c_str()), 1);
        defaults.SetDefaultMessageFormat(keFormat1);
        defaults.SetDefaultEnclosureEncoding(keEncode1);
        defaults.SetDefaultPlatformType(kePlatform6);
        JxInstallableDefaults::KillInstance();
    });
}

TEST(Leftovers, LocalFoldersWithTheirDirectoryFiles) {
    ExpectSameFiles({".\\InBox\\DFile", ".\\MailLog\\MFile", ".\\Public\\DFile", ".\\Trash\\DFile",
                     ".\\SentMail\\DFile", ".\\OutBox\\DFile"},
                    [] {
                        JXMailPrefs prefs(0);
                        FileSpec here(std::filesystem::current_path().string().c_str(), 1), made;
                        prefs.SetMailDirectory(here);
                        for (int which = 0; which < 8; ++which)
                            EXPECT_EQ(JxLoggedMailUser().SetupLocalMailDirectory(
                                          &prefs, made, static_cast<enumLocalMailDir>(which)),
                                      1);
                    });
}

// Users are written by way of buffers that all of them share.
template <unsigned int size>
static std::string Buffer(const unsigned char (&bytes)[size]) {
    return std::string(bytes, bytes + size);
}

template <class User>
static std::vector<std::string> ShortUsers(const std::string& before) {
    std::vector<std::string> written;
    for (unsigned int size : {0, 1, 30, 31, 32, 33}) {
        const auto set = [](User& user, const std::string& name, const std::string& address) {
            user.SetName(name.c_str());
            user.SetAddress(address.c_str());
            const std::string bytes = Written(user);
            // The stream of a SysMailUser has something else than the record that was made of it.
            return bytes + Buffer(BaseMailUser::msUlr) + Buffer(SysMailUser::ulrSys);
        };
        User longOne, shortOne;
        std::memset(BaseMailUser::msUlr, 0, sizeof BaseMailUser::msUlr);
        std::memset(SysMailUser::ulrSys, 0, sizeof SysMailUser::ulrSys);
        if (!before.empty()) {
            EXPECT_NE(set(longOne, before.substr(0, 31), before).find('z'), std::string::npos);
        }
        written.push_back(set(shortOne, "B", std::string(size, 'a')));
    }
    return written;
}

template <class User>
class LeftoversOf : public Test {};
using Users = Types<BaseMailUser, MailUser, SysMailUser, JxLoggedMailUser>;
TYPED_TEST_SUITE(LeftoversOf, Users);

TYPED_TEST(LeftoversOf, TheUserBeforeAreInNoRecord) {
    const auto alone = ShortUsers<TypeParam>("");
    for (unsigned int size : {31, 32, 111, 142})
        EXPECT_TRUE(ShortUsers<TypeParam>(std::string(size, 'z')) == alone) << size;
}

// The files of the Windows directory, copied where they are compared.
TEST(Leftovers, FilesOfTheCurrentUser) {
    const std::string user = WindowsDirectory() + "\\JXUSER.DAT";
    const std::string loggedUser = WindowsDirectory() + "\\JXLGDUSR.DAT";
    const KeptFile kept(user), keptLogged(loggedUser);
    ExpectSameFiles({".\\USER1", ".\\USER2", ".\\LOGGED"}, [&] {
        JxCurrentUserDataFile file;
        JxBackgndData data;
        data.SetFullPopAccount("anna@pop:110");
        data.SetFullSmtpHost("smtp:25");
        ASSERT_TRUE(file.OpenUserDataFile(keOpenRewrite));
        *file.GetStream() << data;
        file.Close();
        WriteFileBytes("USER1", ReadFileBytes(user));
        EXPECT_EQ(JxPopUserVerify("Anna", "secret", "127.0.0.1", "Home").WriteDataToUserFile(), 1);
        WriteFileBytes("USER2", ReadFileBytes(user));
        MailUser mailUser("Smith|Anna", std::string(50, 'a').c_str(), keUserOrdinary);
        JxLoggedMailUser logged(mailUser);
        ASSERT_TRUE(file.OpenLoggedUserFile(keOpenRewrite));
        EXPECT_TRUE(logged.WriteInfo(*file.GetStream()));
        file.Close();
        WriteFileBytes("LOGGED", ReadFileBytes(loggedUser));
    });
}

TEST(Leftovers, CopiesAndTemporaryFiles) {
    ExpectSameFiles({".\\COPY1", ".\\COPY2", ".\\TEMP"}, [] {
        WriteFileBytes("SOURCE", RandomBytes(1, 70001));
        RbFile source("SOURCE"), copy("COPY1"), small("COPY2");
        EXPECT_EQ(copy.Copy(source, 1, nullptr, keDupLargeBuffer), keCopyDone);
        EXPECT_EQ(small.Copy(source, 1, nullptr, keDupSmallBuffer), keCopyDone);
        TemporaryFile temporary(1);
        ASSERT_TRUE(temporary.IsValid());
        ASSERT_TRUE(temporary.isOpen() || temporary.Open(keOpenUpdate));
        const DirectoryRecord record;
        temporary << const_cast<DirectoryRecord&>(record);
        temporary.close();
        WriteFileBytes("TEMP", ReadFileBytes(temporary.FullFileSpec()));
    });
}
