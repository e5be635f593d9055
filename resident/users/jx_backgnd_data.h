#pragma once

#include <iosfwd>

#include "resident/core/rb_string.h"

// A user's account and background-processing data, the contents of "JXUSER.DAT", where it stands
// scrambled. docs/formats/jxuser_dat.md describes its bytes.
//
// The fields without a meaning here are carried and streamed unchanged. The POP account and the
// SMTP host are kept as a full "host:port" text, which is streamed, and in parts, which are not.
class JX_API JxBackgndData {
public:
    enum { keSettings = 16, keListStrings = 6 };
    // Positions among the settings strings.
    enum { keMailDirectory = 2, keDFileName = 3 };
    enum { keDefaultPopPort = 110, keDefaultSmtpPort = 25 };
    // The largest record, as it stands in the file.
    enum { keMaxRecord = 8192 };

    // Empty, with the default ports.
    JxBackgndData();
    virtual ~JxBackgndData();

    // Keep the text, and what ParseIP finds in it; the getters give host and ports. An empty text,
    // or host, is reported, and taken.
    void SetFullPopAccount(const RBString& strAddress);
    const RBString& GetFullPopAccount() const { return mstrFullPopAccount; }
    const RBString& GetPopAccount() const;
    unsigned short GetPopPort() const { return mwPopPort; }
    int GetPopOption() const { return mfPopOption; }
    void SetFullSmtpHost(const RBString& strAddress);
    const RBString& GetFullSmtpHost() const { return mstrFullSmtpHost; }
    const RBString& GetSmtpHost() const;
    unsigned short GetSmtpPort() const { return mwSmtpPort; }

    // Cuts "host:port" into its parts: of the words behind the host, "n" clears the flag, and one
    // that begins with a digit is the port. Outputs start as the default port and 1. Returns 1, or
    // 0 with the host unchanged for an empty text. `flag` may be null.
    static int ParseIP(const RBString& text, unsigned short defaultPort, RBString* host,
                       unsigned short* port, int* flag);

    // Scrambles a record in place, or unscrambles it: it is its own inverse.
    static void Encode(char* buffer, int length);

    // Scrambled, and nothing at all when the record is larger than keMaxRecord. It has no length of
    // its own: reading takes the stream to its end, and fills the fields up to where the record is
    // cut; the state tells only whether there was anything to read.
    friend JX_API std::ostream& operator<<(std::ostream& out, JxBackgndData& data);
    friend JX_API std::istream& operator>>(std::istream& in, JxBackgndData& data);

    unsigned long mulFlags = 0;
    unsigned long mulValue2 = 0;
    unsigned short mwValue3 = 0;
    unsigned short mwValue4 = 0;
    RBString mstrSettings[keSettings];
    RBString mstrList[keListStrings];
    RBString mstr7;

private:
    RBString mstrFullPopAccount;
    RBString mstrPopAccount;
    unsigned short mwPopPort;
    RBString mstrFullSmtpHost;
    RBString mstrSmtpHost;
    unsigned short mwSmtpPort;

public:
    RBString mstr14; // never written to a file

private:
    int mfPopOption = 0;

public:
    RBString mstr16; // the name of the dial-up connection
};

// What the connection code is given of a user's background data.
class JX_API RsWinPlatformData {
public:
    enum : unsigned long { keDialupOption = 0x400, keDialupNameOption = 0x800 };

    // Not dial-up, and without a name.
    explicit RsWinPlatformData(void* handle);
    // The flags are the options of the data's flags, the name its last string.
    RsWinPlatformData(void* handle, JxBackgndData* data);

    // Takes a dial-up connection by that name, or none by an empty one.
    void SetDialupName(const RBString& name);

    void* Handle() const { return mhHandle; }
    int IsDialup() const { return mfDialup; }
    int IsDialupNameSet() const { return mfDialupNameSet; }
    const RBString& DialupName() const { return mstrDialupName; }

private:
    void* mhHandle;
    int mfDialup = 0;
    int mfDialupNameSet = 0;
    RBString mstrDialupName;
};
