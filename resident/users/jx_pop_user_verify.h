#pragma once

#include "resident/core/rb_string.h"

// Hands a POP user's verification data from one program to another through "JXUSER.DAT": four
// strings in plain text, in place of whatever the file held.
class JX_API JxPopUserVerify {
public:
    // The texts stay the caller's, and must outlive this object.
    JxPopUserVerify(const char* userName, const char* password, const char* ipAddress,
                    const char* dialupName);
    // For reading alone.
    JxPopUserVerify();
    virtual ~JxPopUserVerify();

    // Return 1, or 0 when the file cannot be opened or not all four values were written or read.
    int WriteDataToUserFile();
    int ReadDataFromUserFile(RBString& userName, RBString& password, RBString& ipAddress,
                             RBString& dialupName);

private:
    const char* mpszOutputUserName;
    const char* mpszOutputPassword;
    const char* mpszOutputIPAddress;
    const char* mpszOutputDialupName;
};
