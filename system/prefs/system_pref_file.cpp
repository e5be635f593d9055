#include "system/prefs/system_pref_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sstream>

#include "resident/core/text_fields.h"
#include "resident/core/windows_api.h"

// What a missing section's key list reads as.
static const char kUnknown[] = "UnKnown";

// Untranslated: a carriage return is part of its line here.
static constexpr int kOpenLines = keOpenIn | keOpenNoCreate | keOpenBinary;

SystemPrefFile::SystemPrefFile() = default;

SystemPrefFile::SystemPrefFile(RBString spec) : PreferenceFile(spec) {}

SystemPrefFile::SystemPrefFile(const FileSpec& spec) : PreferenceFile(spec) {}

SystemPrefFile::SystemPrefFile(const SystemPrefFile& other) : std::ios(), PreferenceFile(other) {}

SystemPrefFile& SystemPrefFile::operator=(const SystemPrefFile& other) {
    PreferenceFile::operator=(other);
    return *this;
}

SystemPrefFile::~SystemPrefFile() = default;

int SystemPrefFile::OpenPrefFile() {
    if (isOpen()) {
        // The stream does not move as long as the end of the file stands in its state.
        clear();
        seekg(0);
    } else {
        Open(kOpenLines);
    }
    return good();
}

int SystemPrefFile::GetPrefToken(const char* section, const char* key, const char* defaultValue) {
    return static_cast<int>(GetPrivateProfileStringA(section, key, defaultValue, mszToken,
                                                     keTokenSize, FullFileSpec()));
}

int SystemPrefFile::SetPrefToken(const char* section, const char* key, const char* value) {
    return WritePrivateProfileStringA(section, key, value, FullFileSpec());
}

char* SystemPrefFile::GetToken(const char* section, const char* key, const char* defaultValue) {
    if (GetPrefToken(section, key, defaultValue) == 0)
        mszToken[0] = 0;
    return mszToken;
}

template <class Number>
static Number ParseNumber(const char* text, Number defaultValue) {
    if (!*text)
        return defaultValue;
    Number value = 0;
    std::istringstream(text) >> value;
    return value;
}

int SystemPrefFile::GetToken(const char* section, const char* key, int defaultValue) {
    return ParseNumber(GetToken(section, key, ""), defaultValue);
}

long SystemPrefFile::GetToken(const char* section, const char* key, long defaultValue) {
    return ParseNumber(GetToken(section, key, ""), defaultValue);
}

int SystemPrefFile::SetToken(const char* section, const char* key, int value, int remove) {
    return SetToken(section, key, static_cast<long>(value), remove);
}

int SystemPrefFile::SetToken(const char* section, const char* key, long value, int remove) {
    if (remove)
        return SetPrefToken(section, key, nullptr);
    std::snprintf(mszToken, sizeof mszToken, "%ld", value);
    return SetPrefToken(section, key, mszToken);
}

int SystemPrefFile::SetToken(const char* section, const char* key, const char* value, int remove) {
    return SetPrefToken(section, key, remove || !value || !*value ? nullptr : value);
}

// Copies at most size - 1 characters and terminates; nothing without room.
static void CopyCut(char* to, const char* from, int size) {
    if (to && size > 0)
        lstrcpynA(to, from, size);
}

// The last byte is 0 as well, whatever the text's length: callers hand on whole buffers.
static void CopyToWhole(char* to, const char* from, int size) {
    if (!to || size <= 0)
        return;
    CopyCut(to, from, size);
    to[size - 1] = 0;
}

int SystemPrefFile::GetUnKeyedPrefLine(const char* section, char* keyOut, short keySize,
                                       char* valueOut, short valueSize, int first) {
    if (first) {
        mlKeyListLeft = GetPrefToken(section, nullptr, kUnknown);
        if (std::strcmp(mszToken, kUnknown) == 0) {
            mlKeyListLeft = 0;
            return false;
        }
        std::memset(mszKeyList, 0, sizeof mszKeyList);
        std::memcpy(mszKeyList, mszToken, std::min<long>(mlKeyListLeft, keTokenSize));
        mpszNextKey = mszKeyList;
    }
    if (mlKeyListLeft < 1)
        return false;

    char defaultValue[keBufferSize] = "";
    if (valueOut && valueSize > 0)
        lstrcpynA(defaultValue, valueOut, std::min<int>(valueSize + 1, sizeof defaultValue));
    GetPrefToken(section, mpszNextKey, defaultValue);
    CopyToWhole(keyOut, mpszNextKey, keySize);
    CopyToWhole(valueOut, mszToken, valueSize);

    const long used = std::strlen(mpszNextKey) + 1;
    mlKeyListLeft -= used;
    mpszNextKey += used;
    return true;
}

bool SystemPrefFile::FindSection(const char* section) {
    const std::size_t length = std::strlen(section);
    char line[keBufferSize];
    while (ReadLine(*this, line, '\n')) {
        const char* header = CleanPrefLine(line);
        if (header[0] == '[' && _strnicmp(header + 1, section, length) == 0 &&
            header[1 + length] == ']')
            return true;
    }
    return false;
}

int SystemPrefFile::GetNextUnKeyPrefLine(const char* section, char* keyOut, int keySize,
                                         const char* defaultValue, char* valueOut, int valueSize) {
    enum { keSectionEnd = -1, keFailure = -2 };
    if (!isOpen() || !section || !*section || *FullFileSpec() == 0)
        return keFailure;
    const bool found = (keyOut && *keyOut) || FindSection(section);
    if (bad())
        return keFailure;
    if (!found) {
        CopyCut(valueOut, defaultValue ? defaultValue : "", valueSize);
        return keSectionEnd;
    }

    char line[keBufferSize];
    char* setting;
    do {
        if (!ReadLine(*this, line, '\n'))
            return keFailure;
        setting = CleanPrefLine(line);
        if (*setting == '[')
            return keSectionEnd;
    } while (!std::strchr(setting, '='));

    const char* value = ReturnResult(setting);
    if (!value)
        value = "";
    CopyCut(valueOut, value, valueSize);
    CopyCut(keyOut, setting, keySize);
    const int length = std::strlen(value);
    return valueOut ? std::min(std::max(valueSize, 1) - 1, length) : length;
}

char* SystemPrefFile::CleanPrefLine(char* line) {
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (blank(*line))
        ++line;
    for (char* end = line + std::strlen(line); end > line && blank(end[-1]); --end)
        end[-1] = 0;
    return line;
}

char* SystemPrefFile::ReturnResult(char* line) {
    char* const equals = std::strchr(line, '=');
    if (!equals)
        return nullptr;
    *equals = 0;
    char* const value = CleanPrefLine(equals + 1);
    return *value ? value : nullptr;
}
