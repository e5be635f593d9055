#include "programs/mailticker/ticker_window.h"

#include <algorithm>
#include <cstring>
#include <windowsx.h>

#include "programs/mailticker/resource.h"
#include "programs/mailticker/wording.h"

static constexpr ReadSchedule::Time kHalfHour = 30 * 60 * 1000;
// Between the window's going inactive for a click on the tray and that click.
static constexpr unsigned long long kClickTime = 500;

static HWND Child(HWND parent, const wchar_t* className, const wchar_t* text, DWORD style,
                  DWORD exStyle, int id) {
    return CreateWindowExW(exStyle, className, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0,
                           parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                           GetModuleHandleW(nullptr), nullptr);
}

static HMENU Menu(int id) { return LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id)); }

TickerWindow::TickerWindow(const std::wstring& path, bool inTray)
    : OwnWindow(kClassName, L"Postrider Ticker", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                WS_EX_CONTROLPARENT, nullptr),
      mSettings(Settings::Load()), mLook(Handle()), mReader(path), mTrayMenu(Menu(IDR_TRAY_MENU)),
      mKeys(LoadAcceleratorsW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_KEYS))),
      mTaskbarCreated(RegisterWindowMessageW(L"TaskbarCreated")), mFolder(Handle(), kFolderChanged),
      mUsers(Handle(), kUsersChanged), mTray(Handle(), kTrayEvent),
      mLine(Handle(),
            [this](const std::string& key) {
                mList.Select(mInbox.RowOf(key));
                SetFocus(mList.Handle());
            }),
      mFilter(Child(Handle(), WC_EDITW, L"", WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE,
                    ID_FILTER_BOX)),
      mOnlyUnprocessed(Child(Handle(), WC_BUTTONW, L"Only &unprocessed",
                             WS_TABSTOP | BS_AUTOCHECKBOX, 0, ID_ONLY_UNPROCESSED)),
      mList(Handle(), ID_LIST, mInbox, mSettings), mNotice(Handle()), mPane(Handle()),
      mStatus(Child(Handle(), STATUSCLASSNAMEW, L"", SBARS_SIZEGRIP, 0, ID_STATUS)) {
    SetMenu(Handle(), Menu(IDR_MENU)); // the window's from now on
    Edit_SetCueBannerText(mFilter, L"Filter (Ctrl+F)");
    mInbox.OnlyUnprocessed(mSettings.onlyUnprocessed);
    mInbox.Sort(mSettings.sortColumn, mSettings.descending);
    mList.ShowSorting(mSettings.sortColumn, mSettings.descending);
    Button_SetCheck(mOnlyUnprocessed, mSettings.onlyUnprocessed);
    mTray.Add();
    Listen();
    SetLook();
    mFocus = mList.Handle();
    Read(true);
    RestorePlace(inTray);
}

TickerWindow::~TickerWindow() { SavePlace(); }

bool TickerWindow::TakesKey(MSG& message) {
    return (message.hwnd == Handle() || IsChild(Handle(), message.hwnd)) &&
           (TranslateAcceleratorW(Handle(), mKeys, &message) ||
            IsDialogMessageW(Handle(), &message));
}

// --- Messages.

bool TickerWindow::OnCopyData(const COPYDATASTRUCT& data) {
    if (data.dwData != kShowFile)
        return false;
    const std::wstring path(static_cast<const wchar_t*>(data.lpData),
                            data.cbData / sizeof(wchar_t));
    if (!path.empty())
        OpenInbox(path);
    Show();
    return true;
}

