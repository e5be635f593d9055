// Users and account data: the two files of the Windows directory, records in streams, user lists.

#include <cstring>
#include <sstream>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/fuzz/format.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

namespace {

const std::vector<std::string> kWords = {"C:\\MAIL\\",
                                         "DFile",
                                         "..\\..\\X",
                                         "mail:110",
                                         "mail:n:995:65536",
                                         "::n:",
                                         "Smith|Anna",
                                         "|",
                                         "a|b|c",
                                         "\x01\x2B",
                                         "<box7>",
                                         "a>b <c>",
                                         "anna@post.org",
                                         "\\\\host\\x\\",
                                         "C:",
                                         "\xFF\xFF",
                                         std::string(40, 'a'),
                                         "\x81\x40"};

const std::vector<AllowedText> kEmptyAddress = {
    {"strNameAndAddr.Length()", "an empty address is reported, and taken"}};

// Whatever a user is asked for.
void UseUser(MailUser& user, Random& random) {
    RBString first, second;
    user.OrderedUserName(first, static_cast<unsigned short>(random.Below(2)));
    ReadText(first.Text());
    user.SplitUserName(first, second);
    ReadText(first.Text());
    ReadText(second.Text());
    user.GetUserNameFirstChar();
    MailUser other(user);
    Expect(other.IsEqual(user), "a copied user is another");
    other.SetInternetAddress(AnyText(random, kWords).c_str());
    other.SetName(AnyText(random, kWords).substr(0, 60).c_str());
    other.SetType(random.Of(std::vector<MailUserType>{0, 0x2000, 0x4000, 0x6000, 0x8000}));
    // Users of one type are greater when their names are equal, too; of two types one comes first.
    const int greater = (user > other) + (other > user);
    const bool alike = user.Type() == other.Type();
    Expect(user > user && (alike ? greater >= 1 : greater <= 1),
           "orders users in no way, or in both");
    other.OrderedUserName(first, 1);
    other.TranslateIn();
    other.TranslateOut();
    other.SetPlatformFromEncoding();
    MailUser::BoundryCheck(first, other.Address().Text(), random.Below(200));
    other = user;
    Expect(other.IsEqual(user), "an assigned user is another");
}

// Reads objects of one class from the bytes until they end, uses each and writes it; what was
// written reads as the same bytes.
template <class T, class Use>
void DriveStream(Input& in, Use use) {
    std::istringstream stream(in.bytes);
    for (unsigned int count = 0; count < 50; ++count) {
        T object;
        if (!(stream >> object))
            break;
        use(object);
        std::ostringstream out;
        if (!(out << object))
            continue;
        T again;
        std::istringstream back(out.str());
        back >> again;
        std::ostringstream twice;
        twice << again;
        Expect(twice.str() == out.str(), "is read other than it was written");
        if (!stream.good())
            break;
    }
}

template <class T>
void DriveRecord(Input& in) {
    DriveStream<T>(in, [](T&) {});
}

void DriveUser(Input& in) {
    std::istringstream stream(in.bytes);
    MailUser user;
    for (unsigned int count = 0; count < 20 && stream >> user; ++count) {
        UseUser(user, in.random);
        std::ostringstream out;
        if (out << user) {
            MailUser again;
            std::istringstream back(out.str());
            back >> again;
            Expect(again.Address() == user.Address() && again.Name() == user.Name(),
                   "a user is read other than it was written");
        }
    }
    // The record and the continuation as they stand.
    UserLRec pair[2] = {};
    std::memcpy(pair, in.bytes.data(), std::min(in.bytes.size(), sizeof pair));
    MailUser alone(&pair[0], nullptr);
    MailUser continued(&pair[0], &pair[1]);
    UseUser(alone, in.random);
    UseUser(continued, in.random);
    BaseMailUser base(continued);
    std::ostringstream out;
    out << base;
}

void DriveSystemUser(Input& in) {
    std::istringstream stream(in.bytes);
    SysMailUser user;
    for (unsigned int count = 0; count < 20 && stream >> user; ++count) {
        UseUser(user, in.random);
        std::ostringstream out;
        out << user;
        SysUserLRec record = {};
        std::istringstream back(in.bytes);
        if (back >> record)
            out << record;
    }
}

void DriveLoggedUser(Input& in) {
    std::istringstream stream(in.bytes);
    JxLoggedMailUser user;
    for (unsigned int count = 0; count < 20 && stream >> user; ++count) {
        ReadText(user.LoggedText().Text());
        UseUser(user, in.random);
        JxLoggedMailUser other(user);
        other = user;
        Expect(other == user, "a copied logged user is another");
        JxMailUserRepresentation shown(other);
        ReadText(shown.GetDisplayString().Text());
        std::ostringstream out;
        out << other;
    }
}

void UseBackgndData(JxBackgndData& data, Random& random) {
    for (const RBString& string : data.mstrSettings)
        ReadText(string.Text());
    if (data.GetFullPopAccount().Length())
        ReadText(data.GetPopAccount().Text());
    if (data.GetFullSmtpHost().Length())
        ReadText(data.GetSmtpHost().Text());
    RsWinPlatformData platform(nullptr, &data);
    platform.SetDialupName(data.mstr16);
    data.SetFullPopAccount(AnyText(random, kWords).c_str());
    data.SetFullSmtpHost(AnyText(random, kWords).c_str());
    data.mstrSettings[random.Below(JxBackgndData::keSettings)] = AnyText(random, kWords).c_str();
}

void DriveBackgndData(Input& in) {
    std::istringstream stream(in.bytes);
    JxBackgndData data;
    stream >> data;
    UseBackgndData(data, in.random);
    std::ostringstream out;
    out << data;
    Expect(out.str().size() <= JxBackgndData::keMaxRecord, "writes more than a record's size");
    JxBackgndData again;
    std::istringstream back(out.str());
    back >> again;
    std::ostringstream twice;
    twice << again;
    Expect(out.str().empty() || twice.str() == out.str(), "is read other than it was written");
}

void PutWindowsFile(const char* name, const std::string& bytes) {
    const std::string path = WindowsDirectory() + "\\" + name;
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    WriteFileBytes(path, bytes);
}

void DriveUserFile(Input& in) {
    PutWindowsFile("JXUSER.DAT", in.bytes);
    char* inbox;
    char* userData;
    if (GetCurUserPath(&inbox, &userData)) {
        ReadText(inbox);
        ReadText(userData);
        char *topic, *fileName, *sender;
        unsigned short kind, flag;
        if (GetFirstRecord(std::string(inbox).c_str(), &topic, &fileName, &sender, &kind, &flag))
            ReadText(topic);
    }
    Done();
    JxBackgndData data;
    JxCurrentUserDataFile file;
    if (file.OpenUserDataFile(keOpenUpdate)) {
        *file.GetStream() >> data;
        UseBackgndData(data, in.random);
        file.GetStream()->clear();
        file.GetStream()->seekp(0);
        *file.GetStream() << data;
    }
    file.Close();
}

// In plain text, in place of whatever the file held.
void DriveVerification(Input& in) {
    PutWindowsFile("JXUSER.DAT", in.bytes);
    RBString name, password, address, dialup;
    JxPopUserVerify reader;
    if (reader.ReadDataFromUserFile(name, password, address, dialup)) {
        ReadText(name.Text());
        ReadText(password.Text());
        ReadText(address.Text());
        ReadText(dialup.Text());
    }
    const std::string texts[] = {AnyText(in.random, kWords), AnyText(in.random, kWords)};
    JxPopUserVerify writer(texts[0].c_str(), name.Text(), texts[1].c_str(), dialup.Text());
    const std::string was = name.Text();
    Expect(writer.WriteDataToUserFile() &&
               reader.ReadDataFromUserFile(name, password, address, dialup) &&
               std::string(name.Text()) == texts[0] && std::string(password.Text()) == was &&
               std::string(address.Text()) == texts[1],
           "the verification data is read other than it was written");
}

void DriveLoggedFile(Input& in) {
    PutWindowsFile("JXLGDUSR.DAT", in.bytes);
    JxLoggedMailUser user;
    JxCurrentUserDataFile file;
    if (file.OpenLoggedUserFile(keOpenRead) && user.ReadInfo(*file.GetStream()))
        UseUser(user, in.random);
    file.Close();
    const bool fits = user.Address().Length() <= ULR_MAX_ADDRESS_LEN;
    Expect(file.OpenLoggedUserFile(keOpenRewrite) && user.WriteInfo(*file.GetStream()) == fits,
           "writes a user that does not fit, or not one that does");
    file.Close();
    JxLoggedMailUser again;
    const bool read = file.OpenLoggedUserFile(keOpenRead) && again.ReadInfo(*file.GetStream());
    file.Close();
    Expect(!fits || (read && again.Address() == user.Address()),
           "the logged user is read other than it was written");
}

void DriveUserList(Input& in) {
    WriteFileBytes("USERS.TXT", in.bytes);
    char folder[MAX_PATH];
    GetCurrentDirectoryA(sizeof folder, folder);
    RbFile list((std::string(folder) + "\\USERS.TXT").c_str());
    RbFile copy((std::string(folder) + "\\COPY.TXT").c_str());
    list.Open(keOpenRead);
    copy.Open(keOpenRewrite);
    unsigned int exported = 0;
    for (unsigned int lines = 0; list.good() && lines < 300; ++lines) {
        MailUser user;
        const int result = user.Import(list);
        Expect(result == 0 || result == 3 || result == 4 || result == 6 || result == 7,
               "imports with a result that there is not");
        Expect(user.Name().Length() <= 33 + 10000 && user.Address().Length() < 112,
               "imports an address that is too long");
        UseUser(user, in.random);
        exported += user.Export(copy) == keUserListDone;
    }
    if (list.isOpen())
        list.close();
    copy.close();
    copy.clear();
    copy.Open(keOpenRead);
    while (exported && copy.good()) {
        MailUser user;
        user.Import(copy);
    }
    copy.close();
}

std::string UserRecord(const std::string& name, const std::string& address, int platform) {
    std::string bytes = With(std::string(114, '\0'), 0, Pascal(name));
    bytes = With(bytes, 32, {'\xFF', 1, 1, char(platform), 0});
    bytes = With(With(bytes, 46, Pascal(address.substr(0, 31))), 79, "\x80");
    if (address.size() < 32)
        return bytes;
    return bytes + With(With(std::string(114, '\0'), 0, "\x01\x2B"), 2, Pascal(address.substr(31)));
}

std::string SystemRecord(const std::string& name, const std::string& address) {
    const std::string bytes = With(std::string(82, '\0'), 0, Pascal(name));
    return With(bytes, 46, Pascal(address));
}

const std::string kLongAddress = "a.name.that.does.not.fit.in.one@post.example.org";
const std::vector<Field> kUserFields = {{0, 1},  {1, 1},  {32, 1}, {33, 1}, {34, 1},
                                        {35, 1}, {36, 1}, {46, 1}, {78, 2}, {80, 2}};

Sample BackgndData(const std::vector<std::string>& settings, const std::string& account) {
    SampleMaker maker;
    maker.PutField(Bytes("\x00\x0C\0\0")).PutField("ab").PutField("cd").PutField("efgh");
    for (unsigned int i = 0; i < kUserStrings; ++i)
        maker.PutStreamed(i == kSmtpHost || i == kPopAccount ? account
                          : i < settings.size()              ? settings[i]
                                                             : "");
    return maker;
}

Format UserData(const char* name) {
    Format format;
    format.name = name;
    format.shortRun = 600;
    format.shape.samples = {
        BackgndData({"a", "", "C:\\MAIL\\IN", "DFile"}, "mail:110"),
        BackgndData({"b", "c", "\\MAIL", "..\\X\\DFile.", "d"}, "box@mail:n:1")};
    format.shape.words = kWords;
    format.shape.scramble = ScrambledUserData;
    format.texts = {{"strAddress.Length () > 0", "an empty account is reported, and taken"},
                    {"mstrPopAccount.Length () > 0", "an account that begins with its colon"},
                    {"mstrSmtpHost.Length () > 0", "a host that begins with its colon"}};
    return format;
}

Format Streamed(const char* name, unsigned int shortRun, std::function<void(Input&)> run,
                std::vector<Sample> samples, unsigned int unit) {
    Format format;
    format.name = name;
    format.shortRun = shortRun;
    format.run = std::move(run);
    format.shape.samples = std::move(samples);
    format.shape.unit = unit;
    format.shape.words = kWords;
    format.texts = kEmptyAddress;
    return format;
}

} // namespace

