#pragma once

#include <iosfwd>

#include "resident/core/jx_api.h"
#include "resident/core/rb_string.h"

// A length-prefixed string that stands in a field of `size` bytes; its length byte is not trusted:
// what runs past the field is cut.
JX_API RBString FieldString(const unsigned char* field, unsigned int size);

// The on-disk user record, 114 bytes, integers little-endian. A user whose address is longer than
// 31 characters goes on in a second record, the continuation.
struct JX_API UserLRec {
    enum { keNameSize = 32, keAddressSize = 32, keSettingsValid = 0xFF };

    unsigned char name[keNameSize];    // 0: length byte, at most 31 characters
    unsigned char settingsMark;        // 32: keSettingsValid, or the installable defaults apply
    unsigned char messageFormat;       // 33
    unsigned char enclosureEncode;     // 34
    unsigned char platform;            // 35
    unsigned char popOption;           // 36
    unsigned char reserved37[9];       // 37: zero
    unsigned char zone[keAddressSize]; // 46: the address, length byte and at most 31 characters
    unsigned char type[2];             // 78: a MailUserType
    unsigned char typeExtension[2];    // 80
    unsigned char reserved82[32];      // 82: zero
};
static_assert(sizeof(UserLRec) == 114);

// The continuation, in the place of a second record: bytes 114 to 227 of the pair.
struct UserContinuation {
    enum { keMark0 = 0x01, keMark1 = 0x2B, keTextSize = 112 };

    unsigned char mark[2];          // 114: a length-prefixed "+"
    unsigned char text[keTextSize]; // 116: the rest of the address, at most 111 characters
};
static_assert(sizeof(UserContinuation) == sizeof(UserLRec));

// Write and read a record and, as BaseMailUser::Continued() tells, its continuation, which always
// stands in BaseMailUser::msUlr: they are meant for the record there. Reading leaves the stream at
// the next record.
JX_API std::ostream& operator<<(std::ostream& out, UserLRec& record);
JX_API std::istream& operator>>(std::istream& in, UserLRec& record);
