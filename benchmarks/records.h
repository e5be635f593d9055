#pragma once

#include <string>
#include <vector>

#include "system/store/directory_record.h"

// Record number `number` of a made-up folder: used unless `free`, all fields filled.
DiskDirRec MadeUpRecord(unsigned int number, bool free = false);

// A type 0 D file of `count` such records behind its header; every `freeEvery`-th slot is free.
void WriteDFile(const std::string& path, unsigned int count, unsigned int freeEvery = 0);

// A D file of these records behind its header.
void WriteDFile(const std::string& path, const std::vector<DiskDirRec>& records);

// Writes one block of bytes as a new file.
void WriteWholeFile(const std::string& path, const void* bytes, unsigned int size);

// Records that are all processable.
std::vector<DiskDirRec> ProcessableRecords(unsigned int count);

// The last record of a file that has one.
void ReadLastRecord(const std::string& path, DiskDirRec& record);

// Message files numbered from `from` up to `count`, each with its record at its start.
void WriteMessages(const std::string& folder, unsigned int from, unsigned int count);