void AddUserFormats(std::vector<Format>& formats) {
    Format userFile = UserData("jxuser.dat");
    userFile.run = DriveUserFile;
    formats.push_back(userFile);
    Format verification = Streamed("verification", 600, DriveVerification,
                                   {SampleMaker()
                                        .PutStreamed("Smith|Anna")
                                        .PutStreamed("secret")
                                        .PutStreamed("10.0.0.1")
                                        .PutStreamed("Office")},
                                   0);
    formats.push_back(verification);
    Format background = UserData("background-data");
    background.run = DriveBackgndData;
    background.shortRun = 2000;
    formats.push_back(background);

    const std::string system = SystemRecord("Smith|Anna", "anna@post");
    Format logged =
        Streamed("jxlgdusr.dat", 600, DriveLoggedFile,
                 {SampleMaker()
                      .PutRecords(system, 82, {{0, 1}, {1, 1}, {46, 1}})
                      .PutStreamed("C:\\MAIL\\")
                      .PutRecords(UserRecord("Smith|Anna", kLongAddress, 6), 228, kUserFields),
                  SampleMaker()
                      .PutRecords(SystemRecord("Anna", ""), 82, {{0, 1}, {46, 1}})
                      .PutStreamed("")
                      .PutRecords(UserRecord("Anna", "", 5), 114, kUserFields)},
                 0);
    formats.push_back(logged);

    const std::string users = UserRecord("Smith|Anna", "anna@post", 2) +
                              UserRecord("Okafor|Chidi", kLongAddress, 5) +
                              UserRecord("Choir list", "", 1);
    formats.push_back(Streamed("user-record", 2000, DriveUser,
                               {SampleMaker().PutRecords(users, 114, kUserFields),
                                SampleMaker().PutRecords(UserRecord("A", kLongAddress, 4), 114,
                                                         {{0, 2}, {2, 1}, {46, 1}})},
                               114));
    const std::string continuation =
        With(With(std::string(82, '\0'), 0, "\x01\x2B"), 2, Pascal("post.example.org"));
    formats.push_back(
        Streamed("system-user", 1500, DriveSystemUser,
                 {SampleMaker().PutRecords(SystemRecord("Smith|Anna", std::string(31, 'a')) +
                                               continuation + system,
                                           82, {{0, 1}, {1, 1}, {2, 1}, {46, 1}})},
                 82));
    formats.push_back(
        Streamed("logged-user", 1500, DriveLoggedUser,
                 {SampleMaker()
                      .PutRecords(system, 82, {{0, 1}, {46, 1}})
                      .PutStreamed("C:\\MAIL\\")
                      .PutRecords(system + continuation, 82, {{0, 1}, {2, 1}, {46, 1}})},
                 0));
    formats.push_back(Streamed("download-item", 1500, DriveRecord<JxDownloadItem>,
                               {SampleMaker()
                                    .PutField("\x01\x02")
                                    .PutStreamed("id-1")
                                    .PutField("\x03\x04")
                                    .PutStreamed("")},
                               0));

    Format list = Streamed("user-list", 900, DriveUserList, {}, 0);
    for (const char* text :
         {"Smith\tAnna\tanna@post\tPostrider\tStyled\tBinHex\r\n"
          "\tChoir list\tchoir@post\tDefault\tMIME\tBase64\r\nX\tY\r\n",
          "A\tB\tC\tWindows\tRich\tUUEncode\textra\t\r\n \r\n\t\t\t\t\t\r\nD\t\tE\r\n", "one line"})
        list.shape.samples.push_back(SampleMaker().Put(text));
    for (const char* word : {"\t", "\r", "\n", "\r\n", "Default", "Custom", "  ", "|"})
        list.shape.words.push_back(word);
    list.own = "USERS.TXT";
    list.mayAppear = {"COPY.TXT"};
    formats.push_back(list);
}
