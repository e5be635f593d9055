#include "resident/files/rb_file_retry_open.h"

#include "resident/files/error_mode.h"
#include "resident/runtime/jx_timer.h"
#include "resident/runtime/rb_yield.h"

static constexpr long kRetryInterval = 500;
static constexpr unsigned short kMaxTries = 60;

RbFileRetryOpen::RbFileRetryOpen()
    : mpoTimer(nullptr), mfOpened(0), mwTries(0), mpszName(nullptr), miMode(0), miProt(0) {}

RbFileRetryOpen::RbFileRetryOpen(const char* spec)
    : RbFile(spec), mpoTimer(nullptr), mfOpened(0), mwTries(0), mpszName(nullptr), miMode(0),
      miProt(0) {}

RbFileRetryOpen::~RbFileRetryOpen() = default;

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
            mpoTimer->RegisterCallback(RbFileRetryTimerProc, kRetryInterval, this)) {
            while (!mfOpened && mwTries < kMaxTries) {
                // No timer ticks any more once the program is told to quit.
                if (RbYield())
                    break;
                // Nothing happens before the next message.
                if (!mfOpened)
                    MsgWaitForMultipleObjects(0, nullptr, FALSE, kRetryInterval, QS_ALLINPUT);
            }
            mpoTimer->UnRegisterCallback(RbFileRetryTimerProc);
        }
    }
    mpszName = nullptr;
    return mfOpened;
}

bool RbFileRetryOpen::TrySilentOpen(RbFileRetryOpen* file) {
    const CriticalErrorsFail guard;
    ConvertToOem(file->mpszName, szTranslatedString);
    file->open(szTranslatedString, file->miMode, file->miProt);
    return file->rdstate() == std::ios::goodbit;
}

void RbFileRetryOpen::RbFileRetryTimerProc(void* file) {
    auto* const retried = static_cast<RbFileRetryOpen*>(file);
    retried->mfOpened = TrySilentOpen(retried);
    ++retried->mwTries;
}
