#pragma once

#include "resident/files/rb_file.h"

enum enumTempFileOptions : int {
    keTempDirectory = 0, // the text is the directory to use
    keTempExtension = 1  // the text is the extension to use
};

// A file that finds a free name for itself and is created, empty, when it is constructed. Names are
// "JPW00000", "JPW00001" and so on in the Windows directory, so that what a crash leaves behind can
// be found and removed; the directory given is only used when none of them can be made there.
class JX_API TemporaryFile : public RbFile {
public:
    // The extension is ".TMP" unless given.
    explicit TemporaryFile(int deleteOnDestroy);
    TemporaryFile(FileSpec& where, int deleteOnDestroy);
    TemporaryFile(const char* text, int deleteOnDestroy, enumTempFileOptions option);
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    // Closes the file, and removes it when that was asked for.
    ~TemporaryFile() override;

    // Whether a name was found and the file made.
    int IsValid() const { return mfValid; }

    // Chooses and creates the file.
    void HashFileName(RBString& directory);

    // Removes the files "JPW*.TMP" of the Windows directory; returns 1 when there was one.
    static int DelDanglingTemps();

private:
    bool MakeNumbered(const char* windowsDirectory);
    bool Create();

    int mfDeleteOnDestroy;
    RBString mstrTempExt;
    int mfValid;
};
