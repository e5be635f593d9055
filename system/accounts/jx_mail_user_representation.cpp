#include "system/accounts/jx_mail_user_representation.h"

#include "resident/users/jx_logged_mail_user.h"

static const char kSection[] = "POP3 Users";

JxDefPOPMailUserRepresentation::~JxDefPOPMailUserRepresentation() = default;

JxMailUserRepresentation::JxMailUserRepresentation() : RbIniStringEntry(kSection) {}

JxMailUserRepresentation::JxMailUserRepresentation(const char* name, const char* value)
    : RbIniStringEntry(kSection, name, value), mstrUserName(name) {}

JxMailUserRepresentation::JxMailUserRepresentation(const JxDefPOPMailUserRepresentation& other)
    : RbIniStringEntry(kSection) {
    SetPrefFileSpecString(other.GetPrefFileSpecString());
}

JxMailUserRepresentation::JxMailUserRepresentation(const JxLoggedMailUser& user)
    : RbIniStringEntry(kSection), mstrUserName(user.Name()) {
    mstrValue = user.LoggedText();
}

JxMailUserRepresentation::~JxMailUserRepresentation() = default;

void JxMailUserRepresentation::SetPrefFileSpecString(const RBString& value) { mstrValue = value; }

JxMailUserRepresentation&
JxMailUserRepresentation::operator=(const JxDefPOPMailUserRepresentation& other) {
    SetPrefFileSpecString(other.GetPrefFileSpecString());
    mstrValue.reset();
    return *this;
}

int JxMailUserRepresentation::operator==(const JxMailUserRepresentation& other) const {
    return mstrUserName == other.mstrUserName;
}

const RBString& JxMailUserRepresentation::GetDisplayString() {
    return MailUser::OrderedUserName(mstrDisplay, mstrUserName, 1);
}

const RBString& JxMailUserRepresentation::GetEntryName() {
    mstrKey = mstrUserName;
    return mstrKey;
}

void JxMailUserRepresentation::SetEntryName(const RBString& name) {
    mstrKey = name;
    mstrUserName = name;
}
