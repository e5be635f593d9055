// What people have set: the mail preferences, and the current user's data. Passwords are told of,
// and never shown.

#include <cstring>
#include <fstream>

#include "programs/console/text.h"
#include "programs/mailfolder/commands.h"
#include "programs/mailfolder/tool.h"

namespace {

// Named values, printed as lines or as one JSON object.
class Values {
public:
    explicit Values(bool json) : mAsJson(json) {}

    void Title(const std::string& text) {
        if (!mAsJson)
            fmt::print("{}\n\n", text);
    }
    void Put(const char* key, const char* label, const std::string& ansi) {
        mJson[key] = Utf8(ansi);
        Line(label, ansi.empty() ? "-" : Printable(ansi));
    }
    void Put(const char* key, const char* label, int number) {
        mJson[key] = number;
        Line(label, std::to_string(number));
    }
    void PutFlag(const char* key, const char* label, bool flag, const char* yes = "yes",
                 const char* no = "no") {
        mJson[key] = flag;
        Line(label, flag ? yes : no);
    }
    void Finish() {
        if (mAsJson)
            PrintJson(mJson);
    }

private:
    void Line(const char* label, const std::string& value) {
        if (!mAsJson)
            fmt::print("  {:<20}{}\n", label, value);
    }

    bool mAsJson;
    Json mJson = Json::object();
};

} // namespace

// Fields of the preferences' record.
static constexpr PrefField kPopAddress = {380, 134};
static constexpr PrefField kSmtpHost = {782, 134};
static constexpr PrefField kQuoteMark = {922, 33};
static constexpr PrefField kDirectoryService = {955, 33};
static constexpr PrefField kPassword = {988, 256};

static constexpr char kMagic[] = "PREFRBSW";

// Finds the block as the library will, which would show its failures in message boxes. Returns the
// words for what is damaged, if anything is.
static std::string WhyNoPrefs(RbFile& file) {
    file.seekg(0, std::ios::end);
    const long size = file.tellg();
    file.seekg(0);
    JXExtendDatHeader header;
    if (!(file >> header))
        return "it is shorter than its header";
    if (std::memcmp(&header, kMagic, sizeof kMagic - 1) != 0)
        return "it does not begin with \"PREFRBSW\"";
    const unsigned int count = static_cast<unsigned short>(header.number);
    for (unsigned int i = 0; i < count; ++i) {
        AppRecHeader record;
        if (!(file >> record))
            return fmt::format("it ends inside its list of {}", Count(count, "block"));
        if (record.id != JXMailPrefs::keApplication)
            continue;
        const unsigned int blockSize = static_cast<unsigned short>(record.size);
        if (blockSize != JXMailPrefs::keRecordSize)
            return fmt::format("its mail preferences have {} bytes instead of {}", blockSize,
                               static_cast<int>(JXMailPrefs::keRecordSize));
        const auto offset =
            static_cast<unsigned long long>(static_cast<unsigned short>(record.offset[0])) << 16 |
            static_cast<unsigned short>(record.offset[1]);
        if (offset + JXMailPrefs::keRecordSize > static_cast<unsigned long long>(size))
            return "it ends inside the mail preferences";
        return {};
    }
    return "other programs' settings alone are in it";
}

int ShowPrefs(const std::string& argument, bool json) {
    std::string path = FullPath(argument);
    if (IsFolder(path))
        path += "\\RB.DAT";
    NeedReadable(path);
    {
        RbFile file(SpecOf(path));
        if (!file.Open(keOpenRead))
            Fail("Cannot read {}: opening it failed.", Printable(path));
        const std::string reason = WhyNoPrefs(file);
        file.close();
        if (!reason.empty())
            throw Failure{
                fmt::format("{} has no readable mail preferences: {}.", Printable(path), reason),
                keDamage};
    }
    JXMailPrefs prefs(0);
    static_cast<FileSpec&>(prefs) = SpecOf(path);
    // Once more, for the settings file beside it.
    prefs.SetDefaults();
    if (!prefs.ReadJXPrefs())
        Fail("Cannot read {}.", Printable(path));

    Values values(json);
    values.Title(Printable(path));
    values.Put("mailDirectory", "Mail directory", prefs.MailDirectory().Text());
    values.Put("popAccount", "POP account", prefs.Text(kPopAddress).Text());
    values.Put("popPort", "POP port", prefs.GetPopPort());
    values.Put("smtpHost", "SMTP host", prefs.Text(kSmtpHost).Text());
    values.Put("smtpPort", "SMTP port", prefs.GetSmtpPort());
    values.Put("returnAddress", "Return address", prefs.GetReturnAddress().Text());
    values.Put("defaultDomain", "Default domain", prefs.GetDefaultDomain().Text());
    values.PutFlag("passwordSet", "Password", prefs.Text(kPassword).Length() > 0, "set, not shown",
                   "not set");
    values.Put("quoteMark", "Quote mark", prefs.Text(kQuoteMark).Text());
    values.Put("directoryService", "Directory service", prefs.Text(kDirectoryService).Text());
    for (unsigned int level = 0; level < LP_MAX_PRIORITY_LEVELS; ++level)
        values.Put(fmt::format("priority{}", level + 1).c_str(),
                   fmt::format("Priority {}", level + 1).c_str(), prefs.GetPriority(level).Text());
    int left, top, right, bottom;
    prefs.GetClientWindowRect(left, top, right, bottom);
    values.Put("window", "Main window",
               left || top || right || bottom
                   ? fmt::format("{}, {} to {}, {}", left, top, right, bottom)
                   : "");
    RBString connection;
    prefs.GetDialupConnection(&connection);
    values.Put("dialupConnection", "Dial-up connection", connection.Text());
    values.PutFlag("disconnect", "Disconnect after", prefs.GetDisconnectFlag() != 0);
    values.Finish();
    return keFine;
}

