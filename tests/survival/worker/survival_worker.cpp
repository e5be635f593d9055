// Does one operation, and may be ended at any step of it: tests/helper/ended_at_step.cpp.
//
//   survival_worker OPERATION FOLDER    does to the folder's files:
//     compress, strip                   "D.DAT": CompressDFile, RemoveAllMessageIDs
//     move                              "D.DAT": DeleteOldMail into "OLD\D.DAT"
//     block1, block2, ...               "RB.DAT": writes that block of kill_blocks.h
//   Ends with 0 when it succeeded.

#include "postrider.h"
#include "tests/support/crash.h"
#include "tests/survival/kill_blocks.h"

struct Inbox : DirectoryFile {
    explicit Inbox(const std::string& path) : DirectoryFile(keDirFolder) { Parse(path.c_str(), 1); }
};

static bool WriteBlock(const std::string& folder, unsigned short id) {
    UserPrefFile file;
    file.SetSpecPart((folder + "\\RB.DAT").c_str(), 0);
    std::string block = KillBlock(id);
    AppPrefTag tag{id, kKillVersion, static_cast<unsigned short>(block.size()), block.data()};
    const bool done = file.OpenPrefFile() && file.WriteAppPrefs(tag);
    file.ClosePrefFile();
    return done;
}

static bool Do(const std::string& operation, const std::string& folder) {
    Inbox file(folder + "\\D.DAT"), old(folder + "\\OLD\\D.DAT");
    if (operation == "compress")
        return file.CompressDFile();
    if (operation == "strip")
        return file.RemoveAllMessageIDs(BaseDirFile::keRemoveAll);
    if (operation != "move")
        return WriteBlock(folder, static_cast<unsigned short>(operation.back() - '0'));
    const unsigned int reports = RbAssertGetCount();
    file.DeleteOldMail(0, 0, &old);
    return RbAssertGetCount() == reports;
}

int main(int argc, char** argv) {
    EndOnCrash();
    if (argc != 3)
        return 2;
    RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    return Do(argv[1], argv[2]) ? 0 : 1;
}
