#pragma once

#include <string>

#include "programs/mailticker/folder_watch.h"
#include "programs/mailticker/inbox.h"
#include "programs/mailticker/inbox_reader.h"
#include "programs/mailticker/look.h"
#include "programs/mailticker/message_file.h"
#include "programs/mailticker/message_list.h"
#include "programs/mailticker/notice_view.h"
#include "programs/mailticker/own_window.h"
#include "programs/mailticker/read_schedule.h"
#include "programs/mailticker/reading_pane.h"
#include "programs/mailticker/settings.h"
#include "programs/mailticker/ticker_line.h"
#include "programs/mailticker/tray_icon.h"

// The ticker: its window and its icon in the tray, an inbox that is read whenever it changes, and
// what the user does with them.
class TickerWindow : public OwnWindow {
public:
    static constexpr wchar_t kClassName[] = L"PostriderTicker";
    // What a second start hands over by WM_COPYDATA: the D file to show, in UTF-16.
    static constexpr ULONG_PTR kShowFile = 1;

    // The current user's inbox without a path.
    TickerWindow(const std::wstring& path, bool inTray);
    ~TickerWindow() override;

    // Whether a message is one of the window's keys, and taken care of.
    bool TakesKey(MSG& message);

private:
    static constexpr UINT kFolderChanged = WM_APP + 1;
    static constexpr UINT kUsersChanged = WM_APP + 2;
    static constexpr UINT kTrayEvent = WM_APP + 3;
    static constexpr UINT_PTR kReadTimer = 1;

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnCommand(int command, int code);
    LRESULT OnNotify(LPARAM lParam);
    void OnTray(UINT event);
    void UpdateLookedAt();
    void OnTimer();
    void OnMouse(UINT message, int y);
    bool IsOnSplitter() const;
    bool OnCopyData(const COPYDATASTRUCT& data);

    // What the user does.
    void Show();
    void Hide();
    void Enter();
    void Escape();
    void OpenSelected();
    void FilterChanged();
    void ShowOnlyUnprocessed(bool only);
    void SortBy(Column column);
    void RowsChanged();
    void ShowKeys();
    void ShowTrayMenu();
    void MovePane(int height);

    // Reading: ticker_reading.cpp.
    void OpenInbox(const std::wstring& path);
    void Read(bool inside);
    void ReadFolder(const std::wstring& path);
    bool IsToBeSeenAgain(const Reading& reading);
    void Take(Reading reading);
    void Pause(ReadSchedule::Time milliseconds);
    void Resume();
    void SetReadTimer();

    // What is seen: ticker_view.cpp.
    bool ShowsList() const;
    void UpdateAll();
    void UpdateNotice();
    void UpdateStatus();
    void UpdateTray();
    void UpdateLine();
    void UpdatePane();
    void UpdateMenu(HMENU menu) const;
    std::wstring PauseText() const;
    void RunLine();
    void SetLook();
    void Layout();
    void SavePlace();
    void RestorePlace(bool inTray);

    Settings mSettings;
    Look mLook;
    InboxReader mReader;
    Inbox mInbox;
    Reading mReading; // the last one, without its messages
    ReadSchedule mSchedule;
    MessageCopies mCopies;
    Owned<HMENU> mTrayMenu;
    HACCEL mKeys; // a resource, which is nobody's to free

    std::wstring mPath; // of the inbox shown; stays when there is no user for a while
    bool mHasRead = false;
    bool mInside = false; // the next reading looks into the file, whoever is logged in
    bool mUserChanged = false;
    InboxState mDoubted = InboxState::Readable; // as it was seen last, shown or not
    SYSTEMTIME mReadAt = {};
    bool mIsActive = false;
    bool mIsLookedAt = false; // active, and to be seen
    unsigned long long mNotLookedAtSince = 0;
    bool mShowsKeys = false;
    int mSplitterTop = 0;
    int mSplitterGrip = -1; // how far under the pane's upper side it is held; -1 when it is not
    HWND mFocus = nullptr;  // the control to come back to
    const UINT mTaskbarCreated;

    FolderWatch mFolder; // the inbox's
    FolderWatch mUsers;  // the Windows directory, which tells who is logged in
    TrayIcon mTray;
    TickerLine mLine;
    HWND mFilter;
    HWND mOnlyUnprocessed;
    MessageList mList;
    NoticeView mNotice;
    ReadingPane mPane;
    HWND mStatus;
};
