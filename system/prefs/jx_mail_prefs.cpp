#include "system/prefs/jx_mail_prefs.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "resident/files/disk_driver.h"
#include "resident/runtime/check.h"
#include "resident/users/jx_backgnd_data.h"
#include "resident/users/jx_logged_mail_user.h"
#include "resources/jxsysres.h"
#include "system/accounts/jx_mail_user_representation.h"
#include "system/prefs/rb_ini_entry.h"

static constexpr Reporter kReports("JXSYSTEM\\MAILPREF.CPP");

static const char kPrefsFile[] = "RB.DAT";
static const char kIniFile[] = "USER.INI";
static const char kDialupSection[] = "Dial-Up Networking";
static const char kConnectionKey[] = "Connection";
static const char kDisconnectKey[] = "Disconnect";

namespace {

// A text with a length byte and a closing zero.
struct TextField {
    unsigned short offset;
    unsigned short size;
    bool converted; // between ANSI and OEM; the others are ASCII, or kept as they are
    const char* initial = nullptr; // the default, or null for
    unsigned short resource = 0;   // a string of the product's resource library, or 0 for none

    unsigned int Room() const { return size - 2u; }
};

} // namespace

static constexpr TextField kTexts[] = {{kePrefText168, 6, true, "????"},
                                       {kePrefText174, 6, true, "????"},
                                       {kePrefText180, 32, true},
                                       {kePrefText212, 34, true, nullptr, 110},
                                       {kePrefText246, 34, true},
                                       {kePrefMailDirectory, 66, true},
                                       {kePrefText346, 34, true},
                                       {kePrefPopAddress, 134, true},
                                       {kePrefReturnAddress, 134, true},
                                       {kePrefDefaultDomain, 134, true},
                                       {kePrefSmtpHost, 134, false},
                                       {kePrefQuoteMark, 33, false, ">"},
                                       {kePrefDirectoryService, 33, false},
                                       {kePrefPassword, 256, true},
                                       {kePrefText1244, 256, false, nullptr, 3424}};

static const TextField* FindText(enumPrefText text) {
    const auto* const found =
        std::find_if(std::begin(kTexts), std::end(kTexts), [text](const TextField& field) {
            return field.offset == static_cast<int>(text);
        });
    return found == std::end(kTexts) ? nullptr : found;
}

// Texts without a length byte: one, and the names of the priority levels.
static constexpr unsigned int kString16 = 16;
static constexpr unsigned int kPriorities = 32;
static constexpr unsigned int kPlainSize = 16;

static constexpr unsigned int kWindowRect = 112;

// The numbers that are not 0 in a new record: option bits, and 16-bit ones.
struct Default {
    unsigned short offset;
    short value;
};
static constexpr Default kOptionDefaults[] = {
    {0, 0xCB}, {1, 0x34}, {2, 0x3B}, {5, 0x24}, {6, 0x08}};
static constexpr Default kNumberDefaults[] = {{150, 10}, {152, 10}, {154, 4},    {156, 10},
                                              {158, 7},  {916, 45}, {918, 4096}, {920, 1024}};

// The two texts in memory alone: their offsets, and their size with the length byte.
static constexpr unsigned int kExtraTexts[] = {18, 52};
static constexpr unsigned int kExtraSize = 34;

JXMailPrefs::JXMailPrefs(unsigned int flags)
    : UserPrefFile(mRecord, keApplication, keRecordSize, keVersion) {
    Init();
    mPrefFlags = flags;
    SetDefaults();
}

JXMailPrefs::JXMailPrefs(JxLoggedMailUser& user, unsigned int flags)
    : UserPrefFile(mRecord, keApplication, keRecordSize, keVersion) {
    ReadFrom(user.LoggedText(), flags);
}

JXMailPrefs::JXMailPrefs(JxMailUserRepresentation& user, unsigned int flags)
    : UserPrefFile(mRecord, keApplication, keRecordSize, keVersion) {
    ReadFrom(user.GetPrefFileSpecString(), flags);
}

JXMailPrefs::~JXMailPrefs() { delete mpoUserIniFile; }

