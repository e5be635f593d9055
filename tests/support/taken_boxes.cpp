#include "tests/support/taken_boxes.h"

#include <algorithm>
#include <stdexcept>
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

static void Replace(void** import, void* function) {
    DWORD protection;
    VirtualProtect(import, sizeof *import, PAGE_READWRITE, &protection);
    *import = function;
    VirtualProtect(import, sizeof *import, protection, &protection);
}

// The library's import of the function is turned to ours.
TakenBoxes::TakenBoxes() {
    char* const base = reinterpret_cast<char*>(GetModuleHandleA("JXTICDLL.DLL"));
    const auto* const dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    const auto& headers = *reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& addresses =
        headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    auto* const first = reinterpret_cast<void**>(base + addresses.VirtualAddress);
    void** const last = first + addresses.Size / sizeof *first;
    mReal = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("user32.dll"), "MessageBoxA"));
    mImport = std::find(first, last, mReal);
    if (mImport == last)
        throw std::runtime_error("the library shows no message boxes");
    Replace(mImport, reinterpret_cast<void*>(Take));
}

TakenBoxes::~TakenBoxes() {
    Replace(mImport, mReal);
    texts.clear();
}

std::vector<std::string> TakenBoxes::TakeTexts() { return std::exchange(texts, {}); }
