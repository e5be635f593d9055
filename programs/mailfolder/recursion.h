#pragma once

#include <functional>
#include <string>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/failure.h"
#include "programs/mailfolder/json.h"
#include "programs/mailfolder/path.h"

// Of commands that look at one folder, or at all below it.
struct LookOptions {
    FolderArgument folder;
    bool json = false;
    bool recursive = false;
};
typedef int (*Look)(const LookOptions& options);
// Adds the options; what is returned looks at one folder or at all.
Command::Run AddLook(CLI::App& app, Look atOne, Look atAll);

// What a command tells of one folder, or of all together.
struct FolderLine {
    std::string text;
    Json json;
    ExitCode code;
};

// Which folders are told of: those with a D file or what is left of one, or those with message
// files alone, too.
enum class Which { WithDFile, WithMail };

// Tells of the folder and of every one below it, a line each, and of all in a last line. Links are
// not entered. Returns the worst exit code; a folder that fails is told of, and does not stop the
// others; where there is none, that is a failure.
int ForEachFolder(const Path& top, Which which, bool json,
                  const std::function<FolderLine(const Path&)>& tell,
                  const std::function<FolderLine()>& summary);
