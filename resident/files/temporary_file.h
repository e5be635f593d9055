#pragma once

#include "resident/files/rb_file.h"

// What the text given to a constructor is.
enum enumTempFileOptions : int {
    keTempDirectory = 0, // the text is the directory to use
    keTempExtension = 1  // the text is the extension to use, with its dot
};

// A file that finds a free name for itself and is created, empty and closed, when it is
// constructed. Names are "JPW00000", "JPW00001" and so on in the Windows directory, so that what a
// crash leaves behind can be found and removed. Only where none of them can be made, the run-time
// chooses a name that begins with "JPW": in the folder that the environment's TMP names, whatever
// directory was given, or else in the directory, or the current folder.
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

    // Chooses and creates the file; the constructors do. An empty `directory` receives the one that
    // was asked, where the Windows directory has no room.
    void HashFileName(RBString& directory);

    // Removes the files "JPW*.TMP" of the Windows directory; returns 1 when there was one.
    static int DelDanglingTemps();

private:
    bool MakeNumbered(const char* windowsDirectory);
    bool Create();

    int mfDeleteOnDestroy;
    RBString mstrTempExt;
    int mfValid = 0;
};