void JXMailPrefs::Init() {
    std::memset(mRecord, 0, sizeof mRecord);
    std::memset(mExtra, 0, sizeof mExtra);
    mPrefFlags = 0;
    mfValid = false;
    mwPopPort = JxBackgndData::keDefaultPopPort;
    mwSmtpPort = JxBackgndData::keDefaultSmtpPort;
    mpoUserIniFile = nullptr;
}

void JXMailPrefs::ReadFrom(const RBString& directory, unsigned int flags) {
    Init();
    // Without a folder of that name it would be the current folder's file.
    const bool named = SetSpecPart(directory, keAsPath) == keSpecOk;
    SetSpecPart(kPrefsFile, keAsParts);
    if (named && Exists()) {
        mPrefFlags = flags;
        SetDefaults();
        ReadJXPrefs();
    }
}

JXMailPrefs& JXMailPrefs::operator=(const JXMailPrefs& other) {
    if (this != &other) {
        UserPrefFile::operator=(other);
        moTag.buffer = mRecord;
        std::memcpy(mRecord, other.mRecord, sizeof mRecord);
        std::memcpy(mExtra, other.mExtra, sizeof mExtra);
        mPrefFlags = other.mPrefFlags;
        mfValid = other.mfValid;
        mstrMailDirectory = other.mstrMailDirectory;
        mwPopPort = other.mwPopPort;
        mwSmtpPort = other.mwSmtpPort;
    }
    return *this;
}

RBString JXMailPrefs::Text(enumPrefText text) const {
    const TextField* const field = FindText(text);
    kReports.Check(field, "field");
    RBString result;
    if (field) {
        const auto* const bytes = reinterpret_cast<const char*>(mRecord) + field->offset + 1;
        // Never behind the field, whatever the length byte says, nor behind a zero in it.
        const unsigned int length = std::min<unsigned int>(mRecord[field->offset], field->Room());
        result.puts(std::string_view(bytes, strnlen(bytes, length)));
    }
    return result;
}

void JXMailPrefs::SetText(enumPrefText text, const char* value) {
    const TextField* const field = FindText(text);
    kReports.Check(field, "field");
    if (!field)
        return;
    const unsigned int length =
        std::min<unsigned int>(value ? std::strlen(value) : 0, field->Room());
    unsigned char* const place = mRecord + field->offset;
    std::memset(place, 0, field->size);
    place[0] = static_cast<unsigned char>(length);
    std::memcpy(place + 1, value ? value : "", length);
}

void JXMailPrefs::SetDefaults() {
    std::memset(mExtra, 0, sizeof mExtra);
    std::memset(mRecord, 0, sizeof mRecord);
    for (const Default& option : kOptionDefaults)
        mRecord[option.offset] = static_cast<unsigned char>(option.value);
    for (const Default& number : kNumberDefaults)
        Number(number.offset) = number.value;
    for (const TextField& field : kTexts) {
        const auto text = static_cast<enumPrefText>(field.offset);
        if (field.resource)
            SetText(text, RBString(field.resource, GetJxSystemResHandle()).Text());
        else if (field.initial)
            SetText(text, field.initial);
    }
    mwPopPort = JxBackgndData::keDefaultPopPort;
    mwSmtpPort = JxBackgndData::keDefaultSmtpPort;
    MakeIniFile();
}

void JXMailPrefs::MakeIniFile() {
    delete mpoUserIniFile;
    mpoUserIniFile = new SystemPrefFile(Beside(kIniFile));
}

int JXMailPrefs::CreatePrefsFile(const char* path) {
    const int created = UserPrefFile::CreatePrefsFile(path);
    if (created)
        MakeIniFile();
    return created;
}

int JXMailPrefs::ReadJXPrefs() {
    miOpenMode = keOpenIn | keOpenBinary;
    int result = 0;
    if (Reopen(miOpenMode)) {
        result = ReadAppPrefs(moTag, 0);
        if (result) {
            ConvertPrefs(kePrefsToAnsi);
            FixMailDirectory(0);
            SplitAddresses();
        }
        ClosePrefFile();
    }
    if (!result)
        ShowFileMessage(keMessageAccess, FullFileSpec());
    mfValid = result;
    return result;
}

