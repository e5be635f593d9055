#include "programs/mailticker/ticker_line.h"

#include <cmath>
#include <windowsx.h>

static const std::wstring kBetween = L"     \u2022     ";
static constexpr UINT kStepTime = 30;      // milliseconds
static constexpr double kDotsASecond = 45; // at 96 dots an inch
// Some ten screens: what is longer is cut.
static constexpr int kWidestStrip = 30000;

TickerLine::TickerLine(HWND parent, std::function<void(const std::string& key)> onPick)
    : PaintedWindow(L"PostriderTickerLine", L"", WS_CHILD | WS_VISIBLE, 0, parent, IDC_HAND),
      mOnPick(std::move(onPick)) {
    Listen();
}

void TickerLine::SetLook(const Look& look) {
    mLook = &look;
    mStrip.reset();
    InvalidateRect(Handle(), nullptr, FALSE);
}

void TickerLine::SetItems(std::vector<Item> items) {
    std::wstring line;
    for (const Item& item : items)
        line += (line.empty() ? L"" : kBetween) + item.text;
    const bool same = items.size() == mItems.size() &&
                      std::equal(items.begin(), items.end(), mItems.begin(),
                                 [](const Item& a, const Item& b) { return a.key == b.key; });
    mItems = std::move(items);
    if (same)
        return;
    SetWindowTextW(Handle(), line.c_str());
    mStrip.reset();
    mOffset = 0;
    InvalidateRect(Handle(), nullptr, FALSE);
    UpdateTimer();
}

void TickerLine::Run(bool run) {
    mRun = run;
    UpdateTimer();
}

void TickerLine::UpdateTimer() {
    const bool runs = mRun && !mUnderMouse && !mItems.empty();
    if (runs == mTimer)
        return;
    mTimer = runs;
    mLastStep = GetTickCount64();
    if (runs)
        SetTimer(Handle(), 1, kStepTime, nullptr);
    else
        KillTimer(Handle(), 1);
}

// Draws the line into a bitmap, to be copied at every step.
void TickerLine::MakeStrip() {
    const WindowDc window(Handle());
    mStrip.reset(CreateCompatibleDC(window));
    SelectObject(mStrip.get(), mLook->Text());
    const auto widthOf = [&](const std::wstring& text) {
        SIZE size = {};
        GetTextExtentPoint32W(mStrip.get(), text.c_str(), static_cast<int>(text.size()), &size);
        return static_cast<int>(size.cx);
    };
    mEnds.clear();
    mStripWidth = 0;
    const int between = widthOf(kBetween);
    for (const Item& item : mItems)
        mEnds.push_back(mStripWidth =
                            std::min(mStripWidth + widthOf(item.text) + between, kWidestStrip));
    RECT client;
    GetClientRect(Handle(), &client);
    mStripHeight = client.bottom;
    mBitmap.reset(
        CreateCompatibleBitmap(window, std::max(mStripWidth, 1), std::max(mStripHeight, 1)));
    SelectObject(mStrip.get(), mBitmap.get());
    RECT all = {0, 0, mStripWidth, mStripHeight};
    FillRect(mStrip.get(), &all, GetSysColorBrush(COLOR_WINDOW));
    SetBkMode(mStrip.get(), TRANSPARENT);
    SetTextColor(mStrip.get(), GetSysColor(COLOR_WINDOWTEXT));
    for (std::size_t i = 0; i < mItems.size(); ++i) {
        RECT place = {i ? mEnds[i - 1] : 0, 0, mEnds[i], mStripHeight};
        DrawTextW(mStrip.get(), (mItems[i].text + kBetween).c_str(), -1, &place,
                  DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    }
}

void TickerLine::Paint(HDC dc, const RECT& client) {
    if (mLook && !mItems.empty() && (!mStrip || mStripHeight != client.bottom))
        MakeStrip();
    int x = 0;
    if (!mItems.empty() && mStripWidth > 0)
        for (x = -static_cast<int>(mOffset); x < client.right; x += mStripWidth)
            BitBlt(dc, x, 0, mStripWidth, mStripHeight, mStrip.get(), 0, 0, SRCCOPY);
    RECT rest = {x, 0, client.right, client.bottom};
    FillRect(dc, &rest, GetSysColorBrush(COLOR_WINDOW));
}

void TickerLine::Step() {
    const unsigned long long now = GetTickCount64();
    if (mStripWidth > 0 && mLook)
        mOffset = std::fmod(mOffset + kDotsASecond * mLook->Dpi() / 96 *
                                          static_cast<double>(now - mLastStep) / 1000,
                            mStripWidth);
    mLastStep = now;
    InvalidateRect(Handle(), nullptr, FALSE);
}

void TickerLine::OnMouseMove() {
    if (mUnderMouse)
        return;
    TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, Handle(), 0};
    mUnderMouse = TrackMouseEvent(&track) != 0;
    UpdateTimer();
}

void TickerLine::Pick(int x) {
    if (mItems.empty() || mStripWidth <= 0)
        return;
    const int at = (x + static_cast<int>(mOffset)) % mStripWidth;
    for (std::size_t i = 0; i < mItems.size(); ++i)
        if (at < mEnds[i])
            return mOnPick(mItems[i].key);
}

LRESULT TickerLine::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_TIMER:
        Step();
        return 0;
    case WM_MOUSEMOVE:
        OnMouseMove();
        return 0;
    case WM_MOUSELEAVE:
        mUnderMouse = false;
        UpdateTimer();
        return 0;
    case WM_LBUTTONUP:
        Pick(GET_X_LPARAM(lParam));
        return 0;
    }
    return PaintedWindow::OnMessage(message, wParam, lParam);
}
