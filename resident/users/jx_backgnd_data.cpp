#include "resident/users/jx_backgnd_data.h"

#include <initializer_list>
#include <istream>
#include <memory>
#include <ostream>

#include "resident/core/memory_stream.h"
#include "resident/core/text_fields.h"
#include "resident/runtime/check.h"

static constexpr Reporter kReports("JXRESIDT\\JXBCKDAT.CPP");

// The key's closing zero takes part: every 21st byte stands in the file as it is.
static constexpr unsigned char kKey[] = {0x5A, 0x13, 0xC4, 0x7E, 0x99, 0x02, 0xB8,
                                         0x6D, 0x31, 0xF0, 0x4C, 0x8E, 0x27, 0xD5,
                                         0x0B, 0x96, 0xE3, 0x48, 0x7A, 0x1F, 0x00};

JxBackgndData::JxBackgndData() : mwPopPort(keDefaultPopPort), mwSmtpPort(keDefaultSmtpPort) {}

JxBackgndData::~JxBackgndData() = default;

void JxBackgndData::SetFullPopAccount(const RBString& strAddress) {
    kReports.Check(strAddress.Length() > 0, "strAddress.Length () > 0");
    mstrFullPopAccount = strAddress;
    ParseIP(strAddress, keDefaultPopPort, &mstrPopAccount, &mwPopPort, &mfPopOption);
}

const RBString& JxBackgndData::GetPopAccount() const {
    kReports.Check(mstrPopAccount.Length() > 0, "mstrPopAccount.Length () > 0");
    return mstrPopAccount;
}

void JxBackgndData::SetFullSmtpHost(const RBString& strAddress) {
    kReports.Check(strAddress.Length() > 0, "strAddress.Length () > 0");
    mstrFullSmtpHost = strAddress;
    ParseIP(strAddress, keDefaultSmtpPort, &mstrSmtpHost, &mwSmtpPort, nullptr);
}

const RBString& JxBackgndData::GetSmtpHost() const {
    kReports.Check(mstrSmtpHost.Length() > 0, "mstrSmtpHost.Length () > 0");
    return mstrSmtpHost;
}

// The number that a word begins with, in 16 bits.
static unsigned short LeadingNumber(std::string_view word) {
    unsigned int number = 0;
    for (const char c : word) {
        if (c < '0' || c > '9')
            break;
        number = number * 10 + static_cast<unsigned int>(c - '0');
    }
    return static_cast<unsigned short>(number);
}

int JxBackgndData::ParseIP(const RBString& text, unsigned short defaultPort, RBString* host,
                           unsigned short* port, int* flag) {
    *port = defaultPort;
    if (flag)
        *flag = 1;
    // A share of the text, so that `host` may be it.
    const RBString kept(text);
    if (kept.Length() == 0)
        return false;
    TextFields words(kept.Text(), ':');
    std::string_view word;
    words.Next(word);
    host->puts(word);
    while (words.Next(word)) {
        if (word == "n") {
            if (flag)
                *flag = 0;
        } else if (!word.empty() && word[0] >= '0' && word[0] <= '9') {
            *port = LeadingNumber(word);
        }
    }
    return true;
}

void JxBackgndData::Encode(char* buffer, int length) {
    for (int i = 0; i < length; ++i)
        buffer[i] = static_cast<char>(buffer[i] ^ kKey[i % sizeof kKey]);
}

// Integers stand little-endian, as the machine has them. A short read leaves the value.
template <class Integer>
static bool ReadInteger(std::istream& in, Integer& value) {
    Integer read;
    if (!in.read(reinterpret_cast<char*>(&read), sizeof read))
        return false;
    value = read;
    return true;
}

template <class Integer>
static bool WriteInteger(std::ostream& out, const Integer& value) {
    return out.write(reinterpret_cast<const char*>(&value), sizeof value).good();
}

template <std::size_t Count>
static bool ReadStrings(std::istream& in, RBString (&strings)[Count]) {
    for (RBString& string : strings)
        if (!(in >> string))
            return false;
    return true;
}

template <std::size_t Count>
static bool WriteStrings(std::ostream& out, const RBString (&strings)[Count]) {
    for (const RBString& string : strings)
        if (!(out << string))
            return false;
    return true;
}

std::ostream& operator<<(std::ostream& out, JxBackgndData& data) {
    const std::unique_ptr<char[]> block(new char[JxBackgndData::keMaxRecord]);
    MemoryBuffer buffer(block.get(), JxBackgndData::keMaxRecord);
    std::ostream record(&buffer);
    const bool fits = WriteInteger(record, data.mulFlags) && WriteInteger(record, data.mwValue3) &&
                      WriteInteger(record, data.mwValue4) && WriteInteger(record, data.mulValue2) &&
                      WriteStrings(record, data.mstrSettings) &&
                      WriteStrings(record, data.mstrList) && record << data.mstrFullSmtpHost &&
                      record << data.mstrFullPopAccount && record << data.mstr7 &&
                      record << data.mstr16;
    if (fits) {
        JxBackgndData::Encode(block.get(), static_cast<int>(buffer.Written()));
        out.write(block.get(), buffer.Written());
    }
    return out;
}

std::istream& operator>>(std::istream& in, JxBackgndData& data) {
    const std::unique_ptr<char[]> block(new char[JxBackgndData::keMaxRecord]);
    in.read(block.get(), JxBackgndData::keMaxRecord);
    const int length = static_cast<int>(in.gcount());
    if (!in.good()) {
        if (length == 0 || !in.eof() || in.bad())
            return in;
        in.clear();
    }
    JxBackgndData::Encode(block.get(), length);
    MemoryBuffer buffer(block.get(), static_cast<unsigned int>(length));
    std::istream record(&buffer);
    if (ReadInteger(record, data.mulFlags) && ReadInteger(record, data.mwValue3) &&
        ReadInteger(record, data.mwValue4) && ReadInteger(record, data.mulValue2) &&
        ReadStrings(record, data.mstrSettings) && ReadStrings(record, data.mstrList) &&
        record >> data.mstrFullSmtpHost) {
        JxBackgndData::ParseIP(data.mstrFullSmtpHost, JxBackgndData::keDefaultSmtpPort,
                               &data.mstrSmtpHost, &data.mwSmtpPort, nullptr);
        if (record >> data.mstrFullPopAccount && record >> data.mstr7 && record >> data.mstr16)
            JxBackgndData::ParseIP(data.mstrFullPopAccount, JxBackgndData::keDefaultPopPort,
                                   &data.mstrPopAccount, &data.mwPopPort, &data.mfPopOption);
    }
    return in;
}

RsWinPlatformData::RsWinPlatformData(void* handle) : mhHandle(handle) {}

RsWinPlatformData::RsWinPlatformData(void* handle, JxBackgndData* data)
    : mhHandle(handle), mfDialup(static_cast<int>(data->mulFlags & keDialupOption)),
      mfDialupNameSet(static_cast<int>(data->mulFlags & keDialupNameOption)),
      mstrDialupName(data->mstr16) {}

void RsWinPlatformData::SetDialupName(const RBString& name) {
    mfDialup = static_cast<int>(name.Length());
    mfDialupNameSet = true;
    mstrDialupName = name;
}
