#include "benchmarks/records.h"

#include <algorithm>
#include <cstdio>

#include "resident/core/byte_order.h"
#include "resident/core/windows_api.h"

static void SetPascal(unsigned char* field, const char* format, unsigned int number) {
    field[0] = static_cast<unsigned char>(
        std::sprintf(reinterpret_cast<char*>(field) + 1, format, number));
}

DiskDirRec MadeUpRecord(unsigned int number, bool free) {
    DiskDirRec record = {};
    record.index = static_cast<short>(number % 0x7FFF);
    record.used = !free;
    record.status = number & 1;
    SetPascal(record.topic, "Message number %u", number);
    SetPascal(record.fileName, "M%07u.EML", number);
    SetPascal(record.sender.name, "Family%u|Given", number % 1000);
    record.date = FlipLong(3000000000u + number);
    record.kind = static_cast<short>(number % 6);
    return record;
}

void WriteDFile(const std::string& path, unsigned int count, unsigned int freeEvery) {
    std::vector<DiskDirRec> records(count);
    for (unsigned int i = 1; i <= count; ++i)
        records[i - 1] = MadeUpRecord(i, freeEvery && i % freeEvery == 0);
    WriteDFile(path, records);
}

void WriteDFile(const std::string& path, const std::vector<DiskDirRec>& records) {
    std::vector<DiskDirRec> file(1 + records.size(), DiskDirRec());
    std::copy(records.begin(), records.end(), file.begin() + 1);
    WriteWholeFile(path, file.data(), file.size() * sizeof file[0]);
}

void WriteWholeFile(const std::string& path, const void* bytes, unsigned int size) {
    const HANDLE file =
        CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written;
    WriteFile(file, bytes, size, &written, nullptr);
    CloseHandle(file);
}

std::vector<DiskDirRec> ProcessableRecords(unsigned int count) {
    std::vector<DiskDirRec> records(count);
    for (unsigned int i = 0; i < count; ++i) {
        records[i] = MadeUpRecord(i + 1);
        records[i].status = 0;
        records[i].kind = 1;
    }
    return records;
}

void ReadLastRecord(const std::string& path, DiskDirRec& record) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD read;
    SetFilePointer(file, -static_cast<LONG>(sizeof record), nullptr, FILE_END);
    ReadFile(file, &record, sizeof record, &read, nullptr);
    CloseHandle(file);
}

void WriteMessages(const std::string& folder, unsigned int from, unsigned int count) {
    CreateDirectoryA(folder.c_str(), nullptr);
    for (unsigned int i = from; i < count; ++i) {
        const DiskDirRec record = MadeUpRecord(i);
        const auto* const name = reinterpret_cast<const char*>(record.fileName);
        WriteWholeFile(folder + "\\" + std::string(name + 1, name[0]), &record, sizeof record);
    }
}
