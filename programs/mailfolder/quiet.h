#pragma once

// While it lives, nothing of the library stops this thread by a message box or a dialog: reports go
// to the debugger output, and dialogs are refused before they show.
class Quiet {
public:
    Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
    ~Quiet();

private:
    void* mHook;
};
