#pragma once

#include <fstream>

#include "resident/core/rb_string.h"

class RbFile;

// The two files of the Windows directory that tell the product's programs who the current user is:
// "JXUSER.DAT", with the user's background data (JxBackgndData), and "JXLGDUSR.DAT", with the
// logged user (JxLoggedMailUser). They are hidden while closed, and normal while open.
class JX_API JxCurrentUserDataFile {
public:
    JxCurrentUserDataFile();
    JxCurrentUserDataFile(const JxCurrentUserDataFile&) = delete;
    JxCurrentUserDataFile& operator=(const JxCurrentUserDataFile&) = delete;
    // Does not close an open file.
    virtual ~JxCurrentUserDataFile();

    // The full path of `name` in the Windows directory. Returns 0, with an undefined buffer, when
    // there is no such directory or the path does not fit.
    static unsigned int GetFileSpec(const char* name, char* buffer, unsigned short size);
    // The same for "JXUSER.DAT".
    static unsigned int GetUserDataFileSpec(RBString& spec);
    static unsigned int GetUserDataFileSpec(RBString* spec) { return GetUserDataFileSpec(*spec); }

    // Open with a mode of open_mode.h; return non-zero on success. After a failed open the object
    // still holds the file, and must be closed; the file must then exist.
    int Open(const char* name, int mode);
    int OpenUserDataFile(int mode);
    int OpenLoggedUserFile(int mode);
    void Close();
    // Closes after a failed open, when the file may be missing: hides one that is there.
    void CloseFailed();

    // The open file's stream, owned by this object; null when there is no file.
    std::fstream* GetStream();

private:
    char* mpszFileSpec;
    RbFile* mpoRbFile;
};
