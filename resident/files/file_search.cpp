#include "resident/files/file_search.h"

#include <cstring>

#include "resident/files/file_handle.h"

struct FileSearch::State {
    SearchHandle search;
    WIN32_FIND_DATAA data = {};

    bool AtDots() const {
        return std::strcmp(data.cFileName, ".") == 0 || std::strcmp(data.cFileName, "..") == 0;
    }
    int Fill(ffblk& record, BOOL found) {
        while (found && AtDots())
            found = FindNextFileA(search.Get(), &data);
        if (!found)
            return false;
        record.ff_attrib = data.dwFileAttributes & (keAttrReadOnly | keAttrHidden | keAttrSystem |
                                                    keAttrDirectory | keAttrArchive);
        lstrcpynA(record.ff_name, data.cFileName, sizeof record.ff_name);
        record.ff_fdate = record.ff_ftime = 0;
        FileTimeToDosDateTime(&data.ftLastWriteTime, &record.ff_fdate, &record.ff_ftime);
        record.ff_fsize = static_cast<long>(data.nFileSizeLow);
        return true;
    }
};

FileSearch::FileSearch() : mpState(new State) {}

FileSearch::~FileSearch() { delete mpState; }

int FileSearch::First(const char* name, ffblk& record, int) {
    mpState->search = SearchHandle(FindFirstFileA(name, &mpState->data));
    return mpState->Fill(record, static_cast<bool>(mpState->search));
}

int FileSearch::Next(ffblk& record) {
    return mpState->search &&
           mpState->Fill(record, FindNextFileA(mpState->search.Get(), &mpState->data));
}

void FileSearch::Close() { mpState->search = SearchHandle(); }
