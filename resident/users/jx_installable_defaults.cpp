#include "resident/users/jx_installable_defaults.h"

#include "resident/files/rb_file.h"
#include "resident/runtime/check.h"
#include "resident/users/format_words.h"

static constexpr Reporter kReports("JXRESIDT\\JXINDFLT.CPP");

static const char kFileName[] = "defaults.ini";
static const char kSection[] = "Address Defaults";

JxInstallableDefaults* JxInstallableDefaults::mpoInstance;

// One key of the file.
struct JxInstallableDefaults::Setting {
    const char* key;
    const FormatWords& words;
    int valueBeforeSetup;
    int valueOfUnknownWord;
    int lineOfUnknownValue;
    int lineOfNoSetup;

    static const Setting kMessageFormat;
    static const Setting kEnclosureEncoding;
    static const Setting kPlatform;
};

const JxInstallableDefaults::Setting JxInstallableDefaults::Setting::kMessageFormat = {
    "Message Format", kMessageFormatWords, 2, 4, 191, 198};
const JxInstallableDefaults::Setting JxInstallableDefaults::Setting::kEnclosureEncoding = {
    "Enclosure Encoding", kEnclosureEncodeWords, 7, 7, 220, 227};
const JxInstallableDefaults::Setting JxInstallableDefaults::Setting::kPlatform = {
    "Platform", kPlatformWords, 4, 4, 158, 165};

JxInstallableDefaults::JxInstallableDefaults() = default;

JxInstallableDefaults* JxInstallableDefaults::GetInstance() {
    if (!mpoInstance)
        mpoInstance = new JxInstallableDefaults;
    return mpoInstance;
}

void JxInstallableDefaults::KillInstance() {
    delete mpoInstance;
    mpoInstance = nullptr;
}

int JxInstallableDefaults::SetupInstallableDefaults(const char* sourceDir, const char* targetDir) {
    RbFile source(FileSpec(sourceDir, FileSpec::keAsPath));
    source.SetSpecPart(kFileName, FileSpec::keAsParts);
    RbFile target(FileSpec(targetDir, FileSpec::keAsPath));
    target.SetSpecPart(kFileName, FileSpec::keAsParts);
    // A cut copy would pass for the site's file, and never be made whole.
    if (!target.Exists() && source.Exists() &&
        target.Copy(source, true, nullptr, keDupLargeBuffer) != keCopyDone)
        target.ImpRemove();
    mstrFile.puts(target.FullFileSpec());
    mfSetup = true;
    return true;
}

int JxInstallableDefaults::Get(const Setting& setting) const {
    if (!mfSetup)
        return setting.valueBeforeSetup;
    char word[256];
    GetPrivateProfileStringA(kSection, setting.key, "", word, sizeof word, mstrFile.Text());
    return setting.words.ValueOfExactly(word, setting.valueOfUnknownWord);
}

void JxInstallableDefaults::Set(const Setting& setting, int value) {
    if (!mfSetup) {
        kReports.FailAt(setting.lineOfNoSetup);
        return;
    }
    RBString word;
    if (!setting.words.WordOf(value, word))
        kReports.FailAt(setting.lineOfUnknownValue);
    // The key stays with no text when there is no word.
    WritePrivateProfileStringA(kSection, setting.key, word.Text(), mstrFile.Text());
}

enumMessageFormat JxInstallableDefaults::GetDefaultMessageFormat() {
    return static_cast<enumMessageFormat>(Get(Setting::kMessageFormat));
}

enumEnclosureEncode JxInstallableDefaults::GetDefaultEnclosureEncoding() {
    return static_cast<enumEnclosureEncode>(Get(Setting::kEnclosureEncoding));
}

enumUserPlatformType JxInstallableDefaults::GetDefaultPlatformType() {
    return static_cast<enumUserPlatformType>(Get(Setting::kPlatform));
}

void JxInstallableDefaults::SetDefaultMessageFormat(enumMessageFormat format) {
    Set(Setting::kMessageFormat, format);
}

void JxInstallableDefaults::SetDefaultEnclosureEncoding(enumEnclosureEncode encoding) {
    Set(Setting::kEnclosureEncoding, encoding);
}

void JxInstallableDefaults::SetDefaultPlatformType(enumUserPlatformType platform) {
    Set(Setting::kPlatform, platform);
}
