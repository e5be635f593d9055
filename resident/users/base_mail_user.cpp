#include "resident/users/base_mail_user.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>

#include "resident/runtime/check.h"
#include "resident/users/jx_installable_defaults.h"
#include "resident/users/put_pascal.h"

static constexpr Reporter kReports("JXRESIDT\\MUSR_BS.CPP");

static constexpr unsigned short kSpare = 0xFFFF;

unsigned char BaseMailUser::msUlr[2 * sizeof(UserLRec)];

static UserContinuation* Continuation() {
    return reinterpret_cast<UserContinuation*>(BaseMailUser::msUlr + sizeof(UserLRec));
}

static unsigned short LittleEndian(const unsigned char (&bytes)[2]) {
    return static_cast<unsigned short>(bytes[0] | bytes[1] << 8);
}

static void PutLittleEndian(unsigned char (&bytes)[2], unsigned short value) {
    bytes[0] = value & 0xFF;
    bytes[1] = value >> 8;
}

BaseMailUser::BaseMailUser() : mSpare(kSpare), mType(keUserOrdinary) { SetPOPDefaults(); }

BaseMailUser::BaseMailUser(const BaseMailUser& other)
    : mFlags(other.mFlags & keCopiedFlag), mMessageFormat(other.mMessageFormat),
      mEnclosureEncode(other.mEnclosureEncode), mPlatform(other.mPlatform),
      mPopOption(other.mPopOption), mSpare(other.mSpare), mType(other.mType),
      mTypeExtension(other.mTypeExtension), mstrName(other.mstrName),
      mstrAddress(other.mstrAddress) {}

BaseMailUser::BaseMailUser(UserLRec* rec, UserLRec* cont) {
    CheckValidity(*rec);
    if (rec->settingsMark == UserLRec::keSettingsValid)
        SetPOPEnums(rec);
    else
        SetPOPDefaults();
    mstrName = FieldString(rec->name, sizeof rec->name);
    mstrAddress = FieldString(rec->zone, sizeof rec->zone);
    mType = LittleEndian(rec->type);
    mTypeExtension = LittleEndian(rec->typeExtension);
    if (cont) {
        const auto* rest = reinterpret_cast<const UserContinuation*>(cont);
        mstrAddress.concat(FieldString(rest->text, sizeof rest->text));
    }
    mFlags = 0;
    mSpare = kSpare;
    // Not what SetPOPEnums took from the record: only a user read from a stream keeps that.
    mPopOption = 0;
}

BaseMailUser::~BaseMailUser() = default;

BaseMailUser& BaseMailUser::operator=(const BaseMailUser& other) {
    if (this != &other) {
        mType = other.mType;
        mTypeExtension = other.mTypeExtension;
        mMessageFormat = other.mMessageFormat;
        mEnclosureEncode = other.mEnclosureEncode;
        mPlatform = other.mPlatform;
        mstrName = other.mstrName;
        mstrAddress = other.mstrAddress;
        mPopOption = other.mPopOption;
    }
    return *this;
}

int BaseMailUser::operator==(const BaseMailUser& other) const {
    return mstrAddress == other.mstrAddress && mstrName == other.mstrName &&
           mPlatform == other.mPlatform && mMessageFormat == other.mMessageFormat &&
           mEnclosureEncode == other.mEnclosureEncode;
}

void BaseMailUser::SetPOPEnums(UserLRec* rec) {
    const auto set = [this](enumMessageFormat format, enumEnclosureEncode encoding) {
        mMessageFormat = format;
        mEnclosureEncode = encoding;
    };
    mPlatform = static_cast<enumUserPlatformType>(rec->platform);
    switch (rec->platform) {
    case kePlatform1:
    case kePlatform2:
        set(keFormat2, keEncode7);
        break;
    case kePlatform3:
        set(keFormat3, keEncode2);
        break;
    case kePlatform4:
        set(keFormat4, keEncode7);
        break;
    case kePlatform5: {
        const unsigned char format = rec->messageFormat;
        const unsigned char encoding = rec->enclosureEncode;
        const bool knownEncoding =
            encoding == keEncode1 || encoding == keEncode2 || encoding == keEncode7;
        set(format >= 1 && format <= 4 ? static_cast<enumMessageFormat>(format) : keFormat4,
            knownEncoding ? static_cast<enumEnclosureEncode>(encoding) : keEncode7);
        SetPlatformFromEncoding();
        break;
    }
    case kePlatform6:
        set(keFormat1, keEncode1);
        break;
    default:
        SetPOPDefaults();
        break;
    }
    mPopOption = rec->popOption;
}

void BaseMailUser::SetPlatformFromEncoding() {
    const auto is = [this](enumMessageFormat format, enumEnclosureEncode encoding) {
        return mMessageFormat == format && mEnclosureEncode == encoding;
    };
    if (is(keFormat1, keEncode1))
        mPlatform = kePlatform6;
    else if (is(keFormat2, keEncode7))
        mPlatform = kePlatform2;
    else if (is(keFormat4, keEncode7))
        mPlatform = kePlatform4;
    else if (is(keFormat3, keEncode2))
        mPlatform = kePlatform3;
    else
        mPlatform = kePlatform5;
}

