#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "postrider.h"
#include "programs/mailfolder/extract/files.h"
#include "programs/mailfolder/failure.h"

namespace extract {

// How a message of a folder was found.
enum class Origin {
    Listed,  // by a used record of the D file
    Broken,  // by a record that no program reads
    Deleted, // by a freed slot whose message file is still there
    Orphan   // by its message file alone
};

struct SourceMessage {
    Origin origin = Origin::Listed;
    std::optional<unsigned long> slot; // of the D file, by its position
    std::wstring file;                 // may be empty, or no name at all
    DiskDirRec record = {};            // as the D file has it; zero for an orphan
    bool isAmbiguous = false;          // the system tells two files of the folder by that name
};

// A mail folder that is only read: everything that is open in it is open to everybody else.
class SourceFolder {
public:
    // The argument is a D file or its folder. Fails when it is neither, but one of the other files
    // that the tool knows.
    explicit SourceFolder(const Path& argument);

    // The folder, as it stands, and its final path.
    const Path& Place() const { return mFolder; }
    const std::wstring& Final() const { return mFinal; }
    // The D file's name, or the folder's when there is none.
    std::string Shown() const {
        return (mDFileName.empty() ? mFolder : mFolder.Child(mDFileName)).Shown();
    }
    // Why the D file tells nothing; empty when it does.
    const std::string& Problem() const { return mProblem; }
    bool IsDFile(const std::wstring& name) const { return SameName(name, mDFileName); }
    // It has a D file or message files.
    bool HasMail() const;
    unsigned long Slots() const { return mSlots; }

    // Every slot that holds or held a message, in their order, then the message files that no
    // record names. A message file comes once: when several records name it, with the one that it
    // begins with itself, else with the first.
    // A D file that cannot be read to its end becomes a Problem. Fails where another program holds
    // it: which messages were deleted, and what was marked, is known a moment later.
    void ForEach(const std::function<void(const SourceMessage&)>& visit);

private:
    // What a record names, in few bytes.
    struct NamedFile {
        unsigned long long key;   // of the name in any case
        unsigned long long exact; // of the name as it is
        unsigned long slot;
        Origin origin;
    };

    void OpenDFile(bool namedItself);
    void ForEachMessageFile(const std::function<void(const Entry&)>& visit) const;
    void ForEachRecord(const std::function<void(const SourceMessage&)>& visit) const;
    std::vector<NamedFile> FilesNamed() const;
    SourceMessage MessageOf(unsigned long slot) const;
    bool IsChosen(const std::vector<NamedFile>& named, const SourceMessage& message) const;
    void ForEachOrphan(const std::vector<NamedFile>& named,
                       const std::function<void(const SourceMessage&)>& visit) const;

    Path mFolder;
    std::wstring mFinal;
    std::wstring mDFileName;
    FileHandle mDFile;
    std::string mProblem;
    bool mIsHeld = false;
    unsigned long mSlots = 0;
};

// Whether two records are of the same message, whatever became of either's slot and file name.
bool SameMessage(const DiskDirRec& left, const DiskDirRec& right);

// The folders below that hold mail, and the folder itself, each before those in it. Links are not
// entered; what cannot be read is handed to `failed`.
std::vector<Path> MailFoldersBelow(const Path& folder,
                                   const std::function<void(const Failure&)>& failed);

} // namespace extract
