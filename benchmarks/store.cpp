// Operations on whole D files, against plain loops that make the same reads and writes.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <list>
#include <memory>

#include "benchmarks/measure.h"
#include "benchmarks/records.h"
#include "resident/core/byte_order.h"
#include "resident/core/windows_api.h"
#include "system/store/directory_file.h"

static constexpr unsigned int kRecords = 200000;
static constexpr unsigned int kMessages = 5000;
static constexpr unsigned int kTaken = 0x0400;

namespace {

constexpr DWORD kRecordSize = sizeof(DiskDirRec);
// As many records as 64 KiB hold.
constexpr DWORD kBlockRecords = 0x10000 / kRecordSize;

// A Windows file for as long as the object lives.
class PlainFile {
public:
    explicit PlainFile(const std::string& path, DWORD access = GENERIC_READ,
                       DWORD disposition = OPEN_EXISTING)
        : mHandle(CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              disposition, 0, nullptr)) {}
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;
    ~PlainFile() { CloseHandle(mHandle); }

    DWORD Read(void* bytes, DWORD size) {
        DWORD read = 0;
        ReadFile(mHandle, bytes, size, &read, nullptr);
        return read;
    }
    void Write(const void* bytes, DWORD size) {
        DWORD written;
        WriteFile(mHandle, bytes, size, &written, nullptr);
    }
    void Seek(LONG distance, DWORD origin) { SetFilePointer(mHandle, distance, nullptr, origin); }

private:
    HANDLE mHandle;
};

} // namespace

// Hands each record behind the header to `look` until that returns false.
template <class Look>
static void ForEachByBlocks(const std::string& path, Look look) {
    static DiskDirRec block[kBlockRecords];
    PlainFile file(path);
    file.Seek(kRecordSize, FILE_BEGIN);
    for (;;) {
        const DWORD count = file.Read(block, sizeof block) / kRecordSize;
        for (DWORD i = 0; i < count; ++i)
            if (!look(block[i]))
                return;
        if (count < kBlockRecords)
            return;
    }
}

static std::uint64_t CheckSum(const std::string& path) {
    static std::uint32_t block[0x4000];
    PlainFile file(path);
    std::uint64_t sum = 0;
    while (const DWORD read = file.Read(block, sizeof block))
        for (DWORD i = 0; i < read / 4; ++i)
            sum = sum * 31 + block[i];
    return sum;
}

static std::uint64_t Counts(unsigned int used, unsigned int unprocessed, unsigned long newest,
                            int kind1) {
    return ((std::uint64_t{newest} * 31 + used) * 31 + unprocessed) * 31 + kind1;
}

static std::uint64_t CountByLibrary(BaseDirFile& file) {
    file.GetInfo(keInfoAll);
    return Counts(file.UsedCount(), file.UnprocessedCount(), file.NewestDate(),
                  file.HasUnprocessedKind1());
}

static bool Used(const DiskDirRec& record) {
    return record.used && (record.topic[1] >= 0x20 || !record.topic[1]) &&
           static_cast<unsigned short>(record.index) != 0xFFFF;
}

static std::uint64_t CountByBlocks(const std::string& path) {
    unsigned int used = 0;
    unsigned int unprocessed = 0;
    unsigned long newest = 0;
    int kind1 = 0;
    ForEachByBlocks(path, [&](const DiskDirRec& record) {
        if (!Used(record))
            return true;
        ++used;
        newest = std::max(newest, FlipLong(record.date));
        if (!(record.status & 1)) {
            ++unprocessed;
            if (record.kind == 1)
                kind1 = 1;
        }
        return true;
    });
    return Counts(used, unprocessed, newest, kind1);
}

static std::uint64_t FindByLibrary(BaseDirFile& file, const DiskDirRec& wanted) {
    DirectoryRecord probe(&wanted);
    return file.FindRecord(probe, keFindPosition);
}

static bool SamePascal(const unsigned char* left, const unsigned char* right) {
    return std::memcmp(left, right, left[0] + 1u) == 0;
}

