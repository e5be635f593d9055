#include "programs/mailticker/own_window.h"

#include "programs/mailticker/resource.h"

LRESULT CALLBACK OwnWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const self = reinterpret_cast<OwnWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return self ? self->OnMessage(message, wParam, lParam)
                : DefWindowProcW(window, message, wParam, lParam);
}

OwnWindow::OwnWindow(const wchar_t* className, const wchar_t* title, DWORD style, DWORD exStyle,
                     HWND parent, const wchar_t* cursor) {
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = Procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hIcon = LoadIconW(windowClass.hInstance, MAKEINTRESOURCEW(IDI_TICKER));
    windowClass.hCursor = LoadCursorW(nullptr, cursor);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    windowClass.lpszClassName = className;
    RegisterClassExW(&windowClass);
    mWindow = CreateWindowExW(exStyle, className, title, style, CW_USEDEFAULT, CW_USEDEFAULT,
                              CW_USEDEFAULT, CW_USEDEFAULT, parent, nullptr, windowClass.hInstance,
                              nullptr);
}

void OwnWindow::Listen() {
    SetWindowLongPtrW(mWindow, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

OwnWindow::~OwnWindow() {
    // The derived class is gone already.
    SetWindowLongPtrW(mWindow, GWLP_USERDATA, 0);
    DestroyWindow(mWindow);
}

LRESULT PaintedWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint;
        RECT client;
        GetClientRect(Handle(), &client);
        Paint(BeginPaint(Handle(), &paint), client);
        EndPaint(Handle(), &paint);
        return 0;
    }
    case WM_ERASEBKGND:
        return 1;
    case WM_SIZE:
        InvalidateRect(Handle(), nullptr, FALSE);
        return 0;
    }
    return DefWindowProcW(Handle(), message, wParam, lParam);
}
