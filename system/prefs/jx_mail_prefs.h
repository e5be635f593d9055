#pragma once

#include "resident/core/rb_string.h"
#include "system/prefs/system_pref_file.h"
#include "system/prefs/user_pref_file.h"

class JxLoggedMailUser;
class JxMailUserRepresentation;

enum ConvertPrefTo : int { kePrefsToAnsi = 0, kePrefsToOem = 1 };

enum { LP_MAX_PRIORITY_LEVELS = 5 };

// Where a text stands in the record of the mail preferences.
struct PrefField {
    unsigned short offset;
    unsigned short size; // with length byte and closing zero
};

// A user's mail preferences: a record of 1,500 bytes, application block 18001 of the user's
// "RB.DAT", and a few settings in "USER.INI" beside it. In memory the texts are ANSI, in the file
// OEM. docs/formats/rb_dat.md describes the record; bytes without a meaning are kept as read.
class JX_API JXMailPrefs : public UserPrefFile {
public:
    enum { keApplication = 18001, keVersion = 400, keRecordSize = 1500, keExtraSize = 86 };
    enum : unsigned int { keAllowWriting = 0x1 };

    // Defaults; the specification is set later.
    explicit JXMailPrefs(unsigned int flags);
    // Read "RB.DAT" of the user's directory. Without one nothing is set, and IsValid is 0.
    JXMailPrefs(JxLoggedMailUser& user, unsigned int flags);
    JXMailPrefs(JxMailUserRepresentation& user, unsigned int flags);
    JXMailPrefs(const JXMailPrefs&) = delete;
    ~JXMailPrefs() override;

    // Not the account and host split from the record, nor the settings file.
    JXMailPrefs& operator=(const JXMailPrefs& other);

    void SetDefaults();
    int CreatePrefsFile(const char* path);
    // Return 1, or 0 after message 701. Writing does nothing, and returns 1, without
    // keAllowWriting.
    int ReadJXPrefs();
    int WriteJXPrefs();
    // Reads another application's block.
    int ReadOtherPrefs(AppPrefTag& tag);
    int IsValid() const { return mfValid; }

    void ConvertPrefs(ConvertPrefTo direction);
    // Between the mail directory, with its trailing backslash, and the record, without.
    void FixMailDirectory(int toRecord);
    void SetMailDirectory(FileSpec& directory);
    const RBString& MailDirectory() const { return mstrMailDirectory; }

    // The user's folders, with a trailing backslash.
    void GetLocalInboxDir(RBString* dir) const { LocalDir("InBox", dir); }
    void GetLocalOutboxDir(RBString* dir) const { LocalDir("OutBox", dir); }
    void GetLocalMailLogDir(RBString* dir) const { LocalDir("MailLog", dir); }
    void GetLocalPublicDir(RBString* dir) const { LocalDir("Public", dir); }
    void GetLocalTrashDir(RBString* dir) const { LocalDir("Trash", dir); }
    void GetBackgndWorkDir(RBString* dir) const { LocalDir("BckgWork", dir); }
    void GetLocalSentMailDir(RBString* dir) const { LocalDir("SentMail", dir); }
    void GetLocalDeadMailDir(RBString* dir) const { LocalDir("DeadMail", dir); }

    // At most 15 characters.
    void SetPriority(const RBString& name, unsigned int wLevel);
    RBString GetPriority(unsigned int wLevel) const;

    // Password, POP address and what is split from it.
    void SetUserData(JxLoggedMailUser& user);
    void SetNewPassword(JxLoggedMailUser& user);
    // Does nothing.
    void GetUserRep(JxMailUserRepresentation& user);
    // Whether the user's directory, and "RB.DAT" in it, exist.
    int VerifyFileExists(JxMailUserRepresentation& user);

    void SetClientWindowRect(int left, int top, int right, int bottom);
    void GetClientWindowRect(int& left, int& top, int& right, int& bottom) const;

    // Empty texts are reported.
    const char* GetPopAccount() const;
    const char* GetSmtpHost() const;
    unsigned short GetPopPort() const { return mwPopPort; }
    unsigned short GetSmtpPort() const { return mwSmtpPort; }
    void SetFullSmtpHost(const char* host);
    RBString GetReturnAddress() const;
    void SetReturnAddress(const char* address);
    RBString GetDefaultDomain() const;
    void SetDefaultDsApiName(const char* name);

    // Settings of "USER.INI", read and written at once. They need SetDefaults.
    void SetDialupConnection(const char* name);
    void GetDialupConnection(RBString* name);
    int GetDisconnectFlag();
    void SetDisconnectFlag(int flag);

    // The record, as it stands in memory.
    unsigned char* Record() { return mRecord; }
    RBString Text(const PrefField& field) const;
    void SetText(const PrefField& field, const char* text);

private:
    void Init();
    void ReadFrom(const RBString& directory, unsigned int flags);
    void LocalDir(const char* name, RBString* dir) const;
    void MakeIniFile();
    void SplitAddresses();
    RBInt& Number(unsigned int offset) { return *reinterpret_cast<RBInt*>(mRecord + offset); }

    alignas(RBInt) unsigned char mRecord[keRecordSize];
    // Two further texts, in memory alone.
    unsigned char mExtra[keExtraSize];
    unsigned int mPrefFlags;
    int mfValid;
    RBString mstrPopAccount;
    unsigned short mwPopPort;
    RBString mstrSmtpHost;
    unsigned short mwSmtpPort;
    SystemPrefFile* mpoUserIniFile;
    RBString mstrMailDirectory;
};