static std::uint64_t FindByBlocks(const std::string& path, const DiskDirRec& wanted) {
    std::uint64_t position = kRecordSize;
    ForEachByBlocks(path, [&](const DiskDirRec& record) {
        if (record.date == wanted.date && record.used && SamePascal(record.topic, wanted.topic) &&
            record.kind == wanted.kind && SamePascal(record.sender.name, wanted.sender.name) &&
            SamePascal(record.fileName, wanted.fileName))
            return false;
        position += kRecordSize;
        return true;
    });
    return position;
}

static std::uint64_t CompressByLibrary(const std::string& path) {
    BaseDirFile file(keDirFolder);
    file.SetSpecPart(path.c_str(), 0);
    return file.CompressDFile();
}

static std::uint64_t CompressByBlocks(const std::string& path) {
    static DiskDirRec out[kBlockRecords];
    const std::string stem(path, 0, path.rfind('.'));
    const std::string compressed = stem + "1.TMP";
    const std::string backup = stem + ".BAK";
    {
        PlainFile copy(compressed, GENERIC_WRITE, CREATE_ALWAYS);
        out[0] = DiskDirRec();
        DWORD held = 1;
        ForEachByBlocks(path, [&](const DiskDirRec& record) {
            if (!Used(record))
                return true;
            out[held++] = record;
            if (held == kBlockRecords) {
                copy.Write(out, sizeof out);
                held = 0;
            }
            return true;
        });
        copy.Write(out, held * kRecordSize);
    }
    DeleteFileA(backup.c_str());
    const bool moved =
        MoveFileA(path.c_str(), backup.c_str()) && MoveFileA(compressed.c_str(), path.c_str());
    DeleteFileA(backup.c_str());
    return moved;
}

static std::uint64_t TakeByLibrary(const std::string& path) {
    DirectoryFile file(keDirFolder);
    file.SetSpecPart(path.c_str(), 0);
    RB_Container<DirectoryRecord> list(RB_Container<DirectoryRecord>::keOwnsObjects);
    file.GetUnprocessedDDRs(&list, nullptr, keGetProcessable);
    std::uint64_t sum = 0;
    for (auto* record = list.GetFirstObject(); record; record = list.GetNextObject())
        sum = sum * 31 + record->Record().date;
    return sum;
}

static std::uint64_t TakeByRecords(const std::string& path) {
    WIN32_FIND_DATAA found;
    FindClose(FindFirstFileA(path.c_str(), &found));
    PlainFile file(path, GENERIC_READ | GENERIC_WRITE);
    file.Seek(kRecordSize, FILE_BEGIN);
    std::list<std::unique_ptr<DiskDirRec>> list;
    DiskDirRec record;
    while (file.Read(&record, kRecordSize) == kRecordSize) {
        if (!Used(record) || (record.status & 1) || (record.attributes & 0x0F00) ||
            record.kind == 0)
            continue;
        file.Seek(-static_cast<LONG>(kRecordSize), FILE_CURRENT);
        record.attributes |= kTaken;
        file.Write(&record, kRecordSize);
        list.push_back(std::make_unique<DiskDirRec>(record));
    }
    std::uint64_t sum = 0;
    for (const auto& taken : list)
        sum = sum * 31 + taken->date;
    return sum;
}

static Contest TakeContest(const std::string& folder, unsigned int count) {
    const std::string path = folder + "\\TAKEN.DAT";
    const std::vector<DiskDirRec> records = ProcessableRecords(count);
    const std::string number = std::to_string(count);
    return {.name = "take " + number + " of " + number + " records (GetUnprocessedDDRs)",
            .goal = 1.2,
            .reference = [=] { return TakeByRecords(path); },
            .library = [=] { return TakeByLibrary(path); },
            .prepare = [=] { WriteDFile(path, records); },
            .inspect = [=] { return CheckSum(path); }};
}

static std::uint64_t MarkByLibrary(BaseDirFile& file, const DiskDirRec& wanted) {
    DirectoryRecord probe(&wanted);
    return file.MarkRecord(probe, keMarkProcessed);
}

