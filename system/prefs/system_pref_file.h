#pragma once

#include "system/prefs/preference_file.h"

// A settings file of bracketed sections and "key=value" lines. Keyed access goes through the
// Windows profile functions on the full path, which open the file themselves; a missing file reads
// as all defaults and is made by the first write. A walk over a section's lines goes through them
// too (GetUnKeyedPrefLine), or reads the opened file (GetNextUnKeyPrefLine).
//
// Section names compare without regard to case. Nothing is reported; results carry the outcome.
class JX_API SystemPrefFile : public PreferenceFile {
public:
    // Closed, with no name or that of the specification.
    SystemPrefFile();
    explicit SystemPrefFile(RBString spec);
    explicit SystemPrefFile(const FileSpec& spec);
    // Copying and assigning take the specification. The stream, the last value read and a walk over
    // a section belong to each object: an assignment leaves the target's as they were.
    SystemPrefFile(const SystemPrefFile& other);
    SystemPrefFile& operator=(const SystemPrefFile& other);
    ~SystemPrefFile() override;

    // Opens the file, which must exist; goes back to its start when it is open already. Returns 1
    // when the stream's state is good, else 0.
    int OpenPrefFile();

    // The results of GetPrivateProfileStringA, at most 1,599 characters, and
    // WritePrivateProfileStringA. A null value removes the key.
    int GetPrefToken(const char* section, const char* key, const char* defaultValue);
    int SetPrefToken(const char* section, const char* key, const char* value);

    // The value's text, valid until the next call on this object.
    char* GetToken(const char* section, const char* key, const char* defaultValue);
    // The decimal number that the value begins with, 0 when it begins with none; `defaultValue`
    // when there is no text.
    int GetToken(const char* section, const char* key, int defaultValue);
    long GetToken(const char* section, const char* key, long defaultValue);

    // With `remove`, or an empty text, the key is removed.
    int SetToken(const char* section, const char* key, int value, int remove);
    int SetToken(const char* section, const char* key, long value, int remove);
    int SetToken(const char* section, const char* key, const char* value, int remove);

    // The next key and value of a section, in file order; `first` begins a walk. The value buffer's
    // text is the default. Sizes count the terminating zero. Returns 1, or 0 when there is none.
    int GetUnKeyedPrefLine(const char* section, char* keyOut, short keySize, char* valueOut,
                           short valueSize, int first);

    // The next "key=value" line of a section of the opened file. A carriage return at the end of a
    // line belongs to it, and so to the value. An empty `keyOut` looks for the
    // section from the current position on; the key left in it continues the walk. Returns the
    // value's length, -1 when the section has ended or was not found (`valueOut` is then the
    // default), -2 when the stream has ended or failed. The key keeps the blanks before its "=".
    int GetNextUnKeyPrefLine(const char* section, char* keyOut, int keySize,
                             const char* defaultValue, char* valueOut, int valueSize);

    // Trims spaces and tabs in place; returns the first character kept.
    static char* CleanPrefLine(char* line);
    // Cuts the line at its first "=" and returns the trimmed value; null without "=" or value.
    static char* ReturnResult(char* line);

private:
    enum { keTokenSize = 1600, keBufferSize = keTokenSize + 1 };

    bool FindSection(const char* section);

    char mszToken[keBufferSize]{};
    char mszKeyList[keBufferSize]{};
    char* mpszNextKey = mszKeyList;
    long mlKeyListLeft = 0;
};
