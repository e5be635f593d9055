// The current user's data, in the files of the Windows directory. Passwords are told of, and never
// shown.

#include <fstream>

#include "programs/console/text.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/tool.h"
#include "programs/mailfolder/values.h"

// Whether the file holds what a program leaves that verifies a POP user: four stream strings, and
// nothing else. Takes the first and the third, the user's name and the server.
static bool ReadVerification(std::istream& file, RBString& user, RBString& server) {
    RBString password;
    RBString dialup;
    return file >> user && file >> password && file >> server && file >> dialup &&
           file.peek() == std::istream::traits_type::eof() && user.Length() > 0;
}

static void ShowBackgroundData(const Path& path, Values& values) {
    RbFile file(FileSpec(path.LibraryName().c_str()));
    if (!file.Open(keOpenRead))
        Fail("Cannot read {}: opening it failed.", path.Shown());
    RBString user;
    RBString server;
    const bool verifying = ReadVerification(file, user, server);
    file.clear();
    file.seekg(0);
    JxBackgndData data;
    const bool read = verifying || file >> data;
    file.close();
    if (!read)
        throw Failure{fmt::format("{} is damaged: there is nothing in it.", path.Shown()),
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

static void ShowLoggedUser(const Path& path, Values& values) {
    RbFile file(FileSpec(path.LibraryName().c_str()));
    if (!file.Open(keOpenRead))
        Fail("Cannot read {}: opening it failed.", path.Shown());
    JxLoggedMailUser user;
    const bool read = user.ReadInfo(file);
    file.close();
    if (!read)
        throw Failure{fmt::format("{} is damaged: it ends inside the user.", path.Shown()),
                      keDamage};
    values.Put("name", "Name", user.Name().Text());
    values.Put("address", "Address", user.Address().Text());
    values.Put("prefsDirectory", "Preferences in", user.LoggedText().Text());
}

static int ShowUser(bool json) {
    // Read as plain files: opening them as the library's programs do would change their attributes.
    const auto pathOf = [](const char* name) {
        char path[FileSpec::keMaxPart];
        if (!JxCurrentUserDataFile::GetFileSpec(name, path, sizeof path))
            Fail("There is no Windows directory to look in.");
        return Path(Utf8(std::string_view(path)));
    };
    const Path dataPath = pathOf("JXUSER.DAT");
    const Path userPath = pathOf("JXLGDUSR.DAT");
    if (!dataPath.IsThere() && !userPath.IsThere())
        Fail("There is no current user: neither {} nor {} is there.", dataPath.Shown(),
             userPath.Shown());
    Values values(json);
    values.Title("The current user");
    if (userPath.IsThere()) {
        NeedReadable(userPath);
        ShowLoggedUser(userPath, values);
    } else {
        Warn("{} is missing: no user is logged in.\n", userPath.Shown());
    }
    if (dataPath.IsThere()) {
        NeedReadable(dataPath);
        ShowBackgroundData(dataPath, values);
    } else {
        Warn("{} is missing: the inbox is not known.\n", dataPath.Shown());
    }
    values.Finish();
    return keFine;
}

static const Command kUserShow("user show", "Show the current user's paths and accounts",
                               "  mailfolder user show\n"
                               "  mailfolder user show --json",
                               [](CLI::App& app) -> Command::Run {
                                   const auto json = std::make_shared<bool>(false);
                                   AddJson(app, *json);
                                   return [json] { return ShowUser(*json); };
                               });
