#pragma once

#include <string>

#include "programs/mailticker/windows_api.h"

// Posts a message to a window when something changes in a folder: once, until it is armed again.
// Holds the folder, shared with everybody, and no file in it.
class FolderWatch {
public:
    FolderWatch(HWND window, UINT message) : mWindow(window), mMessage(message) {}
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;
    ~FolderWatch() { Disarm(); }

    // Tells of the next change in the folder that has this name now; what happened before is not
    // told.
    void Arm(const std::wstring& folder);
    void Disarm();
    // False where the file system tells of no changes, or not of everybody's: look now and then.
    bool IsReliable() const { return mReliable; }

private:
    static void CALLBACK OnChange(void* self, BOOLEAN);

    HWND mWindow;
    UINT mMessage;
    bool mReliable = false;
    HANDLE mChange = INVALID_HANDLE_VALUE;
    HANDLE mWait = nullptr;
};
