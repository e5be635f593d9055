#include "tests/fuzz/touched_files.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <vector>

#include "resident/core/windows_api.h"

#include <shlwapi.h>

#include "tests/support/file_calls.h"
#include "tests/support/scratch.h"

namespace {

// The paths of one input. Not on the heap, whose blocks are counted meanwhile.
wchar_t touched[256][MAX_PATH];
unsigned int count;
bool noting, tooMany;

void Note(const FileCall& call) {
    static constexpr std::wstring_view kDos = L"\\??\\";
    if (!noting || !call.changes || call.path.empty())
        return;
    std::wstring_view path = call.path;
    if (path.substr(0, kDos.size()) == kDos)
        path.remove_prefix(kDos.size());
    path = path.substr(0, MAX_PATH - 1);
    for (unsigned int i = 0; i < count; ++i)
        if (path == touched[i])
            return;
    tooMany = count == std::size(touched);
    if (tooMany)
        return;
    path.copy(touched[count], path.size());
    touched[count++][path.size()] = 0;
}

bool Matches(const std::vector<std::string>& patterns, const std::string& name) {
    for (const std::string& pattern : patterns)
        if (PathMatchSpecA(name.c_str(), pattern.c_str()))
            return true;
    return false;
}

// The rest of a path in a folder, else "".
std::string Inside(const std::string& path, const std::string& folder) {
    if (_strnicmp(path.c_str(), folder.c_str(), folder.size()) || path[folder.size()] != '\\')
        return "";
    return path.substr(folder.size() + 1);
}

// The file of that name, in whatever case, which stands there before an input.
auto Standing(const Format& format, const std::string& name) {
    return std::find_if(format.files.begin(), format.files.end(), [&](const auto& file) {
        return _stricmp(file.first.c_str(), name.c_str()) == 0;
    });
}

} // namespace

TouchedFiles::TouchedFiles(const std::string& folder) : mFolder(folder) {
    CreateDirectoryA(folder.c_str(), nullptr);
    // A specification's relative folder is one of the drive's root.
    for (const std::string& outside : {folder.substr(0, folder.rfind('\\')), std::string("C:")}) {
        WriteFileBytes(outside + "\\OUTSIDE.EML", "keep");
        CreateDirectoryA((outside + "\\OUT").c_str(), nullptr);
        WriteFileBytes(outside + "\\OUT\\KEEP.EML", "keep");
    }
    StandBetweenFiles(nullptr, Note);
}

void TouchedFiles::PutStanding(const Format& format) const {
    for (const auto& [name, bytes] : format.files) {
        const std::string path = mFolder + "\\" + name;
        if (bytes == "folder")
            CreateDirectoryA(path.c_str(), nullptr);
        else
            WriteFileBytes(path, bytes);
    }
}

void TouchedFiles::RemoveStanding(const Format& format) const {
    for (const auto& [name, bytes] : format.files)
        RemoveAll(mFolder + "\\" + name);
}

void TouchedFiles::Stand(const Format& format) {
    count = 0;
    if (mStanding != &format) {
        SetCurrentDirectoryA(mFolder.c_str());
        if (mStanding) {
            RemoveStanding(*mStanding);
            RemoveAll(mFolder + "\\" + mStanding->own);
        }
        PutStanding(format);
        mStanding = &format;
    }
    noting = true;
}

std::string TouchedFiles::Wrong(const std::string& path, const Format& format) const {
    const bool there = FileThere(path);
    if (!_stricmp(path.c_str(), "NUL"))
        return "";
    if (Matches({"*\\JPW*"}, path)) // the library's temporary files
        return there ? "leaves " + path : "";
    if (Matches({"JXUSER.DAT", "JXLGDUSR.DAT", "WIN.INI"}, Inside(path, WindowsDirectory())))
        return "";
    if (!_stricmp(path.c_str(), mFolder.c_str()))
        return there ? "" : "removes its folder";
    const std::string name = Inside(path, mFolder);
    if (name.empty())
        return "changes outside of its folder " + path;
    if (name == format.own || Standing(format, name) != format.files.end())
        return there || Matches(format.mayGo, name) ? "" : "removes " + name;
    return !there || Matches(format.mayAppear, name) ? "" : "leaves " + name;
}

std::string TouchedFiles::Check(const Format& format) {
    noting = false;
    std::string wrong = tooMany ? "changes too many files" : "";
    char folder[MAX_PATH];
    GetCurrentDirectoryA(sizeof folder, folder);
    if (mFolder != folder) {
        wrong = std::string("current folder is ") + folder;
        SetCurrentDirectoryA(mFolder.c_str());
    }
    bool folderTouched = false, standingTouched = false;
    for (unsigned int i = 0; i < count; ++i) {
        char path[2 * MAX_PATH];
        WideCharToMultiByte(CP_ACP, 0, touched[i], -1, path, sizeof path, nullptr, nullptr);
        if (const std::size_t size = std::strlen(path); size && path[size - 1] == '\\')
            path[size - 1] = 0;
        const std::string found = Wrong(path, format), name = Inside(path, mFolder);
        if (!found.empty())
            wrong = found;
        const auto file = Standing(format, name);
        if (file != format.files.end()) {
            standingTouched = true;
            folderTouched = folderTouched || file->second == "folder";
        } else if (!name.empty() && _stricmp(name.c_str(), format.own.c_str())) {
            RemoveAll(path);
        }
    }
    if (folderTouched)
        RemoveStanding(format);
    if (standingTouched)
        PutStanding(format);
    tooMany = false;
    return wrong;
}
