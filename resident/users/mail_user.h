#pragma once

#include "resident/core/rb_container.h"
#include "resident/users/base_mail_user.h"

class RbFile;

// A mail user as the rest of the system makes, orders, compares and shows it.
class JX_API MailUser : public BaseMailUser {
public:
    enum { keMaxDisplayName = 51 };

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

    int IsEqual(const MailUser& other) const;
    // Types order first (0x6000, 0x2000, then 0x4000 and 0x8000 together), then names, without
    // regard to case and with comma and bar as a space. The two are not mirror images: a 0x6000
    // user is less than any other, itself too, and equal names of one type count as greater.
    int IsLessThan(const MailUser& other) const;
    int IsGreaterThan(const MailUser& other) const;
    int operator<(const MailUser& other) const { return IsLessThan(other); }
    int operator>(const MailUser& other) const { return IsGreaterThan(other); }

    // Translate the name's characters between the Macintosh and the ANSI set, in place: strings
    // that share the name change with it.
    void TranslateIn();
    void TranslateOut();

    // The display form of "family|given": "given family" with bit 0 of `flags`, else
    // "family, given", at most 51 characters; a name without a bar as it is. `out` may be `name`.
    static RBString& OrderedUserName(RBString& out, RBString& name, unsigned short flags);
    // The same for a name that is not in `out`.
    static RBString& OrderedUserName(RBString& out, std::string_view name, unsigned short flags);
    RBString& OrderedUserName(RBString& out, unsigned short flags);

    // Puts `text` into `dest` and returns 1 when it is shorter than `limit`, else 0.
    static int BoundryCheck(RBString& dest, const char* text, unsigned int limit);

    // The name's first character, or its second behind a leading bar; 0 for an empty name.
    char GetUserNameFirstChar() const;
};

extern template class JX_API RB_Container<MailUser>;
