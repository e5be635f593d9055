#pragma once

// Numbers that the program and its resources share.

#define IDI_TICKER 1
#define IDR_MENU 100
#define IDR_TRAY_MENU 101
#define IDR_KEYS 103

#define ID_READ_NOW 200
#define ID_OPEN 201
#define ID_HIDE 202
#define ID_EXIT 203
#define ID_FILTER 210
#define ID_ONLY_UNPROCESSED 211
#define ID_READING_PANE 212
#define ID_RUNNING_LINE 213
#define ID_PANE_LARGER 214
#define ID_PANE_SMALLER 215
#define ID_SORT 220 // and the column's number
#define ID_SHOW 230
#define ID_PAUSE_HALF_HOUR 240
#define ID_PAUSE_HOUR 241
#define ID_PAUSE_UNTIL_SHOWN 242
#define ID_RESUME 243
#define ID_START_WITH_WINDOWS 250
#define ID_KEYS 260
// Keys that do what depends on where they are pressed.
#define ID_ENTER 270
#define ID_ESCAPE 271

// Controls.
#define ID_LIST 300
#define ID_FILTER_BOX 301
#define ID_STATUS 302
