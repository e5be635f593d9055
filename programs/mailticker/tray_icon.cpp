#include "programs/mailticker/tray_icon.h"

TrayIcon::TrayIcon(HWND window, UINT message) {
    mData.cbSize = sizeof mData;
    mData.hWnd = window;
    mData.uID = 1;
    mData.uCallbackMessage = message;
}

TrayIcon::~TrayIcon() { Shell_NotifyIconW(NIM_DELETE, &mData); }

void TrayIcon::Add() {
    mTip.clear();
    mData.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    mIsThere = Shell_NotifyIconW(NIM_ADD, &mData);
    mData.uVersion = NOTIFYICON_VERSION;
    Shell_NotifyIconW(NIM_SETVERSION, &mData);
}

void TrayIcon::Show(std::size_t number, IconMood mood, const std::wstring& tip) {
    if (number == mNumber && mood == mMood && tip == mTip)
        return;
    mNumber = number;
    mMood = mood;
    mTip = tip;
    Owned<HICON> icon = NumberIcon(number, mood, GetSystemMetrics(SM_CXSMICON));
    mData.hIcon = icon.get();
    lstrcpynW(mData.szTip, tip.c_str(), ARRAYSIZE(mData.szTip));
    mData.uFlags = NIF_ICON | NIF_TIP;
    Shell_NotifyIconW(NIM_MODIFY, &mData);
    // The one before was in use until now.
    mIcon = std::move(icon);
}

void TrayIcon::Tell(const Notice& notice) {
    mData.uFlags = NIF_INFO;
    mData.dwInfoFlags = NIIF_INFO | NIIF_RESPECT_QUIET_TIME;
    lstrcpynW(mData.szInfoTitle, notice.heading.c_str(), ARRAYSIZE(mData.szInfoTitle));
    lstrcpynW(mData.szInfo, notice.detail.c_str(), ARRAYSIZE(mData.szInfo));
    Shell_NotifyIconW(NIM_MODIFY, &mData);
}
