#include <new>

#include "resident/core/byte_order.h"
#include "resident/files/rb_file.h"
#include "resident/runtime/check.h"
#include "resident/users/mail_user.h"
#include "system/store/directory_record.h"
#include "ticker/ticker.h"
#include "ticker/ticker_results.h"

static const char kSource[] = "JXTICKER\\JXTICDLL\\JXTICDLL.CPP";

// The open D file; null while no walk is in progress.
static RbFile* poDFile;

// The last record's kind word and flag.
static unsigned short lastKind;
static unsigned short lastFlag;

// A walk reads from one end to the other: large reads make it as fast as the disk.
static char readBuffer[0x10000];

static void CloseDFile() {
    if (poDFile && poDFile->isOpen())
        poDFile->close();
    delete poDFile;
    poDFile = nullptr;
}

// Reads on to the next used record; false at the end of the file and on a read error.
static bool ReadUsedRecord(DirectoryRecord& record) {
    while (poDFile && poDFile->good())
        if (*poDFile >> record && poDFile->good() && record.isUsed())
            return true;
    return false;
}

int __stdcall GetFirstRecord(const char* path, char** topic, char** fileName, char** sender,
                             unsigned short* kind, unsigned short* flag) {
    if (!path || !topic || !fileName || !sender || !kind || !flag)
        return 0;
    JX_CHECK(!poDFile);
    // `path` may be a text that this call empties: it is taken first.
    RbFile* const file = new (std::nothrow) RbFile(path);
    CloseDFile();
    poDFile = file;
    tickerResults.Reset();
    if (!poDFile)
        return 0;
    poDFile->rdbuf()->pubsetbuf(readBuffer, sizeof readBuffer);
    if (!poDFile->Open(keOpenRead))
        return 0;
    return GetNextRecord(topic, fileName, sender, kind, flag);
}

int __stdcall GetNextRecord(char** topic, char** fileName, char** sender, unsigned short* kind,
                            unsigned short* flag) {
    if (!topic || !fileName || !sender || !kind || !flag)
        return 0;
    JX_CHECK(poDFile);
    tickerResults.Reset();
    DirectoryRecord record;
    if (!ReadUsedRecord(record)) {
        CloseDFile();
        return 0;
    }
    const DiskDirRec& fields = record.Record();
    tickerResults.topic->puts(fields.topic);
    tickerResults.fileName->puts(fields.fileName);
    RBString senderName(fields.sender.name);
    MailUser::OrderedUserName(*tickerResults.sender, senderName, 1);
    lastKind = static_cast<unsigned short>(fields.kind);
    lastFlag = fields.status & keStatusProcessed;
    *kind = lastKind;
    *flag = lastFlag;
    *topic = TickerResults::TextOf(tickerResults.topic);
    *fileName = TickerResults::TextOf(tickerResults.fileName);
    *sender = TickerResults::TextOf(tickerResults.sender);
    return 1;
}

void __stdcall Done() {
    CloseDFile();
    tickerResults.Free();
}
