#include "resident/files/temporary_file.h"

#include <cstdlib>
#include <direct.h>
#include <string>

#include "resident/core/windows_api.h"
#include "resident/files/disk_driver.h"
#include "resident/files/file_identity.h"
#include "resident/files/oem_name.h"

static const char kNumberedName[] = "JPW00000";
static const char kPrefix[] = "JPW";
static const char kLeftBehind[] = "JPW*.TMP";
static const char kDefaultExt[] = ".TMP";

static constexpr int kLastNumber = 32766;

TemporaryFile::TemporaryFile(int deleteOnDestroy)
    : mfDeleteOnDestroy(deleteOnDestroy), mstrTempExt(kDefaultExt) {
    RBString directory;
    HashFileName(directory);
}

TemporaryFile::TemporaryFile(FileSpec& where, int deleteOnDestroy)
    : mfDeleteOnDestroy(deleteOnDestroy), mstrTempExt(kDefaultExt) {
    RBString directory(where.FullFilePath());
    HashFileName(directory);
}

TemporaryFile::TemporaryFile(const char* text, int deleteOnDestroy, enumTempFileOptions option)
    : mfDeleteOnDestroy(deleteOnDestroy) {
    RBString directory;
    if (option == keTempDirectory) {
        directory.puts(text);
        mstrTempExt.puts(kDefaultExt);
    } else if (option == keTempExtension) {
        mstrTempExt.puts(text);
    }
    HashFileName(directory);
}

TemporaryFile::~TemporaryFile() {
    if (isOpen())
        close();
    if (mfDeleteOnDestroy)
        Remove();
}

bool TemporaryFile::Create() {
    if (!Open(keOpenOut | keOpenNoReplace))
        return false;
    close();
    return true;
}

static bool IsTaken(FileSpec& name) {
    return DiskDriver::FileExists(name, 0) || DiskDriver::FileExists(name, keAttrDirectory);
}

// Null when it does not fit.
static const char* WindowsDirectory(char (&buffer)[keOemNameSize]) {
    const unsigned int length = GetWindowsDirectoryA(buffer, sizeof buffer);
    return length && length < sizeof buffer ? buffer : nullptr;
}

// Tries the numbered names; false when one that is free cannot be made, or all are taken.
bool TemporaryFile::MakeNumbered(const char* windowsDirectory) {
    for (int n = 0; n <= kLastNumber; ++n) {
        const std::string digits = std::to_string(n);
        std::string name = kNumberedName;
        name.replace(name.size() - digits.size(), digits.size(), digits);
        name += mstrTempExt.Text();
        FileSpec candidate(windowsDirectory, keAsPath);
        // What is refused would leave the folder's own name, which is always taken.
        if (candidate.SetSpecPart(name.c_str(), keAsParts) != FileSpec::keSpecOk)
            return false;
        if (IsTaken(candidate))
            continue;
        FileSpec::operator=(candidate);
        // Another program may have taken the name since: then the next one.
        if (Create())
            return true;
        if (!IsTaken(candidate))
            return false;
    }
    return false;
}

void TemporaryFile::HashFileName(RBString& directory) {
    char windowsDirectory[keOemNameSize];
    mfValid = true;
    if (WindowsDirectory(windowsDirectory) && MakeNumbered(windowsDirectory))
        return;

    if (directory.Length() == 0) {
        char folder[keOemNameSize];
        const unsigned int size = GetEnvironmentVariableA("TMP", folder, sizeof folder);
        if ((size && size < sizeof folder) || _getcwd(folder, sizeof folder)) {
            directory.puts(folder);
        } else {
            mfValid = false;
            return;
        }
    }
    char* const name = _tempnam(directory.Text(), kPrefix);
    if (name)
        Parse(name, keClearOthers);
    mfValid = name && Create();
    std::free(name);
}

int TemporaryFile::DelDanglingTemps() {
    char windowsDirectory[keOemNameSize];
    if (!WindowsDirectory(windowsDirectory))
        return false;
    const FileSpec folder(windowsDirectory, keAsPath);
    FileSpec pattern(folder);
    pattern.SetSpecPart(kLeftBehind, keAsParts);

    bool removed = false;
    DiskDriver driver;
    driver.SetSearchPattern(pattern);
    while (driver.FindFile()) {
        FileSpec found(folder);
        // The pattern finds short names too: what the file is called counts. A link's target stays.
        if (driver.ValidFind() && !driver.FoundDirectory() && driver.FoundFile(found) &&
            lstrcmpiA(found.FileExt(), kDefaultExt) == 0 && !IsLink(found) &&
            DiskDriver::RemoveFile(found))
            removed = true;
    }
    return removed;
}
