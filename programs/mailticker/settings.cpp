#include "programs/mailticker/settings.h"

#include <algorithm>
#include <iterator>

#include "programs/mailticker/owners.h"

static const wchar_t kKey[] = L"Software\\Postrider\\Ticker";
static const wchar_t kRunKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
static const wchar_t kRunName[] = L"Postrider Ticker";

namespace {

// Each setting by its name, for reading and for writing alike: `visit` takes the name and the
// value.
template <class Settings, class Visit>
void ForEach(Settings& settings, const Visit& visit) {
    visit(L"Left", settings.window.left);
    visit(L"Top", settings.window.top);
    visit(L"Right", settings.window.right);
    visit(L"Bottom", settings.window.bottom);
    visit(L"Maximized", settings.maximized);
    visit(L"PaneHeight", settings.paneHeight);
    for (int i = 0; i < kColumns; ++i) {
        visit((L"Column" + std::to_wstring(i)).c_str(), settings.columnWidths[i]);
        visit((L"Place" + std::to_wstring(i)).c_str(), settings.columnOrder[i]);
    }
    visit(L"SortColumn", settings.sortColumn);
    visit(L"Descending", settings.descending);
    visit(L"OnlyUnprocessed", settings.onlyUnprocessed);
    visit(L"RunningLine", settings.runningLine);
    visit(L"ReadingPane", settings.readingPane);
}

} // namespace

Settings Settings::Load() {
    Settings settings;
    ForEach(settings, [](const wchar_t* name, auto& value) {
        DWORD stored;
        DWORD size = sizeof stored;
        if (RegGetValueW(HKEY_CURRENT_USER, kKey, name, RRF_RT_REG_DWORD, nullptr, &stored,
                         &size) == ERROR_SUCCESS)
            value = static_cast<std::remove_reference_t<decltype(value)>>(stored);
    });
    // Whatever somebody wrote there.
    for (int& width : settings.columnWidths)
        width = std::clamp(width, 20, 2000);
    const Settings original;
    if (!std::is_permutation(std::begin(original.columnOrder), std::end(original.columnOrder),
                             settings.columnOrder))
        std::copy(std::begin(original.columnOrder), std::end(original.columnOrder),
                  settings.columnOrder);
    settings.paneHeight = std::clamp(settings.paneHeight, 60, 4000);
    if (static_cast<unsigned int>(settings.sortColumn) >= kColumns)
        settings.sortColumn = Column::Slot;
    return settings;
}

static Owned<HKEY> OpenedKey(const wchar_t* path) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr);
    return Owned<HKEY>(key);
}

void Settings::Save() const {
    const auto key = OpenedKey(kKey);
    ForEach(*this, [&](const wchar_t* name, auto value) {
        const DWORD stored = static_cast<DWORD>(value);
        RegSetValueExW(key.get(), name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&stored),
                       sizeof stored);
    });
}

bool StartsWithWindows() {
    return RegGetValueW(HKEY_CURRENT_USER, kRunKey, kRunName, RRF_RT_REG_SZ, nullptr, nullptr,
                        nullptr) == ERROR_SUCCESS;
}

void StartWithWindows(bool start) {
    const auto key = OpenedKey(kRunKey);
    if (!start) {
        RegDeleteValueW(key.get(), kRunName);
        return;
    }
    wchar_t program[MAX_PATH + 1];
    GetModuleFileNameW(nullptr, program, MAX_PATH + 1);
    const std::wstring command = L"\"" + std::wstring(program) + L"\" /tray";
    RegSetValueExW(key.get(), kRunName, 0, REG_SZ, reinterpret_cast<const BYTE*>(command.c_str()),
                   static_cast<DWORD>((command.size() + 1) * sizeof(wchar_t)));
}
