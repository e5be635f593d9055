#pragma once

#include <functional>
#include <string>
#include <vector>

#include "programs/mailticker/look.h"
#include "programs/mailticker/own_window.h"

// One line of text that runs from right to left, round and round, and stops under the mouse. Its
// window text is the whole line. Has a timer while it runs, and none when it does not.
class TickerLine : public PaintedWindow {
public:
    struct Item {
        std::wstring text;
        std::string key; // handed to `onPick`
    };

    TickerLine(HWND parent, std::function<void(const std::string& key)> onPick);

    void SetLook(const Look& look);
    // Runs on from where it is when the items are the same.
    void SetItems(std::vector<Item> items);
    // Stands still while nobody can see it, or wants it to run.
    void Run(bool run);

private:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void MakeStrip();
    void Paint(HDC dc, const RECT& client) override;
    void Step();
    void UpdateTimer();
    void OnMouseMove();
    void Pick(int x);

    std::function<void(const std::string&)> mOnPick;
    const Look* mLook = nullptr;
    std::vector<Item> mItems;
    std::vector<int> mEnds; // of the items on the strip
    Owned<HDC> mStrip;      // the whole line, drawn once
    Owned<HBITMAP> mBitmap;
    int mStripWidth = 0;
    int mStripHeight = 0;
    double mOffset = 0; // of the strip's beginning from the window's left side, to the left
    unsigned long long mLastStep = 0;
    bool mRun = false;
    bool mUnderMouse = false;
    bool mTimer = false;
};
