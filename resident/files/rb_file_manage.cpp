// RbFile: the file on disk, named by its specification.

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <io.h>
#include <string>
#include <sys/stat.h>
#include <sys/timeb.h>

#include "resident/files/disk_driver.h"
#include "resident/files/oem_name.h"
#include "resident/files/rb_file.h"
#include "resident/runtime/check.h"

static constexpr int kFiles = keAttrReadOnly | keAttrHidden | keAttrSystem | keAttrArchive; // 0x27

bool RbFile::Exists() { return DiskDriver::FileExists(FullFileSpec(), kFiles); }

bool RbFile::DirectoryExists() { return DiskDriver::FileExists(FullFileSpec(), keAttrDirectory); }

enumDeleteResult RbFile::Remove() { return DoRemove(); }

enumDeleteResult RbFile::DoRemove() {
    static constexpr Reporter kReports("JXRESIDT\\RBFILE1.CPP");
    const enumDeleteResult eResult = ImpRemove();
    kReports.CheckAt(54, eResult == keDELETE_OK, "eResult == keDELETE_OK");
    return eResult;
}

enumDeleteResult RbFile::ImpRemove() {
    const OemName name(FullFileSpec());
    if (isOpen())
        close();
    if (!name)
        return keDELETE_FAILED;
    if (_chmod(name.Text(), _S_IREAD | _S_IWRITE) == 0 && _unlink(name.Text()) == 0) {
        // A folder that may not be changed keeps the file, though unlink reports success.
        return _access(name.Text(), 0) == 0 ? keDELETE_ACCESS_DENIED : keDELETE_OK;
    }
    switch (errno) {
    case ENOENT:
        return keDELETE_NOT_FOUND;
    case EACCES:
        return keDELETE_ACCESS_DENIED;
    default:
        return keDELETE_FAILED;
    }
}

int RbFile::RenameToBak(FileSpec* backup) {
    FileSpec target(*this);
    target.SetFileExt(".BAK");
    // A backup itself would be removed as its own older backup.
    if (IsSameFile(target))
        return false;
    DiskDriver::RemoveFile(target);
    const int renamed = DiskDriver::Rename(*this, target);
    if (renamed && backup)
        *backup = target;
    return renamed;
}

bool RbFile::FileInfo(unsigned short* time, long* size, unsigned short* date) {
    ffblk found;
    if (!DiskDriver::GetFileInfo(FullSpec(), &found, kFiles | keAttrDirectory))
        return false;
    if (time)
        *time = found.ff_ftime;
    if (size)
        *size = found.ff_fsize;
    if (date)
        *date = found.ff_fdate;
    return true;
}

bool RbFile::FileInfo(std::tm* when, long* size) {
    unsigned short time;
    unsigned short date;
    if (!FileInfo(&time, size, &date))
        return false;
    when->tm_mday = date & 0x1F;
    when->tm_mon = ((date & 0x1E0) >> 5) - 1;
    when->tm_year = ((date & 0xFE00) >> 9) + 80;
    when->tm_hour = (time & 0xF800) >> 11;
    when->tm_min = (time & 0x7E0) >> 5;
    when->tm_sec = (time & 0x1F) * 2;
    return true;
}

bool RbFile::HashUniqueFileName(RbFile* result, FileSpec& where, const char* pszExtension) {
    static constexpr Reporter kReports("JXRESIDT\\RBFILE2.CPP");
    _timeb now;
    _ftime(&now);
    unsigned long seed = static_cast<unsigned long>(now.time) + now.millitm;
    FileSpec candidate(where);
    if (pszExtension) {
        kReports.CheckAt(361, std::strchr(pszExtension, '.'), "strchr(pszExtension, '.')");
        candidate.SetFileExt(pszExtension);
    }
    for (int tries = 0; tries < 32767; ++tries) {
        std::string digits = std::to_string(++seed);
        // The fastest-changing digit leads, so that neighbours in time differ early.
        std::reverse(digits.begin(), digits.end());
        digits.resize(std::min<std::size_t>(digits.size(), 8));
        candidate.SetSpecPart(digits.c_str(), keAsParts);
        if (!DiskDriver::FileExists(candidate, 0)) {
            *result = candidate;
            return true;
        }
    }
    return false;
}
