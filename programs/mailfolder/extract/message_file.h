#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "postrider.h"
#include "programs/mailfolder/extract/files.h"

namespace extract {

// Reads the message files of a folder, one after the other: a record, and the text behind it.
class MessageFile {
public:
    // The folder, and its final path.
    MessageFile(const Path& folder, const std::wstring& finalPath);

    // What the folder is called.
    std::wstring FolderName() const { return mFolder.Name(); }
    // Goes on to a file of the folder. Throws what is Unreadable: it is not there, held, a link out
    // of the folder, too short for a record and no text.
    void Open(const std::wstring& name);

    // The record that it begins with, as it stands there; zero when it begins with text instead.
    const DiskDirRec& Record() const { return mRecord; }
    bool HasRecord() const { return mTextStart != 0; }
    // What stands at the text's beginning: all of it, or the first quarter of a megabyte.
    std::string_view Beginning() const;
    // Hands the text out in pieces, from its beginning.
    void ForEachPiece(const std::function<void(std::string_view)>& take) const;
    // When it was last written, in seconds from 1904-01-01, local time.
    unsigned long Written() const;

private:
    void ReadRecord();

    Path mFolder;
    std::wstring mFinal;
    FileHandle mFile;
    DiskDirRec mRecord = {};
    std::string mBuffer;
    std::size_t mBuffered = 0;
    std::size_t mTextStart = sizeof mRecord;
};

// Whether a message file of a folder can have that name: it names no other folder, stream or
// pattern.
bool IsPlainName(std::wstring_view name);

} // namespace extract
