#pragma once

#include <string>

#include "programs/mailticker/number_icon.h"
#include "programs/mailticker/wording.h"

// The icon beside the clock. It tells `window` by `message` what the user does with it: NIN_SELECT,
// NIN_KEYSELECT, WM_CONTEXTMENU, NIN_BALLOONUSERCLICK in lParam.
class TrayIcon {
public:
    TrayIcon(HWND window, UINT message);
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;
    ~TrayIcon();

    // Puts it there: at the start, and whenever the taskbar comes up anew.
    void Add();
    // False where there is no tray.
    bool IsThere() const { return mIsThere; }
    void Show(std::size_t number, IconMood mood, const std::wstring& tip);
    // A balloon beside it; none any more for an empty notice.
    void Tell(const Notice& notice);

private:
    NOTIFYICONDATAW mData = {};
    Owned<HICON> mIcon;
    std::size_t mNumber = 0;
    IconMood mMood = IconMood::Quiet;
    std::wstring mTip;
    bool mIsThere = false;
};
