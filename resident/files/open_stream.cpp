#include "resident/files/open_stream.h"

#include "resident/core/windows_api.h"

namespace {

// Makes sure, before the stream library opens it, that the file is there, or that it is not.
bool Prepare(const char* name, DWORD disposition) {
    const HANDLE file = CreateFileA(
        name, GENERIC_READ | (disposition == OPEN_EXISTING ? 0 : GENERIC_WRITE),
        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    CloseHandle(file);
    return true;
}

bool OpenFile(std::fstream& stream, const char* name, int mode) {
    if (!name || !*name)
        return false;
    if (mode & keOpenNoReplace) {
        if (!Prepare(name, CREATE_NEW))
            return false;
    } else if (mode & keOpenNoCreate) {
        if (!Prepare(name, OPEN_EXISTING))
            return false;
    }

    // The library opens a file for updating only when it is there, and cuts one opened for output
    // alone.
    std::ios::openmode standard{};
    const bool cuts = mode & keOpenTrunc;
    const bool appends = mode & keOpenApp;
    const bool updates = (mode & keOpenOut) && (mode & (keOpenIn | keOpenAte)) && !cuts && !appends;
    if (updates) {
        standard = std::ios::in | std::ios::out;
        if (!(mode & keOpenNoCreate) && !Prepare(name, OPEN_ALWAYS))
            return false;
    } else {
        if (mode & keOpenIn)
            standard |= std::ios::in;
        if (mode & keOpenOut)
            standard |= std::ios::out;
        if (cuts)
            standard |= std::ios::out | std::ios::trunc;
        if (appends)
            standard |= std::ios::out | std::ios::app;
    }
    if (mode & keOpenAte)
        standard |= std::ios::ate;
    if (mode & keOpenBinary)
        standard |= std::ios::binary;
    stream.open(name, standard);
    return stream.good();
}

} // namespace

void OpenStream(std::fstream& stream, const char* name, int mode) {
    if (!OpenFile(stream, name, mode))
        stream.setstate(std::ios::badbit | std::ios::failbit);
}
