// Preferences: "RB.DAT", "USER.INI", "defaults.ini" and settings files.

#include <cstring>
#include <sstream>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/fuzz/format.h"
#include "tests/support/pref_bytes.h"
#include "tests/support/scratch.h"

namespace {

std::string Folder() {
    char folder[MAX_PATH];
    GetCurrentDirectoryA(sizeof folder, folder);
    return folder;
}

std::string Full(const char* name) { return Folder() + "\\" + name; }

// "RB.DAT"

constexpr unsigned int kHeader = 46;
constexpr unsigned int kEntry = 12;
constexpr unsigned int kMailBlock = 1500;
const std::string kMailId = "\x51\x46"; // 18001
const std::string kOtherId = "\x34\x12";

// Scrambles the blocks where the directory says that they are.
std::string ScrambleBlocks(std::string bytes) {
    if (bytes.size() < kHeader)
        return bytes;
    const auto number = [&](unsigned int at, unsigned int size) {
        unsigned long value = 0;
        while (size--)
            value = value << 8 | static_cast<unsigned char>(bytes[at++]);
        return value;
    };
    const unsigned long count = std::min(number(44, 2), 8ul);
    for (unsigned int i = 0; i < count && kHeader + (i + 1) * kEntry <= bytes.size(); ++i) {
        const unsigned int entry = kHeader + i * kEntry;
        const unsigned long offset = number(entry + 6, 4);
        const unsigned long size = number(entry + 10, 2);
        // Not over the directory, which would then say something else.
        if (offset >= kHeader + count * kEntry && offset <= bytes.size() &&
            size <= bytes.size() - offset)
            bytes.replace(offset, size, ScrambledBlock(bytes.substr(offset, size)));
    }
    return bytes;
}

// Preferences with nothing but zeros in them.
std::string SoundPrefs() {
    return PrefHeader("\x90\x01", "RB.DAT", 1) +
           PrefEntry(kMailId, "\x90\x01", 1, kHeader + kEntry, kMailBlock) +
           ScrambledBlock(std::string(kMailBlock, '\0'));
}

void UsePrefs(JXMailPrefs& prefs, Input& in) {
    for (const PrefText& text : kPrefTexts)
        ReadText(prefs.Text(static_cast<enumPrefText>(text.offset)).Text());
    ReadText(prefs.GetReturnAddress().Text());
    ReadText(prefs.GetDefaultDomain().Text());
    ReadText(prefs.GetPopAccount());
    ReadText(prefs.GetSmtpHost());
    int sides[4];
    prefs.GetClientWindowRect(sides[0], sides[1], sides[2], sides[3]);
    prefs.SetClientWindowRect(sides[3], sides[2], sides[1], sides[0]);
    RBString dir;
    prefs.GetLocalInboxDir(&dir);
    prefs.GetLocalDeadMailDir(&dir);
    for (unsigned int level = 0; level < LP_MAX_PRIORITY_LEVELS; ++level)
        ReadText(prefs.GetPriority(level).Text());
    prefs.SetPriority(in.Text().c_str(), in.Below(LP_MAX_PRIORITY_LEVELS));
    prefs.SetFullSmtpHost(in.Text().c_str());
    prefs.SetReturnAddress(in.Text().c_str());
    prefs.SetDefaultDsApiName(in.Text().c_str());
    JxLoggedMailUser user;
    user.SetAddress(in.Text().c_str());
    user.SetSecondText(in.Text().c_str());
    prefs.SetUserData(user);
    JXMailPrefs copy(0);
    copy = prefs;
}

void DrivePrefFile(Input& in) {
    WriteFileBytes("RB.DAT", in.OneIn(8) ? in.bytes : ScrambleBlocks(in.bytes));
    const std::string folder = Folder();
    JxMailUserRepresentation user("Smith|Anna", folder.c_str());
    JXMailPrefs prefs(user, in.Below(4)); // one in two may write
    prefs.VerifyFileExists(user);
    if (prefs.IsValid())
        UsePrefs(prefs, in);
    JxLoggedMailUser logged;
    logged.SetLoggedText(folder.c_str());
    JXMailPrefs other(logged, 0);
    for (unsigned int times = 1 + in.Below(3); times--;) {
        const unsigned short size =
            in.Of(std::vector<unsigned short>{0, 1, 10, 30, 50, 1500, 0x7FFF, 0xFFFF});
        std::string block(size, 'n');
        const std::string id = in.Of(std::vector<std::string>{kMailId, kOtherId, "\x01\x12"});
        unsigned short number;
        std::memcpy(&number, id.data(), sizeof number);
        AppPrefTag tag{number, 400, size, block.data()};
        UserPrefFile file(block.data(), number, size, 400);
        file.Parse(Full("RB.DAT").c_str(), 1);
        in.DoOne([&] { prefs.SetNewPassword(logged); },
                 [&] {
                     if (prefs.WriteJXPrefs())
                         prefs.ReadJXPrefs();
                 },
                 [&] { prefs.ReadOtherPrefs(tag); },
                 [&] {
                     if (file.OpenPrefFile())
                         file.ReadAppPrefs(tag, in.Below(2));
                 },
                 [&] {
                     if (file.OpenPrefFile() && file.WriteAppPrefs(tag))
                         file.ReadAppPrefs(tag, 0);
                 },
                 [&] {
                     if (file.OpenPrefFile() && file.ReadAppHeader(number)) {
                         UserPrefFile::Encode(tag);
                         file.ReadPrefBuffer(tag, static_cast<long>(in.Number()));
                         file.UpdateHeader();
                     }
                 },
                 [&] {
                     // As it may have been read: the record is damaged, too.
                     if (prefs.IsValid()) {
                         const std::string record = in.bytes;
                         std::memcpy(prefs.Record(), record.data(),
                                     std::min<std::size_t>(record.size(), kMailBlock));
                         prefs.ConvertPrefs(in.OneIn(2) ? kePrefsToAnsi : kePrefsToOem);
                         prefs.FixMailDirectory(0);
                         UsePrefs(prefs, in);
                     }
                 },
                 [&] {
                     FileSpec mail(Folder().c_str(), 1);
                     prefs.SetMailDirectory(mail);
                     FileSpec result;
                     const int made = logged.SetupLocalMailDirectory(
                         &prefs, result, static_cast<enumLocalMailDir>(in.Below(8)));
                     Expect(made == 1, "makes no local folder");
                 },
                 [&] {
                     AppRecHeader entry = {};
                     std::istringstream(in.bytes) >> entry;
                     if (file.OpenPrefFile() && file.ReadAppHeader(number))
                         file.InsertPrefRec(entry, tag);
                 },
                 [&] { prefs.CreatePrefsFile(Full("NEW.DAT").c_str()); });
        file.ClosePrefFile();
    }
    if (in.OneIn(20)) {
        std::string block(100, 'c');
        UserPrefFile file(block.data(), 7, 100, 400);
        file.CreatePrefsFile(Full("NEW.DAT").c_str());
        file.ClosePrefFile();
    }
}

// Settings files

const std::vector<std::string> kSections = {
    "Dial-Up Networking", "Address Defaults", "POP3 Users", "mail", "x", "]"};
const std::vector<std::string> kKeys = {
    "Connection",         "Disconnect", "Message Format", "Platform",
    "Enclosure Encoding", "Smith|Anna", "UnKnown",        "k"};

// Buffers of any size, each a block of its own.
struct Buffer {
    explicit Buffer(Input& in)
        : bytes(in.Of(std::vector<unsigned int>{1, 2, 3, 10, 80, 1599, 1600, 1601, 2000})) {}
    std::vector<char> bytes;
};

void DriveSettings(Input& in) {
    WriteFileBytes("SET.INI", in.bytes);
    SystemPrefFile file(RBString(Full("SET.INI").c_str()));
    const std::string section = in.Of(kSections);
    const std::string key = in.Of(kKeys);
    Expect(file.OpenPrefFile(), "does not open the file");
    for (unsigned int walks = 2; walks--;) {
        Buffer keyOut(in), valueOut(in);
        for (unsigned int lines = 0; lines < 3000; ++lines)
            if (file.GetNextUnKeyPrefLine(section.c_str(), keyOut.bytes.data(), keyOut.bytes.size(),
                                          in.OneIn(2) ? nullptr : "default", valueOut.bytes.data(),
                                          valueOut.bytes.size()) < 0)
                break;
        file.OpenPrefFile();
    }
    file.ClosePrefFile();
    Buffer keyOut(in), valueOut(in);
    for (int first = 1;
         file.GetUnKeyedPrefLine(section.c_str(), keyOut.bytes.data(), keyOut.bytes.size(),
                                 valueOut.bytes.data(), valueOut.bytes.size(), first);
         first = 0)
        ReadText(keyOut.bytes.data());
    ReadText(file.GetToken(section.c_str(), key.c_str(), "default"));
    file.GetPrefToken(section.c_str(), key.c_str(), "default");
    file.GetToken(section.c_str(), key.c_str(), 7);
    file.GetToken(section.c_str(), key.c_str(), -7l);
    RbIniIntEntry number(section.c_str(), key.c_str());
    RbIniStringEntry text(section.c_str(), key.c_str());
    JxMailUserRepresentation user;
    user.SetEntryName(key.c_str());
    number.StreamIn(file);
    text.StreamIn(file);
    user.StreamIn(file);
    ReadText(user.GetDisplayString().Text());
    if (in.OneIn(2)) {
        number.StreamOut(file);
        text.SetValue(in.Text().c_str());
        text.StreamOut(file);
        user.StreamOut(file);
        file.SetPrefToken(section.c_str(), key.c_str(), in.Text().c_str());
        file.SetToken(section.c_str(), in.Text().c_str(), static_cast<int>(in.Number()),
                      in.Below(2));
        file.SetToken(section.c_str(), "k", static_cast<long>(in.Number()), in.Below(2));
    }
}

// A line as readers of lines take it.
void DriveLine(Input& in) {
    std::vector<char> line(in.bytes.begin(), in.bytes.end());
    line.push_back(0);
    ReadText(SystemPrefFile::CleanPrefLine(line.data()));
    const char* const value = SystemPrefFile::ReturnResult(line.data());
    if (value)
        ReadText(value);
    ReadText(line.data());
}

void DriveUserIni(Input& in) {
    WriteFileBytes("USER.INI", in.bytes);
    JxMailUserRepresentation user("Smith|Anna", Folder().c_str());
    JXMailPrefs prefs(user, 0);
    Expect(prefs.IsValid(), "does not read sound preferences");
    RBString name;
    prefs.GetDialupConnection(&name);
    ReadText(name.Text());
    prefs.GetDisconnectFlag();
    if (in.OneIn(2)) {
        prefs.SetDisconnectFlag(static_cast<int>(in.Number()));
        prefs.SetDialupConnection(in.Text().c_str());
        prefs.GetDialupConnection(&name);
    }
}

void DriveDefaults(Input& in) {
    WriteFileBytes("defaults.ini", in.bytes);
    JxInstallableDefaults* const defaults = JxInstallableDefaults::GetInstance();
    CreateDirectoryA("TO", nullptr);
    const bool copied = in.OneIn(2);
    defaults->SetupInstallableDefaults(Folder().c_str(),
                                       copied ? Full("TO").c_str() : Folder().c_str());
    const int format = defaults->GetDefaultMessageFormat();
    const int encoding = defaults->GetDefaultEnclosureEncoding();
    const int platform = defaults->GetDefaultPlatformType();
    Expect(format >= 1 && format <= 4 && (encoding <= 2 || encoding == 7) && platform >= 1 &&
               platform <= 6,
           "a default is out of range");
    if (in.OneIn(2)) {
        const int value = 1 + static_cast<int>(in.Below(4));
        defaults->SetDefaultMessageFormat(static_cast<enumMessageFormat>(value));
        Expect(defaults->GetDefaultMessageFormat() == value,
               "a default is read other than it was written");
        defaults->SetDefaultEnclosureEncoding(static_cast<enumEnclosureEncode>(in.Below(9)));
        defaults->SetDefaultPlatformType(static_cast<enumUserPlatformType>(in.Number()));
    }
    JxInstallableDefaults::KillInstance();
}

template <class T>
void DriveHeader(Input& in) {
    std::istringstream stream(in.bytes);
    for (T header; stream >> header;) {
        std::ostringstream out;
        out << header;
        Expect(in.bytes.find(out.str()) != in.bytes.npos, "writes other bytes than it read");
        ReadText(header.SetName(in.Text().c_str()));
    }
}

void DriveEntry(Input& in) {
    std::istringstream stream(in.bytes);
    for (AppRecHeader entry; stream >> entry;) {
        std::ostringstream out;
        out << entry;
        Expect(in.bytes.find(out.str()) != in.bytes.npos, "writes other bytes than it read");
    }
}

Format Settings(const char* name, const char* own, std::function<void(Input&)> run) {
    Format format{.name = name, .run = std::move(run), .words = kSections, .own = own};
    format.words.insert(format.words.end(), kKeys.begin(), kKeys.end());
    for (const char* word :
         {"[", "]", "=", "\r", "\n", ";", "\"", "-1", "2147483648", "-99999999999", "Text", "MIME",
          "Default", "Base64", "\xEF\xBB\xBF", "\xFF\xFE", "\x1A"})
        format.words.push_back(word);
    return format;
}

} // namespace

