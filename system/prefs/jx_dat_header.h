#pragma once

#include <iosfwd>

#include "resident/core/jx_api.h"
#include "resident/core/rb_int.h"

// The small named header at the head of a preference file: 44 bytes, written and read as they stand
// in memory.
struct JX_API JXDatHeader {
    enum { keNameSize = 33, keMaxName = 32 };

    JXDatHeader(); // all zero

    // Keeps 32 characters. The length byte is the whole name's length, uncut: other
    // programs take the name up to its zero. Returns the stored characters.
    char* SetName(const char* name);

    unsigned long first = 0;      // 0
    unsigned long second = 0;     // 4
    unsigned short word = 0;      // 8
    unsigned char nameLength = 0; // 10
    char name[keNameSize]{};      // 11: zero-filled
};
static_assert(sizeof(JXDatHeader) == 44);

// The header with a big-endian number behind it: 46 bytes in a stream.
struct JX_API JXExtendDatHeader : JXDatHeader {
    RBInt number; // 44
};

// The 44 bytes.
JX_API std::ostream& operator<<(std::ostream& out, JXDatHeader& header);
JX_API std::istream& operator>>(std::istream& in, JXDatHeader& header);

// The header and, if the stream is still good, the number.
JX_API std::ostream& operator<<(std::ostream& out, JXExtendDatHeader& header);
JX_API std::istream& operator>>(std::istream& in, JXExtendDatHeader& header);
