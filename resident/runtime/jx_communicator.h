#pragma once

#include "resident/core/jx_api.h"

// The base for talking to another program's window with one private message. A derived class sets
// the two windows, and clears the waiting flag when the awaited reply arrives.
class JX_API JxCommunicator {
public:
    enum { keMessage = 1074 }; // WM_USER + 50

    JxCommunicator();
    JxCommunicator(const JxCommunicator&) = delete;
    JxCommunicator& operator=(const JxCommunicator&) = delete;
    virtual ~JxCommunicator();

    // The results of PostMessageA and SendMessageA.
    int PostReturnMessage(unsigned int wParam, long lParam) const;
    int SendMessageA(unsigned int wParam, long lParam) const;

    // Posts, then pumps both windows' messages until the waiting flag is cleared. Returns non-zero
    // when it was in time, 0 when posting failed or the time ran out. It never blocks: a partner
    // that does not answer costs a whole processor for the 30 seconds.
    int PostMessageAndWait(unsigned int wParam, long lParam) const;

    // The time, in whole seconds; 30. For all communicators of the process.
    static unsigned short mwNumSecsToWaitAfterPost;

protected:
    mutable unsigned int mwAwaitedMessage = 0; // the wParam posted last
    void* mhOwnWindow = nullptr;
    void* mhPartnerWindow = nullptr;
    mutable int mfWaiting = 0; // 1 from the posting on
};
