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
    // Takes over a change that the list view told of. Returns whether it is one of the selection.
    bool ItemChanged(const NMLISTVIEW& change);

    // Answers the list view's questions: its text, its look, its search by typing.
    LRESULT OnNotify(UINT code, LPARAM lParam);

private:
    int SelectedRow() const;
    void SetSelected(int row, bool selected);
    void FillText(LVITEMW& item) const;
    LRESULT Draw(NMLVCUSTOMDRAW& draw) const;
    int Find(const NMLVFINDITEMW& find) const;

    HWND mWindow;
    const Inbox& mInbox;
    const Look* mLook = nullptr;
    Owned<HIMAGELIST> mRowHeight; // empty pictures, as high as a row is
    std::string mSelectedKey;
    int mSelectedRow = -1; // as it was seen last
    int mColumnsOf = 96;   // dots an inch that the columns have their widths for
};