static std::uint64_t MarkByBlocks(const std::string& path, const DiskDirRec& wanted) {
    const auto position = static_cast<LONG>(FindByBlocks(path, wanted));
    PlainFile file(path, GENERIC_READ | GENERIC_WRITE);
    DiskDirRec record;
    file.Seek(position, FILE_BEGIN);
    file.Read(&record, kRecordSize);
    record.status |= 1;
    record.status &= ~2;
    file.Seek(position, FILE_BEGIN);
    file.Write(&record, kRecordSize);
    return 1;
}

static std::uint64_t StatusOfLast(const std::string& path) {
    DiskDirRec record;
    ReadLastRecord(path, record);
    return record.status;
}

static std::uint64_t CreateByLibrary(const std::string& path) {
    BaseDirFile file(keDirMessages);
    file.SetSpecPart(path.c_str(), 0);
    return file.CreateDFile();
}

static std::uint64_t CreateByFinding(const std::string& path) {
    static DiskDirRec out[kBlockRecords];
    const std::string folder(path, 0, path.rfind('\\') + 1);
    PlainFile file(path, GENERIC_WRITE, CREATE_ALWAYS);
    DWORD held = 0;
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA((folder + "*.EML").c_str(), &found);
    do {
        PlainFile message(folder + found.cFileName);
        DiskDirRec& record = out[held++];
        message.Read(&record, kRecordSize);
        record.used = 1;
        record.fileName[0] = static_cast<unsigned char>(std::strlen(found.cFileName));
        std::memcpy(record.fileName + 1, found.cFileName, record.fileName[0]);
        if (held == kBlockRecords) {
            file.Write(out, sizeof out);
            held = 0;
        }
    } while (FindNextFileA(search, &found));
    FindClose(search);
    file.Write(out, held * kRecordSize);
    return 1;
}

std::vector<Contest> StoreContests(const std::string& folder) {
    const std::string scanned = folder + "\\STORE.DAT";
    WriteDFile(scanned, kRecords);
    const auto file = std::make_shared<BaseDirFile>(keDirFolder);
    file->SetSpecPart(scanned.c_str(), 0);
    const DiskDirRec last = MadeUpRecord(kRecords);

    const std::string halfFree = folder + "\\HALFFREE.DAT";
    const std::string compressed = folder + "\\COMPRESS.DAT";
    WriteDFile(halfFree, kRecords, 2);

    const std::string messages = folder + "\\Messages";
    const std::string created = messages + "\\CREATED.DAT";
    WriteMessages(messages, 0, kMessages);

    return {
        {.name = "count 200,000 records (GetInfo)",
         .goal = 1.5,
         .reference = [=] { return CountByBlocks(scanned); },
         .library = [=] { return CountByLibrary(*file); }},
        {.name = "find the last of 200,000 records (FindRecord)",
         .goal = 1.5,
         .reference = [=] { return FindByBlocks(scanned, last); },
         .library = [=] { return FindByLibrary(*file, last); }},
        {.name = "drop half of 200,000 slots (CompressDFile)",
         .goal = 2.0,
         .reference = [=] { return CompressByBlocks(compressed); },
         .library = [=] { return CompressByLibrary(compressed); },
         .prepare = [=] { CopyFileA(halfFree.c_str(), compressed.c_str(), FALSE); },
         .inspect = [=] { return CheckSum(compressed); },
         .rounds = 7},
        {.name = "mark the last of 200,000 records (MarkRecord)",
         .goal = 1.3,
         .reference = [=] { return MarkByBlocks(scanned, last); },
         .library = [=] { return MarkByLibrary(*file, last); },
         .inspect = [=] { return StatusOfLast(scanned); }},
        TakeContest(folder, 2000),
        TakeContest(folder, 8000),
        TakeContest(folder, 30000),
        {.name = "gather 5,000 message files (CreateDFile)",
         .goal = 1.3,
         .reference = [=] { return CreateByFinding(created); },
         .library = [=] { return CreateByLibrary(created); },
         .inspect = [=] { return CheckSum(created); },
         .rounds = 7},
    };
}
