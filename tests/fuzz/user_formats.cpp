// Users and account data: the two files of the Windows directory, records in streams, user lists.

#include <cstring>
#include <sstream>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/fuzz/format.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

namespace {

// clang-format off
const std::vector<std::string> kWords = {
    "C:\\MAIL\\", "DFile", "..\\..\\X", "mail:110", "mail:n:995:65536", "::n:", "Smith|Anna", "|",
    "a|b|c", "\x01\x2B", "<box7>", "a>b <c>", "anna@post.org", "\\\\host\\x\\", "C:", "\xFF\xFF",
    std::string(40, 'a'), "\x81\x40"
};
// clang-format on

// Whatever a user is asked for.
void UseUser(MailUser& user, Input& in) {
    RBString first, second;
    user.OrderedUserName(first, static_cast<unsigned short>(in.Below(2)));
    ReadText(first.Text());
    user.SplitUserName(first, second);
    ReadText(first.Text());
    ReadText(second.Text());
    user.GetUserNameFirstChar();
    MailUser other(user);
    Expect(other.IsEqual(user), "a copied user is another");
    other.SetInternetAddress(in.Text().c_str());
    other.SetName(in.Text().substr(0, 60).c_str());
    other.SetType(in.Of(std::vector<MailUserType>{0, 0x2000, 0x4000, 0x6000, 0x8000}));
    // Users of one type are greater when their names are equal, too; of two types one comes first.
    const int greater = (user > other) + (other > user);
    const bool alike = user.Type() == other.Type();
    Expect(user > user && (alike ? greater >= 1 : greater <= 1),
           "orders users in no way, or in both");
    other.OrderedUserName(first, 1);
    other.TranslateIn();
    other.TranslateOut();
    other.SetPlatformFromEncoding();
    MailUser::BoundryCheck(first, other.Address().Text(), in.Below(200));
    other = user;
    Expect(other.IsEqual(user), "an assigned user is another");
}

// Reads objects of one class from the bytes until they end, uses each and writes it; what was
// written reads as the same bytes, unless `cuts` says that a field may be cut.
template <class T, class Use>
void DriveStream(Input& in, Use use, bool cuts = false) {
    std::istringstream stream(in.bytes);
    for (unsigned int count = 0; count < 50; ++count) {
        T object;
        if (!(stream >> object))
            break;
        use(object);
        std::ostringstream out;
        if (!(out << object) || cuts)
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
    DriveStream<MailUser>(
        in, [&](MailUser& user) { UseUser(user, in); }, true);
    // The record and the continuation as they stand.
    UserLRec pair[2] = {};
    std::memcpy(pair, in.bytes.data(), std::min(in.bytes.size(), sizeof pair));
    MailUser alone(&pair[0], nullptr);
    MailUser continued(&pair[0], &pair[1]);
    UseUser(alone, in);
    UseUser(continued, in);
    BaseMailUser base(continued);
    std::ostringstream out;
    out << base;
}

void DriveSystemUser(Input& in) {
    RBString name(in.Text().c_str()), address(in.bytes.c_str());
    SysMailUser given(name, address);
    given.IsContinued();
    DriveStream<SysMailUser>(in, [&](SysMailUser& user) { UseUser(user, in); });
    SysUserLRec record = {};
    std::istringstream back(in.bytes);
    std::ostringstream out;
    if (back >> record)
        out << record;
}

void DriveLoggedUser(Input& in) {
    const auto use = [&](JxLoggedMailUser& user) {
        ReadText(user.LoggedText().Text());
        UseUser(user, in);
        JxLoggedMailUser other(user);
        other = user;
        JxMailUserRepresentation shown(other);
        ReadText(shown.GetDisplayString().Text());
    };
    DriveStream<JxLoggedMailUser>(in, use, true);
}

void UseBackgndData(JxBackgndData& data, Input& in) {
    for (const RBString& string : data.mstrSettings)
        ReadText(string.Text());
    if (data.GetFullPopAccount().Length())
        ReadText(data.GetPopAccount().Text());
    if (data.GetFullSmtpHost().Length())
        ReadText(data.GetSmtpHost().Text());
    RsWinPlatformData platform(nullptr, &data);
    platform.SetDialupName(data.mstr16);
    data.SetFullPopAccount(in.Text().c_str());
    data.SetFullSmtpHost(in.Text().c_str());
    data.mstrSettings[in.Below(JxBackgndData::keSettings)] = in.Text().c_str();
}

void DriveBackgndData(Input& in) {
    std::istringstream stream(in.OneIn(8) ? in.bytes : ScrambledUserData(in.bytes));
    JxBackgndData data;
    stream >> data;
    UseBackgndData(data, in);
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
    PutWindowsFile("JXUSER.DAT", in.OneIn(8) ? in.bytes : ScrambledUserData(in.bytes));
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
        UseBackgndData(data, in);
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
    if (reader.ReadDataFromUserFile(name, password, address, dialup))
        for (const RBString& text : {name, password, address, dialup})
            ReadText(text.Text());
    const std::string texts[] = {in.Text(), in.Text()};
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
        UseUser(user, in);
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
    for (unsigned int lines = 0; list.good() && lines < 300; ++lines) {
        MailUser user;
        const int result = user.Import(list);
        Expect(result == 0 || result == 3 || result == 4 || result == 6 || result == 7,
               "imports with a result that there is not");
        Expect(user.Name().Length() <= 33 + 10000 && user.Address().Length() < 112,
               "imports an address that is too long");
        // The first ones stand for all: a user costs more than its line.
        if (lines < 10)
            UseUser(user, in);
        user.Export(copy);
    }
    if (list.isOpen())
        list.close();
    copy.close();
}

Format Users(const char* name, std::function<void(Input&)> run, unsigned int unit,
             const std::vector<AllowedText>& texts) {
    return {.name = name, .run = std::move(run), .words = kWords, .unit = unit, .texts = texts};
}

} // namespace

void AddUserFormats(std::vector<Format>& formats) {
    const std::vector<AllowedText> data = {
        {"strAddress.Length () > 0", "an empty account is reported, and taken"},
        {"mstrPopAccount.Length () > 0", "an account that begins with its colon"},
        {"mstrSmtpHost.Length () > 0", "a host that begins with its colon"}};
    const std::vector<AllowedText> users = {
        {"strNameAndAddr.Length()", "an empty address is reported, and taken"}};
    formats.push_back(Users("jxuser.dat", DriveUserFile, 0, data));
    formats.push_back(Users("verification", DriveVerification, 0, users));
    formats.push_back(Users("background-data", DriveBackgndData, 0, data));
    formats.push_back(Users("jxlgdusr.dat", DriveLoggedFile, 0, users));
    formats.push_back(Users("user-record", DriveUser, 114, users));
    formats.push_back(Users("system-user", DriveSystemUser, 82, users));
    formats.push_back(Users("logged-user", DriveLoggedUser, 0, users));
    formats.push_back(Users("download-item", DriveRecord<JxDownloadItem>, 0, users));

    Format list = Users("user-list", DriveUserList, 0, users);
    for (const char* word : {"\t", "\r", "\n", "\r\n", "Default", "Custom", "  ", "|"})
        list.words.push_back(word);
    list.own = "USERS.TXT";
    list.mayAppear = {"COPY.TXT"};
    formats.push_back(list);
}