LRESULT TickerWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case kFolderChanged:
        mInside = true;
        // Being told of every single write would delay whoever writes.
        mFolder.Disarm();
        mSchedule.Changed(GetTickCount64());
        SetReadTimer();
        return 0;
    case kUsersChanged:
        mUsers.Disarm();
        mSchedule.Changed(GetTickCount64());
        SetReadTimer();
        return 0;
    case kTrayEvent:
        OnTray(LOWORD(lParam));
        return 0;
    case WM_TIMER:
        OnTimer();
        return 0;
    case WM_COPYDATA:
        return OnCopyData(*reinterpret_cast<COPYDATASTRUCT*>(lParam));
    case WM_COMMAND:
        OnCommand(LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_NOTIFY:
        return OnNotify(lParam);
    case WM_INITMENUPOPUP:
        UpdateMenu(reinterpret_cast<HMENU>(wParam));
        return 0;
    case WM_ACTIVATE:
        mIsActive = LOWORD(wParam) != WA_INACTIVE;
        if (!mIsActive && GetFocus())
            mFocus = GetFocus();
        UpdateLookedAt();
        return 0;
    case WM_SETFOCUS:
        SetFocus(mFocus);
        return 0;
    case WM_SIZE:
        Layout();
        UpdateStatus();
        return 0;
    case WM_WINDOWPOSCHANGED:
        DefWindowProcW(Handle(), message, wParam, lParam);
        RunLine();
        UpdateLookedAt();
        return 0;
    case WM_CLOSE:
        Hide();
        return 0;
    case WM_ENDSESSION:
        if (wParam)
            SavePlace();
        return 0;
    case WM_DPICHANGED: {
        const RECT& area = *reinterpret_cast<RECT*>(lParam);
        MoveWindow(Handle(), area.left, area.top, area.right - area.left, area.bottom - area.top,
                   TRUE);
        SetLook();
        return 0;
    }
    case WM_SETTINGCHANGE:
    case WM_SYSCOLORCHANGE:
        SendMessageW(mList.Handle(), message, wParam, lParam);
        SetLook();
        return 0;
    case WM_CTLCOLORSTATIC:
        // Text that is only read looks like text, not like a part of the window.
        if (reinterpret_cast<HWND>(lParam) == mPane.TextHandle()) {
            SetTextColor(reinterpret_cast<HDC>(wParam), GetSysColor(COLOR_WINDOWTEXT));
            SetBkColor(reinterpret_cast<HDC>(wParam), GetSysColor(COLOR_WINDOW));
            return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
        }
        break;
    case WM_GETMINMAXINFO:
        reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {mLook.Scaled(360),
                                                                 mLook.Scaled(320)};
        return 0;
    case WM_SETCURSOR:
        if (reinterpret_cast<HWND>(wParam) == Handle() && LOWORD(lParam) == HTCLIENT &&
            IsOnSplitter()) {
            SetCursor(LoadCursorW(nullptr, IDC_SIZENS));
            return TRUE;
        }
        break;
    case WM_LBUTTONDOWN:
    case WM_MOUSEMOVE:
    case WM_LBUTTONUP:
    case WM_CAPTURECHANGED:
        OnMouse(message, static_cast<short>(HIWORD(lParam)));
        return 0;
    }
    if (message == mTaskbarCreated) {
        mTray.Add();
        UpdateTray();
    }
    return DefWindowProcW(Handle(), message, wParam, lParam);
}

