#include "tests/fuzz/format.h"
void AddUserFormats(std::vector<Format>&) {}
void AddPrefFormats(std::vector<Format>&) {}
void AddTextFormats(std::vector<Format>&) {}
