#include "resident/runtime/jx_communicator.h"

#include <ctime>

#include "resident/core/windows_api.h"

unsigned short JxCommunicator::mwNumSecsToWaitAfterPost = 30;

JxCommunicator::JxCommunicator() = default;

JxCommunicator::~JxCommunicator() = default;

int JxCommunicator::PostReturnMessage(unsigned int wParam, long lParam) const {
    return ::PostMessageA(static_cast<HWND>(mhPartnerWindow), keMessage, wParam, lParam);
}

int JxCommunicator::SendMessageA(unsigned int wParam, long lParam) const {
    return ::SendMessageA(static_cast<HWND>(mhPartnerWindow), keMessage, wParam, lParam);
}

int JxCommunicator::PostMessageAndWait(unsigned int wParam, long lParam) const {
    mwAwaitedMessage = wParam;
    mfWaiting = true;
    if (!PostReturnMessage(wParam, lParam))
        return false;
    const std::time_t start = std::time(nullptr);
    // Read afresh on every round: the handlers of the messages dispatched here clear it.
    const volatile int& waiting = mfWaiting;
    while (waiting) {
        MSG message;
        if (PeekMessageA(&message, static_cast<HWND>(mhPartnerWindow), 0, 0, PM_REMOVE) ||
            PeekMessageA(&message, static_cast<HWND>(mhOwnWindow), 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        if (std::time(nullptr) - start >= mwNumSecsToWaitAfterPost)
            break;
    }
    return !waiting;
}
