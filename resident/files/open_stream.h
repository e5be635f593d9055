#pragma once

#include <fstream>

#include "resident/files/open_mode.h"

// The one place where a numeric open mode becomes the stream library's: opens `stream` on `name`.
// Afterwards its state is good, or both bad and fail are set.
void OpenStream(std::fstream& stream, const char* name, int mode);

// Whether an open stream was opened to be read.
bool IsOpenToRead(std::fstream& stream);
