#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <string>

// One command of the tool. It registers itself in the source that it is written in:
//
//     static const Command kList(
//         "list", "List the messages of a folder", "  mailfolder list C:\\Mail\\InBox\n",
//         [](CLI::App& app) -> Command::Run {
//             const auto given = std::make_shared<ListOptions>();
//             AddFolder(app, given->folder);
//             return [given] { return List(*given); };
//         });
//
// A name of two words is a command in a group: "users export". Names, descriptions and examples
// must outlive the command.
class Command {
public:
    // Returns an exit code, or throws a Failure.
    typedef std::function<int()> Run;
    // Adds the command's options to `app`, and returns what runs it.
    typedef Run (*SetUp)(CLI::App& app);

    Command(const char* name, const char* description, const char* examples, SetUp setUp);
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // All commands, by their names.
    static const std::map<std::string, const Command*>& All() { return Registered(); }
    // Adds the command to the tool; when the command line names it, `chosen` is what runs it.
    void AddTo(CLI::App& tool, Run& chosen) const;

private:
    static std::map<std::string, const Command*>& Registered();

    std::string mName;
    const char* mDescription;
    const char* mExamples;
    SetUp mSetUp;
};

// Options that several commands have.

// A D file or its folder, and the D file's type, -1 when it is to be guessed.
struct FolderArgument {
    std::string path;
    int type = -1;
};
void AddFolder(CLI::App& app, FolderArgument& folder);
void AddJson(CLI::App& app, bool& json);
void AddYes(CLI::App& app, bool& yes);