void TickerWindow::OnCommand(int command, int code) {
    switch (command) {
    case ID_FILTER_BOX:
        if (code == EN_CHANGE)
            FilterChanged();
        return;
    case ID_READ_NOW:
        mUserChanged = false;
        return Read(true);
    case ID_OPEN:
        return OpenSelected();
    case ID_ENTER:
        return Enter();
    case ID_HIDE:
        return Hide();
    case ID_ESCAPE:
        return Escape();
    case ID_EXIT:
        PostQuitMessage(0);
        return;
    case ID_SHOW:
        return Show();
    case ID_FILTER:
        SetFocus(mFilter);
        Edit_SetSel(mFilter, 0, -1);
        return;
    case ID_ONLY_UNPROCESSED:
        return ShowOnlyUnprocessed(!mSettings.onlyUnprocessed);
    case ID_READING_PANE:
        mSettings.readingPane = !mSettings.readingPane;
        return Layout();
    case ID_RUNNING_LINE:
        mSettings.runningLine = !mSettings.runningLine;
        RunLine();
        return Layout();
    case ID_PANE_LARGER:
        return MovePane(mSettings.paneHeight + 20);
    case ID_PANE_SMALLER:
        return MovePane(mSettings.paneHeight - 20);
    case ID_PAUSE_HALF_HOUR:
        return Pause(kHalfHour);
    case ID_PAUSE_HOUR:
        return Pause(2 * kHalfHour);
    case ID_PAUSE_UNTIL_SHOWN:
        return Pause(ReadSchedule::kNever);
    case ID_RESUME:
        return Resume();
    case ID_START_WITH_WINDOWS:
        return StartWithWindows(!StartsWithWindows());
    case ID_KEYS:
        return ShowKeys();
    }
    if (command >= ID_SORT && command < ID_SORT + kColumns)
        SortBy(static_cast<Column>(command - ID_SORT));
}

LRESULT TickerWindow::OnNotify(LPARAM lParam) {
    // Some of what follows a header is packed, and lies anywhere.
    NMHDR header;
    std::memcpy(&header, reinterpret_cast<void*>(lParam), sizeof header);
    if (header.idFrom != ID_LIST)
        return 0;
    switch (header.code) {
    case LVN_COLUMNCLICK:
        SortBy(static_cast<Column>(reinterpret_cast<NMLISTVIEW*>(lParam)->iSubItem));
        return 0;
    case LVN_ITEMCHANGED:
        if (mList.ItemChanged(*reinterpret_cast<NMLISTVIEW*>(lParam)))
            UpdatePane();
        return 0;
    case NM_DBLCLK:
        OpenSelected();
        return 0;
    }
    return mList.OnNotify(header.code, lParam);
}

// Hidden windows are active too, behind the tray's menu.
void TickerWindow::UpdateLookedAt() {
    const bool lookedAt = mIsActive && IsWindowVisible(Handle()) && !IsIconic(Handle());
    if (lookedAt == mIsLookedAt)
        return;
    mIsLookedAt = lookedAt;
    if (lookedAt) {
        mTray.Tell({});
    } else {
        mInbox.ForgetNew();
        mUserChanged = false;
        mNotLookedAtSince = GetTickCount64();
        InvalidateRect(mList.Handle(), nullptr, FALSE);
    }
    UpdateNotice();
    UpdateTray();
}

void TickerWindow::OnTray(UINT event) {
    switch (event) {
    case NIN_SELECT:
    case NIN_KEYSELECT: {
        // The click itself took the focus away.
        const bool wasInFront = mIsLookedAt || GetTickCount64() - mNotLookedAtSince < kClickTime;
        return IsWindowVisible(Handle()) && !IsIconic(Handle()) && wasInFront ? Hide() : Show();
    }
    case WM_CONTEXTMENU:
        return ShowTrayMenu();
    case NIN_BALLOONUSERCLICK:
        Show();
        if (!mInbox.Arrived().empty())
            mList.Select(mInbox.RowOf(mInbox.All().Key(mInbox.Arrived().back())));
        return;
    }
}

bool TickerWindow::IsOnSplitter() const {
    POINT at;
    GetCursorPos(&at);
    ScreenToClient(Handle(), &at);
    return ShowsList() && mSettings.readingPane && at.y >= mSplitterTop &&
           at.y < mSplitterTop + mLook.Scaled(7);
}

