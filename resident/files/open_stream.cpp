#include "resident/files/open_stream.h"

#include <fcntl.h>
#include <io.h>

#include "resident/files/file_handle.h"

namespace {

// A stream's buffer, given a file that is open already, as opening it by name would leave it.
struct Buffer : std::filebuf {
    static bool Reads(const std::filebuf& buffer) {
        return buffer.*&Buffer::_M_mode & std::ios::in;
    }
    static bool Adopt(std::filebuf& buffer, int descriptor, std::ios::openmode mode) {
        if (!(buffer.*&Buffer::_M_file).sys_open(descriptor, mode))
            return false;
        (buffer.*&Buffer::_M_mode) = mode;
        (buffer.*&Buffer::_M_reading) = (buffer.*&Buffer::_M_writing) = false;
        (buffer.*&Buffer::_M_allocate_internal_buffer)();
        (buffer.*&Buffer::_M_set_buffer)(-1);
        return true;
    }
};

// Gives a closed stream a file that is open, or not.
bool Adopt(std::fstream& stream, FileHandle file, int access, std::ios::openmode mode) {
    if (!file)
        return false;
    const int descriptor =
        _open_osfhandle(reinterpret_cast<intptr_t>(file.Get()),
                        access | (mode & std::ios::binary ? _O_BINARY : _O_TEXT));
    if (descriptor == -1)
        return false;
    file.Release();
    if (Buffer::Adopt(*stream.rdbuf(), descriptor, mode)) {
        stream.clear();
        return true;
    }
    _close(descriptor);
    return false;
}

// Opens a file that is only read so that others may rename and remove it meanwhile: who reads keeps
// nobody from rewriting it. Streams that the library opens by name do not allow that.
bool OpenToRead(std::fstream& stream, const char* name, std::ios::openmode mode) {
    return Adopt(stream,
                 FileHandle(CreateFileA(name, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr)),
                 _O_RDONLY, mode);
}

// What to make of a file's being there, or not.
DWORD Disposition(int mode) {
    return mode & keOpenNoReplace  ? CREATE_NEW
           : mode & keOpenNoCreate ? OPEN_EXISTING
                                   : OPEN_ALWAYS;
}

// Opens a file to read and change it. The library does so only when the file is there, and would
// have to be asked after another open.
bool OpenToUpdate(std::fstream& stream, const char* name, int mode, std::ios::openmode standard) {
    FileHandle file(CreateFileA(name, GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, Disposition(mode),
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!Adopt(stream, std::move(file), _O_RDWR, standard))
        return false;
    if (mode & keOpenAte)
        stream.rdbuf()->pubseekoff(0, std::ios::end);
    return true;
}

// Makes sure, before the stream library opens it, that the file is there, or that it is not.
bool Prepare(const char* name, DWORD disposition) {
    return static_cast<bool>(
        FileHandle(CreateFileA(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               disposition, FILE_ATTRIBUTE_NORMAL, nullptr)));
}

bool OpenFile(std::fstream& stream, const char* name, int mode) {
    if (!name || !*name)
        return false;
    const std::ios::openmode binary = mode & keOpenBinary ? std::ios::binary : std::ios::openmode{};
    if ((mode & ~(keOpenNoCreate | keOpenBinary)) == keOpenIn)
        return !stream.is_open() && OpenToRead(stream, name, std::ios::in | binary);

    // The library opens a file for updating only when it is there, and cuts one opened for output
    // alone.
    std::ios::openmode standard = binary;
    const bool cuts = mode & keOpenTrunc;
    const bool appends = mode & keOpenApp;
    const bool updates = (mode & keOpenOut) && (mode & (keOpenIn | keOpenAte)) && !cuts && !appends;
    // The end of a text file may be a character of its own: that is the library's.
    if (updates && (mode & keOpenBinary) && !stream.is_open()) {
        standard |= std::ios::in | std::ios::out;
        return OpenToUpdate(stream, name, mode, standard);
    }
    if (Disposition(mode) != OPEN_ALWAYS && !Prepare(name, Disposition(mode)))
        return false;
    if (updates) {
        standard |= std::ios::in | std::ios::out;
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
    stream.open(name, standard);
    return stream.good();
}

} // namespace

bool IsOpenToRead(std::fstream& stream) {
    return stream.is_open() && Buffer::Reads(*stream.rdbuf());
}

void OpenStream(std::fstream& stream, const char* name, int mode) {
    if (!OpenFile(stream, name, mode))
        stream.setstate(std::ios::badbit | std::ios::failbit);
}
