// MailUser: one line of a user list, six fields separated by tabs.

#include <algorithm>
#include <string>

#include "resident/core/text_fields.h"
#include "resident/files/rb_file.h"
#include "resident/users/format_words.h"
#include "resident/users/mail_user.h"

static constexpr unsigned int kMaxName = 32;
static constexpr unsigned int kAddressLimit = 112;
static constexpr unsigned int kMaxLine = 1024;

enumUserListResult MailUser::Export(RbFile& file) {
    RBString given;
    RBString family;
    if (!SplitUserName(given, family))
        return keUserListNoName;
    RBString platform;
    RBString format;
    RBString encoding;
    kPlatformWords.WordOf(mPlatform, platform);
    kMessageFormatWords.WordOf(mMessageFormat, format);
    kEnclosureEncodeWords.WordOf(mEnclosureEncode, encoding);
    RBString line;
    line.Sprintf("%s\t%s\t%s\t%s\t%s\t%s\r\n", family.Text(), given.Text(), mstrAddress.Text(),
                 platform.Text(), format.Text(), encoding.Text());
    if (!file.good())
        return keUserListNotWritten;
    file.write(line.Text(), static_cast<int>(line.Length()));
    // Flush: a full disk shows only when the last bytes are written.
    return file.flush() ? keUserListDone : keUserListNotWritten;
}

static std::string_view WithoutTrailingSpaces(std::string_view text) {
    const std::size_t last = text.find_last_not_of(' ');
    return text.substr(0, last == text.npos ? 0 : last + 1);
}

// The two fields of a line as a name; with what stands between them they are no longer than it.
static void JoinName(RBString& name, std::string_view family, std::string_view given) {
    char joined[kMaxLine];
    char* end = std::copy(family.begin(), family.end(), joined);
    *end++ = '|';
    end = std::copy(given.begin(), given.end(), end);
    name.puts(std::string_view(joined, end - joined));
}

// A setting's word as an enumerator; one that is not known leaves the setting.
template <class Setting>
static void TakeWord(Setting& setting, const FormatWords& words, std::string_view word) {
    setting = static_cast<Setting>(words.ValueOf(word, setting));
}

enumUserListResult MailUser::Import(RbFile& file) {
    SetPOPDefaults();
    enumUserListResult result = keUserListDone;
    if (file.good()) {
        char buffer[kMaxLine + 1];
        const bool read = ReadLine(file, buffer, '\r');
        if (read && file.good() && file.peek() == '\n')
            file.get();
        const std::string_view line = WithoutTrailingSpaces(read ? buffer : "");
        if (line.empty())
            return keUserListEmptyLine;
        result = ImportFields(line);
    }
    // The platform of the line gives way to the one that its other two settings imply.
    SetPlatformFromEncoding();
    return result;
}

enumUserListResult MailUser::ImportFields(std::string_view line) {
    enumUserListResult result = keUserListDone;
    std::string_view family;
    TextFields fields(line, '\t');
    std::string_view word;
    int count = 0;
    while (result == keUserListDone && fields.Next(word)) {
        word = WithoutTrailingSpaces(word);
        switch (++count) {
        case 1:
            family = word;
            break;
        case 2:
            if (word.empty())
                result = keUserListNoGivenName;
            JoinName(mstrName, family, word);
            if (mstrName.Length() > kMaxName)
                result = keUserListTooLong;
            break;
        case 3:
            if (!BoundryCheck(mstrAddress, std::string(word).c_str(), kAddressLimit))
                result = keUserListTooLong;
            break;
        case 5:
            TakeWord(mMessageFormat, kImportFormatWords, word);
            break;
        case 6:
            TakeWord(mEnclosureEncode, kEnclosureEncodeWords, word);
            break;
        default: // the platform, which Import takes from the other two settings
            break;
        }
    }
    return result == keUserListDone && count < 3 ? keUserListTooFewFields : result;
}
