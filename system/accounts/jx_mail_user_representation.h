#pragma once

#include "resident/core/rb_string.h"
#include "system/accounts/rb_list_box_item.h"
#include "system/prefs/rb_ini_entry.h"

class JxLoggedMailUser;

// The default POP user as its program represents it: programs derive it.
class JX_API JxDefPOPMailUserRepresentation {
public:
    virtual ~JxDefPOPMailUserRepresentation();
    // The user's preference file specification.
    virtual const RBString& GetPrefFileSpecString() const = 0;
};

// One POP user as a list box shows it and section "POP3 Users" of a settings file keeps it: the key
// is the user's name, the value the directory of the user's preference file.
class JX_API JxMailUserRepresentation : public RbListBoxItem, public RbIniStringEntry {
public:
    JxMailUserRepresentation(); // empty
    // `value` is the directory of the user's preference file.
    JxMailUserRepresentation(const char* name, const char* value);
    // The value alone, and the logged user's name and logged text.
    explicit JxMailUserRepresentation(const JxDefPOPMailUserRepresentation& other);
    explicit JxMailUserRepresentation(const JxLoggedMailUser& user);
    ~JxMailUserRepresentation() override;
    // Stores the value.
    virtual void SetPrefFileSpecString(const RBString& value);

    // Takes the other's value, and then empties its own: programs rely on an empty one.
    JxMailUserRepresentation& operator=(const JxDefPOPMailUserRepresentation& other);
    // By user name.
    int operator==(const JxMailUserRepresentation& other) const;

    // "family|given" as "given family". Valid until the next call.
    const RBString& GetDisplayString();
    const RBString& GetUserName() const { return mstrUserName; }
    const RBString& GetPrefFileSpecString() const { return mstrValue; }
    // Sets the key to the user's name, and returns it.
    const RBString& GetEntryName();
    // Sets key and user name.
    void SetEntryName(const RBString& name);

private:
    RBString mstrDisplay;
    RBString mstrUserName;
};
