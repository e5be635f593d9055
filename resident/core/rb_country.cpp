#include "resident/core/rb_country.h"

#include <initializer_list>

#include "resident/core/windows_api.h"

RbCountry* RbCountry::mpoInstance;

RbCountry::RbCountry() = default;

RbCountry* RbCountry::Instance() {
    if (!mpoInstance)
        mpoInstance = new RbCountry;
    return mpoInstance;
}

void RbCountry::KillInstance() {
    delete mpoInstance;
    mpoInstance = nullptr;
}

int RbCountry::GetCountry() {
    if (miCountry == -1) {
        miCountry = 1;
        for (const char* section : {"boot.description", "boot_description"})
            if (GetPrivateProfileIntA(section, "codepage", 437, "SYSTEM.INI") == 932)
                miCountry = 0;
    }
    return miCountry;
}
