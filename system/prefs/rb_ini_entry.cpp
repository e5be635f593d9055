#include "system/prefs/rb_ini_entry.h"

#include "system/prefs/system_pref_file.h"

RbIniEntry::RbIniEntry(const char* section) : mstrSection(section) {}
RbIniEntry::RbIniEntry(const char* section, const char* key) : mstrKey(key), mstrSection(section) {}
RbIniEntry::~RbIniEntry() = default;

const RBString& RbIniEntry::GetSectionName() const { return mstrSection; }
const RBString& RbIniEntry::GetKeyName() const { return mstrKey; }

RbIniStringEntry::RbIniStringEntry(const char* section) : RbIniEntry(section) {}
RbIniStringEntry::RbIniStringEntry(const char* section, const char* key)
    : RbIniEntry(section, key) {}
RbIniStringEntry::RbIniStringEntry(const char* section, const char* key, const char* value)
    : RbIniEntry(section, key), mstrValue(value) {}
RbIniStringEntry::~RbIniStringEntry() = default;

int RbIniStringEntry::StreamIn(SystemPrefFile& file) {
    mstrValue.puts(file.GetToken(GetSectionName().Text(), GetKeyName().Text(), ""));
    return mstrValue.Length() != 0;
}

int RbIniStringEntry::StreamOut(SystemPrefFile& file) {
    return file.SetToken(GetSectionName().Text(), GetKeyName().Text(), mstrValue.Text(), 0);
}

RbIniIntEntry::RbIniIntEntry(const char* section) : RbIniEntry(section) {}
RbIniIntEntry::RbIniIntEntry(const char* section, const char* key) : RbIniEntry(section, key) {}
RbIniIntEntry::RbIniIntEntry(const char* section, const char* key, int value)
    : RbIniEntry(section, key), miValue(value) {}
RbIniIntEntry::~RbIniIntEntry() = default;

int RbIniIntEntry::StreamIn(SystemPrefFile& file) {
    miValue = file.GetToken(GetSectionName().Text(), GetKeyName().Text(), -1);
    return miValue != -1;
}

int RbIniIntEntry::StreamOut(SystemPrefFile& file) {
    return file.SetToken(GetSectionName().Text(), GetKeyName().Text(), miValue, 0);
}
