#pragma once

#include "resident/core/jx_api.h"

// Which character set the machine's Windows speaks: asked once, from SYSTEM.INI.
class JX_API RbCountry {
public:
    // Made on first use; killed, it is made, and asks, anew.
    static RbCountry* Instance();
    static void KillInstance();

    // 0 on a double-byte (Japanese) system, where "codepage" of "boot.description" or of
    // "boot_description" is 932; else 1. The answer is kept.
    int GetCountry();

private:
    RbCountry();

    static RbCountry* mpoInstance;

    int miCountry = -1; // -1 until asked
};
