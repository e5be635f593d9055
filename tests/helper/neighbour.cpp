// One of several programs at work on the same mail folder at the same moment.
//
//   neighbour FOLDER NUMBER KINDS ROUNDS START LOG
//   neighbour FOLDER NUMBER TURNS      the steps of its part, in turns; tells in the part
//
// When START is said, each round does each of KINDS once, and what a call told is a line of LOG at
// once, so that it is known even when the program is ended:
//
//   a  adds the message A<number>-<round>.EML         added NAME
//   m  marks M<round>.EML as processed                marked NAME
//   c  takes what can be processed; C is idle         taken NAME
//      meanwhile, and in turns gives its turn away
//   d  deletes D<round>.EML                           deleted NAME
//   o  moves old mail to the folder OLD
//   z  compresses, s strips identifiers, u cuts free slots at the end
//   r  rebuilds, k compresses: the tool, a process for each round
//   U  drops all free slots of MSGS<number>.DAT
//   p  adds a block to RB.DAT                         block ID
//   l  seizes the message semaphore LOCK              seized LOCK
//   v  writes the verification data, four texts of    wrote NUMBER
//      its number; V reads them                       read TEXT/TEXT/TEXT/TEXT
//   w  walks as a notifier does                       torn NAME, for texts that do not belong
//   together

#include <cstdlib>
#include <cstring>
#include <string>

#include "postrider.h"
#include "programs/mailfolder/quiet.h"
#include "resident/core/windows_api.h"
#include "tests/hostile/neighbours.h"
#include "tests/store/mail_folder.h"
#include "tests/support/crash.h"
#include "tests/support/file_calls.h"
#include "tests/support/helper_process.h"
#include "tests/support/hooked_import.h"
#include "tests/support/turns.h"

namespace {

// In turns, waiting for another program is giving the turn away, and time is counted in looks at
// the clock.
const Turns* turns;
bool acting;

void BeforeCall(const FileCall&) {
    if (acting)
        turns->Call();
}
void WINAPI SleepInTurns(DWORD) { turns->Stop(); }
ULONGLONG WINAPI TicksInTurns() {
    static ULONGLONG ticks;
    return ++ticks;
}

class Neighbour {
public:
    Neighbour(const std::string& folder, const std::string& number, const char* log)
        : mFolder(folder), mNumber(number),
          mLog(!*log ? nullptr
                     : CreateFileA(log, FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                   FILE_ATTRIBUTE_NORMAL, nullptr)) {
        mFile.Parse((folder + "\\DFile").c_str(), 1);
        mOld.Parse((folder + "\\OLD\\DFile").c_str(), 1);
        mMessages.Parse((folder + "\\MSGS" + number + ".DAT").c_str(), 1);
    }

