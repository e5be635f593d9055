#pragma once

#include <string>

#include "resident/files/file_spec.h"

class RbFile;

// Which file a name leads to, whatever the name: volume serial number and file index, as
// GetFileInformationByHandle tells them.
struct FileIdentity {
    unsigned long volume;
    unsigned long indexHigh;
    unsigned long indexLow;

    bool operator==(const FileIdentity&) const = default;
};

// The name by which operations other than opening reach the file: the full specification in the OEM
// code page, as the system's wide functions take it. Empty when it does not fit.
JX_API std::wstring WideName(const FileSpec& file);

// The name by which RbFile::Open reaches the file, converted twice, in the same form.
JX_API std::wstring OpenedName(const FileSpec& file);
// The same for a file that may be open already: opening has put the name converted once into its
// specification.
JX_API std::wstring OpenedName(const RbFile& file);

// Which file, or folder, the path leads to; false when there is none or it cannot be asked. Opens
// without access and shares everything, so that it disturbs nobody.
JX_API bool GetFileIdentity(const wchar_t* path, FileIdentity& identity);
// The same of an open handle.
JX_API bool GetFileIdentity(void* handle, FileIdentity& identity);

// Whether the last part of the path is a link: an entry with a reparse point, or one whose final
// path lies in another folder or has another name. A path that leads to nothing is none.
JX_API bool IsLink(const wchar_t* path);
JX_API bool IsLink(const FileSpec& file);
