// The ticker's window: when the inbox is read, and what becomes of it.

#include <utility>

#include "programs/mailticker/ticker_window.h"
#include "programs/mailticker/wording.h"

static std::wstring WindowsDirectory() {
    wchar_t path[MAX_PATH + 1];
    return std::wstring(path, GetWindowsDirectoryW(path, MAX_PATH + 1));
}

void TickerWindow::OpenInbox(const std::wstring& path) {
    mReader = InboxReader(path);
    mUsers.Disarm();
    Read(true);
}

// Looks whether it is another inbox now, and into it when it is, or when something changed inside.
void TickerWindow::Read(bool inside) {
    mSchedule.Began();
    if (mReader.IsOfCurrentUser())
        mUsers.Arm(WindowsDirectory());
    const std::wstring path = mReader.Path();
    if (inside || path != mReading.path)
        ReadFolder(path);
    const ReadSchedule::Time now = GetTickCount64();
    mInside = false;
    if (mDoubted != mReading.state || mReading.state == InboxState::Held) {
        mInside = true;
        mSchedule.Again(now);
    } else if (!mFolder.IsReliable() && !path.empty()) {
        mInside = true;
        mSchedule.Later(now);
    }
    SetReadTimer();
}

void TickerWindow::ReadFolder(const std::wstring& path) {
    // What changes from here on is told.
    mFolder.Arm(FolderOf(path));
    const ReadSchedule::Time began = GetTickCount64();
    Reading reading = InboxReader::Read(path);
    if (!IsToBeSeenAgain(reading))
        Take(std::move(reading));
    mSchedule.Ended(began, GetTickCount64());
}

// Bad news of an inbox that was well may come of a program that is just rewriting it: the second
// look decides.
bool TickerWindow::IsToBeSeenAgain(const Reading& reading) {
    const InboxState before = std::exchange(mDoubted, reading.state);
    const bool isBad = reading.state != InboxState::Readable && reading.state != InboxState::Empty;
    return mHasRead && isBad && reading.state != mReading.state && reading.state != before;
}

void TickerWindow::Take(Reading reading) {
    if (!reading.path.empty() && reading.path != mPath) {
        mUserChanged = !mPath.empty() && mReader.IsOfCurrentUser();
        mPath = reading.path;
        mInbox.Forget();
    }
    const bool hasMessages = reading.HasMessages();
    if (hasMessages)
        mInbox.Take(std::exchange(reading.messages, {}), GetTickCount64());
    mReading = std::move(reading);
    mHasRead = true;
    GetLocalTime(&mReadAt);
    UpdateAll();
    if (hasMessages && !mInbox.Arrived().empty() && !mIsLookedAt)
        mTray.Tell(ArrivalNotice(mInbox));
}

void TickerWindow::Pause(ReadSchedule::Time milliseconds) {
    mSchedule.Pause(milliseconds == ReadSchedule::kNever ? milliseconds
                                                         : GetTickCount64() + milliseconds);
    UpdateStatus();
    UpdateTray();
    SetReadTimer();
}

void TickerWindow::Resume() {
    mSchedule.Resume();
    Read(true);
    UpdateStatus();
    UpdateTray();
}

void TickerWindow::SetReadTimer() {
    const ReadSchedule::Time due = mSchedule.Due();
    const ReadSchedule::Time now = GetTickCount64();
    if (due == ReadSchedule::kNever)
        KillTimer(Handle(), kReadTimer);
    else
        SetTimer(Handle(), kReadTimer, static_cast<UINT>(due > now ? due - now : 0), nullptr);
}

void TickerWindow::OnTimer() {
    KillTimer(Handle(), kReadTimer);
    if (GetTickCount64() < mSchedule.Due())
        SetReadTimer();
    else if (mSchedule.IsPaused())
        Resume();
    else
        Read(mInside);
}