void AddPrefFormats(std::vector<Format>& formats) {
    formats.push_back(
        {.name = "rb.dat",
         .run = DrivePrefFile,
         .words = {"C:\\X", "..\\..\\X", "mail:n:1", ":", "\x90\x01", kMailId, kOtherId},
         .unit = kEntry,
         .own = "RB.DAT",
         .mayAppear = {"RB.BAK", "NEW.DAT", "USER.INI", "InBox", "InBox\\DFile", "MailLog",
                       "MailLog\\MFile", "Public", "Public\\DFile", "Trash", "Trash\\DFile",
                       "SentMail", "SentMail\\DFile", "OutBox", "OutBox\\DFile", "BckgWork",
                       "DeadMail"},
         .texts = {{"could not be read or written.", "message 701, of damaged preferences"},
                   {" could not be read.", "message 605"},
                   {" could not be written.", "message 606"},
                   {"A position in the preference file", "message 607"},
                   {"mstrPopAccount.Length () > 0", "preferences without an account"},
                   {"mstrSmtpHost.Length () > 0", "preferences without a host"}}});

    formats.push_back(Settings("settings", "SET.INI", DriveSettings));
    formats.push_back(Settings("settings-line", "", DriveLine));
    Format ini = Settings("user.ini", "USER.INI", DriveUserIni);
    ini.files = {{"RB.DAT", SoundPrefs()}};
    formats.push_back(ini);
    Format defaults = Settings("defaults.ini", "defaults.ini", DriveDefaults);
    defaults.mayAppear = {"TO", "TO\\defaults.ini"};
    defaults.texts = {{"JXINDFLT", "a value without a word is reported"}};
    formats.push_back(defaults);

    formats.push_back({.name = "dat-header",
                       .run =
                           [](Input& in) {
                               in.DoOne([&] { return DriveHeader<JXDatHeader>(in); },
                                        [&] { return DriveHeader<JXExtendDatHeader>(in); },
                                        [&] { return DriveEntry(in); });
                           },
                       .unit = kHeader});
}
