#pragma once

#include <string>

#include "programs/mailticker/messages.h"
#include "programs/mailticker/windows_api.h"

// What the ticker remembers, in HKEY_CURRENT_USER\Software\Postrider\Ticker. Sizes are those of 96
// dots an inch.
struct Settings {
    RECT window = {}; // on the desktop, in its own dots; empty before the first time
    bool maximized = false;
    int paneHeight = 190;
    int columnWidths[kColumns] = {150, 265, 90, 120, 50};
    int columnOrder[kColumns] = {0, 1, 2, 3, 4}; // columns from the left to the right
    Column sortColumn = Column::Slot;
    bool descending = false;
    bool onlyUnprocessed = false;
    bool runningLine = true;
    bool readingPane = true;

    static Settings Load();
    void Save() const;
};

// Whether the ticker starts with Windows, in the tray.
bool StartsWithWindows();
void StartWithWindows(bool start);
