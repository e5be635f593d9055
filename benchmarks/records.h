#pragma once

#include <string>

#include "system/store/directory_record.h"

// Record number `number` of a made-up folder: used unless `free`, all fields filled.
DiskDirRec MadeUpRecord(unsigned int number, bool free = false);

// A type 0 D file of `count` such records behind its header; every `freeEvery`-th slot is free.
void WriteDFile(const std::string& path, unsigned int count, unsigned int freeEvery = 0);
