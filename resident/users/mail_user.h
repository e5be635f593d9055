#pragma once

#include "resident/core/rb_container.h"
#include "resident/users/base_mail_user.h"

class RbFile;

// Results of Export and Import.
enum enumUserListResult : int {
    keUserListDone = 0,
    keUserListNoName = 1,       // export: nothing written
    keUserListNotWritten = 2,   // export
    keUserListTooFewFields = 3, // import: fewer than three on the line
    keUserListTooLong = 4,      // import: a name over 32 characters, an address over 111
    keUserListNoGivenName = 6,  // import
    keUserListEmptyLine = 7     // import
};

// A mail user as the rest of the system makes, orders, compares and shows it.
class JX_API MailUser : public BaseMailUser {
public:
    enum { keMaxDisplayName = 51, keGivenFirstRoom = 2 * UserLRec::keNameSize };

    // As the base's.
    MailUser();
    MailUser(MailUser& other);
    MailUser(const MailUser& other);
    MailUser(UserLRec* rec, UserLRec* cont);
    // Null names and addresses stay empty.
    MailUser(const char* name, const char* address, enumMessageFormat format,
             enumEnclosureEncode encoding);
    MailUser(const char* name, const char* address, MailUserType type);
    // A user whose address is the file's full specification.
    MailUser(RBString& name, RbFile& file);
    ~MailUser() override;

    MailUser& operator=(const MailUser& other);

    // As operator== of the base.
    int IsEqual(const MailUser& other) const;
    // Types order first (0x6000, 0x2000, then 0x4000 and 0x8000 together), then names by their
    // first 32 characters, without regard to case and with comma and bar as a space. The two are
    // not mirror images: a 0x6000 user is less than any other, itself too, and equal names of one
    // type count as greater.
    int IsLessThan(const MailUser& other) const;
    int IsGreaterThan(const MailUser& other) const;
    int operator<(const MailUser& other) const { return IsLessThan(other); }
    int operator>(const MailUser& other) const { return IsGreaterThan(other); }

    // Translate the name's characters, not the address, between the Macintosh and the ANSI set, in
    // place: other strings and users that share the name change with it, and must not be translated
    // again.
    void TranslateIn();
    void TranslateOut();

    // The display form of "family|given": "given family" with bit 0 of `flags`, else
    // "family, given", at most 51 characters; a name without a bar as it is. `out` may be `name`.
    static RBString& OrderedUserName(RBString& out, RBString& name, unsigned short flags);
    RBString& OrderedUserName(RBString& out, unsigned short flags);
    // Writes a record's name, which has a valid length, in the form "given family" to `to`, with a
    // NUL; it ends at its first zero. Returns the length. `to` has room for keGivenFirstRoom.
    static unsigned int PutGivenFirst(char* to, const UserLRec& user);

    // Puts `text` into `dest` and returns 1 when it is shorter than `limit`, else 0.
    static int BoundryCheck(RBString& dest, const char* text, unsigned int limit);

    // Write this user as one line of a user list, and read the next line into it: family and given
    // name, address, platform, message format and enclosure encoding, the settings as words.
    // The file is open, at the start of a line; a line has at most 1,024 characters, what is behind
    // them is the next one. Importing begins with the installable defaults; what was read before a
    // failure stays set. docs/formats/user_list.md describes the line.
    enumUserListResult Export(RbFile& file);
    enumUserListResult Import(RbFile& file);

    // The name's first character, or its second behind a leading bar; 0 for an empty name.
    char GetUserNameFirstChar() const;

private:
    enumUserListResult ImportFields(std::string_view line);
};

JX_EXPORTED_CONTAINER(MailUser);