int JXMailPrefs::WriteJXPrefs() {
    if (!(mPrefFlags & keAllowWriting))
        return true;
    FixMailDirectory(1);
    ConvertPrefs(kePrefsToOem);
    int result = 0;
    if (Reopen(keOpenIn | keOpenOut | keOpenBinary)) {
        result = WriteAppPrefs(moTag);
        ClosePrefFile();
    }
    if (!result)
        ShowFileMessage(keMessageAccess, FullFileSpec());
    ConvertPrefs(kePrefsToAnsi);
    return result;
}

int JXMailPrefs::ReadOtherPrefs(AppPrefTag& tag) {
    int result = 0;
    if (Reopen(keOpenIn | keOpenBinary)) {
        result = ReadAppPrefs(tag, 0);
        ClosePrefFile();
    }
    return result ? 1 : ShowFileMessage(keMessageAccess, FullFileSpec());
}

void JXMailPrefs::SplitAddresses() {
    JxBackgndData::ParseIP(Text(kePrefPopAddress), JxBackgndData::keDefaultPopPort, &mstrPopAccount,
                           &mwPopPort, nullptr);
    JxBackgndData::ParseIP(Text(kePrefSmtpHost), JxBackgndData::keDefaultSmtpPort, &mstrSmtpHost,
                           &mwSmtpPort, nullptr);
}

void JXMailPrefs::ConvertPrefs(ConvertPrefTo direction) {
    // The text up to its zero, or to the end of its field.
    const auto convert = [direction](unsigned char* bytes, unsigned int size) {
        char* const text = reinterpret_cast<char*>(bytes);
        const unsigned int length = strnlen(text, size);
        if (direction == kePrefsToAnsi)
            OemToCharBuffA(text, text, length);
        else
            CharToOemBuffA(text, text, length);
    };
    for (const unsigned int offset : kExtraTexts)
        convert(mExtra + offset + 1, kExtraSize - 1);
    for (const TextField& field : kTexts)
        if (field.converted)
            convert(mRecord + field.offset + 1, field.size - 1u);
    convert(mRecord + kString16, kPlainSize);
    for (unsigned int level = 0; level < LP_MAX_PRIORITY_LEVELS; ++level)
        convert(mRecord + kPriorities + level * kPlainSize, kPlainSize);
}

void JXMailPrefs::FixMailDirectory(int toRecord) {
    if (toRecord) {
        RBString directory(mstrMailDirectory.Text());
        const unsigned int length = directory.Length();
        if (length && directory.Text()[length - 1] == '\\')
            directory.Truncate(length - 1);
        SetText(kePrefMailDirectory, directory.Text());
        return;
    }
    // An empty directory is no mail directory, and not the root.
    mstrMailDirectory.reset();
    const RBString directory = Text(kePrefMailDirectory);
    if (directory.Length() == 0)
        return;
    FileSpec spec;
    if (mwDrive != keNoDrive)
        spec.Build(static_cast<char>('A' + mwDrive), nullptr, nullptr, nullptr, keKeepOthers);
    if (spec.SetSpecPart(directory, keAsPath) == keSpecOk)
        mstrMailDirectory.puts(spec.FullSpec());
}

void JXMailPrefs::SetMailDirectory(FileSpec& directory) {
    mstrMailDirectory.puts(directory.FullSpec());
    const unsigned int length = mstrMailDirectory.Length();
    if (length && mstrMailDirectory.Text()[length - 1] != '\\')
        mstrMailDirectory.concat('\\');
}

void JXMailPrefs::LocalDir(const char* name, RBString* dir) const {
    *dir = mstrMailDirectory;
    dir->concat(name).concat('\\');
}

void JXMailPrefs::SetPriority(const RBString& name, unsigned int wLevel) {
    kReports.CheckAt(349, wLevel < LP_MAX_PRIORITY_LEVELS, "wLevel < LP_MAX_PRIORITY_LEVELS");
    if (wLevel >= LP_MAX_PRIORITY_LEVELS)
        return;
    unsigned char* const place = mRecord + kPriorities + wLevel * kPlainSize;
    std::memset(place, 0, kPlainSize);
    std::memcpy(place, name.Text(), strnlen(name.Text(), kPlainSize - 1));
}

RBString JXMailPrefs::GetPriority(unsigned int wLevel) const {
    RBString result;
    if (wLevel < LP_MAX_PRIORITY_LEVELS) {
        const auto* const text =
            reinterpret_cast<const char*>(mRecord) + kPriorities + wLevel * kPlainSize;
        result.puts(std::string_view(text, strnlen(text, kPlainSize)));
    }
    return result;
}

