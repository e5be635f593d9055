// The ticker's window: what is seen of the inbox, and where.

#include <algorithm>
#include <shlwapi.h>

#include "programs/mailticker/resource.h"
#include "programs/mailticker/ticker_window.h"
#include "programs/mailticker/wording.h"

static constexpr std::size_t kRunningMessages = 20;

// What was read last is worth showing while it cannot be read again.
bool TickerWindow::ShowsList() const {
    switch (mReading.state) {
    case InboxState::Readable:
        return true;
    case InboxState::Damaged:
    case InboxState::Held:
    case InboxState::Denied:
        return mInbox.All().Count() > 0;
    default:
        return false;
    }
}

void TickerWindow::UpdateAll() {
    mList.Update();
    UpdateNotice();
    UpdateLine();
    UpdatePane();
    UpdateStatus();
    UpdateTray();
}

void TickerWindow::UpdateNotice() {
    Notice notice = NoticeOf(mReading);
    if (notice.heading.empty() && mUserChanged)
        notice = UserChangedNotice(mPath);
    if (mNotice.Show(notice, !ShowsList()))
        Layout();
}

void TickerWindow::UpdateLine() {
    std::vector<TickerLine::Item> items;
    if (ShowsList())
        for (const std::size_t message : mInbox.Newest(kRunningMessages))
            items.push_back(
                {OneLine(mInbox.All(), message), std::string(mInbox.All().Key(message))});
    mLine.SetItems(std::move(items));
}

void TickerWindow::UpdatePane() {
    const int message = mList.Selected();
    if (message >= 0)
        mShowsKeys = false;
    if (mShowsKeys)
        return mPane.Show(L"Keys", L"All of them are in the menus, too.", KeysText());
    if (message < 0)
        return mPane.Show(L"", L"Select a message to read it.", L"");
    const Messages& messages = mInbox.All();
    const std::wstring file = messages.File(message);
    std::wstring why;
    const auto text = ReadMessageText(FolderOf(mPath), file, why);
    const wchar_t* const dot = L"  \u00B7  ";
    const std::wstring line = messages.From(message) + dot + KindName(messages.Kind(message)) +
                              dot + file + dot +
                              (messages.IsProcessed(message) ? L"processed" : L"unprocessed");
    std::wstring shown = text ? text->fields : why;
    if (text && !text->fields.empty())
        shown += L"\r\n\r\n";
    if (text)
        shown += text->text;
    if (text && text->isCut)
        shown += L"\r\n\r\n(There is more of it: Enter opens it with another program.)";
    mPane.Show(TopicOf(messages, message), line, shown);
}

static int WidthOf(HDC dc, const std::wstring& text) {
    SIZE size = {};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx;
}

void TickerWindow::UpdateStatus() {
    const bool counts = ShowsList() || mReading.state == InboxState::Empty;
    const std::wstring before = counts ? CountLine(mInbox) + L", " : L"";
    std::wstring after = L", read " + TimeOfDay(mReadAt);
    if (mSchedule.IsPaused())
        after += L", " + PauseText();
    std::wstring path = mReading.path;
    if (!path.empty() && path.size() < MAX_PATH) {
        const WindowDc dc(mStatus);
        const Selected selected(dc, mLook.Text());
        RECT client;
        GetClientRect(mStatus, &client);
        const int room = client.right - WidthOf(dc, before + after) - mLook.Scaled(40);
        path.resize(MAX_PATH);
        PathCompactPathW(dc, path.data(), static_cast<UINT>(std::max(room, 0)));
        path.resize(lstrlenW(path.c_str()));
    }
    const std::wstring line = path.empty() ? L"No inbox" + after : before + path + after;
    SendMessageW(mStatus, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(line.c_str()));
}

void TickerWindow::UpdateTray() {
    const bool counts = ShowsList() || mReading.state == InboxState::Empty;
    const IconMood mood = mSchedule.IsPaused()           ? IconMood::Paused
                          : mInbox.New() && !mIsLookedAt ? IconMood::New
                                                         : IconMood::Quiet;
    std::wstring tip = counts ? Tooltip(mInbox) : NoticeOf(mReading).heading;
    if (mSchedule.IsPaused())
        tip = PauseText() + L"; " + tip;
    mTray.Show(counts ? mInbox.Unprocessed() : 0, mood, tip);
}

std::wstring TickerWindow::PauseText() const {
    const ReadSchedule::Time until = mSchedule.PausedUntil();
    if (until == ReadSchedule::kNever)
        return L"paused until the window is shown";
    const ReadSchedule::Time now = GetTickCount64();
    return L"paused until " + TimeOfDay(LocalTimeIn(until > now ? until - now : 0));
}

