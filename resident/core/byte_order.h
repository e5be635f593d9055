#pragma once

#include "resident/core/jx_api.h"

// The shared files keep their integers big-endian; these exchange between that order and the
// machine's, in either direction.

// Returns `value` with its two bytes exchanged.
JX_API int FlipWord(unsigned short value);

// Returns `value` with its four bytes reversed.
JX_API unsigned long FlipLong(unsigned long value);
