// mailfolder: looks into mail folders and the files around them, and mends them when told to.

#include <CLI/CLI.hpp>

#include <cerrno>
#include <functional>
#include <system_error>

#include "programs/mailfolder/commands.h"
#include "programs/mailfolder/quiet.h"
#include "programs/mailfolder/tool.h"
#include "resident/core/windows_api.h"

namespace {

// What the options are read into.
struct Arguments {
    std::string file;
    std::string second;
    int type = -1;
    bool json = false;
    bool yes = false;
    bool replace = false;
    bool append = false;
    bool dropDamaged = false;
};

class CommandLine {
public:
    CommandLine();
    int Run(int argc, char** argv);

private:
    CLI::App* Add(CLI::App& parent, const char* name, const char* description, const char* examples,
                  std::function<int()> run);
    CLI::App* AddFolderCommand(const char* name, const char* description, const char* examples,
                               std::function<int()> run);
    void AddJson(CLI::App* command) {
        command->add_flag("--json", mGiven.json, "Print JSON instead of text");
    }
    void AddYes(CLI::App* command) {
        command->add_flag("--yes", mGiven.yes, "Do it; without it, tell what would be done");
        command->add_flag("--replace-backup", mGiven.replace,
                          "Let an older .BAK file of the D file go");
    }
    void AddUserLists();
    void AddSettings();

