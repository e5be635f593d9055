#pragma once

#include <functional>
#include <string>

#include "resident/core/windows_api.h"
#include "tests/support/hooked_import.h"

// Stands, while it lives, between the library and CreateFileA, or CreateFileW. One of each at a
// time.
template <class Character>
class HookedOpen : public HookedImport {
public:
    // Asked before each call: an error makes that the call's result, 0 lets it go on.
    using Before =
        std::function<DWORD(const std::basic_string<Character>& path, DWORD disposition)>;

    explicit HookedOpen(Before toAsk)
        : HookedImport("JXTICDLL.DLL", "kernel32.dll", kWide ? "CreateFileW" : "CreateFileA",
                       reinterpret_cast<void*>(Open)) {
        before = std::move(toAsk);
    }

private:
    static constexpr bool kWide = sizeof(Character) == sizeof(wchar_t);

    static HANDLE WINAPI Open(const Character* path, DWORD access, DWORD share,
                              SECURITY_ATTRIBUTES* security, DWORD disposition, DWORD flags,
                              HANDLE pattern) {
        if (const DWORD error = before(path, disposition)) {
            SetLastError(error);
            return INVALID_HANDLE_VALUE;
        }
        if constexpr (kWide)
            return CreateFileW(path, access, share, security, disposition, flags, pattern);
        else
            return CreateFileA(path, access, share, security, disposition, flags, pattern);
    }
    static inline Before before;
};
