#include "system/prefs/preference_file.h"

PreferenceFile::PreferenceFile() = default;
PreferenceFile::PreferenceFile(const char* spec) : RbFile(spec) {}
PreferenceFile::PreferenceFile(RBString spec) : RbFile(spec) {}
PreferenceFile::PreferenceFile(const FileSpec& spec) : RbFile(spec) {}
PreferenceFile::PreferenceFile(const PreferenceFile& other) : std::ios(), RbFile(other) {}

PreferenceFile::~PreferenceFile() { ClosePrefFile(); }

PreferenceFile& PreferenceFile::operator=(const PreferenceFile& other) {
    RbFile::operator=(other);
    return *this;
}

void PreferenceFile::ClosePrefFile() {
    if (isOpen())
        close();
}