void TickerWindow::UpdateMenu(HMENU menu) const {
    const auto check = [&](UINT command, bool on) {
        CheckMenuItem(menu, command, on ? MF_CHECKED : MF_UNCHECKED);
    };
    check(ID_ONLY_UNPROCESSED, mSettings.onlyUnprocessed);
    check(ID_READING_PANE, mSettings.readingPane);
    check(ID_RUNNING_LINE, mSettings.runningLine);
    check(ID_START_WITH_WINDOWS, StartsWithWindows());
    CheckMenuRadioItem(menu, ID_SORT, ID_SORT + kColumns - 1,
                       ID_SORT + static_cast<int>(mSettings.sortColumn), MF_BYCOMMAND);
    EnableMenuItem(menu, ID_RESUME, mSchedule.IsPaused() ? MF_ENABLED : MF_GRAYED);
    EnableMenuItem(menu, ID_OPEN, mList.Selected() >= 0 ? MF_ENABLED : MF_GRAYED);
}

void TickerWindow::RunLine() {
    // Some people have told Windows that nothing shall move.
    BOOL moves = TRUE;
    SystemParametersInfoW(SPI_GETCLIENTAREAANIMATION, 0, &moves, 0);
    mLine.Run(moves && mSettings.runningLine && IsWindowVisible(Handle()) && !IsIconic(Handle()));
}

void TickerWindow::SetLook() {
    mLook = Look(Handle());
    for (const HWND window : {mFilter, mOnlyUnprocessed, mStatus})
        SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(mLook.Text()), TRUE);
    mLine.SetLook(mLook);
    mList.SetLook(mLook);
    mNotice.SetLook(mLook);
    mPane.SetLook(mLook);
    Layout();
}

static void Place(HWND window, int left, int top, int right, int bottom) {
    MoveWindow(window, left, top, std::max(right - left, 0), std::max(bottom - top, 0), TRUE);
}

static void SetVisible(HWND window, bool visible) {
    ShowWindow(window, visible ? SW_SHOWNA : SW_HIDE);
}

void TickerWindow::Layout() {
    RECT client, status;
    GetClientRect(Handle(), &client);
    SendMessageW(mStatus, WM_SIZE, 0, 0);
    GetWindowRect(mStatus, &status);
    const int width = client.right;
    int bottom = client.bottom - (status.bottom - status.top);
    int top = 0;
    const int margin = mLook.Scaled(6);
    const int row = mLook.LineHeight() + mLook.Scaled(9);

    SetVisible(mLine.Handle(), mSettings.runningLine);
    if (mSettings.runningLine) {
        Place(mLine.Handle(), 0, 0, width, row);
        top = row;
    }
    const int box = width - mLook.Scaled(150);
    const int filter = mLook.LineHeight() + mLook.Scaled(6);
    Place(mFilter, margin, top + margin + (row - filter) / 2, box,
          top + margin + (row + filter) / 2);
    Place(mOnlyUnprocessed, box + 2 * margin, top + margin, width - margin, top + margin + row);
    top += row + 2 * margin;

    const bool list = ShowsList();
    const bool pane = list && mSettings.readingPane;
    SetVisible(mNotice.Handle(), !mNotice.IsEmpty());
    SetVisible(mList.Handle(), list);
    mPane.SetVisible(pane);
    if (!list)
        return Place(mNotice.Handle(), 0, top, width, bottom);
    if (!mNotice.IsEmpty()) {
        const int height = mNotice.HeightFor(width);
        Place(mNotice.Handle(), 0, top, width, top + height);
        top += height;
    }
    if (pane) {
        const int height = std::clamp(mLook.Scaled(mSettings.paneHeight), mLook.Scaled(60),
                                      std::max(bottom - top - mLook.Scaled(80), mLook.Scaled(60)));
        mPane.SetPlace({0, bottom - height + mLook.Scaled(6), width, bottom});
        bottom -= height;
    }
    mSplitterTop = bottom;
    Place(mList.Handle(), 0, top, width, bottom);
}

void TickerWindow::SavePlace() {
    WINDOWPLACEMENT place = {};
    place.length = sizeof place;
    GetWindowPlacement(Handle(), &place);
    mSettings.window = place.rcNormalPosition;
    mSettings.maximized = place.showCmd == SW_SHOWMAXIMIZED || place.flags & WPF_RESTORETOMAXIMIZED;
    mList.SaveColumns(mSettings);
    mSettings.Save();
}

void TickerWindow::RestorePlace(bool inTray) {
    WINDOWPLACEMENT place = {};
    place.length = sizeof place;
    GetWindowPlacement(Handle(), &place);
    RECT& area = place.rcNormalPosition;
    // A screen may be gone.
    if (!IsRectEmpty(&mSettings.window) &&
        MonitorFromRect(&mSettings.window, MONITOR_DEFAULTTONULL)) {
        area = mSettings.window;
    } else {
        area.right = area.left + mLook.Scaled(720);
        area.bottom = area.top + mLook.Scaled(560);
    }
    place.flags = 0;
    place.showCmd = inTray                ? (mTray.IsThere() ? SW_HIDE : SW_SHOWMINNOACTIVE)
                    : mSettings.maximized ? SW_SHOWMAXIMIZED
                                          : SW_SHOWNORMAL;
    SetWindowPlacement(Handle(), &place);
    RunLine();
}
