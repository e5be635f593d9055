#pragma once

#include "resident/files/rb_file.h"

// Closes a file at the end of a scope, if it is open then.
class ClosedAtEnd {
public:
    // The file must outlive this.
    explicit ClosedAtEnd(RbFile& file) : mFile(file) {}
    ClosedAtEnd(const ClosedAtEnd&) = delete;
    ClosedAtEnd& operator=(const ClosedAtEnd&) = delete;
    ~ClosedAtEnd() {
        if (mFile.isOpen())
            mFile.close();
    }

private:
    RbFile& mFile;
};

// A file that its caller may have open: a closed one is opened and closed again, an open one is put
// back to where it stood, in a good state.
class BorrowedFile {
public:
    // The file must outlive this. `mode` as RbFile::Open takes it, for a closed one.
    BorrowedFile(RbFile& file, int mode) : mFile(file), mfOpened(!file.isOpen()) {
        if (mfOpened) {
            mfReady = file.Open(mode);
        } else {
            file.clear();
            mPosition = file.tellg();
        }
    }
    BorrowedFile(const BorrowedFile&) = delete;
    BorrowedFile& operator=(const BorrowedFile&) = delete;
    ~BorrowedFile() {
        if (!mfOpened) {
            mFile.clear();
            mFile.seekg(mPosition);
        } else if (mFile.isOpen()) {
            mFile.close();
        }
    }
    // Whether it is open.
    explicit operator bool() const { return mfReady; }

private:
    RbFile& mFile;
    const bool mfOpened;
    bool mfReady = true;
    long mPosition = 0;
};
