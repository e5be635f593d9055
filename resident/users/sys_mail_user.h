#pragma once

#include "resident/users/mail_user.h"

// The on-disk system user record, 82 bytes: name and address alone. A longer address goes on in a
// second record, the continuation.
struct SysUserLRec {
    unsigned char name[32];       // 0: length byte, at most 31 characters
    unsigned char reserved32[14]; // 32: zero
    unsigned char address[32];    // 46: length byte, at most 31 characters
    unsigned char reserved78[4];  // 78: zero
};
static_assert(sizeof(SysUserLRec) == 82);

// The continuation: bytes 82 to 163 of the pair.
struct SysUserContinuation {
    unsigned char mark[2];  // 82: a length-prefixed "+"
    unsigned char text[80]; // 84: the rest of the address, at most 79 characters
};
static_assert(sizeof(SysUserContinuation) == sizeof(SysUserLRec));

// A mail user in the short form that the logged user file keeps.
class JX_API SysMailUser : public MailUser {
public:
    SysMailUser();
    SysMailUser(MailUser& other); // a copy
    SysMailUser(const SysMailUser& other) = default;
    // An empty user, whatever is given; programs rely on it.
    SysMailUser(RBString& name, RBString& address);
    ~SysMailUser() override;

    SysMailUser& operator=(const SysMailUser& other) = default;

    // Whether the buffer's second record is a continuation.
    static bool IsContinued();

    // Fills the buffer, and writes its address in memory as text, not the record: programs that
    // read such streams skip that text. JxLoggedMailUser writes the record.
    friend JX_API std::ostream& operator<<(std::ostream& out, SysMailUser& user);
    // Takes name and address; leaves the stream at the next record.
    friend JX_API std::istream& operator>>(std::istream& in, SysMailUser& user);

    // The record and its continuation, through which every system user is written and read.
    static unsigned char ulrSys[2 * sizeof(SysUserLRec)];

protected:
    static SysUserLRec& Record() { return *reinterpret_cast<SysUserLRec*>(ulrSys); }
};

// Meant for the record in SysMailUser::ulrSys. With a continuation, writing puts the 82 bytes from
// the record's second byte on behind it, not the continuation; reading takes the continuation.
JX_API std::ostream& operator<<(std::ostream& out, SysUserLRec& record);
JX_API std::istream& operator>>(std::istream& in, SysUserLRec& record);
