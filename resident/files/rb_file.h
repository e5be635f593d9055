#pragma once

#include <ctime>
#include <fstream>

#include "resident/files/file_spec.h"
#include "resident/files/open_mode.h"

// Results of removing a file.
enum enumDeleteResult : int {
    keDELETE_OK = 1,
    keDELETE_FAILED = -1,
    keDELETE_ACCESS_DENIED = -2,
    keDELETE_NOT_FOUND = -3
};

// The buffer of a copy.
enum enumDupStream : int {
    keDupLargeBuffer = 0, // 32,000 bytes
    keDupSmallBuffer = 1  // 10 bytes
};

// Results of Copy and DupStream.
enum enumCopyResult : int {
    keCopyDone = 1,
    keCopyStopped = 0, // by the progress callback
    keCopyReadFailed = -1,
    keCopyWriteFailed = -2,
    keCopyTargetNotOpen = -3,
    keCopySourceNotOpen = -4
};

// Sees the copy advance in steps up to about the buffer's size, whatever the file's size; returns 0
// to stop it.
typedef int (*CopyProgress)(unsigned int position);

// A file of the library: its specification and its stream in one object.
//
// Open modes are the numbers of open_mode.h; the protection argument is not used. Opening reports
// through its result and the stream's state, never by a dialog. A file must be closed before it is
// destroyed: the destructor reports one that is open. For names outside ASCII see file_spec.h.
class JX_API RbFile : public FileSpec, public std::fstream {
public:
    // Closed, with no name or that of the specification.
    RbFile();
    RbFile(const char* spec);
    RbFile(RBString& spec);
    // Copy the specification; streams are not copied.
    RbFile(const RbFile& other);
    explicit RbFile(const FileSpec& spec);
    RbFile& operator=(const RbFile& other);
    RbFile& operator=(const FileSpec& spec);

    // Performs every open; returns true when the stream's state is good.
    virtual bool DoOpen(const char* name, int mode, int prot);
    // Removes the file and reports a failure.
    virtual enumDeleteResult DoRemove();
    ~RbFile() override;

    // Both open FullFileSpec() by DoOpen.
    bool Open(int mode, int prot = keOpenProtection);
    bool OpenSilent(int mode, int prot = keOpenProtection);
    // Take `name` for the specification and open it.
    void open(const char* name, int mode, int prot = keOpenProtection);
    void open(const unsigned char* name, int mode, int prot = keOpenProtection);
    bool isOpen() const { return is_open(); }

    // The stream's own; positions and sizes are bytes.
    RbFile& read(char* buffer, int size);
    RbFile& read(unsigned char* buffer, int size);
    RbFile& write(const char* buffer, int size);
    RbFile& write(const unsigned char* buffer, int size);
    RbFile& seekg(long position);
    RbFile& seekg(long offset, std::ios::seekdir origin);
    long tellg();

    // Gives the stream a buffer, which is never freed. Before opening.
    void SetBufferSize(unsigned int size);
    // Cuts the file at the current position and brings its directory entry up to date. Returns 0.
    int UpdateFile();

    // Whether FullFileSpec() is there: a file, or a folder.
    bool Exists();
    // Whether it is a folder.
    bool DirectoryExists();
    // DoRemove.
    enumDeleteResult Remove();
    // Closes the file if it is open, and removes it even when it is read-only.
    enumDeleteResult ImpRemove();
    // Renames the file to the same name with the extension ".BAK", replacing an older backup.
    // Returns non-zero on success; then `backup`, where given, is the new name.
    int RenameToBak(FileSpec* backup);
    // The DOS date and time words of the last write and the size in bytes, where wanted.
    bool FileInfo(unsigned short* time, long* size, unsigned short* date);
    // Fills day, month, year, hour, minute and second of `when`, in UTC. Both return true when the
    // file, or folder, is there.
    bool FileInfo(std::tm* when, long* size);
    // Finds a name of at most 8 digits that does not exist in the folder of `where`, with the
    // extension of `where` or `pszExtension` (with its dot). It only finds the name: by the time of
    // the open another may have taken it. Returns false when all are taken.
    static bool HashUniqueFileName(RbFile* result, FileSpec& where, const char* pszExtension);

    // Copies all of `source`. Opens either file by FullSpec(), without removing a lone dot, when it
    // is closed: a target that is opened so is cut, and one that was open is written from its put
    // position on and not cut. A partial target stays. Returns an enumCopyResult. With `close` both
    // are closed at the end, unless the target could not be opened, and keCopySourceNotOpen is told
    // as keCopyReadFailed. `progress` may be null.
    int Copy(RbFile& source, int close, CopyProgress progress, enumDupStream buffer);
    // Copies up to `size` bytes from the current position of `source` to this file's put position;
    // an earlier end of the source is no failure, a source that is not open to be read is one.
    // Returns 1, 0, -1 or -2 of enumCopyResult.
    int DupStream(RbFile& source, long size, CopyProgress progress, enumDupStream buffer);

    // Receives the OEM form of each name that is opened; shared by all files.
    static char szTranslatedString[keOemNameSize];
};
