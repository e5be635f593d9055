#include "tests/support/hooked_import.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "resident/core/windows_api.h"

static void Replace(void** import, void* function) {
    DWORD protection;
    VirtualProtect(import, sizeof *import, PAGE_READWRITE, &protection);
    *import = function;
    VirtualProtect(import, sizeof *import, protection, &protection);
}

HookedImport::HookedImport(const char* module, const char* library, const char* function,
                           void* ours) {
    char* const base = reinterpret_cast<char*>(GetModuleHandleA(module));
    const auto* const dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    const auto& headers = *reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& addresses =
        headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    auto* const first = reinterpret_cast<void**>(base + addresses.VirtualAddress);
    void** const last = first + addresses.Size / sizeof *first;
    mReal = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(library), function));
    mImport = std::find(first, last, mReal);
    if (mImport == last)
        throw std::runtime_error(std::string(module) + " does not import " + function);
    Replace(mImport, ours);
}

HookedImport::~HookedImport() { Replace(mImport, mReal); }
