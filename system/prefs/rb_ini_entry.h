#pragma once

#include "resident/core/rb_string.h"

class SystemPrefFile;

// One setting of a settings file, named by section and key.
class JX_API RbIniEntry {
public:
    // Names the setting, as far as it is given; nothing is read.
    explicit RbIniEntry(const char* section);
    RbIniEntry(const char* section, const char* key);
    virtual ~RbIniEntry();

    // Section and key; the texts belong to the entry.
    virtual const RBString& GetSectionName() const;
    virtual const RBString& GetKeyName() const;

    void SetKeyName(const RBString& key) { mstrKey = key; }

protected:
    RBString mstrKey;
    RBString mstrSection;
};

// A setting with a text.
class JX_API RbIniStringEntry : public RbIniEntry {
public:
    // As the base's, with an empty value or the one given.
    explicit RbIniStringEntry(const char* section);
    RbIniStringEntry(const char* section, const char* key);
    RbIniStringEntry(const char* section, const char* key, const char* value);
    ~RbIniStringEntry() override;

    const RBString& GetValue() const { return mstrValue; }
    void SetValue(const RBString& value) { mstrValue = value; }

    // Returns 1 when the file has a text for it, else 0 with an empty value.
    int StreamIn(SystemPrefFile& file);
    // An empty value removes the key. Returns non-zero on success.
    int StreamOut(SystemPrefFile& file);

protected:
    RBString mstrValue;
};

// A setting with a number. -1 cannot be told from a missing one.
class JX_API RbIniIntEntry : public RbIniEntry {
public:
    // As the base's, with the value 0 or the one given.
    explicit RbIniIntEntry(const char* section);
    RbIniIntEntry(const char* section, const char* key);
    RbIniIntEntry(const char* section, const char* key, int value);
    ~RbIniIntEntry() override;

    int GetValue() const { return miValue; }
    void SetValue(int value) { miValue = value; }

    // Returns 1 when the file has a number for it, else 0 with the value -1.
    int StreamIn(SystemPrefFile& file);
    // Returns non-zero on success.
    int StreamOut(SystemPrefFile& file);

protected:
    int miValue = 0;
};
