#include "tests/fuzz/format.h"
void AddTextFormats(std::vector<Format>&) {}
