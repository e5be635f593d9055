#pragma once

#include <iosfwd>

#include "resident/core/rb_string.h"
#include "resident/users/mail_formats.h"
#include "resident/users/user_record.h"

// The kinds of users that have names here; records bring others.
typedef unsigned short MailUserType;
enum : MailUserType {
    keUserOrdinary = 0x8000,
    keUserFile = 0x2000 // its address is a file's path
};

// Address lengths below it fit the main record.
enum { ULR_MAX_ZONE_LEN = 32, ULR_MAX_ADDRESS_LEN = 142 };

// The data of a mail user: one entry of an address book or of an account.
//
// A name is "family|given", or one display name without a bar. Copies and assignments share the
// texts (RBString). The record and the stream operators work in a class-wide buffer: one thread at
// a time.
//
// Nothing checks lengths here: a record holds names of 31 characters and addresses of 142; names
// are compared by 32, split by 34 and shown by 51 characters.
class JX_API BaseMailUser {
public:
    // An ordinary user without a name, with the installable defaults.
    BaseMailUser();
    // Of the flags, bit 0x10 alone is copied.
    BaseMailUser(const BaseMailUser& other);
    // From a record and, unless null, its continuation. A name's length byte of 32 or more is set
    // to 31 in the record. The POP option byte stays 0 whatever the record has.
    BaseMailUser(UserLRec* rec, UserLRec* cont);
    virtual ~BaseMailUser();

    // Flags and spare word stay.
    BaseMailUser& operator=(const BaseMailUser& other);
    // Address, name, platform, message format and enclosure encoding; not the type.
    int operator==(const BaseMailUser& other) const;

    // Platform, message format, enclosure encoding and POP option byte of a record.
    // docs/formats/user_record.md has the rules.
    void SetPOPEnums(UserLRec* rec);
    // The platform that message format and enclosure encoding imply; 5 for an unusual pair.
    void SetPlatformFromEncoding();
    // The installable defaults, and POP option byte 0.
    void SetPOPDefaults();

    // Sets a name's length byte of 32 or more to 31, and returns false then.
    static bool CheckValidity(UserLRec& rec);

    // The parts of "family|given", of the name's first 34 characters; a name without a bar is all
    // given. Returns 1, or 0 for an empty name.
    int SplitUserName(RBString& given, RBString& family) const;
    // Takes the address from "name <address>", else the whole text, and reports an empty one. The
    // name stays. Returns 1.
    int SetInternetAddress(const char* nameAndAddr);

    static int Size() { return sizeof(UserLRec); }
    // Whether the buffer's second record is a continuation.
    static bool Continued();
    // The buffer.
    static UserLRec* UlrPtr();

    enumMessageFormat MessageFormat() const { return mMessageFormat; }
    void SetMessageFormat(enumMessageFormat format) { mMessageFormat = format; }
    enumEnclosureEncode EnclosureEncode() const { return mEnclosureEncode; }
    void SetEnclosureEncode(enumEnclosureEncode encoding) { mEnclosureEncode = encoding; }
    enumUserPlatformType Platform() const { return mPlatform; }
    void SetPlatform(enumUserPlatformType platform) { mPlatform = platform; }
    unsigned char PopOption() const { return mPopOption; }
    void SetPopOption(unsigned char option) { mPopOption = option; }
    unsigned long Flags() const { return mFlags; }
    void SetFlags(unsigned long flags) { mFlags = flags; }
    MailUserType Type() const { return mType; }
    void SetType(MailUserType type) { mType = type; }
    unsigned short TypeExtension() const { return mTypeExtension; }
    void SetTypeExtension(unsigned short extension) { mTypeExtension = extension; }
    const RBString& Name() const { return mstrName; }
    void SetName(const RBString& name) { mstrName = name; }
    const RBString& Address() const { return mstrAddress; }
    void SetAddress(const RBString& address) { mstrAddress = address; }

    // A name is written as it is, and read back with 31 characters at most. An address over 142
    // characters fails the stream, and nothing is written.
    friend JX_API std::ostream& operator<<(std::ostream& out, BaseMailUser& user);
    // A failed read leaves the user unchanged. A type other than keUserFile comes back as
    // keUserOrdinary.
    friend JX_API std::istream& operator>>(std::istream& in, BaseMailUser& user);

    // The record and its continuation.
    static unsigned char msUlr[2 * sizeof(UserLRec)];

protected:
    enum : unsigned long { keCopiedFlag = 0x10 };

    unsigned long mFlags = 0;
    enumMessageFormat mMessageFormat;
    enumEnclosureEncode mEnclosureEncode;
    enumUserPlatformType mPlatform;
    unsigned char mPopOption;
    unsigned short mSpare;
    MailUserType mType;
    unsigned short mTypeExtension = 0;
    RBString mstrName;
    RBString mstrAddress;
};
