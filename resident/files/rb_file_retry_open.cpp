#include "resident/files/rb_file_retry_open.h"

#include <vector>

#include "resident/files/error_mode.h"
#include "resident/files/oem_name.h"
#include "resident/runtime/jx_timer.h"
#include "resident/runtime/rb_yield.h"

static constexpr long kRetryInterval = 500;
static constexpr unsigned short kMaxTries = 60;

RbFileRetryOpen::RbFileRetryOpen() = default;

RbFileRetryOpen::RbFileRetryOpen(const char* spec) : RbFile(spec) {}

RbFileRetryOpen::~RbFileRetryOpen() = default;

// The files whose opens are waiting, the innermost last: the messages that a wait lets run may open
// another held file. One registered callback serves them all, so that taking it off the timer never
// takes another file's.
static std::vector<RbFileRetryOpen*> waiting;

bool RbFileRetryOpen::DoOpen(const char* name, int mode, int prot) {
    // A copy: `name` is usually this object's scratch text, which the attempts rebuild.
    const RBString kept(name);
    mpszName = kept.Text();
    miMode = mode;
    miProt = prot;
    mfOpened = TrySilentOpen(this);
    if (!mfOpened && Exists()) {
        mpoTimer = JxTimer::GetInstance();
        if (mpoTimer && mpoTimer->IsGood() &&
            (!waiting.empty() ||
             mpoTimer->RegisterCallback(RbFileRetryTimerProc, kRetryInterval, this))) {
            waiting.push_back(this);
            WaitForFile();
            waiting.pop_back();
            if (waiting.empty())
                mpoTimer->UnRegisterCallback(RbFileRetryTimerProc);
        }
    }
    mpszName = nullptr;
    return mfOpened;
}

void RbFileRetryOpen::WaitForFile() {
    while (!mfOpened && mwTries < kMaxTries) {
        // No timer ticks any more once the program is told to quit.
        if (RbYield())
            break;
        // Sleeps until the next message, of which the timer's tick is one.
        if (!mfOpened)
            MsgWaitForMultipleObjects(0, nullptr, FALSE, kRetryInterval, QS_ALLINPUT);
    }
}

bool RbFileRetryOpen::TrySilentOpen(RbFileRetryOpen* file) {
    const CriticalErrorsFail guard;
    ConvertToOem(file->mpszName, szTranslatedString);
    file->open(szTranslatedString, file->miMode, file->miProt);
    return file->rdstate() == std::ios::goodbit;
}

void RbFileRetryOpen::RbFileRetryTimerProc(void*) {
    for (RbFileRetryOpen* file : waiting) {
        // Two ticks may come before the wait looks: an open file is not opened again.
        if (!file->mfOpened)
            file->mfOpened = TrySilentOpen(file);
        ++file->mwTries;
    }
}
