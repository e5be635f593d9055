#pragma once

#include <string>

#include "programs/mailticker/look.h"

// Shows one message: its topic, its sender, and its text, which can be selected and copied.
class ReadingPane {
public:
    explicit ReadingPane(HWND parent);
    ReadingPane(const ReadingPane&) = delete;
    ReadingPane& operator=(const ReadingPane&) = delete;
    ~ReadingPane();

    HWND TextHandle() const { return mText; }
    void SetLook(const Look& look);
    void SetPlace(const RECT& area);
    void SetVisible(bool visible);
    // Leaves the text where it was scrolled to when nothing is different.
    void Show(const std::wstring& topic, const std::wstring& line, const std::wstring& text);

private:
    const Look* mLook = nullptr;
    HWND mTopic, mLine, mText;
    std::wstring mShown;
};
