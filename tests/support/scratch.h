#pragma once

#include <string>

// A folder of its own on drive C for one test, the current folder while it lives and removed
// with what is in it afterwards.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    // The full path of a name in the folder; of the folder itself without a name.
    std::string Path(const std::string& name = "") const;

private:
    std::string mPath;
    std::string mPrevious;
};

// Whole files, by plain Windows calls; full paths of any length.
void WriteFileBytes(const std::string& path, const std::string& bytes);
std::string ReadFileBytes(const std::string& path);
bool FileThere(const std::string& path);
// A file, or a folder with what is in it, read-only or not.
void RemoveAll(const std::string& path);
// Makes a file read-only. Returns whether that keeps writers out: a superuser's it does not.
bool MakeReadOnly(const std::string& path);

// Takes the right to make, rename and remove files in a folder from everybody while it lives.
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(std::string path);
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;
    ~ReadOnlyFolder();

    // Whether that keeps writers out: a superuser's it does not.
    bool Works() const;

private:
    std::string mPath;
};

// Keeps a file's bytes and attributes, or its absence, and puts them back: for the few files that
// all programs of the prefix share.
class KeptFile {
public:
    explicit KeptFile(std::string path);
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;
    ~KeptFile();

    const std::string& Path() const { return mPath; }
    // The file, or an empty folder that has its name.
    void Remove() const;

private:
    std::string mPath;
    std::string mBytes;
    unsigned long mAttributes; // INVALID_FILE_ATTRIBUTES for no file
};

// The Windows directory, without a trailing backslash.
std::string WindowsDirectory();
