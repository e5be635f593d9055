#pragma once

#include <string>

#include "programs/mailticker/inbox.h"
#include "programs/mailticker/look.h"
#include "programs/mailticker/settings.h"

// The list of messages: a list view that asks for what it shows, so that it holds nothing of the
// inbox and takes any number of messages.
class MessageList {
public:
    MessageList(HWND parent, int id, const Inbox& inbox, const Settings& settings);

    HWND Handle() const { return mWindow; }
    void SetLook(const Look& look);
    void SaveColumns(Settings& settings) const;
    void ShowSorting(Column column, bool descending);

    // Shows the inbox's rows as they are now, with the same message selected, if it is still there,
    // and as many rows above the first one seen.
    void Update();
    // The selected message, or -1.
    int Selected() const;
    // Nothing for -1.
    void Select(int row);
    // After the user selected: takes over which.
    void SelectionChanged();

    // Answers the list view's questions: its text, its look, its search by typing.
    LRESULT OnNotify(UINT code, LPARAM lParam);

private:
    void FillText(LVITEMW& item) const;
    LRESULT Draw(NMLVCUSTOMDRAW& draw) const;
    int Find(const NMLVFINDITEMW& find) const;

    HWND mWindow;
    const Inbox& mInbox;
    const Look* mLook = nullptr;
    Owned<HIMAGELIST> mRowHeight; // empty pictures, as high as a row is
    std::string mSelectedKey;
    int mColumnsOf = 96; // dots an inch that the columns have their widths for
};
