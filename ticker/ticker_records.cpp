#include <memory>
#include <new>

#include "resident/files/rb_file.h"
#include "resident/runtime/check.h"
#include "resident/users/mail_user.h"
#include "system/store/record_reader.h"
#include "ticker/ticker.h"
#include "ticker/ticker_results.h"

static constexpr Reporter kReports("JXTICKER\\JXTICDLL\\JXTICDLL.CPP");

// The open D file; null while no walk is in progress.
static RbFile* poDFile;

// Its records, read ahead.
static std::unique_ptr<RecordReader> records;

// The last record's kind word and flag.
static unsigned short lastKind;
static unsigned short lastFlag;

static void CloseDFile() {
    records.reset();
    if (poDFile && poDFile->isOpen())
        poDFile->close();
    delete poDFile;
    poDFile = nullptr;
}

// The next used record, clamped; null at the end of the file and on a read error.
static const DiskDirRec* NextUsedRecord() {
    while (DiskDirRec* record = records ? records->Next() : nullptr) {
        if (IsUsed(*record)) {
            ClampRecord(*record);
            return record;
        }
    }
    return nullptr;
}

// The result 0, and why, for GetLastError. An open that fails has left its own reason there.
static int Failed(DWORD reason) {
    SetLastError(reason);
    return false;
}

int __stdcall GetFirstRecord(const char* path, char** topic, char** fileName, char** sender,
                             unsigned short* kind, unsigned short* flag) {
    if (!path || !topic || !fileName || !sender || !kind || !flag)
        return Failed(ERROR_INVALID_PARAMETER);
    kReports.Check(!poDFile, "!poDFile");
    // `path` may be a text that this call empties: it is taken first.
    RbFile* const file = new (std::nothrow) RbFile(path);
    // A refused path opens nothing: its accepted parts would name another file.
    const bool named = FileSpec().Parse(path, FileSpec::keClearOthers) == FileSpec::keSpecOk;
    CloseDFile();
    poDFile = file;
    tickerResults.Reset();
    if (!poDFile)
        return Failed(ERROR_NOT_ENOUGH_MEMORY);
    if (!named)
        return Failed(ERROR_INVALID_NAME);
    SetLastError(ERROR_OPEN_FAILED);
    if (!poDFile->Open(keOpenRead))
        return false;
    records.reset(new RecordReader(*poDFile));
    return GetNextRecord(topic, fileName, sender, kind, flag);
}

int __stdcall GetNextRecord(char** topic, char** fileName, char** sender, unsigned short* kind,
                            unsigned short* flag) {
    if (!topic || !fileName || !sender || !kind || !flag)
        return false;
    kReports.Check(poDFile, "poDFile");
    const DiskDirRec* const record = NextUsedRecord();
    if (!record) {
        const bool ended = poDFile && !poDFile->bad();
        tickerResults.Reset();
        CloseDFile();
        return Failed(ended ? ERROR_NO_MORE_ITEMS : ERROR_READ_FAULT);
    }
    tickerResults.EmptyUserDataPath();
    tickerResults.topic->Fill(record->topic);
    tickerResults.fileName->Fill(record->fileName);
    tickerResults.sender->FillBy(
        [&](char* to) { return MailUser::PutGivenFirst(to, record->sender); });
    lastKind = static_cast<unsigned short>(record->kind);
    lastFlag = record->status & keStatusProcessed;
    *kind = lastKind;
    *flag = lastFlag;
    *topic = TickerResults::TextOf(tickerResults.topic);
    *fileName = TickerResults::TextOf(tickerResults.fileName);
    *sender = TickerResults::TextOf(tickerResults.sender);
    return true;
}

void __stdcall Done() {
    CloseDFile();
    tickerResults.Free();
}
