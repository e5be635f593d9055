#include "programs/mailticker/folder_watch.h"

static constexpr DWORD kChanges =
    FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE;

void CALLBACK FolderWatch::OnChange(void* self, BOOLEAN) {
    const auto* const watch = static_cast<FolderWatch*>(self);
    PostMessageW(watch->mWindow, watch->mMessage, 0, 0);
}

// A folder on another machine may change without a word.
static bool IsRemote(const std::wstring& folder) {
    wchar_t volume[MAX_PATH + 1];
    return !GetVolumePathNameW(folder.c_str(), volume, MAX_PATH + 1) ||
           GetDriveTypeW(volume) == DRIVE_REMOTE;
}

void FolderWatch::Arm(const std::wstring& folder) {
    Disarm();
    mChange = FindFirstChangeNotificationW(folder.c_str(), FALSE, kChanges);
    mReliable = mChange != INVALID_HANDLE_VALUE &&
                RegisterWaitForSingleObject(&mWait, mChange, OnChange, this, INFINITE,
                                            WT_EXECUTEONLYONCE | WT_EXECUTEINWAITTHREAD) &&
                !IsRemote(folder);
}

void FolderWatch::Disarm() {
    if (mWait)
        UnregisterWaitEx(mWait, INVALID_HANDLE_VALUE);
    if (mChange != INVALID_HANDLE_VALUE)
        FindCloseChangeNotification(mChange);
    mWait = nullptr;
    mChange = INVALID_HANDLE_VALUE;
    mReliable = false;
}