void JXMailPrefs::SetUserData(JxLoggedMailUser& user) {
    SetNewPassword(user);
    SetText(kePrefPopAddress, user.Address().Text());
    JxBackgndData::ParseIP(user.Address(), JxBackgndData::keDefaultPopPort, &mstrPopAccount,
                           &mwPopPort, nullptr);
}

void JXMailPrefs::SetNewPassword(JxLoggedMailUser& user) {
    SetText(kePrefPassword, user.SecondText().Text());
}

void JXMailPrefs::GetUserRep(JxMailUserRepresentation&) {}

int JXMailPrefs::VerifyFileExists(JxMailUserRepresentation& user) {
    const RBString& directory = user.GetPrefFileSpecString();
    if (directory.Length() == 0)
        return false;
    FileSpec spec(directory, keAsPath);
    if (!DiskDriver::FileExists(spec.FullFilePath(), keAttrDirectory))
        return false;
    spec.SetSpecPart(kPrefsFile, keAsParts);
    return DiskDriver::FileExists(spec, keAttrArchive);
}

void JXMailPrefs::SetClientWindowRect(int x1, int y1, int x2, int y2) {
    unsigned int offset = kWindowRect;
    for (const int side : {x1, y1, x2, y2}) {
        Number(offset) = static_cast<short>(side);
        offset += sizeof(RBInt);
    }
}

void JXMailPrefs::GetClientWindowRect(int& x1, int& y1, int& x2, int& y2) const {
    const auto* side = reinterpret_cast<const RBInt*>(mRecord + kWindowRect);
    for (int* value : {&x1, &y1, &x2, &y2})
        *value = *side++;
}

const char* JXMailPrefs::GetPopAccount() const {
    kReports.CheckAt(416, mstrPopAccount.Length() > 0, "mstrPopAccount.Length () > 0");
    return mstrPopAccount.Text();
}

const char* JXMailPrefs::GetSmtpHost() const {
    kReports.CheckAt(423, mstrSmtpHost.Length() > 0, "mstrSmtpHost.Length () > 0");
    return mstrSmtpHost.Text();
}

void JXMailPrefs::SetFullSmtpHost(const char* host) {
    SetText(kePrefSmtpHost, host);
    JxBackgndData::ParseIP(RBString(host), JxBackgndData::keDefaultSmtpPort, &mstrSmtpHost,
                           &mwSmtpPort, nullptr);
}

RBString JXMailPrefs::GetReturnAddress() const { return Text(kePrefReturnAddress); }

void JXMailPrefs::SetReturnAddress(const char* address) { SetText(kePrefReturnAddress, address); }

RBString JXMailPrefs::GetDefaultDomain() const { return Text(kePrefDefaultDomain); }

void JXMailPrefs::SetDefaultDsApiName(const char* name) { SetText(kePrefDirectoryService, name); }

void JXMailPrefs::SetDialupConnection(const char* name) {
    kReports.CheckAt(455, mpoUserIniFile, "mpoUserIniFile");
    if (mpoUserIniFile)
        RbIniStringEntry(kDialupSection, kConnectionKey, name).StreamOut(*mpoUserIniFile);
}

void JXMailPrefs::GetDialupConnection(RBString* name) {
    kReports.CheckAt(463, mpoUserIniFile, "mpoUserIniFile");
    RbIniStringEntry entry(kDialupSection, kConnectionKey);
    if (mpoUserIniFile)
        entry.StreamIn(*mpoUserIniFile);
    *name = entry.GetValue();
}

int JXMailPrefs::GetDisconnectFlag() {
    kReports.CheckAt(473, mpoUserIniFile, "mpoUserIniFile");
    RbIniIntEntry entry(kDialupSection, kDisconnectKey);
    return mpoUserIniFile && entry.StreamIn(*mpoUserIniFile) ? entry.GetValue() : 0;
}

void JXMailPrefs::SetDisconnectFlag(int flag) {
    kReports.CheckAt(483, mpoUserIniFile, "mpoUserIniFile");
    if (mpoUserIniFile)
        RbIniIntEntry(kDialupSection, kDisconnectKey, flag ? 1 : 0).StreamOut(*mpoUserIniFile);
}
