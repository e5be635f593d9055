// Does one operation again and again until it is ended, or has no more to do.
//
//   OPERATION FOLDER READY GO DONE   says READY, waits for GO, and does to the folder's files:
//     compress, strip                  "D0.DAT", "D1.DAT", ...: CompressDFile, RemoveAllMessageIDs
//     move                             "D.DAT": DeleteOldMail into "OLD\D.DAT"
//     prefs                            "RB.DAT": the steps of pref_steps.h
//   Says DONE when all is done; 0 when it succeeded, else there is a file FAILED in the folder.

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/crash.h"
#include "tests/support/helper_process.h"
#include "tests/support/scratch.h"
#include "tests/survival/pref_steps.h"

struct Inbox : DirectoryFile {
    explicit Inbox(const std::string& path) : DirectoryFile(keDirFolder) { Parse(path.c_str(), 1); }
};

template <class Operation>
static bool EachFile(const std::string& folder, Operation operation) {
    for (unsigned int i = 0;; ++i) {
        const std::string path = folder + "\\D" + std::to_string(i) + ".DAT";
        if (!FileThere(path))
            return i > 0;
        Inbox file(path);
        if (!operation(file))
            return false;
    }
}

static bool Move(const std::string& folder) {
    Inbox file(folder + "\\D.DAT"), old(folder + "\\OLD\\D.DAT");
    const unsigned int reports = RbAssertGetCount();
    file.DeleteOldMail(0, 0, &old);
    return RbAssertGetCount() == reports;
}

static bool Prefs(const std::string& folder) {
    UserPrefFile file;
    file.SetSpecPart((folder + "\\RB.DAT").c_str(), 0);
    bool sound = file.OpenPrefFile();
    for (unsigned int step = 0; sound && step < std::size(kPrefSteps); ++step) {
        std::string block = kPrefSteps[step].Block(step);
        AppPrefTag tag{kPrefSteps[step].id, kPrefVersion, kPrefSteps[step].size, block.data()};
        sound = file.WriteAppPrefs(tag);
    }
    file.ClosePrefFile();
    return sound;
}

// What Windows does for the first time takes longer than many an operation.
static void WarmUp(const std::string& folder) {
    FileSpec where(folder.c_str(), 1);
    RbFile first, second((folder + "\\WARM").c_str());
    RbFile::HashUniqueFileName(&first, where, ".TMP");
    if (first.Open(keOpenRewrite))
        first.close();
    DiskDriver::Rename(first, second);
    DiskDriver::RemoveFile(second);
}

int main(int argc, char** argv) {
    EndOnCrash();
    if (argc != 6)
        return 2;
    RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    const std::string operation = argv[1], folder = argv[2];
    WarmUp(folder);
    Signal(argv[3]).Set();
    Signal(argv[4]).Wait(INFINITE);
    bool done = false;
    if (operation == "compress")
        done = EachFile(folder, [](Inbox& file) { return file.CompressDFile(); });
    else if (operation == "strip")
        done = EachFile(
            folder, [](Inbox& file) { return file.RemoveAllMessageIDs(BaseDirFile::keRemoveAll); });
    else if (operation == "move")
        done = Move(folder);
    else if (operation == "prefs")
        done = Prefs(folder);
    if (!done)
        WriteFileBytes(folder + "\\FAILED", "");
    Signal(argv[5]).Set();
    return done ? 0 : 1;
}
