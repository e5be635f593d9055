#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "programs/mailticker/resource.h"
#include "programs/mailticker/windows_api.h"
#include "tests/support/helper_process.h"

// mailticker.exe in a process of its own, looked at from outside: what its window's parts hold.
class TickerProcess {
public:
    // Returns when it has read its inbox.
    explicit TickerProcess(const std::string& arguments);
    ~TickerProcess();

    HWND Window() const { return mWindow; }
    void Command(int command) { SendMessageW(mWindow, WM_COMMAND, command, 0); }
    void Tray(UINT event);
    void Filter(const std::wstring& typed);
    void SelectRow(int row);
    // Keys held down in this order, as the keyboard sends them.
    void Press(std::initializer_list<unsigned char> keys) const;
    // What has the keyboard's focus: the number of a control, or of a part of one.
    int Focus() const;
    // As if it came onto a screen of so many dots an inch, which gives it that place.
    void MoveToScreen(int dpi, const RECT& place);
    // Ends it as Exit in its menu does; returns its exit code.
    unsigned long Exit();

    int Rows() const;
    std::wstring Cell(int row, int column) const;
    // One column, from the first row to the last.
    std::vector<std::wstring> Column(int column) const;
    std::wstring Status() const { return TextOf(GetDlgItem(mWindow, ID_STATUS)); }
    // The heading of the notice; empty when none is shown.
    std::wstring Notice() const;
    std::wstring RunningLine() const;
    std::wstring PaneText() const;
    // The tooltip and the balloons of its icon in the tray.
    std::wstring TrayTexts() const;

    HANDLE Process() const { return mProcess; }
    DWORD KernelHandles() const;
    unsigned int GdiObjects() const;
    unsigned int Windows() const;
    // Processor time used so far, in milliseconds.
    unsigned int ProcessorTime() const;

    static std::wstring TextOf(HWND window);

private:
    HWND Child(const wchar_t* className) const;

    std::unique_ptr<HelperProcess> mStarted;
    HWND mWindow = nullptr;
    HANDLE mProcess = nullptr;
};

// Waits until it is so; how long that took, in milliseconds, or 60,000 when it did not come so.
unsigned int Until(const std::function<bool()>& so, unsigned int most = 20000);
