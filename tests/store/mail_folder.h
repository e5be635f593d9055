#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "postrider.h"
#include "tests/support/debug_output.h"
#include "tests/support/mail_bytes.h"
#include "tests/support/scratch.h"

inline DirectoryRecord Record(const std::string& bytes) {
    std::istringstream in(bytes);
    DirectoryRecord record;
    in >> record;
    return record;
}

// A report of the sources BaseDirFile and DirectoryFile, as MailFolder::Reports tells it.
inline std::string Base(Text report) { return report + "|JXSYSTEM\\DIRFL_BS.CPP|"; }
inline std::string Inbox(Text report) { return report + "|JXSYSTEM\\DIRFILE.CPP|"; }

// Reports of many operations.
inline const std::string kNotRenamed = "0|DiskDriver::Rename() failed.|JXRESIDT\\DISKDRVR.CPP|";
inline const std::string kNotRemoved = "eResult == keDELETE_OK|JXRESIDT\\RBFILE1.CPP|";
inline const std::string kNotStripped = Base("0|Error BaseDirFile: RemoveAllMessageIDs()");
inline const std::string kNotAged = Inbox("0|Error DirectoryFile: DeleteOldMail()");

// The current folder's D file; does not wait for a file that another process may hold.
struct DFile : DirectoryFile {
    explicit DFile(TypeDirFile type, Text path = "INBOX.DAT") : DirectoryFile(type) {
        Parse(std::filesystem::absolute(path).string().c_str(), 1);
    }
    ~DFile() override { EXPECT_FALSE(isOpen()); }
    bool DoOpen(const char* name, int mode, int prot) override {
        return RbFile::DoOpen(name, mode, prot);
    }
};

// What is done to a D file: what it gives when the file's first record is the probe's and older
// than the day, and what it gives and reports when the file cannot be opened for it.
struct Operation {
    enum Kind { keChanges, keReads, keRewrites };

    const char* name;
    Kind kind;
    long works, fails;
    std::string reports;
    std::function<long(DirectoryFile&)> run;
};

// A mail folder of its own, with its D file of each type. A test names all reports that are made.
class MailFolder : public testing::Test {
protected:
    MailFolder() { RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr); }
    ~MailFolder() override;

    void Write(const std::string& bytes) { WriteFileBytes("INBOX.DAT", bytes); }
    std::string Read() { return ReadFileBytes("INBOX.DAT"); }
    // A result and what the file then holds: "1" and the bytes.
    std::string Left(long result) { return std::to_string(result) + Read(); }
    // Names in the order of the alphabet, a blank behind each.
    std::string Names(Text folder = ".");
    // "expression|message|source|" of each report since the last call.
    std::string Reports();
    // "topic/file name" of the first record that a notifier sees; "" for none.
    static std::string First(Text path);

    // All that there is for a D file of that type: with mProbe, NEW.EML, COPY and mOld.
    std::vector<Operation> Operations(TypeDirFile type);

    ScratchFolder mFolder;
    DebugOutput mOutput;
    unsigned int mReportCount = RbAssertGetCount();
    DFile mFile{keDirFolder}, mForeign{keDirForeign}, mMessages{keDirMessages};
    DFile mMissing{keDirFolder, "MISSING.DAT"}, mOld{keDirFolder, "OLD\\OLD.DAT"};
    DirectoryRecord mProbe;
    RB_Container<DirectoryRecord> mTaken{RB_Container<DirectoryRecord>::keOwnsObjects};
    RB_Container<JxDownloadItem> mItems{RB_Container<JxDownloadItem>::keOwnsObjects};
};
