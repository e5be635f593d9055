#include "resident/files/disk_driver.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <direct.h>
#include <io.h>
#include <string>
#include <sys/stat.h>

#include "resident/files/file_identity.h"
#include "resident/files/oem_name.h"
#include "resident/runtime/check.h"

static constexpr Reporter kReports("JXRESIDT\\DISKDRVR.CPP");

static constexpr int kAllEntries =
    keAttrReadOnly | keAttrHidden | keAttrSystem | keAttrDirectory | keAttrArchive;

char DiskDriver::szTranslatedString[keOemNameSize];

DiskDriver::DiskDriver() : mpoSearch(new FileSearch) { moStartLocation = CurrentDir(); }

DiskDriver::DiskDriver(const FileSpec& where) : DiskDriver() {
    mfLocationValid = ChangeLocation(where);
    // On success the process stays in `where` when this driver goes; programs count on it.
    if (mfLocationValid)
        moStartLocation = where;
    else
        ChangeLocation(moStartLocation);
}

DiskDriver::~DiskDriver() {
    delete mpoSearch;
    ChangeLocation(moStartLocation);
}

bool DiskDriver::ChangeLocation(const FileSpec& where) {
    if (where.Drive() != 0 && !ChangeVolume(static_cast<short>(where.Drive())))
        return false;
    return ChangeDir(where);
}

const FileSpec& DiskDriver::CurrentDir() {
    char folder[keOemNameSize] = "";
    if (_getcwd(folder, sizeof folder)) {
        OemToCharA(folder, folder);
        moCurrentDir.SetSpecPart(folder, FileSpec::keAsPath);
    }
    moCurrentDir.Build(static_cast<char>('A' + CurrentVolume()), nullptr, nullptr, nullptr,
                       FileSpec::keKeepOthers);
    return moCurrentDir;
}

int DiskDriver::CurrentVolume() {
    miCurrentVolume = _getdrive() - 1;
    return miCurrentVolume;
}

bool DiskDriver::ChangeVolume(int drive) {
    // The run-time counts from A = 1, and takes 0 for the current drive.
    if (drive >= 0)
        _chdrive(drive + 1);
    return CurrentVolume() == drive;
}

bool DiskDriver::ChangeVolume(char letter) { return ChangeVolume(letter - 'A'); }

bool DiskDriver::ChangeDir(const FileSpec& where) {
    std::string path(where.Path().Text());
    if (path.size() > 1 && path.back() == '\\')
        path.pop_back();
    ConvertToOem(path.c_str(), szTranslatedString);
    return _chdir(szTranslatedString) == 0;
}

bool DiskDriver::MakeDir(const char* path) {
    ConvertToOem(path, szTranslatedString);
    return _mkdir(szTranslatedString) == 0;
}

bool DiskDriver::MakeDir(FileSpec& path) { return MakeDir(path.FullFileSpec()); }

bool DiskDriver::FileExists(const char* name, int attributes) {
    ConvertToOem(name, szTranslatedString);
    FileSearch search;
    ffblk found;
    if (!search.First(szTranslatedString, found, attributes))
        return false;
    if ((attributes & keAttrDirectory) && !(found.ff_attrib & keAttrDirectory))
        return search.Next(found);
    return true;
}

bool DiskDriver::FileExists(FileSpec& name, int attributes) {
    return FileExists(name.FullFileSpec(), attributes);
}

bool DiskDriver::RemoveFile(const char* name) {
    ConvertToOem(name, szTranslatedString);
    return _unlink(szTranslatedString) == 0;
}

bool DiskDriver::RemoveFile(FileSpec& name) { return RemoveFile(name.FullFileSpec()); }

bool DiskDriver::Rename(const char* pszRHSOld, const char* pszRHSNew) {
    kReports.CheckAt(239, pszRHSOld != pszRHSNew, "pszRHSOld != pszRHSNew");
    const OemName from(pszRHSOld);
    const OemName to(pszRHSNew);
    if (from && to && std::rename(from.Text(), to.Text()) == 0)
        return true;
    // Renaming to another disk copies: a full one is left with a cut copy under the new name.
    if (from && to && errno == ENOSPC)
        _unlink(to.Text());
    kReports.FailAt(254, "DiskDriver::Rename() failed.");
    return false;
}

