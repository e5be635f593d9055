#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

#include "programs/mailfolder/path.h"
#include "programs/mailfolder/tool.h"

void AddRecursive(CLI::App& app, bool& recursive);

// What a command tells of one folder, or of all together.
struct FolderLine {
    std::string text;
    Json json;
    ExitCode code;
};

// Tells of the folder and of every one below it that has a D file, or what is left of one, a line
// each, and of all in a last line. Links are not entered. Returns the worst exit code; a folder
// that fails is told of, and does not stop the others.
int ForEachFolder(const Path& top, bool json, const std::function<FolderLine(const Path&)>& tell,
                  const std::function<FolderLine()>& summary);
