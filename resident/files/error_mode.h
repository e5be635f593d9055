#pragma once

#include "resident/core/windows_api.h"

// While it lives, a missing floppy or network drive is an error and not a system dialog.
class CriticalErrorsFail {
public:
    CriticalErrorsFail() : mPrevious(SetErrorMode(SEM_FAILCRITICALERRORS)) {}
    CriticalErrorsFail(const CriticalErrorsFail&) = delete;
    CriticalErrorsFail& operator=(const CriticalErrorsFail&) = delete;
    ~CriticalErrorsFail() { SetErrorMode(mPrevious); }

private:
    UINT mPrevious;
};
