#pragma once

#include "resident/files/rb_file.h"

class JxTimer;

// A file that, while another process holds it, is tried again every 500 ms for up to 60 ticks of
// the process's timer (JxTimer), 30 seconds, with the thread's messages running meanwhile:
// callbacks may run inside an open. The ticks count over all opens of the object. A missing file
// fails at once, and so does a held one in a process without a timer, whose absence JxTimer
// reports.
class JX_API RbFileRetryOpen : public RbFile {
public:
    // Closed, with no name or that of the specification.
    RbFileRetryOpen();
    explicit RbFileRetryOpen(const char* spec);
    ~RbFileRetryOpen() override;

    // Opens, and waits as above.
    bool DoOpen(const char* name, int mode, int prot) override;

private:
    void WaitForFile();
    static bool TrySilentOpen(RbFileRetryOpen* file);
    static void RbFileRetryTimerProc(void* file);

    JxTimer* mpoTimer = nullptr;
    int mfOpened = 0;
    // Retry ticks so far, over all opens of this object.
    unsigned short mwTries = 0;
    const char* mpszName = nullptr;
    int miMode = 0;
    int miProt = 0;
};