void TickerWindow::OnMouse(UINT message, int y) {
    RECT client;
    GetClientRect(Handle(), &client);
    if (message == WM_LBUTTONDOWN && IsOnSplitter()) {
        mSplitterGrip = y - mSplitterTop;
        SetCapture(Handle());
    } else if (message == WM_MOUSEMOVE && mSplitterGrip >= 0) {
        RECT status;
        GetWindowRect(mStatus, &status);
        MovePane(mLook.Unscaled(client.bottom - (status.bottom - status.top) - y + mSplitterGrip));
    } else if (mSplitterGrip >= 0 && message != WM_MOUSEMOVE) {
        mSplitterGrip = -1;
        ReleaseCapture();
    }
}

// --- What the user does.

void TickerWindow::Show() {
    ShowWindow(Handle(), IsIconic(Handle()) ? SW_RESTORE : SW_SHOW);
    SetForegroundWindow(Handle());
    if (mSchedule.PausedUntil() == ReadSchedule::kNever)
        Resume();
}

void TickerWindow::Hide() {
    // Without a tray there would be no way back.
    ShowWindow(Handle(), mTray.IsThere() ? SW_HIDE : SW_MINIMIZE);
    SavePlace();
}

void TickerWindow::Enter() {
    if (GetFocus() != mFilter)
        return OpenSelected();
    SetFocus(mList.Handle());
    if (mList.Selected() < 0)
        mList.Select(0);
}

void TickerWindow::Escape() {
    if (GetFocus() == mFilter && GetWindowTextLengthW(mFilter) > 0)
        SetWindowTextW(mFilter, L"");
    else
        Hide();
}

void TickerWindow::FilterChanged() {
    std::wstring typed(GetWindowTextLengthW(mFilter) + 1, L'\0');
    typed.resize(GetWindowTextW(mFilter, typed.data(), static_cast<int>(typed.size())));
    mInbox.Filter(typed);
    RowsChanged();
}

void TickerWindow::ShowOnlyUnprocessed(bool only) {
    mSettings.onlyUnprocessed = only;
    Button_SetCheck(mOnlyUnprocessed, only);
    mInbox.OnlyUnprocessed(only);
    RowsChanged();
}

// By the same column again in the other direction.
void TickerWindow::SortBy(Column column) {
    mSettings.descending = column == mSettings.sortColumn && !mSettings.descending;
    mSettings.sortColumn = column;
    mList.ShowSorting(column, mSettings.descending);
    mInbox.Sort(column, mSettings.descending);
    RowsChanged();
}

void TickerWindow::RowsChanged() {
    mList.Update();
    UpdatePane();
    UpdateStatus();
}

void TickerWindow::OpenSelected() {
    const int message = mList.Selected();
    if (message < 0)
        return;
    std::wstring why;
    const std::wstring copy = mCopies.Make(FolderOf(mPath), mInbox.All().File(message), why);
    const auto open = [&](const wchar_t* verb) {
        return reinterpret_cast<INT_PTR>(ShellExecuteW(Handle(), verb, copy.c_str(), nullptr,
                                                       nullptr, SW_SHOWNORMAL)) > 32;
    };
    if (copy.empty())
        mPane.Show(L"The message cannot be opened.", L"", why);
    else if (!open(L"open") && !open(L"openas"))
        mPane.Show(L"No program opened the message.", L"", copy);
}

void TickerWindow::ShowKeys() {
    mShowsKeys = true;
    mSettings.readingPane = true;
    mList.Select(-1);
    UpdatePane();
    Layout();
}

void TickerWindow::ShowTrayMenu() {
    const HMENU menu = GetSubMenu(mTrayMenu.get(), 0);
    SetMenuDefaultItem(menu, ID_SHOW, FALSE);
    POINT at;
    GetCursorPos(&at);
    // Otherwise the menu would stay when the user clicks elsewhere.
    SetForegroundWindow(Handle());
    TrackPopupMenu(menu, TPM_RIGHTBUTTON, at.x, at.y, 0, Handle(), nullptr);
    PostMessageW(Handle(), WM_NULL, 0, 0);
}

void TickerWindow::MovePane(int height) {
    mSettings.paneHeight = std::max(height, 60);
    Layout();
}
