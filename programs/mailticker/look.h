#pragma once

#include "programs/mailticker/owners.h"

// The system's fonts and sizes for a window's screen.
class Look {
public:
    // For the screen that a window is on; the main one without a window.
    explicit Look(HWND window = nullptr);

    HFONT Text() const { return mText.get(); }
    HFONT Bold() const { return mBold.get(); }
    HFONT Heading() const { return mHeading.get(); }
    // The height of a line of text.
    int LineHeight() const { return mLineHeight; }

    // A length for 96 dots an inch in the screen's dots, and back.
    int Scaled(int length) const { return MulDiv(length, mDpi, 96); }
    int Unscaled(int length) const { return MulDiv(length, 96, mDpi); }
    int Dpi() const { return mDpi; }

private:
    int mDpi;
    int mLineHeight;
    Owned<HFONT> mText;
    Owned<HFONT> mBold;
    Owned<HFONT> mHeading;
};
