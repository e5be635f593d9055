#pragma once

#include <string>
#include <vector>

#include "tests/support/hooked_import.h"

// Takes the message boxes of the library while it lives, and answers OK: a real one costs a
// thousand times what it tells of. Those that are looked at are MessageBoxes.
class TakenBoxes {
public:
    TakenBoxes();
    ~TakenBoxes();

    // The texts shown since the last call.
    std::vector<std::string> TakeTexts();

private:
    HookedImport mImport;
};
