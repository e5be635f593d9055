#pragma once

#include "programs/mailticker/look.h"
#include "programs/mailticker/own_window.h"
#include "programs/mailticker/wording.h"

// Says how things stand: in a band above the list, or in place of a list that there is none of. Its
// window text is the heading, and the detail on a second line.
class NoticeView : public PaintedWindow {
public:
    explicit NoticeView(HWND parent);

    void SetLook(const Look& look) { mLook = &look; }
    // `whole` in place of the list. Returns whether it is another notice than before.
    bool Show(const Notice& notice, bool whole);
    bool IsEmpty() const { return mNotice.heading.empty(); }
    bool IsWhole() const { return mWhole; }
    // What it needs as a band.
    int HeightFor(int width) const;

private:
    void Paint(HDC dc, const RECT& client) override;
    // Draws, or only measures, both texts from `area`'s top on; returns the height.
    int Draw(HDC dc, RECT area, UINT how) const;

    const Look* mLook = nullptr;
    Notice mNotice;
    bool mWhole = false;
};
