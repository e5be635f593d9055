// Texts: everything that searches, cuts, converts and parses them.

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "resources/jxsysres.h"
#include "tests/fuzz/format.h"
#include "tests/support/record_bytes.h"
#include "tests/support/scratch.h"

namespace {

// The invariants of a string: its length byte, its terminator, its text as long as it says.
void Check(const RBString& string) {
    Expect(string.Text()[string.Length()] == 0, "a text without its terminator");
    Expect(std::strlen(string.Text()) <= string.Length(), "a text longer than its length");
    Expect(string.LengthByte() == std::min(string.Length(), 253u) || string.LengthByte() > 253,
           "a length byte that is not the length");
}

unsigned int Position(const RBString& text, Input& in) {
    return in.OneIn(6)   ? in.Of(std::vector<unsigned int>{0, 1, 0x7FFFFFFF, 0xFFFFFFFF})
           : in.OneIn(4) ? text.Length() + in.Below(3)
                         : in.Below(text.Length() + 1);
}

void DriveSearch(Input& in) {
    RBString text(in.bytes.c_str());
    Check(text);
    const std::string pattern =
        in.OneIn(2) && text.Length()
            ? std::string(text.Text()).substr(in.Below(text.Length()), in.Below(20))
            : in.Text();
    for (unsigned int times = 6; times--;) {
        RBString word("unchanged");
        unsigned int start = 0, end = 0;
        const unsigned int position = Position(text, in);
        text.FindTextA(pattern.c_str(), &start, &end, position, enumStringSearch(in.Below(4)));
        text.GetWord(word, &start, &end, position, enumGetWordOptions(in.Below(2)));
        text.GetWord(word, nullptr, nullptr, position, keGetWordPlain);
        Check(word);
        text.GetNthDelimitedWord(word, 1 + in.Below(in.OneIn(9) ? 100000 : 6),
                                 static_cast<unsigned char>(":\t,|a\x81"[in.Below(6)]));
        Check(word);
        char* cursor = const_cast<char*>(text.Text()) + in.Below(text.Length() + 1);
        const char* const stop =
            text.GetStartAndEndPos(&cursor, static_cast<enumGSEPOptions>(in.Below(2)));
        Expect(cursor <= text.Text() + text.Length() &&
                   (!stop || (stop >= cursor && stop <= text.Text() + text.Length())),
               "a word's ends lie outside of the text");
    }
    BaseString::IsDoubleByte(text.Text());
    BaseString::DoubleByteAdjLen(text.Text(), in.Below(text.Length() + 1));
    RBString other(pattern.c_str());
    (void)(text < other), (void)(text == other), text.StrICmp(other);
    (void)(text == other.Pascal());
}

void DriveConvert(Input& in) {
    RBString text(in.bytes.c_str());
    const RBString kept(text);
    const std::string other = in.Text();
    std::string counted = Pascal(other.substr(0, in.Below(256)));
    counted.resize(257);
    for (unsigned int times = 5; times--;) {
        in.DoOne([&] { text.MacToPC(in.OneIn(2) ? nullptr : other.c_str()); },
                 [&] { text.PCToMac(in.OneIn(2) ? nullptr : other.c_str()); },
                 [&] { text.Replace(Position(text, in), Position(text, in), other.c_str()); },
                 [&] { text.Truncate(Position(text, in)); },
                 [&] { text.StripChars(" \tx\x81"[in.Below(4)], in.Below(4)); },
                 [&] { text.concat(other.c_str()).concat(text).concat('x'); },
                 [&] { text.concat(reinterpret_cast<const unsigned char*>(counted.data())); },
                 [&] { text.puts(reinterpret_cast<const unsigned char*>(counted.data())); },
                 [&] { text.Sprintf("%s|%d|%5u%%", other.c_str(), -1, 7u); },
                 [&] {
                     RBString format("%s=%ld");
                     text.Sprintf(format, text.Text(), 5l);
                 },
                 [&] {
                     std::strcpy(text.AdjustSize(other.size() + text.Length()), other.c_str());
                     text.AdjustSize(0);
                 },
                 [&] { text.puts(other.c_str(), in.Below(50)); },
                 [&] {
                     if (text.Length()) {
                         text.SetCharUpper(1 + in.Below(text.Length()));
                         text.IsCharUpperA(text.Length());
                     }
                     // Nobody has it.
                     if (in.OneIn(20))
                         *text.charAt(text.Length() + 1) = 'x';
                 },
                 [&] {
                     RBString own(text.Text());
                     own.Upper();
                     own.Lower();
                 },
                 // With a text of the product's own.
                 [&] { text.Sprintf(604, GetJxSystemResHandle(), other.c_str()); });
        Check(text);
    }
    std::vector<char> room(1 + in.Below(300) + 1);
    LStrNCpyAndNullTerminate(room.data(), text.Text(), room.size());
    std::string copy(text.Length() + 1, '\0');
    BaseString::StrCpySkipLFs(copy.data(), text.Text());
}

void DriveString(Input& in) {
    std::istringstream stream(in.bytes);
    for (unsigned int count = 0; count < 30 && stream.good(); ++count) {
        RBString string("old");
        stream >> string;
        Check(string);
        std::ostringstream out;
        out << string;
        RBString joined(3, string.Text(), "x", string.Text());
        Check(joined);
    }
    if (!in.bytes.empty()) {
        std::string field = in.bytes.substr(0, 1 + static_cast<unsigned char>(in.bytes[0]));
        field.resize(256);
        Check(RBString(reinterpret_cast<const unsigned char*>(field.data())));
        ReadText(
            FieldString(reinterpret_cast<const unsigned char*>(field.data()), in.Below(100) + 1)
                .Text());
    }
    RBInt number;
    std::istringstream(in.bytes) >> number;
    RbRefCounter counter(1);
    std::istringstream(in.bytes) >> counter;
}

void DriveFileSpec(Input& in) {
    const char* const text = in.bytes.c_str();
    FileSpec spec(text, in.Below(2));
    FileSpec other("C:\\MAIL\\IN\\FILE.EXT");
    for (unsigned int times = 6; times--;) {
        RBString argument(in.Text().c_str());
        in.DoOne([&] { spec.Parse(text, in.Below(2)); },
                 [&] { spec.ForceToPath(argument.Text(), in.Below(2)); },
                 [&] { spec.SetSpecPart(argument, in.Below(2)); },
                 [&] { spec.SetValidSpecPart(argument, in.Below(2)); },
                 [&] { spec.AppendPath(argument.Text()); }, [&] { spec.DecendPath(); },
                 [&] { spec.SetPath(argument.Text()); }, [&] { spec.SetFileExt(argument.Text()); },
                 [&] {
                     spec.Build(static_cast<char>(in.Number()), text, argument.Text(),
                                argument.Text(), in.Below(2));
                 },
                 [&] {
                     other = spec;
                     Expect(other == spec && !(other != spec), "a copied specification is another");
                 },
                 [&] { FileSpec().Parse(spec.FullSpec(), 1); },
                 [&] {
                     other = spec.Beside(argument.Text());
                     (void)spec.IsSameFile(other);
                 },
                 [&] {
                     RbFile(spec).Exists();
                     (void)(spec < other);
                 },
                 [&] {
                     RbFile file(spec);
                     unsigned short time, date;
                     long size;
                     file.FileInfo(&time, &size, &date);
                     file.DirectoryExists();
                 });
        // Each is good until the next one is asked for.
        for (const char* (FileSpec::*form)() const :
             {&FileSpec::FullSpec, &FileSpec::FullFileSpec, &FileSpec::FullFilePath,
              &FileSpec::FullFileName, &FileSpec::FileName, &FileSpec::FileExt})
            ReadText((spec.*form)());
        ReadText(spec.FullPath());
        ReadText(spec.ShortFileExt() ? spec.ShortFileExt() : "");
        Expect(spec.Drive() < 26 || spec.Drive() == FileSpec::keNoDrive, "a drive that is none");
    }
}

// Names of files and folders to be made, renamed and removed.
void DriveDiskName(Input& in) {
    char folder[MAX_PATH];
    GetCurrentDirectoryA(sizeof folder, folder);
    // One part of a path, so that all happens in the current folder: what has no OEM character
    // becomes a dot, a question mark and others there.
    const auto inOem = [](std::string text) {
        CharToOemA(text.c_str(), text.data());
        return text;
    };
    const auto name = [&](std::string text) {
        std::erase_if(text, [](char c) { return std::strchr("\\/:", c); });
        const char first = inOem(text)[0];
        return folder + ("\\" + (first == 0 || first == '.' || first == ' ' ? "SUB" : text));
    };
    const std::string path = name(in.bytes), other = name(in.Text());
    FileSpec spec(path.c_str(), in.Below(2));
    in.DoOne(
        [&] {
            // Longer names than disks have room for are some systems' own matter.
            if (DiskDriver::MakeDir(path.c_str()) && path.size() < 128 &&
                inOem(path).find_first_of("*?") == path.npos)
                Expect(DiskDriver::FileExists(path.c_str(), 0),
                       "a folder that was made is not there");
        },
        [&] { DiskDriver::RemoveFile(path.c_str()); },
        [&] { DiskDriver::Rename(path.c_str(), other.c_str()); },
        [&] {
            DiskDriver driver;
            driver.RemoveDir(spec);
        },
        [&] {
            DiskDriver driver;
            driver.DoDelDirectory(path.c_str() + std::strlen(folder) + 1);
        },
        [&] {
            JxMailMessageSemaphore semaphore;
            if (semaphore.CreateSemaphoreA(path.c_str()))
                Expect(semaphore.RemoveSemaphore(nullptr), "a semaphore is not removed");
        },
        [&] {
            RbFile file(spec);
            const auto* const own = reinterpret_cast<const unsigned char*>(file.FullFileSpec());
            std::vector<unsigned char> bytes(in.bytes.begin(), in.bytes.end());
            for (const int mode : {keOpenRewrite, keOpenRead})
                if (file.open(own, mode | keOpenBinary); file.isOpen()) {
                    mode == keOpenRead ? file.read(bytes.data(), static_cast<int>(bytes.size()))
                                       : file.write(bytes.data(), static_cast<int>(bytes.size()));
                    file.close();
                }
            file.RenameToBak(in.OneIn(2) ? &spec : nullptr);
        },
        [&] {
            FileSpec where(folder, 1);
            TemporaryFile file(where, 1);
            Expect(file.IsValid(), "makes no temporary file");
            std::tm when;
            long size;
            file.FileInfo(&when, &size);
            TemporaryFile::DelDanglingTemps();
            TemporaryFile named(in.Text().c_str(), 1,
                                static_cast<enumTempFileOptions>(in.Below(2)));
        });
}

void DriveFileName(Input& in) {
    RBString source(in.bytes.c_str());
    RBString result("old");
    RBString ext(in.Of(std::vector<const char*>{"", ".EML", "EML", ".", "..", "\x81"}));
    FileSpec spec;
    const int made = FileSpec::HashFileName(result, source, in.OneIn(3) ? nullptr : &ext,
                                            in.OneIn(3) ? "" : spec.InvalidSet());
    Expect(made ? result.Length() > 0 : result == "NO_NAME", "makes no name");
    Check(result);
    RBString name(result);
    if (made)
        Expect(FileSpec::isValidPathName(name, spec.InvalidSet(), 1) == 0, "makes a bad name");
    FileSpec::isValidFileNoExt(source, spec.InvalidSet());
    FileSpec::isValidPathName(source, spec.InvalidSet(), 0);
    FileSpec::CleanUp(source);
    std::vector<char> path(1 + in.Below(300));
    if (JxCurrentUserDataFile::GetFileSpec(in.bytes.c_str(), path.data(), path.size()))
        ReadText(path.data());
    RbFile file(result);
    MailUser user(source, file);
    ReadText(user.Address().Text());
    DirectoryRecord record;
    std::string counted = Pascal(in.bytes.substr(0, 33));
    std::memcpy(record.Record().fileName, counted.data(), counted.size());
    ReadText(record.FileName().Text());
}

void DriveAddress(Input& in) {
    const RBString text(in.bytes.c_str());
    RBString host("old");
    unsigned short port;
    int flag = 2;
    const int found =
        JxBackgndData::ParseIP(text, 110, &host, &port, in.OneIn(2) ? nullptr : &flag);
    Expect(found == (text.Length() != 0), "finds a host in nothing, or none in something");
    RBString own(text);
    JxBackgndData::ParseIP(own, 25, &own, &port, nullptr);
    BaseMailUser base;
    if (text.Length())
        base.SetInternetAddress(text.Text());
    ReadText(base.Address().Text());
    RBString name(text), out;
    MailUser::OrderedUserName(out, name, static_cast<unsigned short>(in.Number()));
    Expect(out.Length() <= MailUser::keMaxDisplayName || out == name,
           "a name longer than the result has room for");
    MailUser::OrderedUserName(name, name, 1);
    MailUser whole(text.Text(), text.Text(), static_cast<enumMessageFormat>(1 + in.Below(4)),
                   static_cast<enumEnclosureEncode>(in.Below(3)));
    ReadText(whole.Address().Text());
    MailUser first(text.Text(), in.Text().c_str(), static_cast<MailUserType>(in.Number()));
    MailUser second(in.Text().c_str(), text.Text(), keUserOrdinary);
    (void)(first < second), (void)(first > second), (void)(second < first);
    RBString given, family;
    first.SplitUserName(given, family);
    Expect(given.Length() + family.Length() <= 34, "splits more than the name's part");
    ReadText(given.Text());
    first.GetUserNameFirstChar();
    std::ostringstream written;
    written << first << second;
    JxMailUserRepresentation shown(text.Text(), text.Text());
    ReadText(shown.GetDisplayString().Text());
}

void DriveTranslation(Input& in) {
    std::string text = in.bytes;
    TranslateTable& table = *TranslateTable::GetInstance();
    table.IncomingTranslate(text.data(), text.size());
    table.OutgoingTranslate(text.data(), text.size());
    std::string expected = in.bytes;
    if (RbCountry::Instance()->GetCountry() != 0)
        std::replace(expected.begin(), expected.end(), '\x7F', '\xDF');
    Expect(text == expected, "a translated text does not come back");
    MailUser user(in.bytes.c_str(), "", keUserOrdinary);
    user.TranslateIn();
    user.TranslateOut();
    if (in.OneIn(200)) {
        TranslateTable::KillInstance();
        TranslateTable::GetInstance()->LoadTranslationTable();
    }
}

// A translation table has a byte for each value from 0x7F on.
constexpr unsigned int kTableSize = 129;

// What the tables in force make of each of them: on the way in, then on the way out.
std::string Translated() {
    std::string in;
    for (int byte = 0x7F; byte <= 0xFF; ++byte)
        in += static_cast<char>(byte);
    std::string out = in;
    TranslateTable::GetInstance()->IncomingTranslate(in.data(), in.size());
    TranslateTable::GetInstance()->OutgoingTranslate(out.data(), out.size());
    return in + out;
}

// The input in the place of the resource that holds the tables, in a block of just its size.
void DriveTranslationTable(Input& in) {
    const auto module = static_cast<HMODULE>(GetJxSystemResHandle());
    auto& entry = *reinterpret_cast<IMAGE_RESOURCE_DATA_ENTRY*>(
        FindResourceA(module, "TransTable_ANSI", "TRANSTABLE"));
    const IMAGE_RESOURCE_DATA_ENTRY kept = entry;
    const std::string sound = Translated();
    const std::unique_ptr<char[]> resource(new char[in.bytes.size()]);
    in.bytes.copy(resource.get(), in.bytes.size());
    DWORD protection;
    VirtualProtect(&entry, sizeof entry, PAGE_READWRITE, &protection);
    entry.OffsetToData = resource.get() - reinterpret_cast<char*>(module);
    entry.Size = in.bytes.size();
    TranslateTable::KillInstance();
    const bool replaced =
        in.bytes.size() >= 2 * kTableSize && RbCountry::Instance()->GetCountry() != 0;
    Expect(Translated() == (replaced ? in.bytes.substr(0, 2 * kTableSize) : sound),
           "a resource that is whole is the tables, any other is none");
    entry = kept;
    VirtualProtect(&entry, sizeof entry, protection, &protection);
    TranslateTable::KillInstance();
    Expect(Translated() == sound, "the tables are not put back");
}

void ReadDayTime(DayTime& time) {
    ReadText(time.DateToWinFormat());
    ReadText(time.TimeToWinFormat());
    ReadText(time.GetTimeStringWithAMPM());
}

// Any seconds, and any packed times.
void DriveDayTime(Input& in) {
    const auto number = [&](unsigned int at) {
        unsigned long value = 0;
        if (in.bytes.size() >= at + sizeof value)
            std::memcpy(&value, in.bytes.data() + at, sizeof value);
        return value;
    };
    for (unsigned int at = 0; at < 12; at += 4) {
        const unsigned long seconds = number(at);
        DayTime mac(seconds, keDayTimeMac);
        DayTime pc(seconds, keDayTimePC);
        ReadDayTime(mac);
        ReadDayTime(pc);
        mac.PCToMac(mac.MacToPC(seconds));
        DayTime::GetGmtDiff(static_cast<long>(seconds));
        DayTime::Date(seconds);
        struct ftime stamp;
        static_assert(sizeof stamp == sizeof seconds);
        std::memcpy(&stamp, &seconds, sizeof stamp);
        DayTime packed(stamp);
        ReadDayTime(packed);
        Expect((mac < pc) + (pc < mac) + (mac == pc) == 1, "two times in no order");
    }
}

void DriveRegion(Input& in) {
    WriteFileBytes(WindowsDirectory() + "\\WIN.INI", in.bytes);
    DayTime::RetrieveDefaults();
    DayTime time(in.Number(), keDayTimePC);
    ReadDayTime(time);
    DayTime now;
    ReadDayTime(now);
    for (const char* text : {DayTime::GetDateSeparator(), DayTime::GetTimeSeparator(),
                             DayTime::GetAMRep(), DayTime::GetPMRep()})
        ReadText(text);
    DayTime::GetTimeFormatA();
}

} // namespace

