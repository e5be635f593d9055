#pragma once

#include "resident/core/rb_string.h"
#include "resident/users/mail_formats.h"

struct FormatWords;

// The site's address defaults, kept as words in section "Address Defaults" of "defaults.ini".
// docs/formats/ini_files.md lists them.
class JX_API JxInstallableDefaults {
public:
    // Made on first use, and not set up; killed, it is made anew.
    static JxInstallableDefaults* GetInstance();
    static void KillInstance();

    // Takes "defaults.ini" of `targetDir` for the defaults file, a copy of `sourceDir`'s if it is
    // not there yet. Returns 1, whether or not a file now exists.
    int SetupInstallableDefaults(const char* sourceDir, const char* targetDir);

    // Before set-up: message format 2, enclosure encoding 7, platform 4. After it, the file's
    // words; one that is missing or not known gives 4, 7 and 4.
    enumMessageFormat GetDefaultMessageFormat();
    enumEnclosureEncode GetDefaultEnclosureEncoding();
    enumUserPlatformType GetDefaultPlatformType();

    // Need the set-up. A value without a word is reported, and written as an empty text.
    void SetDefaultMessageFormat(enumMessageFormat format);
    void SetDefaultEnclosureEncoding(enumEnclosureEncode encoding);
    void SetDefaultPlatformType(enumUserPlatformType platform);

private:
    struct Setting;

    JxInstallableDefaults();
    int Get(const Setting& setting) const;
    void Set(const Setting& setting, int value);

    static JxInstallableDefaults* mpoInstance;

    RBString mstrFile;
    int mfSetup = 0;
};
