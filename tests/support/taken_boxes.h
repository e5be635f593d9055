#pragma once

#include <string>
#include <vector>

// Takes the message boxes of the library while it lives, and answers OK: a real one costs a
// thousand times what it tells of. Those that are looked at are MessageBoxes.
class TakenBoxes {
public:
    TakenBoxes();
    TakenBoxes(const TakenBoxes&) = delete;
    TakenBoxes& operator=(const TakenBoxes&) = delete;
    ~TakenBoxes();

    // The texts shown since the last call.
    std::vector<std::string> TakeTexts();

private:
    void** mImport;
    void* mReal;
};