void AddTextFormats(std::vector<Format>& formats) {
    const Format texts[] = {
        {.name = "search",
         .run = DriveSearch,
         .words = {"the", "The", " ", ".", "e.g.", "\x81\x40", "\xE0"}},
        {.name = "convert",
         .run = DriveConvert,
         .words = {"\r", "\n", "\r\n", "  ", "\x81\x40"},
         .texts = {{"A text operation failed", "a position outside of the text is shown"}}},
        {.name = "string", .run = DriveString, .words = {Bytes("\0\0\0\x02"), Bytes("\0\0")}},
        {.name = "file-spec",
         .run = DriveFileSpec,
         .words = {"\\", "\\\\", ":", "C:", ".", "..", "/", "*", "?", "NUL", "CON", "AUX.TXT",
                   ".BAK"}},
        {.name = "disk-name",
         .run = DriveDiskName,
         .words = {"SUB", "M1.EML", "*", "?", ".", " ", "NUL"},
         .files = {{"M1.EML", "text"}, {"SUB", "folder"}, {"SUB\\IN.EML", "text"}},
         .mayAppear = {"*"},
         .mayGo = {"*"},
         .texts = {{"DiskDriver::Rename() failed.", "a name that is not there, or no name"},
                   {"eResult == keDELETE_OK", "the same"}}},
        {.name = "file-name",
         .run = DriveFileName,
         .words = {".", "..", "\x81", " ", "\x1F", ".EML", "EML"}},
        {.name = "address",
         .run = DriveAddress,
         .words = {"<", ">", ":", "|", "n", "99999999999", "65536", ","}},
        {.name = "translation", .run = DriveTranslation, .words = {"\x7F"}},
        {.name = "translation-table", .run = DriveTranslationTable, .unit = kTableSize},
        {.name = "day-time", .run = DriveDayTime, .unit = 4},
        {.name = "win.ini",
         .run = DriveRegion,
         .words = {"%s", "%n", "MM", "dd", "yy", "=", "[intl]", "iTime", "sDate", "sTime"}}};
    formats.insert(formats.end(), std::begin(texts), std::end(texts));
}
