#pragma once

#include "system/store/base_dir_file.h"

template <class T>
class ContainerTail;

// What CheckUnprocessedDDRs looks for; the values add up.
enum enumCheckOptions : int {
    keCheckProcessable = 0,
    keCheckAlways = 0x01,     // scan even when the file's directory entry is not found
    keCheckInstallable = 0x02 // with an installable attribute
};

// What GetUnprocessedDDRs takes. Other values take what is processable.
enum enumGetDDROptions : int {
    keGetProcessable = 0,
    keGetInstallable = 1,    // and has an installable attribute
    keGetInstallRequests = 2 // status bit 0x40, processable or not
};

// Results of the two scans.
enum {
    keScanError = 0,
    keCheckCannotOpen = 1,
    keCheckNone = 2,
    keCheckSome = 3,
    keGetNone = 1,
    keGetSome = 2
};

// The D file of a user's inbox, with the rules by which messages are handed on.
//
// `idle`, where given, is called between the steps of a scan, so that a caller can keep its user
// interface alive.
class JX_API DirectoryFile : public BaseDirFile {
public:
    explicit DirectoryFile(TypeDirFile type); // without a name
    ~DirectoryFile() override;

    // Processable: used, not processed, of a kind other than 0, and without the attributes 0x0100,
    // 0x0200, 0x0400 and 0x0800. Installable attributes are 0x1000 and 0x2000.
    int OkToProcess(DirectoryRecord* record);
    int OkToProcess(DirectoryRecord* record, enumCheckOptions options);
    int OkToProcess(DirectoryRecord* record, enumGetDDROptions option);

    // Whether any record would be taken: 0 error, 1 not opened, 2 none, 3 some.
    int CheckUnprocessedDDRs(enumCheckOptions options, void (*idle)());
    // Takes the selected records: marks them in the file, so that they are taken once, and adds
    // new objects with them to the list: the list's where it owns its objects, else the caller's to
    // delete. Returns 0 error, 1 none (also for a file that cannot be opened, which is reported), 2
    // some.
    int GetUnprocessedDDRs(RB_Container<DirectoryRecord>* list, void (*idle)(),
                           enumGetDDROptions option);
    // GetUnprocessedDDRs with keGetInstallRequests.
    void GetInstallableDDRs(RB_Container<DirectoryRecord>* list);

    // Moves the messages that are more than `age` seconds old, the processed ones alone with
    // `onlyProcessed`, into the folder of `target`. Type 0 alone; stops at the first failure.
    void DeleteOldMail(unsigned long age, int onlyProcessed, DirectoryFile* target);

    // Removes free slots: all of them from a type 2 file, from others those at the end. A type 2
    // file is rewritten in place; where that fails a copy stays, whole, as "JPWnnnnn.TMP" of the
    // Windows directory.
    void UpdateDFile();

    // Writes the used records, numbered by their slots, into `copy`, without a header. Returns
    // their number; 0 for type 2.
    int GetDFile(RbFile& copy);

private:
    bool TakeByBlocks(ContainerTail<DirectoryRecord>& list, enumGetDDROptions option);
    bool TakeOneByOne(ContainerTail<DirectoryRecord>& list, void (*idle)(),
                      enumGetDDROptions option);
    bool IsSelected(DirectoryRecord& record, enumGetDDROptions option);
    bool TakeRecord(DirectoryRecord& record, enumGetDDROptions option, long position,
                    void (*idle)());
    bool ReadAgain(DirectoryRecord& record, long position);
    bool MoveMessage(DirectoryRecord& record, DirectoryFile& target, long position);
    bool DropFreeSlots();
    bool WriteUsedRecords(RbFile& copy);
    bool CutFreeSlots();
};
