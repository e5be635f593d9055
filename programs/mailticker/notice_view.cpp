#include "programs/mailticker/notice_view.h"

NoticeView::NoticeView(HWND parent) : PaintedWindow(L"PostriderNotice", L"", WS_CHILD, 0, parent) {
    Listen();
}

bool NoticeView::Show(const Notice& notice, bool whole) {
    if (notice.heading == mNotice.heading && notice.detail == mNotice.detail && whole == mWhole)
        return false;
    mNotice = notice;
    mWhole = whole;
    SetWindowTextW(Handle(), (notice.heading + L"\r\n" + notice.detail).c_str());
    InvalidateRect(Handle(), nullptr, TRUE);
    return true;
}

int NoticeView::Draw(HDC dc, RECT area, UINT how) const {
    int height = 0;
    const auto draw = [&](const std::wstring& text, HFONT font) {
        const Selected selected(dc, font);
        RECT place = area;
        place.top += height;
        height += DrawTextW(dc, text.c_str(), -1, &place,
                            DT_WORDBREAK | DT_NOPREFIX | (mWhole ? DT_CENTER : 0) | how);
    };
    draw(mNotice.heading, mWhole ? mLook->Heading() : mLook->Bold());
    height += mLook->Scaled(mWhole ? 8 : 2);
    draw(mNotice.detail, mLook->Text());
    return height;
}

int NoticeView::HeightFor(int width) const {
    const int margin = mLook->Scaled(8);
    return Draw(WindowDc(Handle()), {margin, 0, width - margin, 0}, DT_CALCRECT) + 2 * margin;
}

void NoticeView::Paint(HDC dc, const RECT& client) {
    RECT area = client;
    FillRect(dc, &area, GetSysColorBrush(mWhole ? COLOR_WINDOW : COLOR_INFOBK));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(mWhole ? COLOR_WINDOWTEXT : COLOR_INFOTEXT));
    const int margin = mLook->Scaled(mWhole ? 40 : 8);
    InflateRect(&area, -margin, -mLook->Scaled(8));
    if (mWhole)
        area.top += std::max(0L, (area.bottom - area.top) / 2 - 2L * mLook->LineHeight());
    Draw(dc, area, 0);
}