    void Do(char kind, int round) {
        switch (kind) {
        case 'a':
            return Add("A" + mNumber + "-" + std::to_string(round) + ".EML");
        case 'm':
            return Mark("M" + std::to_string(round) + ".EML");
        case 'c':
            return Collect(nullptr);
        case 'C':
            return Collect([] { turns ? turns->Stop() : Sleep(0); });
        case 'l':
            if (JxMailMessageSemaphore().CreateSemaphoreA((mFolder + "\\LOCK").c_str()))
                Tell("seized LOCK");
            return;
        case 'v':
            if (JxPopUserVerify(Own(), Own(), Own(), Own()).WriteDataToUserFile())
                Tell("wrote " + mNumber);
            return;
        case 'V':
            return ReadVerification();
        case 'd':
            return Delete("D" + std::to_string(round) + ".EML");
        case 'o':
            return mFile.DeleteOldMail(0, 1, &mOld);
        case 'z':
            mFile.CompressDFile();
            return;
        case 's':
            mFile.RemoveAllMessageIDs(BaseDirFile::keRemoveAll);
            return;
        case 'u':
            return mFile.UpdateDFile();
        case 'r':
        case 'k':
            return Tool(kind == 'r' ? "rebuild" : "compress");
        case 'U':
            return mMessages.UpdateDFile();
        case 'p':
            return AddBlock(std::atoi(mNumber.c_str()) * 1000 + round);
        case 'w':
            return Walk();
        }
    }

private:
    void Tell(const std::string& line) {
        if (turns) {
            lstrcatA(turns->Of().told, (line + "\n").c_str());
            return;
        }
        DWORD written;
        WriteFile(mLog, (line + "\n").data(), line.size() + 1, &written, nullptr);
    }
    void Add(const std::string& name) {
        WriteFileBytes(mFolder + "\\" + name, Neighbours::Mail(name) + "text");
        RbFile message((mFolder + "\\" + name).c_str());
        if (mFile.AddMessage(&message) == 1)
            Tell("added " + name);
    }
    void Mark(const std::string& name) {
        DirectoryRecord probe = Record(Neighbours::Mail(name));
        if (mFile.MarkRecord(probe, keMarkProcessed) == 1)
            Tell("marked " + name);
    }
    void Delete(const std::string& name) {
        DirectoryRecord probe = Record(Neighbours::Mail(name));
        if (mFile.DeleteMail(probe) == 1)
            Tell("deleted " + name);
    }
    void Collect(void (*idle)()) {
        RB_Container<DirectoryRecord> list(RB_Container<DirectoryRecord>::keOwnsObjects);
        mFile.GetUnprocessedDDRs(&list, idle, keGetProcessable);
        for (auto* record = list.GetFirstObject(); record; record = list.GetNextObject())
            Tell(std::string("taken ") + record->FileName().Text());
    }
    // It may come between another's two renames, and then says so.
    void Tool(const std::string& command) {
        HelperProcess tool("mailfolder.exe",
                           command + " \"" + mFolder + "\" --yes --replace-backup --quiet");
        const unsigned long code = tool.ExitCode();
        if (code != 0 && code != 1)
            Tell("failed " + command + std::to_string(code));
    }
    void AddBlock(int id) {
        std::string bytes = Neighbours::Block(id);
        UserPrefFile file;
        file.Parse((mFolder + "\\RB.DAT").c_str(), 1);
        AppPrefTag tag{static_cast<unsigned short>(id), 400,
                       static_cast<unsigned short>(bytes.size()), bytes.data()};
        if (file.OpenPrefFile() && file.WriteAppPrefs(tag))
            Tell("block " + std::to_string(id));
        file.ClosePrefFile();
    }
    // Texts that differ in length, too.
    const char* Own() const { return mNumber == "0" ? "0000" : "111111111111"; }
    void ReadVerification() {
        RBString texts[4];
        if (JxPopUserVerify().ReadDataFromUserFile(texts[0], texts[1], texts[2], texts[3]))
            Tell(std::string("read ") + texts[0].Text() + "/" + texts[1].Text() + "/" +
                 texts[2].Text() + "/" + texts[3].Text());
    }
    void Walk() {
        char *topic, *fileName, *sender;
        unsigned short kind, flag;
        int more =
            GetFirstRecord((mFolder + "\\DFile").c_str(), &topic, &fileName, &sender, &kind, &flag);
        for (; more; more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag))
            if (std::string(fileName) != std::string(topic) + ".EML")
                Tell(std::string("torn ") + fileName);
        Done();
    }

    const std::string mFolder, mNumber;
    const HANDLE mLog;
    DirectoryFile mFile{keDirFolder}, mOld{keDirFolder}, mMessages{keDirMessages};
};

void TakeTurns(const std::string& folder, const std::string& number, const std::string& name) {
    const Turns own(name);
    turns = &own;
    StandBetweenFiles(BeforeCall, nullptr);
    const HookedImport sleep("JXTICDLL.DLL", "kernel32.dll", "Sleep",
                             reinterpret_cast<void*>(SleepInTurns));
    const HookedImport ticks("JXTICDLL.DLL", "kernel32.dll", "GetTickCount64",
                             reinterpret_cast<void*>(TicksInTurns));
    own.Stop();
    while (*own->steps) {
        Neighbour neighbour(folder, number, "");
        for (const char step : std::string(own->steps)) {
            acting = true;
            neighbour.Do(step, 0);
            acting = false;
            ++own->finished;
            own.Stop();
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    EndOnCrash();
    if (argc != 7 && argc != 4)
        return 2;
    RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);
    const Quiet quiet;
    JxTimer timer(GetModuleHandleA(nullptr), JxTimer::keClient);
    if (argc == 4) {
        TakeTurns(argv[1], argv[2], argv[3]);
        return 0;
    }
    Neighbour neighbour(argv[1], argv[2], argv[6]);
    Signal(argv[5]).Wait(60000);
    for (int round = 0; round < std::atoi(argv[4]); ++round)
        for (const char* kind = argv[3]; *kind; ++kind)
            neighbour.Do(*kind, round);
    return 0;
}