bool DiskDriver::Rename(const wchar_t* from, const wchar_t* to) {
    if (MoveFileW(from, to))
        return true;
    kReports.FailAt(254, "DiskDriver::Rename() failed.");
    return false;
}

bool DiskDriver::Rename(FileSpec& from, FileSpec& to) {
    return Rename(from.FullFileSpec(), to.FullFileSpec());
}

int DiskDriver::RemoveDir(FileSpec& folder) {
    const int removed = ChangeLocation(folder) && DoDelDirectory(folder.FullFileSpec());
    ChangeLocation(moCurrentDir);
    return removed;
}

// Whether an entry may be removed, and a folder entered: not what a link leads to, nor what lies
// where paths end.
static bool IsOwnEntry(const std::string& entry) {
    wchar_t wide[keOemNameSize];
    wchar_t full[keOemNameSize];
    const int length = MultiByteToWideChar(CP_ACP, 0, entry.c_str(), -1, wide, keOemNameSize);
    const DWORD fullLength = length ? GetFullPathNameW(wide, keOemNameSize, full, nullptr) : 0;
    return fullLength && fullLength < keOemNameSize && !IsLink(wide);
}

int DiskDriver::DoDelDirectory(const char* pattern) {
    const OemName name(pattern);
    if (!name)
        return 0;
    // Entries of a pattern with a folder are named with that folder, whole: leaving one of them
    // makes it the current one.
    std::string folder;
    char full[keOemNameSize];
    if (const char* const separator = std::strrchr(name.Text(), '\\')) {
        if (!_fullpath(full, std::string(name.Text(), separator + 1).c_str(), sizeof full))
            return 0;
        folder = full;
    }

    int removed = 0;
    FileSearch search;
    ffblk found;
    for (int more = search.First(name.Text(), found, kAllEntries); more;
         more = search.Next(found)) {
        const std::string entry = folder + found.ff_name;
        if (!IsOwnEntry(entry))
            continue;
        if (!(found.ff_attrib & keAttrDirectory)) {
            if (found.ff_attrib & keAttrReadOnly)
                _chmod(entry.c_str(), _S_IREAD | _S_IWRITE);
            removed += _unlink(entry.c_str()) == 0;
        } else if (_chdir(entry.c_str()) == 0) {
            DoDelDirectory("*.*");
            _chdir("..");
            removed += _rmdir(entry.c_str()) == 0;
        }
    }
    return removed;
}

int DiskDriver::GetFileInfo(const char* name, ffblk* record, int attributes) {
    ConvertToOem(name, szTranslatedString);
    FileSearch search;
    return search.First(szTranslatedString, *record, attributes);
}

int DiskDriver::FindFile() {
    if (!mfNewSearch)
        return mpoSearch->Next(moFound);
    mfNewSearch = false;
    moFound = {};
    ConvertToOem(moSearchPattern.FullSpec(), szTranslatedString);
    return mpoSearch->First(szTranslatedString, moFound, mwSearchAttributes);
}

int DiskDriver::ValidFind() {
    return mwSearchAttributes == 0 ? 1 : static_cast<int>(moFound.ff_attrib & mwSearchAttributes);
}

bool DiskDriver::FoundFile(FileSpec& out) {
    if (!moFound.ff_name[0]) {
        kReports.FailAt(151, "Invalid file found in DiskDriver::FoundFile");
        return false;
    }
    char name[sizeof moFound.ff_name];
    OemToCharA(moFound.ff_name, name);
    if (moFound.ff_attrib & keAttrDirectory) {
        out.AppendPath(name);
    } else {
        out.ClearName();
        out.SetSpecPart(name, FileSpec::keAsParts);
    }
    return true;
}

void DiskDriver::EndSearch() {
    mpoSearch->Close();
    mfNewSearch = true;
}
