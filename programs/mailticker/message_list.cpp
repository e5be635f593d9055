#include "programs/mailticker/message_list.h"

#include <algorithm>

#include "programs/mailticker/wording.h"

static const wchar_t* const kTitles[kColumns] = {L"From", L"Topic", L"Kind", L"File", L"No."};

MessageList::MessageList(HWND parent, int id, const Inbox& inbox, const Settings& settings)
    : mWindow(CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"Messages",
                              WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA |
                                  LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_SHAREIMAGELISTS,
                              0, 0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                              GetModuleHandleW(nullptr), nullptr)),
      mInbox(inbox) {
    ListView_SetExtendedListViewStyle(mWindow, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER |
                                                   LVS_EX_HEADERDRAGDROP | LVS_EX_LABELTIP);
    for (int i = 0; i < kColumns; ++i) {
        LVCOLUMNW column = {};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
        column.fmt = i == static_cast<int>(Column::Slot) ? LVCFMT_RIGHT : LVCFMT_LEFT;
        column.cx = settings.columnWidths[i];
        column.pszText = const_cast<wchar_t*>(kTitles[i]);
        ListView_InsertColumn(mWindow, i, &column);
    }
    ListView_SetColumnOrderArray(mWindow, kColumns, settings.columnOrder);
}

void MessageList::SetLook(const Look& look) {
    mLook = &look;
    SendMessageW(mWindow, WM_SETFONT, reinterpret_cast<WPARAM>(look.Text()), TRUE);
    Owned<HIMAGELIST> height(
        ImageList_Create(1, look.LineHeight() + look.Scaled(6), ILC_COLOR, 1, 1));
    ListView_SetImageList(mWindow, height.get(), LVSIL_SMALL);
    mRowHeight = std::move(height);
    for (int i = 0; i < kColumns; ++i)
        ListView_SetColumnWidth(
            mWindow, i, MulDiv(ListView_GetColumnWidth(mWindow, i), look.Dpi(), mColumnsOf));
    mColumnsOf = look.Dpi();
}

void MessageList::SaveColumns(Settings& settings) const {
    for (int i = 0; i < kColumns; ++i)
        settings.columnWidths[i] = MulDiv(ListView_GetColumnWidth(mWindow, i), 96, mColumnsOf);
    ListView_GetColumnOrderArray(mWindow, kColumns, settings.columnOrder);
}

void MessageList::ShowSorting(Column column, bool descending) {
    const HWND header = ListView_GetHeader(mWindow);
    for (int i = 0; i < kColumns; ++i) {
        HDITEMW item = {};
        item.mask = HDI_FORMAT;
        Header_GetItem(header, i, &item);
        item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
        if (i == static_cast<int>(column))
            item.fmt |= descending ? HDF_SORTDOWN : HDF_SORTUP;
        Header_SetItem(header, i, &item);
    }
}

void MessageList::Update() {
    const std::string key = mSelectedKey;
    const auto& rows = mInbox.Rows();
    if (const int count = static_cast<int>(rows.size()); count != ListView_GetItemCount(mWindow))
        ListView_SetItemCountEx(mWindow, count, LVSICF_NOSCROLL);
    const int before = SelectedRow();
    const bool same = before >= 0 && static_cast<std::size_t>(before) < rows.size() &&
                      mInbox.All().Key(rows[before]) == key;
    const int row = key.empty() ? -1 : same ? before : mInbox.RowOf(key);
    if (row != before) {
        SetSelected(before, false);
        SetSelected(row, true);
    }
    mSelectedKey = row < 0 ? std::string() : key;
    InvalidateRect(mWindow, nullptr, FALSE);
}

// A list view looks through all rows for the selected one: the one that is known is tried first.
int MessageList::SelectedRow() const {
    if (ListView_GetSelectedCount(mWindow) == 0)
        return -1;
    return mSelectedRow >= 0 && ListView_GetItemState(mWindow, mSelectedRow, LVIS_SELECTED)
               ? mSelectedRow
               : ListView_GetNextItem(mWindow, -1, LVNI_SELECTED);
}

void MessageList::SetSelected(int row, bool selected) {
    constexpr UINT kStates = LVIS_SELECTED | LVIS_FOCUSED;
    if (row >= 0)
        ListView_SetItemState(mWindow, row, selected ? kStates : 0, kStates);
}

int MessageList::Selected() const {
    const int row = SelectedRow();
    return row >= 0 && row < static_cast<int>(mInbox.Rows().size())
               ? static_cast<int>(mInbox.Rows()[row])
               : -1;
}

void MessageList::Select(int row) {
    SetSelected(SelectedRow(), false);
    if (row < 0 || row >= static_cast<int>(mInbox.Rows().size()))
        return;
    SetSelected(row, true);
    ListView_EnsureVisible(mWindow, row, FALSE);
}

bool MessageList::ItemChanged(const NMLISTVIEW& change) {
    if (!((change.uOldState ^ change.uNewState) & LVIS_SELECTED))
        return false;
    if (change.uNewState & LVIS_SELECTED)
        mSelectedRow = change.iItem;
    const int message = Selected();
    mSelectedKey = message < 0 ? std::string() : std::string(mInbox.All().Key(message));
    return true;
}

void MessageList::FillText(LVITEMW& item) const {
    if (!(item.mask & LVIF_TEXT) || item.cchTextMax <= 0 ||
        static_cast<std::size_t>(item.iItem) >= mInbox.Rows().size())
        return;
    const std::size_t message = mInbox.Rows()[item.iItem];
    const Column column = static_cast<Column>(item.iSubItem);
    const std::wstring text = column == Column::Topic ? TopicOf(mInbox.All(), message)
                                                      : mInbox.All().Text(message, column);
    lstrcpynW(item.pszText, text.c_str(), item.cchTextMax);
}

// Unprocessed messages are bold, and new ones coloured besides.
LRESULT MessageList::Draw(NMLVCUSTOMDRAW& draw) const {
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT)
        return CDRF_NOTIFYITEMDRAW;
    const std::size_t row = draw.nmcd.dwItemSpec;
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT || row >= mInbox.Rows().size())
        return CDRF_DODEFAULT;
    const std::size_t message = mInbox.Rows()[row];
    if (mInbox.IsNew(message) && !ListView_GetItemState(mWindow, row, LVIS_SELECTED))
        draw.clrText = GetSysColor(COLOR_HOTLIGHT);
    SelectObject(draw.nmcd.hdc, mInbox.All().IsProcessed(message) ? mLook->Text() : mLook->Bold());
    return CDRF_NEWFONT;
}

int MessageList::Find(const NMLVFINDITEMW& find) const {
    return find.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)
               ? mInbox.RowBeginning(find.lvfi.psz, std::max(find.iStart, 0))
               : -1;
}

LRESULT MessageList::OnNotify(UINT code, LPARAM lParam) {
    switch (code) {
    case LVN_GETDISPINFOW:
        FillText(reinterpret_cast<NMLVDISPINFOW*>(lParam)->item);
        return 0;
    case LVN_ODFINDITEMW:
        return Find(*reinterpret_cast<NMLVFINDITEMW*>(lParam));
    case NM_CUSTOMDRAW:
        return Draw(*reinterpret_cast<NMLVCUSTOMDRAW*>(lParam));
    }
    return 0;
}
