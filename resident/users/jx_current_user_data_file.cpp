#include "resident/users/jx_current_user_data_file.h"

#include <cstring>

#include "resident/files/rb_file.h"
#include "resident/runtime/check.h"

static constexpr Reporter kReports("JXRESIDT\\JXUSRFIL.CPP");

static const char kUserDataFile[] = "JXUSER.DAT";
static const char kLoggedUserFile[] = "JXLGDUSR.DAT";

static constexpr unsigned short kSpecSize = 260;

JxCurrentUserDataFile::JxCurrentUserDataFile() = default;

JxCurrentUserDataFile::~JxCurrentUserDataFile() {
    delete[] mpszFileSpec;
    // An open file stays open: closing it is the owner's duty.
    if (mpoRbFile && !mpoRbFile->isOpen())
        delete mpoRbFile;
}

unsigned int JxCurrentUserDataFile::GetFileSpec(const char* name, char* buffer,
                                                unsigned short size) {
    const unsigned int length = GetWindowsDirectoryA(buffer, size);
    if (length == 0 || length >= size)
        return 0;
    FileSpec spec(buffer, FileSpec::keAsPath);
    // A name that is none would leave the directory itself, which Close would then hide.
    *buffer = 0;
    if (spec.SetSpecPart(name, FileSpec::keAsParts) != FileSpec::keSpecOk)
        return 0;
    const char* const path = spec.FullFileSpec();
    if (std::strlen(path) >= size)
        return 0;
    std::strcpy(buffer, path);
    return length;
}

unsigned int JxCurrentUserDataFile::GetUserDataFileSpec(RBString& spec) {
    char path[kSpecSize];
    const unsigned int result = GetFileSpec(kUserDataFile, path, sizeof path);
    if (result)
        spec.puts(path);
    return result;
}

int JxCurrentUserDataFile::Open(const char* name, int mode) {
    kReports.Check(mpoRbFile == nullptr, "mpoRbFile == NULL");
    if (mpoRbFile && mpoRbFile->isOpen())
        mpoRbFile->close();
    delete mpoRbFile;
    delete[] mpszFileSpec;
    mpoRbFile = nullptr;
    mpszFileSpec = new char[kSpecSize];
    mpszFileSpec[0] = 0;
    if (!GetFileSpec(name, mpszFileSpec, kSpecSize))
        return false;
    mpoRbFile = new RbFile(mpszFileSpec);
    // A hidden file cannot be opened for writing anew.
    SetFileAttributesA(mpszFileSpec, FILE_ATTRIBUTE_ARCHIVE);
    return mpoRbFile->Open(mode);
}

int JxCurrentUserDataFile::OpenUserDataFile(int mode) { return Open(kUserDataFile, mode); }

int JxCurrentUserDataFile::OpenLoggedUserFile(int mode) { return Open(kLoggedUserFile, mode); }

void JxCurrentUserDataFile::Close() {
    kReports.Check(mpszFileSpec != nullptr, "mpszFileSpec != NULL");
    if (!mpszFileSpec)
        return;
    if (mpoRbFile && mpoRbFile->isOpen())
        mpoRbFile->close();
    const int iiResult = SetFileAttributesA(mpszFileSpec, FILE_ATTRIBUTE_HIDDEN) ? 0 : -1;
    delete[] mpszFileSpec;
    delete mpoRbFile;
    mpszFileSpec = nullptr;
    mpoRbFile = nullptr;
    kReports.Check(iiResult == 0, "iiResult == 0", "Can't set JxBackgnd file attributes");
}

void JxCurrentUserDataFile::CloseFailed() {
    // Nothing is reported: what could not be opened may not be changed either.
    if (mpoRbFile && SetFileAttributesA(mpszFileSpec, FILE_ATTRIBUTE_HIDDEN))
        Close();
}

std::fstream* JxCurrentUserDataFile::GetStream() {
    kReports.Check(mpszFileSpec, "mpszFileSpec");
    kReports.Check(mpoRbFile, "mpoRbFile");
    kReports.Check(mpoRbFile && mpoRbFile->isOpen(), "mpoRbFile->isOpen()");
    return mpoRbFile;
}
