#pragma once

#include "resident/core/rb_string.h"
#include "system/prefs/system_pref_file.h"
#include "system/prefs/user_pref_file.h"

class JxLoggedMailUser;
class JxMailUserRepresentation;

// Which code page the texts are to be in.
enum ConvertPrefTo : int { kePrefsToAnsi = 0, kePrefsToOem = 1 };

enum { LP_MAX_PRIORITY_LEVELS = 5 };

// The texts of the record, each by the offset of its length byte. Those that are named by it have
// no meaning here. docs/formats/rb_dat.md has their sizes.
enum enumPrefText : int {
    kePrefText168 = 168,
    kePrefText174 = 174,
    kePrefText180 = 180,
    kePrefText212 = 212,
    kePrefText246 = 246,
    kePrefMailDirectory = 280, // without trailing backslash
    kePrefText346 = 346,
    kePrefPopAddress = 380, // "account@host", with an optional ":port"
    kePrefReturnAddress = 514,
    kePrefDefaultDomain = 648,
    kePrefSmtpHost = 782, // with an optional ":port"
    kePrefQuoteMark = 922,
    kePrefDirectoryService = 955,
    kePrefPassword = 988,
    kePrefText1244 = 1244
};

// A user's mail preferences: a record of 1,500 bytes, application block 18001 of the user's
// "RB.DAT", and a few settings in "USER.INI" beside it. In memory the texts are ANSI, in the file
// most are OEM. docs/formats/rb_dat.md describes the record; bytes without a meaning are kept as
// read.
//
//     JXMailPrefs prefs(user, JXMailPrefs::keAllowWriting);
//     if (prefs.IsValid()) {
//         prefs.SetReturnAddress("anna@post.example");
//         prefs.WriteJXPrefs();
//     }
class JX_API JXMailPrefs : public UserPrefFile {
public:
    enum { keApplication = 18001, keVersion = 400, keRecordSize = 1500, keExtraSize = 86 };
    enum : unsigned int { keAllowWriting = 0x1 };

    // Defaults; the specification is set later. `flags` is keAllowWriting or 0.
    explicit JXMailPrefs(unsigned int flags);
    // Read "RB.DAT" of the user's directory, the logged text or the value. Without one nothing is
    // set, and IsValid is 0.
    JXMailPrefs(JxLoggedMailUser& user, unsigned int flags);
    JXMailPrefs(JxMailUserRepresentation& user, unsigned int flags);
    JXMailPrefs(const JXMailPrefs&) = delete;
    ~JXMailPrefs() override;

    // Not the account and host split from the record, nor the settings file.
    JXMailPrefs& operator=(const JXMailPrefs& other);

    // The record of a new user, and "USER.INI" of this file's folder for the settings below.
    void SetDefaults();
    // As UserPrefFile's, and so leaves the file open, with a block that is not converted yet; then
    // "USER.INI" is the one beside it. ClosePrefFile, then WriteJXPrefs.
    int CreatePrefsFile(const char* path);
    // Open, read or write the record, and close. Return 1, or 0 after message 701. Writing does
    // nothing, and returns 1, without keAllowWriting. It converts the texts to OEM and back, in
    // memory too: characters that OEM does not have come back as others.
    int ReadJXPrefs();
    int WriteJXPrefs();
    // Reads another application's block. Returns 1, or 0 after message 701.
    int ReadOtherPrefs(AppPrefTag& tag);
    int IsValid() const { return mfValid; }

    // Converts the texts in memory, between ANSI and OEM; ReadJXPrefs and WriteJXPrefs do.
    void ConvertPrefs(ConvertPrefTo direction);
    // Between the mail directory, with its trailing backslash, and the record, without; done by
    // them, too.
    void FixMailDirectory(int toRecord);
    // The mail directory, kept in the record with the next write. For names outside ASCII see
    // file_spec.h.
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

    // Names of priority levels, 0 to 4, of at most 15 characters. Another level is reported, or
    // has an empty name.
    void SetPriority(const RBString& name, unsigned int wLevel);
    RBString GetPriority(unsigned int wLevel) const;

    // The user's password, address as POP address, and what is split from that; the password alone.
    void SetUserData(JxLoggedMailUser& user);
    void SetNewPassword(JxLoggedMailUser& user);
    // Does nothing.
    void GetUserRep(JxMailUserRepresentation& user);
    // Whether the user's directory, and "RB.DAT" in it, exist.
    int VerifyFileExists(JxMailUserRepresentation& user);

    // The main window, kept as four signed 16-bit numbers.
    void SetClientWindowRect(int left, int top, int right, int bottom);
    void GetClientWindowRect(int& left, int& top, int& right, int& bottom) const;

    // What was split from POP address and SMTP host; the texts are valid until the next change.
    // Empty ones are reported.
    const char* GetPopAccount() const;
    const char* GetSmtpHost() const;
    unsigned short GetPopPort() const { return mwPopPort; }
    unsigned short GetSmtpPort() const { return mwSmtpPort; }
    // "host:port", port 25 without one; and further texts of the record, cut at its sizes.
    void SetFullSmtpHost(const char* host);
    RBString GetReturnAddress() const;
    void SetReturnAddress(const char* address);
    RBString GetDefaultDomain() const;
    void SetDefaultDsApiName(const char* name);

    // Settings of "USER.INI", read and written at once. They need SetDefaults. A missing flag is 0,
    // a missing connection empty; an empty connection removes the key.
    void SetDialupConnection(const char* name);
    void GetDialupConnection(RBString* name);
    int GetDisconnectFlag();
    void SetDisconnectFlag(int flag);

    // The record, as it stands in memory, 1,500 bytes.
    unsigned char* Record() { return mRecord; }
    // Two further texts, at 18 and 52 of 86 bytes: a length byte, and 33 more. They are converted
    // and assigned with the record, and never written.
    unsigned char* ExtraTexts() { return mExtra; }
    // One of its texts; setting one cuts it at its size. A number that is no text's is reported,
    // and is an empty text.
    RBString Text(enumPrefText text) const;
    void SetText(enumPrefText text, const char* value);

private:
    void Init();
    void ReadFrom(const RBString& directory, unsigned int flags);
    void LocalDir(const char* name, RBString* dir) const;
    void MakeIniFile();
    void SplitAddresses();
    RBInt& Number(unsigned int offset) { return *reinterpret_cast<RBInt*>(mRecord + offset); }

    alignas(RBInt) unsigned char mRecord[keRecordSize];
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