    CLI::App mApp{"Looks into Postrider mail folders, and mends them when told to."};
    Arguments mGiven;
    std::function<int()> mRun;
};

CLI::App* CommandLine::Add(CLI::App& parent, const char* name, const char* description,
                           const char* examples, std::function<int()> run) {
    CLI::App* const command = parent.add_subcommand(name, description);
    command->footer(std::string("Examples:\n") + examples);
    command->callback([this, run = std::move(run)] { mRun = run; });
    return command;
}

CLI::App* CommandLine::AddFolderCommand(const char* name, const char* description,
                                        const char* examples, std::function<int()> run) {
    CLI::App* const command = Add(mApp, name, description, examples, std::move(run));
    command
        ->add_option("folder", mGiven.file,
                     "A D file, or a folder, whose D file is \"DFile\" or else \"MFile\"")
        ->required();
    command
        ->add_option("--type", mGiven.type,
                     "The D file's type: 0 and 1 have a header, 2 has none; else it is guessed")
        ->check(CLI::Range(0, 2));
    return command;
}

CommandLine::CommandLine() {
    mApp.name("mailfolder");
    mApp.require_subcommand(1);
    // A path may begin with a slash.
    mApp.allow_windows_style_options(false);
    mApp.footer("Exit codes: 0 fine, 1 could not, 2 wrong use, 3 damage found.\n"
                "mailfolder COMMAND --help tells more, with examples.");
    AddJson(AddFolderCommand("list", "List the messages of a folder",
                             "  mailfolder list C:\\Mail\\InBox\n"
                             "  mailfolder list C:\\Mail\\InBox\\DFile --json",
                             [this] { return List(mGiven.file, mGiven.type, mGiven.json); }));
    AddJson(AddFolderCommand("info", "Tell a D file's counts, newest date, type and size",
                             "  mailfolder info C:\\Mail\\InBox\n"
                             "  mailfolder info D:\\Old\\DFile --type 2 --json",
                             [this] { return Info(mGiven.file, mGiven.type, mGiven.json); }));
    AddJson(AddFolderCommand("check",
                             "Read every record; tell what is damaged, where, and what would be "
                             "lost. Changes nothing",
                             "  mailfolder check C:\\Mail\\InBox\n"
                             "  mailfolder check C:\\Mail\\InBox --json",
                             [this] { return Check(mGiven.file, mGiven.type, mGiven.json); }));
    AddYes(AddFolderCommand(
        "rebuild", "Make a folder's D file anew from its message files, and keep the old as .BAK",
        "  mailfolder rebuild C:\\Mail\\InBox          (tells what it would do)\n"
        "  mailfolder rebuild C:\\Mail\\InBox --yes\n"
        "  mailfolder rebuild D:\\Old\\MFile --type 0 --yes",
        [this] { return Rebuild(mGiven.file, mGiven.type, mGiven.yes, mGiven.replace); }));
    CLI::App* const compress = AddFolderCommand(
        "compress", "Rewrite a D file without its free slots",
        "  mailfolder compress C:\\Mail\\InBox         (tells what it would save)\n"
        "  mailfolder compress C:\\Mail\\InBox --yes",
        [this] {
            return Compress(mGiven.file, mGiven.type, mGiven.yes, mGiven.replace,
                            mGiven.dropDamaged);
        });
    AddYes(compress);
    compress->add_flag("--drop-damaged", mGiven.dropDamaged, "Let records go that cannot be read");
    AddUserLists();
    AddSettings();
}

void CommandLine::AddUserLists() {
    CLI::App* const exporting =
        Add(mApp, "export", "Write a file of user records as a list, a user a line, tabs between",
            "  mailfolder export C:\\Mail\\USERS.DAT users.txt\n"
            "  mailfolder export C:\\Mail\\USERS.DAT --json",
            [this] {
                if (mGiven.json != mGiven.second.empty())
                    throw Failure{"Say either the list's name or --json.", keWrongUse};
                return ExportUsers(mGiven.file, mGiven.second, mGiven.replace);
            });
    exporting->add_option("users", mGiven.file, "The file of user records")->required();
    exporting->add_option("list", mGiven.second, "The list to write, in the ANSI code page");
    exporting->add_flag("--replace", mGiven.replace, "Write a list anew that is there already");
    AddJson(exporting);

    CLI::App* const importing =
        Add(mApp, "import", "Put the users of a list into a file of user records",
            "  mailfolder import users.txt C:\\Mail\\USERS.DAT\n"
            "  mailfolder import more.txt C:\\Mail\\USERS.DAT --append",
            [this] {
                return ImportUsers(mGiven.file, mGiven.second,
                                   mGiven.append    ? ImportInto::Append
                                   : mGiven.replace ? ImportInto::Replace
                                                    : ImportInto::NewFile);
            });
    importing->add_option("list", mGiven.file, "The list, in the ANSI code page")->required();
    importing->add_option("users", mGiven.second, "The file of user records")->required();
    CLI::Option* const append =
        importing->add_flag("--append", mGiven.append, "Add to a file that is there already");
    importing->add_flag("--replace", mGiven.replace, "Write a file anew that is there already")
        ->excludes(append);
}

void CommandLine::AddSettings() {
    CLI::App* const prefs = mApp.add_subcommand("prefs", "Mail preferences");
    prefs->require_subcommand(1);
    CLI::App* const showPrefs =
        Add(*prefs, "show", "Show the mail preferences; a password is told of, and not shown",
            "  mailfolder prefs show C:\\Mail\\RB.DAT\n"
            "  mailfolder prefs show C:\\Mail --json",
            [this] { return ShowPrefs(mGiven.file, mGiven.json); });
    showPrefs->add_option("file", mGiven.file, "\"RB.DAT\", or its folder")->required();
    AddJson(showPrefs);

    CLI::App* const user = mApp.add_subcommand("user", "The current user");
    user->require_subcommand(1);
    AddJson(Add(*user, "show", "Show the current user's paths and accounts",
                "  mailfolder user show\n"
                "  mailfolder user show --json",
                [this] { return ShowUser(mGiven.json); }));
}

int CommandLine::Run(int argc, char** argv) {
    try {
        mApp.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return mApp.exit(error) == 0 ? keFine : keWrongUse;
    }
    try {
        return mRun();
    } catch (const Failure& failure) {
        fmt::print(stderr, "{}\n", failure.text);
        return failure.code;
    } catch (const std::system_error& error) {
        // Whoever read the output has closed it, as "| head" does, and wants no words about it.
        if (error.code().value() != EINVAL && error.code().value() != EPIPE)
            fmt::print(stderr, "Cannot write the output: {}.\n", error.what());
        return keCouldNot;
    } catch (const std::exception& error) {
        fmt::print(stderr, "Cannot go on: {}.\n", error.what());
        return keCouldNot;
    }
}

// A console shows UTF-8 while the tool runs.
class Utf8Console {
public:
    Utf8Console() : mPage(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;
    ~Utf8Console() { SetConsoleOutputCP(mPage); }

private:
    UINT mPage;
};

} // namespace

int main(int argc, char** argv) {
    const Quiet quiet;
    const Utf8Console console;
    const int code = CommandLine().Run(argc, argv);
    if (std::fflush(stdout) != 0)
        return keCouldNot;
    return code;
}
