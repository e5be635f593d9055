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

unsigned int Position(const RBString& text, Random& random) {
    return random.OneIn(6)   ? random.Of(std::vector<unsigned int>{0, 1, 0x7FFFFFFF, 0xFFFFFFFF})
           : random.OneIn(4) ? text.Length() + random.Below(3)
                             : random.Below(text.Length() + 1);
}

void DriveSearch(Input& in) {
    Random& random = in.random;
    RBString text(in.bytes.c_str());
    Check(text);
    const std::string pattern =
        random.OneIn(2) && text.Length()
            ? std::string(text.Text()).substr(random.Below(text.Length()), random.Below(20))
            : AnyText(random);
    for (unsigned int times = 6; times--;) {
        RBString word("unchanged");
        unsigned int start = 0, end = 0;
        const unsigned int position = Position(text, random);
        if (text.FindTextA(pattern.c_str(), &start, &end, position,
                           static_cast<enumStringSearch>(random.Below(4))))
            Expect(start >= 1 && end == start + pattern.size() - 1 &&
                       position - 1 + end <= text.Length(),
                   "finds outside of the text");
        if (text.GetWord(word, &start, &end, position,
                         static_cast<enumGetWordOptions>(random.Below(2))))
            Expect(start >= 1 && end <= text.Length() && end == start + word.Length() - 1,
                   "a word outside of the text");
        text.GetWord(word, nullptr, nullptr, position, keGetWordPlain);
        Check(word);
        text.GetNthDelimitedWord(word, 1 + random.Below(random.OneIn(9) ? 100000 : 6),
                                 static_cast<unsigned char>(":\t,|a\x81"[random.Below(6)]));
        Check(word);
        char* cursor = const_cast<char*>(text.Text()) + random.Below(text.Length() + 1);
        const char* const stop =
            text.GetStartAndEndPos(&cursor, static_cast<enumGSEPOptions>(random.Below(2)));
        Expect(cursor <= text.Text() + text.Length() &&
                   (!stop || (stop >= cursor && stop <= text.Text() + text.Length())),
               "a word's ends lie outside of the text");
    }
    BaseString::DoubleByteAdjLen(text.Text(), random.Below(text.Length() + 1));
    RBString other(pattern.c_str());
    // Only that they end is asked: the order is the system's.
    (void)(text < other), (void)(text > other), (void)(text == other), text.StrICmp(other);
    (void)(text == other.Pascal());
}

void DriveConvert(Input& in) {
    Random& random = in.random;
    RBString text(in.bytes.c_str());
    const RBString kept(text);
    const std::string was = text.Text();
    const std::string other = AnyText(random);
    std::string counted = Pascal(other.substr(0, random.Below(256)));
    counted.resize(257);
    for (unsigned int times = 5; times--;) {
        switch (random.Below(14)) {
        case 0:
            text.MacToPC(random.OneIn(2) ? nullptr : other.c_str());
            break;
        case 1:
            text.PCToMac(random.OneIn(2) ? nullptr : other.c_str());
            Expect(!std::strchr(text.Text(), '\n'), "a line feed is left");
            break;
        case 2:
            text.Replace(Position(text, random), Position(text, random), other.c_str());
            break;
        case 3:
            text.Truncate(Position(text, random));
            break;
        case 4:
            text.StripChars(" \tx\x81"[random.Below(4)], random.Below(4));
            break;
        case 5:
            text.concat(other.c_str()).concat(text).concat('x');
            break;
        case 6:
            text.concat(reinterpret_cast<const unsigned char*>(counted.data()));
            break;
        case 7:
            text.puts(reinterpret_cast<const unsigned char*>(counted.data()));
            break;
        case 8:
            text.Sprintf("%s|%d|%5u%%", other.c_str(), -1, 7u);
            break;
        case 9: {
            RBString format("%s=%ld");
            text.Sprintf(format, text.Text(), 5l);
            break;
        }
        case 10:
            std::strcpy(text.AdjustSize(other.size() + text.Length()), other.c_str());
            text.AdjustSize(0);
            break;
        case 11:
            text.puts(other.c_str(), random.Below(50));
            break;
        case 12:
            if (text.Length()) {
                text.SetCharUpper(1 + random.Below(text.Length()));
                text.IsCharUpperA(text.Length());
            }
            // Nobody has it.
            if (random.OneIn(20))
                *text.charAt(text.Length() + 1) = 'x';
            break;
        case 13: {
            RBString own(text.Text());
            own.Upper();
            own.Lower();
            Expect(own.Length() == std::strlen(text.Text()), "another case is another length");
            break;
        }
        }
        Check(text);
    }
    // Whoever shares the old text keeps it, but for one letter's case.
    Expect(kept.Length() == was.size() && std::strlen(kept.Text()) == was.size(),
           "a shared text changes");
    std::vector<char> room(1 + random.Below(300) + 1);
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
        Expect(in.bytes.find(out.str()) != in.bytes.npos || !stream || !string.Length(),
               "writes other bytes than it read");
        RBString joined(3, string.Text(), "x", string.Text());
        Check(joined);
    }
    if (!in.bytes.empty()) {
        std::string field = in.bytes.substr(0, 1 + static_cast<unsigned char>(in.bytes[0]));
        field.resize(256);
        Check(RBString(reinterpret_cast<const unsigned char*>(field.data())));
        ReadText(FieldString(reinterpret_cast<const unsigned char*>(field.data()),
                             in.random.Below(100) + 1)
                     .Text());
    }
    RBInt number;
    std::istringstream(in.bytes) >> number;
    RbRefCounter counter(1);
    std::istringstream(in.bytes) >> counter;
}

