#pragma once

// The plain exported functions. They stand in a header of their own, which C compilers take alone.
#include "postrider_ticker.h"
