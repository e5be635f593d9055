#include "tests/support/file_calls.h"

#include <vector>

#include "resident/core/windows_api.h"
#include "tests/support/hooked_import.h"

#include <winternl.h>

namespace {

void (*before)(const FileCall&);
void (*after)(const FileCall&);

// Which handles change files: a write to another one is no change of a file.
bool changing[65536];

bool& Changing(HANDLE handle) {
    return changing[reinterpret_cast<ULONG_PTR>(handle) / 4 % std::size(changing)];
}

// A function of ntdll.dll, and what takes its place in kernelbase.dll.
template <class Function>
struct Between {
    Between(const char* name, Function* ours)
        : hook("kernelbase.dll", "ntdll.dll", name, reinterpret_cast<void*>(ours)),
          real(reinterpret_cast<Function*>(hook.Real())) {}

    template <class... Arguments>
    NTSTATUS operator()(const FileCall& call, Arguments... arguments) const {
        if (before)
            before(call);
        const NTSTATUS status = real(arguments...);
        const DWORD error = GetLastError();
        if (after)
            after(call);
        SetLastError(error);
        return status;
    }

    HookedImport hook;
    Function* real;
};

Between<decltype(NtCreateFile)>* create;
Between<decltype(NtOpenFile)>* open;
Between<decltype(NtSetInformationFile)>* set;
// <winternl.h> lacks these.
using Writes = NTSTATUS NTAPI(HANDLE, HANDLE, PIO_APC_ROUTINE, void*, IO_STATUS_BLOCK*, const void*,
                              ULONG, LARGE_INTEGER*, ULONG*);
using Flush = NTSTATUS NTAPI(HANDLE, IO_STATUS_BLOCK*);
Between<Writes>* write;
Between<Flush>* flush;

std::wstring_view Path(const OBJECT_ATTRIBUTES* object) {
    if (!object || !object->ObjectName)
        return {};
    return {object->ObjectName->Buffer, object->ObjectName->Length / sizeof(wchar_t)};
}

constexpr ACCESS_MASK kChange = GENERIC_WRITE | GENERIC_ALL | DELETE | WRITE_DAC | FILE_WRITE_DATA |
                                FILE_APPEND_DATA | FILE_WRITE_ATTRIBUTES;

NTSTATUS NTAPI Create(HANDLE* handle, ACCESS_MASK access, OBJECT_ATTRIBUTES* object,
                      IO_STATUS_BLOCK* status, LARGE_INTEGER* size, ULONG attributes, ULONG share,
                      ULONG disposition, ULONG options, void* ea, ULONG eaSize) {
    const bool makes = disposition != FILE_OPEN;
    const bool changes = makes || access & kChange;
    const NTSTATUS result =
        (*create)({makes ? "make" : "open", Path(object), changes}, handle, access, object, status,
                  size, attributes, share, disposition, options, ea, eaSize);
    if (result >= 0)
        Changing(*handle) = changes;
    return result;
}

NTSTATUS NTAPI Open(HANDLE* handle, ACCESS_MASK access, OBJECT_ATTRIBUTES* object,
                    IO_STATUS_BLOCK* status, ULONG share, ULONG options) {
    const bool removes = options & FILE_DELETE_ON_CLOSE;
    const bool changes = removes || access & kChange;
    const NTSTATUS result = (*open)({removes ? "remove" : "open", Path(object), changes}, handle,
                                    access, object, status, share, options);
    if (result >= 0)
        Changing(*handle) = changes;
    return result;
}

NTSTATUS NTAPI Write(HANDLE file, HANDLE event, PIO_APC_ROUTINE routine, void* context,
                     IO_STATUS_BLOCK* status, const void* bytes, ULONG size, LARGE_INTEGER* offset,
                     ULONG* key) {
    if (!Changing(file))
        return write->real(file, event, routine, context, status, bytes, size, offset, key);
    return (*write)({"write", {}, true}, file, event, routine, context, status, bytes, size, offset,
                    key);
}

NTSTATUS NTAPI Set(HANDLE file, IO_STATUS_BLOCK* status, void* information, ULONG size,
                   FILE_INFORMATION_CLASS kind) {
    const auto told = [&](const FileCall& call) {
        return (*set)(call, file, status, information, size, kind);
    };
    switch (static_cast<int>(kind)) {
    case FileRenameInformation: {
        const auto& rename = *static_cast<FILE_RENAME_INFORMATION*>(information);
        return told({"rename", {rename.FileName, rename.FileNameLength / sizeof(wchar_t)}, true});
    }
    case FileDispositionInformation:
        return told({"remove", {}, true});
    case FileEndOfFileInformation:
        return told({"cut", {}, true});
    case FileBasicInformation:
        return told({"set", {}, true});
    default: // positions and what is not on the disk
        return set->real(file, status, information, size, kind);
    }
}

NTSTATUS NTAPI FlushFile(HANDLE file, IO_STATUS_BLOCK* status) {
    return (*flush)({"flush", {}, true}, file, status);
}

} // namespace

void StandBetweenFiles(void (*beforeCall)(const FileCall&), void (*afterCall)(const FileCall&)) {
    static Between<decltype(NtCreateFile)> theCreate("NtCreateFile", Create);
    static Between<decltype(NtOpenFile)> theOpen("NtOpenFile", Open);
    static Between<Writes> theWrite("NtWriteFile", Write);
    static Between<decltype(NtSetInformationFile)> theSet("NtSetInformationFile", Set);
    static Between<Flush> theFlush("NtFlushBuffersFile", FlushFile);
    create = &theCreate, open = &theOpen, write = &theWrite, set = &theSet, flush = &theFlush;
    before = beforeCall;
    after = afterCall;
}
