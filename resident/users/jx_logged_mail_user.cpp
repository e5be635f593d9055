#include "resident/users/jx_logged_mail_user.h"
#include "resident/users/put_pascal.h"

#include <cstring>

JxLoggedMailUser::JxLoggedMailUser() { Init(); }

JxLoggedMailUser::JxLoggedMailUser(MailUser& other) : SysMailUser(other) { Init(); }

JxLoggedMailUser::~JxLoggedMailUser() = default;

void JxLoggedMailUser::Init() {
    mStatus = keLoggedStatusNone;
    SetNotLogged();
    mlValue = 0;
    mMessageFormat = keFormat1;
    mEnclosureEncode = keEncode1;
    mPlatform = kePlatform6;
}

void JxLoggedMailUser::CopyDerivedData(const JxLoggedMailUser&) {}

JxLoggedMailUser& JxLoggedMailUser::operator=(const JxLoggedMailUser& other) {
    if (this != &other) {
        BaseMailUser::operator=(other);
        mstrLogged = other.mstrLogged;
        CopyDerivedData(other);
        mlValue = other.mlValue;
        mStatus = other.mStatus;
        mfLogged1 = other.mfLogged1;
        mfLogged2 = other.mfLogged2;
        mstrSecond = other.mstrSecond;
    }
    return *this;
}

void JxLoggedMailUser::SetNotLogged() { mfLogged1 = mfLogged2 = true; }

int operator==(const JxLoggedMailUser& left, const JxLoggedMailUser& right) {
    return left.mstrName == right.mstrName && left.mstrAddress == right.mstrAddress;
}

std::ostream& operator<<(std::ostream& out, JxLoggedMailUser& user) {
    std::memset(SysMailUser::ulrSys, 0, sizeof SysMailUser::ulrSys);
    PutPascal(user.mstrName, SysMailUser::ulrSys, 0, sizeof SysMailUser::ulrSys);
    // Not split: the mail user behind this record has the whole address.
    PutPascal(user.mstrAddress, SysMailUser::ulrSys, offsetof(SysUserLRec, address),
              sizeof SysMailUser::ulrSys);
    out << JxLoggedMailUser::Record();
    return out.good() ? out << user.mstrLogged : out;
}

std::istream& operator>>(std::istream& in, JxLoggedMailUser& user) {
    std::memset(SysMailUser::ulrSys, 0, sizeof SysMailUser::ulrSys);
    SysUserLRec& record = JxLoggedMailUser::Record();
    in >> record;
    if (in.good()) {
        user.mstrName = FieldString(record.name, sizeof record.name);
        user.mstrAddress = FieldString(record.address, sizeof record.address);
        in >> user.mstrLogged;
    }
    return in;
}

bool JxLoggedMailUser::WriteInfo(std::fstream& file) {
    // Refused before the first byte: the file would lose its user half-way.
    if (mstrAddress.Length() > ULR_MAX_ADDRESS_LEN) {
        file.setstate(std::ios::failbit);
        return false;
    }
    file << *this;
    if (!file.good())
        return false;
    MailUser whole(*this);
    file << whole;
    // Flush: a full disk shows only when the last bytes are written.
    return file.flush().good();
}

bool JxLoggedMailUser::ReadInfo(std::fstream& file) {
    file >> *this;
    if (!file.good())
        return false;
    MailUser whole;
    file >> whole;
    if (!file.good())
        return false;
    mstrName = whole.Name();
    mstrAddress = whole.Address();
    return true;
}
