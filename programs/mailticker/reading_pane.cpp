#include "programs/mailticker/reading_pane.h"

// Text that is only read leaves Tab, Enter and Esc to the window.
static LRESULT CALLBACK TextProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR id, DWORD_PTR) {
    if (message == WM_NCDESTROY)
        RemoveWindowSubclass(window, TextProcedure, id);
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    return message == WM_GETDLGCODE ? result & ~(DLGC_WANTALLKEYS | DLGC_WANTTAB | DLGC_HASSETSEL)
                                    : result;
}

static HWND Child(HWND parent, const wchar_t* className, DWORD style, DWORD exStyle) {
    return CreateWindowExW(exStyle, className, L"", WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0,
                           parent, nullptr, GetModuleHandleW(nullptr), nullptr);
}

ReadingPane::ReadingPane(HWND parent)
    : mTopic(Child(parent, WC_STATICW, SS_LEFTNOWORDWRAP | SS_NOPREFIX | SS_ENDELLIPSIS, 0)),
      mLine(Child(parent, WC_STATICW, SS_LEFTNOWORDWRAP | SS_NOPREFIX | SS_ENDELLIPSIS, 0)),
      mText(Child(parent, WC_EDITW,
                  WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL,
                  WS_EX_CLIENTEDGE)) {
    SendMessageW(mText, EM_SETLIMITTEXT, 0, 0);
    SetWindowSubclass(mText, TextProcedure, 1, 0);
}

ReadingPane::~ReadingPane() { RemoveWindowSubclass(mText, TextProcedure, 1); }

void ReadingPane::SetLook(const Look& look) {
    mLook = &look;
    SendMessageW(mTopic, WM_SETFONT, reinterpret_cast<WPARAM>(look.Heading()), TRUE);
    SendMessageW(mLine, WM_SETFONT, reinterpret_cast<WPARAM>(look.Text()), TRUE);
    SendMessageW(mText, WM_SETFONT, reinterpret_cast<WPARAM>(look.Text()), TRUE);
    SendMessageW(mText, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN,
                 MAKELPARAM(look.Scaled(6), look.Scaled(6)));
}

void ReadingPane::SetPlace(const RECT& area) {
    const int margin = mLook->Scaled(8);
    const int width = area.right - area.left;
    const int topic = mLook->LineHeight() * 5 / 4 + mLook->Scaled(2);
    const int line = mLook->LineHeight() + mLook->Scaled(6);
    const int above = topic + line + mLook->Scaled(2);
    MoveWindow(mTopic, area.left + margin, area.top, width - 2 * margin, topic, TRUE);
    MoveWindow(mLine, area.left + margin, area.top + topic, width - 2 * margin, line, TRUE);
    MoveWindow(mText, area.left, area.top + above, width, area.bottom - area.top - above, TRUE);
}

void ReadingPane::SetVisible(bool visible) {
    for (const HWND window : {mTopic, mLine, mText})
        ShowWindow(window, visible ? SW_SHOWNA : SW_HIDE);
}

void ReadingPane::Show(const std::wstring& topic, const std::wstring& line,
                       const std::wstring& text) {
    const std::wstring all = topic + L'\0' + line + L'\0' + text;
    if (all == mShown)
        return;
    mShown = all;
    SetWindowTextW(mTopic, topic.c_str());
    SetWindowTextW(mLine, line.c_str());
    SetWindowTextW(mText, text.c_str());
}
