#pragma once

#include <functional>

#include "tests/store/mail_folder.h"

// A stream's buffer that tells of each read and write before it hands it on to the file's own.
class WatchedBuffer : public std::streambuf {
public:
    // Told where the bytes end that are about to be read or written. What it throws breaks the
    // stream, as a failure of the disk does.
    using Watch = std::function<void(long end)>;

    WatchedBuffer(std::filebuf& file, const Watch& onRead, const Watch& onWrite)
        : mFile(file), mOnRead(onRead), mOnWrite(onWrite) {}

protected:
    std::streamsize xsgetn(char* bytes, std::streamsize size) override {
        Tell(mOnRead, size);
        return mFile.sgetn(bytes, size);
    }
    std::streamsize xsputn(const char* bytes, std::streamsize size) override {
        Tell(mOnWrite, size);
        return mFile.sputn(bytes, size);
    }
    pos_type seekoff(off_type offset, std::ios::seekdir origin, std::ios::openmode mode) override {
        return mFile.pubseekoff(offset, origin, mode);
    }
    pos_type seekpos(pos_type position, std::ios::openmode mode) override {
        return mFile.pubseekpos(position, mode);
    }
    int sync() override { return mFile.pubsync(); }

private:
    void Tell(const Watch& watch, std::streamsize size) {
        const std::streamoff position = mFile.pubseekoff(0, std::ios::cur);
        if (watch)
            watch(static_cast<long>(position + size));
    }

    std::filebuf& mFile;
    const Watch &mOnRead, &mOnWrite;
};

// A file of the library whose every read and write is watched from its opening on.
template <class File>
struct Watched : File {
    using File::File;
    bool DoOpen(const char* name, int mode, int prot) override {
        if (!File::DoOpen(name, mode, prot))
            return false;
        this->std::ios::rdbuf(&mBuffer);
        return true;
    }
    // Reads, or writes, that reach the byte at `position` fail.
    void FailReadsAt(long position) { onRead = FailAt(position); }
    void FailWritesAt(long position) { onWrite = FailAt(position); }

    WatchedBuffer::Watch onRead, onWrite;

private:
    static WatchedBuffer::Watch FailAt(long position) {
        return [position](long end) {
            if (end > position)
                throw std::ios::failure("bad sector");
        };
    }
    WatchedBuffer mBuffer{*this->std::fstream::rdbuf(), onRead, onWrite};
};
