#include "resident/files/file_search.h"

#include <cstring>

#include "resident/core/windows_api.h"

struct FileSearch::State {
    HANDLE handle = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAA data = {};
    DWORD wantedAttributes = 0;

    bool AtDots() const {
        return std::strcmp(data.cFileName, ".") == 0 || std::strcmp(data.cFileName, "..") == 0;
    }
    int Fill(ffblk& record, BOOL found) {
        while (found && AtDots())
            found = FindNextFileA(handle, &data);
        if (!found)
            return 0;
        record.ff_attrib = data.dwFileAttributes & (keAttrReadOnly | keAttrHidden | keAttrSystem |
                                                    keAttrDirectory | keAttrArchive);
        lstrcpynA(record.ff_name, data.cFileName, sizeof record.ff_name);
        record.ff_fdate = record.ff_ftime = 0;
        FileTimeToDosDateTime(&data.ftLastWriteTime, &record.ff_fdate, &record.ff_ftime);
        record.ff_fsize = static_cast<long>(data.nFileSizeLow);
        return 1;
    }
};

FileSearch::FileSearch() : mpState(new State) {}

FileSearch::~FileSearch() {
    Close();
    delete mpState;
}

static DWORD WindowsAttributes(int attributes) {
    // All but the volume label have the same bits.
    DWORD flags = attributes &
                  (keAttrReadOnly | keAttrHidden | keAttrSystem | keAttrDirectory | keAttrArchive);
    if (attributes & keAttrVolume)
        flags |= FILE_ATTRIBUTE_NORMAL;
    return flags;
}

int FileSearch::First(const char* name, ffblk& record, int attributes) {
    Close();
    mpState->wantedAttributes = WindowsAttributes(attributes);
    mpState->handle = FindFirstFileA(name, &mpState->data);
    return mpState->Fill(record, mpState->handle != INVALID_HANDLE_VALUE);
}

int FileSearch::Next(ffblk& record) {
    if (mpState->handle == INVALID_HANDLE_VALUE)
        return 0;
    return mpState->Fill(record, FindNextFileA(mpState->handle, &mpState->data));
}

void FileSearch::Close() {
    if (mpState->handle != INVALID_HANDLE_VALUE)
        FindClose(mpState->handle);
    mpState->handle = INVALID_HANDLE_VALUE;
}
