#pragma once

#include <fstream>

#include "resident/core/rb_string.h"

class RbFile;

// The two files of the Windows directory that tell the product's programs who the current user is:
// "JXUSER.DAT", with the user's background data (JxBackgndData), and "JXLGDUSR.DAT", with the
// logged user (JxLoggedMailUser). They are hidden while closed, and normal while open. For names
// outside ASCII, of the Windows directory here, see file_spec.h.
//
//     JxCurrentUserDataFile file;
//     if (file.OpenUserDataFile(keOpenRead)) {
//         *file.GetStream() >> data;
//         file.Close();
//     } else {
//         file.CloseFailed();
//     }
class JX_API JxCurrentUserDataFile {
public:
    JxCurrentUserDataFile(); // closed
    JxCurrentUserDataFile(const JxCurrentUserDataFile&) = delete;
    JxCurrentUserDataFile& operator=(const JxCurrentUserDataFile&) = delete;
    // Does not close an open file.
    virtual ~JxCurrentUserDataFile();

    // Puts the full path of `name` in the Windows directory into a buffer of `size` bytes. Returns
    // non-zero, or 0 with an undefined buffer when there is no such directory, `name` is none, or
    // path and closing zero do not fit.
    static unsigned int GetFileSpec(const char* name, char* buffer, unsigned short size);
    // The same for "JXUSER.DAT", a path of at most 259 characters.
    static unsigned int GetUserDataFileSpec(RBString& spec);
    static unsigned int GetUserDataFileSpec(RBString* spec) { return GetUserDataFileSpec(*spec); }

    // Open with a mode of open_mode.h; return non-zero on success. An object that is open is
    // reported, and closed first. After a failed open the object still holds the file, and must be
    // closed.
    int Open(const char* name, int mode);
    int OpenUserDataFile(int mode);
    int OpenLoggedUserFile(int mode);
    // Closes and hides the file. Reported: an object that is not open, and a file that cannot be
    // hidden, as one that is not there.
    void Close();
    // Closes after a failed open: hides a file that is there and can be hidden; reports nothing.
    void CloseFailed();

    // The open file's stream, owned by this object; null when there is no file.
    std::fstream* GetStream();

private:
    char* mpszFileSpec = nullptr;
    RbFile* mpoRbFile = nullptr;
};
