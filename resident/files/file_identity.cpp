#include "resident/files/file_identity.h"

#include <cwchar>

#include "resident/core/windows_api.h"
#include "resident/files/file_handle.h"
#include "resident/files/oem_name.h"
#include "resident/files/rb_file.h"

static std::wstring Widened(const OemName& name) {
    wchar_t wide[keOemNameSize];
    if (!name || !MultiByteToWideChar(CP_ACP, 0, name.Text(), -1, wide, keOemNameSize))
        return {};
    return wide;
}

std::wstring WideName(const FileSpec& file) { return Widened(OemName(file.FullFileSpec())); }

std::wstring OpenedName(const FileSpec& file) {
    const OemName once(file.FullFileSpec());
    return Widened(OemName(once.Text()));
}

std::wstring OpenedName(const RbFile& file) {
    const FileSpec& name = file;
    return file.isOpen() ? WideName(name) : OpenedName(name);
}

bool GetFileIdentity(void* handle, FileIdentity& identity) {
    BY_HANDLE_FILE_INFORMATION information;
    if (!GetFileInformationByHandle(handle, &information))
        return false;
    identity = {information.dwVolumeSerialNumber, information.nFileIndexHigh,
                information.nFileIndexLow};
    return true;
}

// Opens a file or folder to ask about it. `flags` say whether a link is followed.
static FileHandle OpenToAsk(const wchar_t* path, DWORD flags) {
    return FileHandle(CreateFileW(path, FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
}

bool GetFileIdentity(const wchar_t* path, FileIdentity& identity) {
    const FileHandle file = OpenToAsk(path, 0);
    return file && GetFileIdentity(file.Get(), identity);
}

static std::wstring FinalPath(const FileHandle& file) {
    std::wstring path(0x8000, L'\0');
    path.resize(
        GetFinalPathNameByHandleW(file.Get(), path.data(), static_cast<DWORD>(path.size()), 0));
    return path;
}

// Whether both final paths lie in the same folder: the entry's own folder, and the one that its
// path names, which is asked for again only where the last one asked for does not fit.
static bool LiesIn(const std::wstring& finalFolder, const std::wstring& folder) {
    static std::wstring lastFolder;
    static std::wstring lastFinal;
    const auto fits = [&] {
        return lastFolder == folder && _wcsicmp(lastFinal.c_str(), finalFolder.c_str()) == 0;
    };
    if (fits())
        return true;
    const FileHandle parent = OpenToAsk(folder.c_str(), 0);
    // A folder that cannot be asked tells nothing.
    if (!parent)
        return true;
    lastFolder = folder;
    lastFinal = FinalPath(parent);
    if (!lastFinal.empty() && lastFinal.back() == L'\\')
        lastFinal.pop_back();
    return fits();
}

bool IsLink(const wchar_t* path) {
    const FileHandle entry = OpenToAsk(path, FILE_FLAG_OPEN_REPARSE_POINT);
    // Of all that could be asked this costs least.
    FILE_ATTRIBUTE_TAG_INFO attributes;
    if (!entry || !GetFileInformationByHandleEx(entry.Get(), FileAttributeTagInfo, &attributes,
                                                sizeof attributes))
        return false;
    if (attributes.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)
        return true;
    // Links of a file system below that the system follows by itself show in the final path alone.
    wchar_t full[0x1000];
    wchar_t* name = nullptr;
    const DWORD length = GetFullPathNameW(path, 0x1000, full, &name);
    if (!length || length >= 0x1000 || !name)
        return false;
    const std::wstring final = FinalPath(entry);
    const std::size_t separator = final.rfind(L'\\');
    if (separator == std::wstring::npos)
        return false;
    if (!LiesIn(final.substr(0, separator), std::wstring(full, name)))
        return true;
    // Another name in the same folder: a link, unless it is the short name of the same entry.
    if (_wcsicmp(name, final.c_str() + separator + 1) == 0)
        return false;
    WIN32_FIND_DATAW found;
    return SearchHandle(FindFirstFileW(path, &found)) &&
           _wcsicmp(found.cFileName, final.c_str() + separator + 1) != 0;
}

bool IsLink(const FileSpec& file) {
    const std::wstring name = WideName(file);
    return !name.empty() && IsLink(name.c_str());
}
