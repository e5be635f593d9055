#pragma once

#include "programs/mailticker/owners.h"

enum class IconMood { Quiet, New, Paused };

// The program's icon at a small size, with a number on a plate over it unless it is 0.
Owned<HICON> NumberIcon(std::size_t number, IconMood mood, int size);
