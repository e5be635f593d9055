#pragma once

#include "resident/core/rb_string.h"

// Copies a string's length byte and characters to offset `at` of a record, cut at the record's end.
void PutPascal(const RBString& string, unsigned char* record, unsigned int at,
               unsigned int recordSize);