void DriveFileSpec(Input& in) {
    Random& random = in.random;
    const char* const text = in.bytes.c_str();
    FileSpec spec(text, random.Below(2));
    FileSpec other("C:\\MAIL\\IN\\FILE.EXT");
    for (unsigned int times = 6; times--;) {
        RBString argument(AnyText(random, {"\\", ":", ".", "..", "C:", ".BAK"}).c_str());
        switch (random.Below(14)) {
        case 0:
            spec.Parse(text, random.Below(2));
            break;
        case 1:
            spec.ForceToPath(argument.Text(), random.Below(2));
            break;
        case 2:
            spec.SetSpecPart(argument, random.Below(2));
            break;
        case 3:
            spec.SetValidSpecPart(argument, random.Below(2));
            break;
        case 4:
            spec.AppendPath(argument.Text());
            break;
        case 5:
            spec.DecendPath();
            break;
        case 6:
            spec.SetPath(argument.Text());
            break;
        case 7:
            spec.SetFileExt(argument.Text());
            break;
        case 8:
            spec.Build(static_cast<char>(random.Next()), text, argument.Text(), argument.Text(),
                       random.Below(2));
            break;
        case 9:
            other = spec;
            Expect(other == spec && !(other != spec), "a copied specification is another");
            break;
        case 10: {
            // What was parsed from its own full form stays as it is.
            const std::string full = spec.FullSpec();
            FileSpec again;
            if (full.size() < 200 && again.Parse(full.c_str(), 1) == FileSpec::keSpecOk)
                Expect(FileSpec(again.FullSpec()) == again, "a full form is parsed otherwise");
            break;
        }
        case 11:
            other = spec.Beside(argument.Text());
            (void)spec.IsSameFile(other);
            break;
        case 12:
            RbFile(spec).Exists();
            (void)(spec < other);
            break;
        case 13: {
            RbFile file(spec);
            unsigned short time, date;
            long size;
            file.FileInfo(&time, &size, &date);
            file.DirectoryExists();
            break;
        }
        }
        // Each is good until the next one is asked for.
        ReadText(spec.FullSpec());
        ReadText(spec.FullFileSpec());
        ReadText(spec.FullFilePath());
        ReadText(spec.FullPath());
        ReadText(spec.FullFileName());
        ReadText(spec.FileName());
        ReadText(spec.FileExt());
        if (spec.ShortFileExt())
            ReadText(spec.ShortFileExt());
        Expect(spec.Drive() < 26 || spec.Drive() == FileSpec::keNoDrive, "a drive that is none");
    }
}

void DriveFileName(Input& in) {
    Random& random = in.random;
    RBString source(in.bytes.c_str());
    RBString result("old");
    RBString ext(random.Of(std::vector<const char*>{"", ".EML", "EML", ".", "..", "\x81"}));
    FileSpec spec;
    const int made = FileSpec::HashFileName(result, source, random.OneIn(3) ? nullptr : &ext,
                                            random.OneIn(3) ? "" : spec.InvalidSet());
    Expect(made ? result.Length() > 0 : result == "NO_NAME", "makes no name");
    Check(result);
    RBString name(result);
    if (made)
        Expect(FileSpec::isValidPathName(name, spec.InvalidSet(), 1) == 0, "makes a bad name");
    FileSpec::isValidFileNoExt(source, spec.InvalidSet());
    FileSpec::isValidPathName(source, spec.InvalidSet(), 0);
    FileSpec::CleanUp(source);
    std::vector<char> path(1 + random.Below(300));
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
    Random& random = in.random;
    const RBString text(in.bytes.c_str());
    RBString host("old");
    unsigned short port;
    int flag = 2;
    const int found =
        JxBackgndData::ParseIP(text, 110, &host, &port, random.OneIn(2) ? nullptr : &flag);
    Expect(found == (text.Length() != 0), "finds a host in nothing, or none in something");
    RBString own(text);
    JxBackgndData::ParseIP(own, 25, &own, &port, nullptr);
    BaseMailUser base;
    if (text.Length())
        base.SetInternetAddress(text.Text());
    ReadText(base.Address().Text());
    RBString name(text), out;
    MailUser::OrderedUserName(out, name, static_cast<unsigned short>(random.Next()));
    Expect(out.Length() <= MailUser::keMaxDisplayName || out == name,
           "a name longer than the result has room for");
    MailUser::OrderedUserName(name, name, 1);
    MailUser first(text.Text(), AnyText(random).c_str(), static_cast<MailUserType>(random.Next()));
    MailUser second(AnyText(random).c_str(), text.Text(), keUserOrdinary);
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
    if (in.random.OneIn(200)) {
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
    DayTime time(in.random.Next(), keDayTimePC);
    ReadDayTime(time);
    DayTime now;
    ReadDayTime(now);
    ReadText(DayTime::GetDateSeparator());
    ReadText(DayTime::GetTimeSeparator());
    ReadText(DayTime::GetAMRep());
    ReadText(DayTime::GetPMRep());
    DayTime::GetTimeFormatA();
}

Format Text(const char* name, void (*run)(Input&), const std::vector<std::string>& samples,
            const std::vector<std::string>& words = {}) {
    Format format;
    format.name = name;
    format.shortRun = 2500;
    format.run = run;
    for (const std::string& sample : samples)
        format.shape.samples.push_back(SampleMaker().Put(sample));
    format.shape.words = words;
    format.shape.separator = ' ';
    return format;
}

} // namespace