void BaseMailUser::SetPOPDefaults() {
    JxInstallableDefaults* defaults = JxInstallableDefaults::GetInstance();
    mPlatform = defaults->GetDefaultPlatformType();
    mMessageFormat = defaults->GetDefaultMessageFormat();
    mEnclosureEncode = defaults->GetDefaultEnclosureEncoding();
    mPopOption = 0;
}

bool BaseMailUser::CheckValidity(UserLRec& rec) {
    if (rec.name[0] < sizeof rec.name)
        return true;
    rec.name[0] = sizeof rec.name - 1;
    return false;
}

int BaseMailUser::SplitUserName(RBString& given, RBString& family) const {
    given.reset();
    family.reset();
    char name[35];
    lstrcpynA(name, mstrName.Text(), sizeof name);
    if (!*name)
        return false;
    char* const bar = std::strchr(name, '|');
    if (!bar) {
        given.puts(name);
        return true;
    }
    *bar = 0;
    given.puts(bar + 1);
    if (*name)
        family.puts(name);
    return true;
}

int BaseMailUser::SetInternetAddress(const char* nameAndAddr) {
    const RBString strNameAndAddr(nameAndAddr);
    kReports.Check(strNameAndAddr.Length(), "strNameAndAddr.Length()");
    const char* const open = std::strchr(strNameAndAddr.Text(), '<');
    const char* const close = std::strchr(strNameAndAddr.Text(), '>');
    if (!open || !close || close < open)
        mstrAddress = strNameAndAddr;
    else if (close == open + 1)
        mstrAddress.reset();
    else
        mstrAddress.puts(open + 1, close - open - 1);
    return true;
}

bool BaseMailUser::Continued() {
    return Continuation()->mark[0] == UserContinuation::keMark0 &&
           Continuation()->mark[1] == UserContinuation::keMark1;
}

UserLRec* BaseMailUser::UlrPtr() { return reinterpret_cast<UserLRec*>(msUlr); }

std::ostream& operator<<(std::ostream& out, BaseMailUser& oUser) {
    const RBString& szAddress = oUser.mstrAddress;
    if (szAddress.Length() > ULR_MAX_ADDRESS_LEN) {
        out.setstate(std::ios::failbit);
        return out;
    }
    std::memset(BaseMailUser::msUlr, 0, sizeof BaseMailUser::msUlr);
    UserLRec& record = *BaseMailUser::UlrPtr();
    // A long name's characters run on behind its field; the fields below are put over them.
    PutPascal(oUser.mstrName, BaseMailUser::msUlr, offsetof(UserLRec, name), sizeof record);
    record.settingsMark = UserLRec::keSettingsValid;
    record.messageFormat = static_cast<unsigned char>(oUser.mMessageFormat);
    record.enclosureEncode = static_cast<unsigned char>(oUser.mEnclosureEncode);
    record.platform = static_cast<unsigned char>(oUser.mPlatform);
    record.popOption = oUser.mPopOption;
    if (szAddress.Length() < ULR_MAX_ZONE_LEN) {
        kReports.Check(szAddress.Length() < ULR_MAX_ZONE_LEN,
                       "oUser.szAddress.Length() < ULR_MAX_ZONE_LEN");
        PutPascal(szAddress, BaseMailUser::msUlr, offsetof(UserLRec, zone), sizeof record);
    } else {
        constexpr unsigned int first = ULR_MAX_ZONE_LEN - 1;
        record.zone[0] = first;
        std::memcpy(record.zone + 1, szAddress.Text(), first);
        UserContinuation& rest = *Continuation();
        rest.mark[0] = UserContinuation::keMark0;
        rest.mark[1] = UserContinuation::keMark1;
        rest.text[0] = static_cast<unsigned char>(szAddress.Length() - first);
        std::memcpy(rest.text + 1, szAddress.Text() + first, rest.text[0]);
    }
    PutLittleEndian(record.type, oUser.mType);
    PutLittleEndian(record.typeExtension, oUser.mTypeExtension);
    return out << record;
}

std::istream& operator>>(std::istream& in, BaseMailUser& user) {
    std::memset(BaseMailUser::msUlr, 0, sizeof BaseMailUser::msUlr);
    UserLRec& record = *BaseMailUser::UlrPtr();
    in >> record;
    BaseMailUser::CheckValidity(record);
    if (!in.good())
        return in;
    user.mstrName = FieldString(record.name, sizeof record.name);
    if (record.settingsMark == UserLRec::keSettingsValid)
        user.SetPOPEnums(&record);
    else
        user.SetPOPDefaults();
    user.mstrAddress = FieldString(record.zone, sizeof record.zone);
    user.mType = LittleEndian(record.type);
    user.mTypeExtension = LittleEndian(record.typeExtension);
    if (BaseMailUser::Continued())
        user.mstrAddress.concat(FieldString(Continuation()->text, sizeof Continuation()->text));
    if (user.mType != keUserFile)
        user.mType = keUserOrdinary;
    return in;
}
