#pragma once

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/message_boxes.h"
#include "tests/support/scratch.h"

// A "codepage" of SYSTEM.INI that the library has yet to ask for, until destroyed.
class CodePage {
public:
    explicit CodePage(const char* codePage, const char* section = "boot.description") {
        WritePrivateProfileStringA(section, "codepage", codePage, "SYSTEM.INI");
        RbCountry::KillInstance();
    }
    ~CodePage() {
        WritePrivateProfileStringA(nullptr, nullptr, nullptr, "SYSTEM.INI");
        RbCountry::KillInstance();
    }

private:
    KeptFile mIni{WindowsDirectory() + "\\SYSTEM.INI"};
};

// The report dialogs of failed checks, which leave the count of reports as it was.
class Reports : public MessageBoxes {
public:
    ~Reports() { RbAssertSetCount(static_cast<int>(mCount)); }

private:
    unsigned int mCount = RbAssertGetCount();
};