// Whether the file holds what a program leaves that verifies a POP user: four stream strings, and
// nothing else. Takes the first and the third, the user's name and the server.
static bool ReadVerification(std::istream& file, RBString& user, RBString& server) {
    RBString password;
    RBString dialup;
    return file >> user && file >> password && file >> server && file >> dialup &&
           file.peek() == std::istream::traits_type::eof() && user.Length() > 0;
}

static void ShowBackgroundData(const std::string& path, Values& values) {
    RbFile file(SpecOf(path));
    if (!file.Open(keOpenRead))
        Fail("Cannot read {}: opening it failed.", Printable(path));
    RBString user;
    RBString server;
    const bool verifying = ReadVerification(file, user, server);
    file.clear();
    file.seekg(0);
    JxBackgndData data;
    const bool read = verifying || file >> data;
    file.close();
    if (!read)
        throw Failure{fmt::format("{} is damaged: there is nothing in it.", Printable(path)),
                      keDamage};
    values.PutFlag("verifying", "Being verified", verifying);
    if (verifying) {
        values.Put("popUser", "POP user", user.Text());
        values.Put("server", "Server", server.Text());
        values.PutFlag("passwordSet", "Password", true, "not shown");
        return;
    }
    const RBString& directory = data.mstrSettings[JxBackgndData::keMailDirectory];
    const RBString& name = data.mstrSettings[JxBackgndData::keDFileName];
    values.Put("inboxDirectory", "Inbox directory", directory.Text());
    values.Put("inboxFile", "Inbox D file", name.Text());
    values.Put("popAccount", "POP account", data.GetFullPopAccount().Text());
    values.Put("popPort", "POP port", data.GetPopPort());
    values.Put("smtpHost", "SMTP host", data.GetFullSmtpHost().Text());
    values.Put("smtpPort", "SMTP port", data.GetSmtpPort());
    const RsWinPlatformData platform(nullptr, &data);
    values.PutFlag("dialup", "Dial-up", platform.IsDialup() != 0);
    values.Put("dialupConnection", "Dial-up connection", platform.DialupName().Text());
}

static void ShowLoggedUser(const std::string& path, Values& values) {
    RbFile file(SpecOf(path));
    if (!file.Open(keOpenRead))
        Fail("Cannot read {}: opening it failed.", Printable(path));
    JxLoggedMailUser user;
    const bool read = user.ReadInfo(file);
    file.close();
    if (!read)
        throw Failure{fmt::format("{} is damaged: it ends inside the user.", Printable(path)),
                      keDamage};
    values.Put("name", "Name", user.Name().Text());
    values.Put("address", "Address", user.Address().Text());
    values.Put("prefsDirectory", "Preferences in", user.LoggedText().Text());
}

int ShowUser(bool json) {
    // Read as plain files: opening them as the library's programs do would change their attributes.
    const auto pathOf = [](const char* name) {
        char path[FileSpec::keMaxPart];
        if (!JxCurrentUserDataFile::GetFileSpec(name, path, sizeof path))
            Fail("There is no Windows directory to look in.");
        return std::string(path);
    };
    const std::string dataPath = pathOf("JXUSER.DAT");
    const std::string userPath = pathOf("JXLGDUSR.DAT");
    if (!IsThere(dataPath) && !IsThere(userPath))
        Fail("There is no current user: neither {} nor {} is there.", Printable(dataPath),
             Printable(userPath));
    Values values(json);
    values.Title("The current user");
    if (IsThere(userPath)) {
        NeedReadable(userPath);
        ShowLoggedUser(userPath, values);
    } else {
        fmt::print(stderr, "{} is missing: no user is logged in.\n", Printable(userPath));
    }
    if (IsThere(dataPath)) {
        NeedReadable(dataPath);
        ShowBackgroundData(dataPath, values);
    } else {
        fmt::print(stderr, "{} is missing: the inbox is not known.\n", Printable(dataPath));
    }
    values.Finish();
    return keFine;
}
