#include "tests/support/taken_boxes.h"

#include <utility>

#include "resident/core/windows_api.h"
#include "tests/support/crash.h"

static std::vector<std::string> texts;

static int WINAPI Take(HWND, const char* text, const char*, UINT style) {
    // That of the allocation-failure handler.
    if (style & MB_SYSTEMMODAL)
        Crash("no memory for what is claimed");
    texts.push_back(text);
    return IDOK;
}

TakenBoxes::TakenBoxes()
    : mImport("JXTICDLL.DLL", "user32.dll", "MessageBoxA", reinterpret_cast<void*>(Take)) {}

TakenBoxes::~TakenBoxes() { texts.clear(); }

std::vector<std::string> TakenBoxes::TakeTexts() { return std::exchange(texts, {}); }
