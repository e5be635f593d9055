// The mail preferences that a user has set. The password is told of, and never shown.

#include <algorithm>

#include "programs/console/text.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/pref_directory.h"
#include "programs/mailfolder/tool.h"
#include "programs/mailfolder/values.h"

// In words that go on after the file's name; empty when the library will read them without a box.
static std::string WhyNoPrefs(const Path& path) {
    const PrefDirectory directory(path);
    const auto found =
        std::find_if(directory.blocks.begin(), directory.blocks.end(),
                     [](const auto& block) { return block.id == JXMailPrefs::keApplication; });
    if (found == directory.blocks.end())
        return directory.damage.empty() ? "other programs' settings alone are in it"
                                        : directory.damage;
    const unsigned int size = static_cast<unsigned short>(found->size);
    if (size != JXMailPrefs::keRecordSize)
        return fmt::format("its mail preferences have {} bytes instead of {}", size,
                           static_cast<int>(JXMailPrefs::keRecordSize));
    return directory.Holds(*found) ? "" : "it ends inside the mail preferences";
}

static int ShowPrefs(const std::string& argument, bool json) {
    Path path(argument);
    if (path.IsFolder())
        path = path.Child(L"RB.DAT");
    NeedReadable(path);
    if (const std::string reason = WhyNoPrefs(path); !reason.empty())
        throw Failure{fmt::format("{} has no readable mail preferences: {}.", path.Shown(), reason),
                      keDamage};
    JXMailPrefs prefs(0);
    static_cast<FileSpec&>(prefs) = FileSpec(path.LibraryName().c_str());
    // Once more, for the settings file beside it.
    prefs.SetDefaults();
    if (!prefs.ReadJXPrefs())
        Fail("Cannot read {}.", path.Shown());

    Values values(json);
    values.Title(path.Shown());
    values.Put("mailDirectory", "Mail directory", prefs.MailDirectory().Text());
    values.Put("popAccount", "POP account", prefs.Text(kePrefPopAddress).Text());
    values.Put("popPort", "POP port", prefs.GetPopPort());
    values.Put("smtpHost", "SMTP host", prefs.Text(kePrefSmtpHost).Text());
    values.Put("smtpPort", "SMTP port", prefs.GetSmtpPort());
    values.Put("returnAddress", "Return address", prefs.GetReturnAddress().Text());
    values.Put("defaultDomain", "Default domain", prefs.GetDefaultDomain().Text());
    values.PutFlag("passwordSet", "Password", prefs.Text(kePrefPassword).Length() > 0,
                   "set, not shown", "not set");
    values.Put("quoteMark", "Quote mark", prefs.Text(kePrefQuoteMark).Text());
    values.Put("directoryService", "Directory service", prefs.Text(kePrefDirectoryService).Text());
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

static const Command
    kPrefsShow("prefs show", "Show the mail preferences; a password is told of, and not shown",
               "  mailfolder prefs show C:\\Mail\\RB.DAT\n"
               "  mailfolder prefs show C:\\Mail --json",
               [](CLI::App& app) -> Command::Run {
                   struct Options {
                       std::string file;
                       bool json = false;
                   };
                   const auto given = std::make_shared<Options>();
                   app.add_option("file", given->file, "\"RB.DAT\", or its folder")->required();
                   AddJson(app, given->json);
                   return [given] { return ShowPrefs(given->file, given->json); };
               });
