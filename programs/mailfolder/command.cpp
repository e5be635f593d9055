#include "programs/mailfolder/command.h"

// What the groups of commands are about.
static const char* GroupDescription(const std::string& group) {
    return group == "prefs"   ? "Mail preferences"
           : group == "users" ? "User lists and files of user records"
                              : "The current user";
}

std::map<std::string, const Command*>& Command::Registered() {
    static std::map<std::string, const Command*> commands;
    return commands;
}

Command::Command(const char* name, const char* description, const char* examples, SetUp setUp)
    : mName(name), mDescription(description), mExamples(examples), mSetUp(setUp) {
    Registered()[mName] = this;
}

void Command::AddTo(CLI::App& tool, Run& chosen) const {
    CLI::App* parent = &tool;
    std::string name = mName;
    if (const std::size_t space = mName.find(' '); space != std::string::npos) {
        const std::string group = mName.substr(0, space);
        name = mName.substr(space + 1);
        const auto same =
            tool.get_subcommands([&](const CLI::App* other) { return other->get_name() == group; });
        parent = same.empty() ? nullptr : same.front();
        if (!parent) {
            parent = tool.add_subcommand(group, GroupDescription(group));
            parent->require_subcommand(1);
        }
    }
    CLI::App* const command = parent->add_subcommand(name, mDescription);
    command->footer(std::string("Examples:\n") + mExamples);
    command->callback([&chosen, run = mSetUp(*command)] { chosen = run; });
}

void AddFolder(CLI::App& app, FolderArgument& folder) {
    app.add_option("folder", folder.path,
                   "A D file, or a folder, whose D file is \"DFile\" or else \"MFile\"")
        ->required();
    app.add_option("--type", folder.type,
                   "The D file's type: 0 and 1 have a header, 2 has none; else it is guessed")
        ->check(CLI::Range(0, 2));
}

void AddJson(CLI::App& app, bool& json) {
    app.add_flag("--json", json, "Print JSON instead of text");
}

void AddYes(CLI::App& app, bool& yes) {
    app.add_flag("--yes", yes, "Do it; without it, tell what would be done");
}
