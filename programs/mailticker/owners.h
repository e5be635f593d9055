#pragma once

#include <memory>
#include <type_traits>

#include "programs/mailticker/windows_api.h"

// Owners of what Windows hands out: each frees it as its kind wants.

struct Freed {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
    void operator()(HKEY key) const { RegCloseKey(key); }
    void operator()(HICON icon) const { DestroyIcon(icon); }
    void operator()(HMENU menu) const { DestroyMenu(menu); }
    void operator()(HFONT font) const { DeleteObject(font); }
    void operator()(HBITMAP bitmap) const { DeleteObject(bitmap); }
    void operator()(HDC memory) const { DeleteDC(memory); }
    void operator()(HIMAGELIST images) const { ImageList_Destroy(images); }
};

template <class Handle>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Freed>;

// As CreateFileW and its like return it, whose failure is no null.
inline Owned<HANDLE> OwnedFile(HANDLE file) {
    return Owned<HANDLE>(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

// A window's own drawing surface while this lives.
class WindowDc {
public:
    explicit WindowDc(HWND window) : mWindow(window), mDc(GetDC(window)) {}
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    ~WindowDc() { ReleaseDC(mWindow, mDc); }

    operator HDC() const { return mDc; }

private:
    HWND mWindow;
    HDC mDc;
};

// An object in a drawing surface in place of the one that was there.
class Selected {
public:
    Selected(HDC dc, HGDIOBJ object) : mDc(dc), mPrevious(SelectObject(dc, object)) {}
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;
    ~Selected() { SelectObject(mDc, mPrevious); }

private:
    HDC mDc;
    HGDIOBJ mPrevious;
};
