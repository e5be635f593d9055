#pragma once

#include <fstream>

#include "resident/users/sys_mail_user.h"

class FileSpec;
class JXMailPrefs;

// Kept for programs, which bring further values.
enum enumLoggedUserStatus : int { keLoggedStatusNone = 0 };

// A user's local folders.
enum enumLocalMailDir : int {
    keLocalInbox = 0,
    keLocalMailLog = 1,
    keLocalPublic = 2,
    keLocalTrash = 3,
    keLocalSentMail = 4,
    keLocalOutbox = 5,
    keLocalBackgndWork = 6, // without a directory file
    keLocalDeadMail = 7     // without a directory file
};

// The logged-in user, as "JXLGDUSR.DAT" keeps it: a system user record with a text behind it, and
// then the user again as a mail user, with the whole address.
class JX_API JxLoggedMailUser : public SysMailUser {
public:
    // Not logged, with format 1, encoding 1 and platform 6.
    JxLoggedMailUser();
    JxLoggedMailUser(MailUser& other);
    JxLoggedMailUser(const JxLoggedMailUser& other) = default;
    ~JxLoggedMailUser() override;
    // Assignment calls it to copy the data of a derived class; there is none here.
    virtual void CopyDerivedData(const JxLoggedMailUser& other);

    JxLoggedMailUser& operator=(const JxLoggedMailUser& other);

    void SetUserStatus(enumLoggedUserStatus status) { mStatus = status; }
    enumLoggedUserStatus UserStatus() const { return mStatus; }
    // Sets both logged flags to 1.
    void SetNotLogged();
    int LoggedFlag1() const { return mfLogged1; }
    int LoggedFlag2() const { return mfLogged2; }
    long Value() const { return mlValue; }
    void SetValue(long value) { mlValue = value; }
    // The directory of the user's preference file.
    const RBString& LoggedText() const { return mstrLogged; }
    void SetLoggedText(const RBString& text) { mstrLogged = text; }
    // The user's password; never written to a file with the user.
    const RBString& SecondText() const { return mstrSecond; }
    void SetSecondText(const RBString& text) { mstrSecond = text; }

    // Write and read the logged user file's contents at the stream's position; true on success. An
    // address of more than 142 characters is not written. What a name loses: see BaseMailUser.
    bool WriteInfo(std::fstream& file);
    bool ReadInfo(std::fstream& file);

    // Makes one of the user's folders, and its empty directory file, where they are missing; the
    // mail directory of `prefs` must be there. Once the folder is there `result` receives the
    // directory file, or the folder that has none; else it stays. Returns 1 when both are there.
    int SetupLocalMailDirectory(JXMailPrefs* prefs, FileSpec& result, enumLocalMailDir which);

    // The system user record and, if the stream is still good, the logged text. An address of 32
    // characters or more does not survive it.
    friend JX_API std::ostream& operator<<(std::ostream& out, JxLoggedMailUser& user);
    friend JX_API std::istream& operator>>(std::istream& in, JxLoggedMailUser& user);
    // Name and address equal.
    friend JX_API int operator==(const JxLoggedMailUser& left, const JxLoggedMailUser& right);

private:
    void Init();

    int mfLogged1;
    int mfLogged2;
    enumLoggedUserStatus mStatus;
    long mlValue;
    RBString mstrLogged;
    RBString mstrSecond;
};