void AddTextFormats(std::vector<Format>& formats) {
    formats.push_back(
        Text("search", DriveSearch,
             {"Then the end, e.g. of the text: host:995:n", "a::b\tc|d,e", "\x81\x40x"},
             {"the", "The", " ", ".", "e.g.", "\x81\x40", "\xE0"}));
    Format convert = Text("convert", DriveConvert, {"a\rb\r\nc\n", "  ab  ", "\x83\x5C\x81"},
                          {"\r", "\n", "\r\n", "  ", "\x81\x40"});
    convert.texts = {{"A text operation failed", "a position outside of the text is shown"}};
    formats.push_back(convert);
    Format string = Text("string", DriveString, {}, {Bytes("\0\0\0\x02"), Bytes("\0\0")});
    string.shape.samples = {SampleMaker()
                                .PutStreamed("Hi")
                                .PutStreamed("")
                                .PutStreamed(std::string(300, 'x'))
                                .PutStreamed("z"),
                            SampleMaker().PutField("\x05").Put("Smith"),
                            SampleMaker().Put("12345")};
    formats.push_back(string);
    formats.push_back(
        Text("file-spec", DriveFileSpec,
             {"C:\\MAIL\\IN\\INBOX.DAT", "\\\\HOST\\SHARE\\F.", "..\\A\\", "a/b:c", ".BAK"},
             {"\\", "\\\\", ":", "C:", ".", "..", "/", "*", "?", "NUL", "CON", "AUX.TXT"}));
    formats.push_back(Text("file-name", DriveFileName,
                           {"Minutes of Monday.txt", "Re: a/b\\c*?<>", "\xE9t\xE9.doc.", ""},
                           {".", "..", "\x81", " ", "\x1F"}));
    formats.push_back(
        Text("address", DriveAddress,
             {"Anna Smith <box7@post>", "mail7:1110:n", "Smith|Anna", "a>b <c>", "::n:"},
             {"<", ">", ":", "|", "n", "99999999999", "65536", ","}));
    formats.push_back(
        Text("translation", DriveTranslation, {"Gr\x9F\xA7 \x7F\xDB", "plain"}, {"\x7F"}));
    Format table = Text("translation-table", DriveTranslationTable, {}, {});
    table.shape.samples = {SampleMaker().PutRecords(RandomBytes(1, 258), 129, {{0, 1}}),
                           SampleMaker().PutRecords(RandomBytes(2, 300), 100, {{0, 1}})};
    table.shortRun = 400;
    formats.push_back(table);
    Format dayTime = Text("day-time", DriveDayTime, {}, {});
    dayTime.shape.samples = {SampleMaker()
                                 .PutField("\x90\xA7\xCA\xB1")
                                 .PutField(Bytes("\0\0\0\x80"))
                                 .PutField(Bytes("\0\0\0\0")),
                             SampleMaker()
                                 .PutField("\x80\x4F\x25\x7C")
                                 .PutField("\xFF\xFF\xFF\x7F")
                                 .PutField("\xFF\xFF\xFF\xFF")};
    dayTime.shape.unit = 4;
    dayTime.shortRun = 300;
    formats.push_back(dayTime);
    Format region =
        Text("win.ini", DriveRegion,
             {"[intl]\r\niTime=0\r\niTLZero=1\r\nsShortDate=dd.MM.yy\r\nsDate=.\r\n"
              "sTime=:\r\ns1159=AM\r\ns2359=PM\r\n",
              "[intl]\nsShortDate=MMMMMMMMMddddddddyyyy\nsTime=%s%n\ns1159=%s%s%s\niTime=x\n"},
             {"%s", "%n", "MM", "dd", "yy", "=", "[intl]", "iTime", "sDate", "sTime"});
    region.shape.separator = '\n';
    region.shortRun = 400;
    formats.push_back(region);
}
