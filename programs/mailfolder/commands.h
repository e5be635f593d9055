#pragma once

#include <string>

// The tool's commands. Each returns an exit code, or throws a Failure. `type` is a D file's, -1 to
// guess it.

int List(const std::string& argument, int type, bool json);
int Info(const std::string& argument, int type, bool json);
int Check(const std::string& argument, int type, bool json);

// Without `yes` they tell what they would do, and leave it.
int Rebuild(const std::string& argument, int type, bool yes, bool replaceBackup);
int Compress(const std::string& argument, int type, bool yes, bool replaceBackup, bool dropDamaged);

// Without a list file, as JSON on standard output.
int ExportUsers(const std::string& users, const std::string& list, bool replace);
enum class ImportInto { NewFile, Append, Replace };
int ImportUsers(const std::string& list, const std::string& users, ImportInto into);

int ShowPrefs(const std::string& argument, bool json);
int ShowUser(bool json);
