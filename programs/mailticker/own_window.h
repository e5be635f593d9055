#pragma once

#include "programs/mailticker/windows_api.h"

// A window of a class of our own, which is destroyed with its object.
class OwnWindow {
public:
    OwnWindow(const OwnWindow&) = delete;
    OwnWindow& operator=(const OwnWindow&) = delete;
    virtual ~OwnWindow();

    HWND Handle() const { return mWindow; }

protected:
    // Creates it, with Windows' own behaviour until Listen.
    OwnWindow(const wchar_t* className, const wchar_t* title, DWORD style, DWORD exStyle,
              HWND parent, const wchar_t* cursor = IDC_ARROW);
    // From now on messages come to OnMessage: when all that it needs is there.
    void Listen();
    // Takes a message; DefWindowProcW is for those it leaves alone.
    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND mWindow;
};

// One that draws all of itself, whenever it has to and when it gets another size.
class PaintedWindow : public OwnWindow {
protected:
    using OwnWindow::OwnWindow;

    virtual void Paint(HDC dc, const RECT& client) = 0;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
};
