// Users: a name, an address and a few settings, with every form in which they are kept and shown.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/folder_model.h"
#include "tests/support/reports.h"
#include "tests/support/resource_text.h"
#include "tests/support/scratch.h"
#include "tests/support/side_by_side.h"
#include "tests/support/user_bytes.h"

namespace {

struct User {
    int format = 2, encoding = 7, platform = 4; // the defaults
    int option = 0, type = 0x8000, extension = 0;
    unsigned long flags = 0;
    std::string name, address;

    void Imply() {
        platform = format == 1 && encoding == 1   ? 6
                   : format == 2 && encoding == 7 ? 2
                   : format == 4 && encoding == 7 ? 4
                   : format == 3 && encoding == 2 ? 3
                                                  : 5;
    }
    // From bytes 32 to 36 of a record.
    void Take(const std::string& bytes) {
        format = 2, encoding = 7, platform = 4, option = 0;
        if (Byte(bytes, 0) != 0xFF)
            return;
        const int known[][2] = {{}, {2, 7}, {2, 7}, {3, 2}, {4, 7}, {}, {1, 1}};
        const int byte = Byte(bytes, 3);
        option = Byte(bytes, 4);
        if (byte == 5) {
            format = Byte(bytes, 1) >= 1 && Byte(bytes, 1) <= 4 ? Byte(bytes, 1) : 4;
            const int given = Byte(bytes, 2);
            encoding = given == 1 || given == 2 || given == 7 ? given : 7;
            Imply();
        } else if (byte >= 1 && byte <= 6) {
            format = known[byte][0], encoding = known[byte][1], platform = byte;
        }
    }
    std::string Settings() const {
        return {char(format), char(encoding), char(platform), char(option)};
    }
    std::string Record() const { return UserRecord(name, Settings(), address, type, extension); }
    std::string Shown() const {
        return name + "/" + address + " " + std::to_string(format) + std::to_string(encoding) +
               std::to_string(platform) + " " + std::to_string(option) + " " +
               std::to_string(type) + " " + std::to_string(extension) + " " + std::to_string(flags);
    }
    // What names are compared by.
    std::string Key() const {
        std::string key = name.substr(0, 32);
        std::replace_if(
            key.begin(), key.end(), [](char c) { return c == ',' || c == '|'; }, ' ');
        return key.substr(!key.empty() && key[0] == ' ');
    }
    int Class() const {
        return type == 0x6000 ? 0 : type == 0x2000 ? 1 : type == 0x4000 || type == 0x8000 ? 2 : 3;
    }
    static int Compare(const User& a, const User& b) {
        return lstrcmpiA(a.Key().c_str(), b.Key().c_str());
    }
    static bool Less(const User& a, const User& b) {
        const int one = a.Class(), other = b.Class();
        if (one == 0 || one == 3)
            return true;
        return one == other ? Compare(a, b) < 0
               : one == 1   ? other > 1
                            : other > 1 && Compare(a, b) < 0;
    }
    static bool Greater(const User& a, const User& b) {
        if (a.type == b.type)
            return Compare(a, b) >= 0;
        return (a.Class() == 1 || a.Class() == 2) && b.Class() < a.Class();
    }
    std::string Ordered(bool givenFirst) const {
        const std::size_t bar = name.find('|');
        if (bar == name.npos)
            return name;
        const std::string family = name.substr(0, bar), given = name.substr(bar + 1);
        return (givenFirst ? given + " " + family : family + ", " + given).substr(0, 51);
    }
    std::string Split() const { // "family\tgiven", empty for none
        const std::string first = name.substr(0, 34);
        const std::size_t bar = first.find('|');
        return first.empty()       ? ""
               : bar == first.npos ? "\t" + first
                                   : first.substr(0, bar) + "\t" + first.substr(bar + 1);
    }
};

std::string AnyAddress(Random& random) {
    static const std::string all = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::string address;
    for (unsigned int size = random.OneIn(2)
                                 ? random.Below(12)
                                 : random.Of<unsigned int>({30, 31, 32, 33, 111, 112, 142});
         size--;)
        address += all[address.size() % 36];
    return address;
}

// The words of the settings in user lists, by their values.
const std::vector<std::pair<int, unsigned int>> kPlatforms = {{6, 726}, {1, 720}, {2, 721},
                                                              {3, 722}, {4, 723}, {5, 724}},
                                                kFormats = {{1, 713},
                                                            {4, 714},
                                                            {2, 715},
                                                            {2, 712},
                                                            {3, 716}},
                                                kEncodings = {{1, 718}, {2, 719}, {7, 725}};

class Users : public SideBySide {
public:
    ~Users() override {
        if (mList.isOpen())
            mList.close();
    }
    void Step(Random& random) override {
        const unsigned int i = random.Below(2);
        JxLoggedMailUser &user = mUsers[i], &other = mUsers[1 - i];
        User &model = mModels[i], &otherModel = mModels[1 - i];
        const std::string name = AnyName(random), address = AnyAddress(random);
        const unsigned int operation = random.Below(15);
        Say("operation", operation, "on", i, Shown(name), Shown(address));
        switch (operation) {
        case 0: {
            user.SetName(name.c_str());
            user.SetAddress(address.c_str());
            model.name = name, model.address = address;
            user.SetPopOption(random.Below(256));
            model.option = user.PopOption();
            user.SetType(random.Of<MailUserType>({0x2000, 0x4000, 0x6000, 0x8000, 0x1000}));
            model.type = user.Type();
            user.SetTypeExtension(random.Below(0x10000));
            model.extension = user.TypeExtension();
            user.SetFlags(random.Below(256));
            model.flags = user.Flags();
            break;
        }
        case 1: {
            model.format = 1 + random.Below(5), model.encoding = random.Of<int>({1, 2, 7, 9});
            user.SetMessageFormat(enumMessageFormat(model.format));
            user.SetEnclosureEncode(enumEnclosureEncode(model.encoding));
            user.SetPlatformFromEncoding();
            model.Imply();
            break;
        }
        case 2:
        case 3: { // written, and read from among others
            const std::string bytes = model.Record();
            Same("written", Written(static_cast<BaseMailUser&>(user)), bytes);
            Same("continued", BaseMailUser::Continued(), model.address.size() > 31);
            std::istringstream in(bytes + otherModel.Record());
            in >> static_cast<BaseMailUser&>(other);
            Same("stands at", in.tellg(), bytes.size());
            User read = otherModel;
            read.Take(bytes.substr(32, 5));
            read.name = FieldText(bytes, 0, 32), read.address = model.address;
            read.type = model.type == 0x2000 ? 0x2000 : 0x8000, read.extension = model.extension;
            otherModel = read;
            break;
        }
        case 4: { // any record, alone or with what may go on
            std::string bytes = random.OneIn(2) ? random.Bytes(114) : model.Record().substr(0, 114);
            // Zeros would count as characters.
            std::replace(bytes.begin(), bytes.begin() + 78, '\0', 'z');
            bytes[32] = random.OneIn(4) ? '\0' : '\xFF';
            bytes[33] = char(random.Below(7)), bytes[34] = char(random.Below(9));
            bytes[35] = char(random.Below(9));
            std::string rest = (random.OneIn(2) ? std::string("\x01+") : "xy") + random.Bytes(112);
            std::replace(rest.begin(), rest.end(), '\0', 'z');
            const bool given = random.OneIn(2);
            std::string record = bytes, more = rest;
            const MailUser built(reinterpret_cast<UserLRec*>(record.data()),
                                 given ? reinterpret_cast<UserLRec*>(more.data()) : nullptr);
            User fresh;
            fresh.Take(bytes.substr(32, 5));
            fresh.option = 0;
            fresh.name = FieldText(bytes, 0, 32);
            fresh.address = FieldText(bytes, 46, 32) + (given ? FieldText(rest, 2, 112) : "");
            fresh.type = Byte(bytes, 78) | Byte(bytes, 79) << 8;
            fresh.extension = Byte(bytes, 80) | Byte(bytes, 81) << 8;
            Same("built", Shown(built), fresh.Shown());
            Same("name's length", Byte(record, 0), std::min<int>(Byte(bytes, 0), 31));
            std::istringstream in(bytes +
                                  rest.substr(0, random.OneIn(2) ? 114 : random.Below(115)));
            const bool whole = in.str().size() == 228, continued = rest[0] == 1;
            in >> static_cast<BaseMailUser&>(user);
            Same("stands at", in.tellg(), whole && continued ? 228 : 114);
            const unsigned long flags = model.flags;
            model = fresh;
            model.flags = flags;
            model.Take(bytes.substr(32, 5));
            model.type = fresh.type == 0x2000 ? 0x2000 : 0x8000;
            const std::string there =
                (bytes + in.str().substr(114) + std::string(114, '\0')).substr(114, 114);
            model.address = FieldText(bytes, 46, 32) +
                            (there.substr(0, 2) == "\x01+" ? FieldText(there, 2, 112) : "");
            break;
        }
        case 5: { // copies and assignments
            MailUser copy(user);
            User copied = model;
            copied.flags &= 0x10;
            Same("copy", Shown(copy), copied.Shown());
            Same("equal", copy.IsEqual(user) + 2 * user.IsEqual(other) + 4 * (user == other),
                 1 +
                     2 * (model.name == otherModel.name && model.address == otherModel.address &&
                          model.Settings().substr(0, 3) == otherModel.Settings().substr(0, 3)) +
                     4 * (model.name == otherModel.name && model.address == otherModel.address));
            const unsigned long flags = otherModel.flags;
            other = user;
            otherModel = model;
            otherModel.flags = flags;
            break;
        }
        case 6:
            Same("order", (user < other) + 2 * (user > other),
                 User::Less(model, otherModel) + 2 * User::Greater(model, otherModel));
            break;
        case 7: {
            RBString shown, given("g"), family("f");
            user.OrderedUserName(shown, static_cast<unsigned short>(random.Below(4)));
            const bool first = random.OneIn(2);
            RBString own(model.name.c_str());
            MailUser::OrderedUserName(own, own, first);
            Same("own name ordered", own.Text(), model.Ordered(first));
            user.OrderedUserName(shown, first);
            Same("ordered", shown.Text(), model.Ordered(first));
            const int split = user.SplitUserName(given, family);
            Same("split", split ? family.Text() + std::string("\t") + given.Text() : "",
                 model.Split());
            Same("first character", user.GetUserNameFirstChar(),
                 model.name[model.name.size() > 0 && model.name[0] == '|']);
            break;
        }
        case 8: {
            const std::string text = random.Text(8, "<>ab ") + "x";
            Say(text);
            user.SetInternetAddress(text.c_str());
            const std::size_t open = text.find('<'), close = text.find('>');
            model.address = open != text.npos && close != text.npos && open < close
                                ? text.substr(open + 1, close - open - 1)
                                : text;
            break;
        }
        case 9:
        case 10: { // the short form
            const std::string zeros(164, '\0'),
                pair = SystemUserRecord(name, address.substr(0, 110));
            SysMailUser system;
            system.SetName(name.c_str());
            system.SetAddress(address.c_str()); // what does not fit is left out
            Written(system);
            Same("buffer", std::string(reinterpret_cast<char*>(SysMailUser::ulrSys), 164),
                 With(zeros, 0, pair));
            std::istringstream in(pair + SystemUserRecord("next", ""));
            in >> static_cast<SysMailUser&>(user);
            Same("stands at", in.tellg(), pair.size());
            model.name = FieldText(pair, 0, 32), model.address = address.substr(0, 110);
            break;
        }
        case 11: { // the logged user's record, with its text, and the file that has both records
            user.SetLoggedText(("C:\\" + name).c_str());
            if (model.name.size() > 31)
                break;
            const std::string zeros(300, '\0'), text = Streamed("C:\\" + name);
            const std::string one =
                With(With(zeros, 0, Pascal(model.name)), 46, Pascal(model.address)).substr(0, 82);
            if (model.address.size() <= 31) {
                Same("written", Written(user), one + text);
                std::istringstream in(one + Streamed("text"));
                in >> other;
                Same("text", other.LoggedText().Text(), "text");
                otherModel.name = model.name, otherModel.address = model.address;
            }
            const std::string whole = one + text + model.Record();
            Open(keOpenRewrite);
            Same("written to the file", user.WriteInfo(mList), 1);
            Open(keOpenRead);
            Same("file", ReadFileBytes(mPath), whole);
            JxLoggedMailUser read;
            Same("read whole", read.ReadInfo(mList), 1);
            Same("name", read.Name().Text(), model.name);
            Same("address", read.Address().Text(), model.address);
            Same("text read", Streamed(read.LoggedText().Text()), text);
            // What is cut short within its first record is none.
            WriteFileBytes(mPath, whole.substr(0, random.Below(82 + text.size() + 114)));
            Open(keOpenRead);
            Same("cut", read.ReadInfo(mList), 0);
            mList.close();
            break;
        }
        case 12:
        case 13: {
            Export(random, user, model);
            break;
        }
        case 14:
            Import(random, user, model);
            break;
        }
        for (unsigned int k = 0; k < 2; ++k)
            Same("user", Shown(mUsers[k]), mModels[k].Shown());
        Same("logged flags", user.LoggedFlag1() * 10 + user.LoggedFlag2(), 11);
        Same("reports", mReports.Take(), "");
    }

    Users() {
        for (User& model : mModels)
            model.format = model.encoding = 1, model.platform = 6; // a logged user's
    }

private:
    static std::string AnyName(Random& random) {
        if (random.OneIn(10))
            return std::string(random.Of<unsigned int>({31, 32, 33, 34, 35, 60}), 'n') +
                   random.Text(2, "|a");
        return random.Text(9, "aAbB|, ");
    }
    static std::string Shown(const std::string& text) { return ::Shown(text); }
    static std::string Shown(const BaseMailUser& user) {
        User shown;
        shown.name = user.Name().Text(), shown.address = user.Address().Text();
        shown.format = user.MessageFormat(), shown.encoding = user.EnclosureEncode();
        shown.platform = user.Platform(), shown.option = user.PopOption();
        shown.type = user.Type(), shown.extension = user.TypeExtension();
        shown.flags = user.Flags();
        return shown.Shown();
    }
    static std::string Word(const std::vector<std::pair<int, unsigned int>>& words, int value) {
        // Of two words the later number is read alone.
        for (const auto& [known, resource] : words)
            if (known == value && resource != 712)
                return ResourceText(resource);
        return "";
    }
    void Open(int mode) {
        if (mList.isOpen())
            mList.close();
        mList.clear();
        mList.Open(mode);
    }
    void Export(Random& random, MailUser& user, const User& model) {
        const bool writable = !random.OneIn(5);
        WriteFileBytes(mPath, "");
        Open(writable ? keOpenRewrite : keOpenRead);
        const std::string split = model.Split();
        Same("export", user.Export(mList), split.empty() ? 1 : writable ? 0 : 2);
        mList.clear();
        mList.close();
        Same("line", ReadFileBytes(mPath),
             split.empty() || !writable
                 ? ""
                 : split + "\t" + model.address + "\t" + Word(kPlatforms, model.platform) + "\t" +
                       Word(kFormats, model.format) + "\t" + Word(kEncodings, model.encoding) +
                       "\r\n");
    }
    void Import(Random& random, MailUser& user, User& model) {
        std::vector<std::string> fields;
        for (unsigned int count = random.Below(8), i = 0; i < count; ++i) {
            std::string field = i == 2  ? AnyAddress(random)
                                : i < 2 ? random.Text(20, "ab ")
                                        : AnyWord(random);
            fields.push_back(field + std::string(random.Below(2), ' '));
        }
        std::string line;
        for (std::size_t i = 0; i < fields.size(); ++i)
            line += (i ? "\t" : "") + fields[i];
        Say(Shown(line));
        WriteFileBytes(mPath, line + (random.OneIn(2) ? "\r\n" : "\r") + "next");
        Open(keOpenRead);
        model.format = 2, model.encoding = 7, model.platform = 4, model.option = 0;
        const auto stripped = [](std::string text) {
            return text.erase(text.find_last_not_of(' ') + 1);
        };
        int result = stripped(line).empty() ? 7 : 0;
        const auto take = [](int& setting, const auto& words, const std::string& word) {
            for (const auto& [value, resource] : words)
                if (ResourceText(resource) == word)
                    return void(setting = value);
        };
        std::vector<std::string> words(1);
        for (const char c : stripped(line))
            c == '\t' ? words.emplace_back() : words.back() += c;
        for (std::size_t i = 0; result == 0 && i < words.size(); ++i) {
            const std::string word = stripped(words[i]);
            if (i == 1) {
                model.name = stripped(words[0]) + "|" + word;
                result = model.name.size() > 32 ? 4 : word.empty() ? 6 : 0;
            } else if (i == 2 && word.size() >= 112) {
                result = 4;
            } else if (i == 2) {
                model.address = word;
            } else if (i == 4) {
                take(model.format, kFormats, word);
            } else if (i == 5) {
                take(model.encoding, kEncodings, word);
            }
        }
        if (result == 0 && words.size() < 3)
            result = 3;
        if (result != 7)
            model.Imply();
        Same("import", user.Import(mList), result);
        char next[5] = "";
        mList.std::istream::read(next, 4);
        Same("next", next, "next");
        mList.close();
    }
    static std::string AnyWord(Random& random) {
        const auto words = random.Of<std::vector<std::pair<int, unsigned int>>>(
            {kPlatforms, kFormats, kEncodings});
        return random.OneIn(8) ? random.Of<std::string>({"Default", "", "none"})
                               : ResourceText(random.Of(words).second);
    }

    const ScratchFolder mFolder;
    const std::string mPath = mFolder.Path("users.txt");
    RbFile mList{mPath.c_str()};
    Reports mReports;
    JxLoggedMailUser mUsers[2];
    User mModels[2];
};

// "host:port", cut at its colons.
struct Server {
    std::string host;
    unsigned short port;
    int flag;

    bool Take(const std::string& text, unsigned short defaultPort) {
        port = defaultPort;
        flag = 1;
        std::vector<std::string> words(1);
        for (const char c : text)
            c == ':' ? words.emplace_back() : words.back() += c;
        if (text.empty())
            return false;
        host = words[0];
        for (const std::string& word : std::vector(words.begin() + 1, words.end()))
            if (word == "n")
                flag = 0;
            else if (!word.empty() && word[0] >= '0' && word[0] <= '9')
                port = static_cast<unsigned short>(std::strtoul(word.c_str(), nullptr, 10));
        return true;
    }
    std::string Shown() const { return host + " " + std::to_string(port); }
};

// What "JXUSER.DAT" holds: four numbers and 26 texts, of which two are servers.
class Accounts : public SideBySide {
public:
    Accounts() : mTexts(kUserStrings), mPop{"", 110, 0}, mSmtp{"", 25, 1} {}
    void Step(Random& random) override {
        const std::string text =
            random.Text(9, ":n0123a:") +
            (random.OneIn(9) ? std::string(random.Of<unsigned int>({300, 3000}), 'x') : "");
        const unsigned int operation = random.Below(5);
        Say("operation", operation, Shown(text));
        switch (operation) {
        case 0: {
            const unsigned int i = random.Below(kUserStrings);
            if (i == kPopAccount || i == kSmtpHost) {
                if (text.empty())
                    break;
                i == kPopAccount ? mData.SetFullPopAccount(text.c_str())
                                 : mData.SetFullSmtpHost(text.c_str());
                i == kPopAccount ? mPop.Take(text, 110) : mSmtp.Take(text, 25);
            } else {
                Text(i).puts(text.c_str());
            }
            mTexts[i] = text;
            break;
        }
        case 1:
            mData.mulFlags = mNumbers[0] = random.Next();
            mData.mwValue3 = mNumbers[1] = random.Below(0x10000);
            mData.mwValue4 = mNumbers[2] = random.Below(0x10000);
            mData.mulValue2 = mNumbers[3] = random.Next();
            break;
        case 2: {
            const std::string plain = Plain();
            Same("written", Written(mData), plain.size() <= 8192 ? ScrambledUserData(plain) : "");
            break;
        }
        case 3: { // read as far as it goes
            const std::string plain = Plain(),
                              cut = plain.substr(0, random.Below(plain.size() + 1));
            std::istringstream in(ScrambledUserData(random.OneIn(2) ? plain + text : cut));
            const unsigned int size = std::min<std::size_t>(in.str().size(), 8192);
            in >> mData;
            Same("good", in.good(), size > 0);
            if (size)
                ReadTo(size);
            break;
        }
        case 4: {
            RBString host("kept");
            unsigned short port = 7;
            int flag = 7;
            Server model{"kept", 7, 7};
            const bool there = model.Take(text, 9);
            Same("found",
                 JxBackgndData::ParseIP(text.c_str(), 9, &host, &port,
                                        random.OneIn(2) ? &flag : nullptr),
                 there);
            Same("host", host.Text(), model.host);
            Same("port", port, model.port);
            if (flag != 7)
                Same("flag", flag, model.flag);
            JxDownloadItem item(text.c_str());
            item.SetNumber(mNumbers[0]);
            Same("item", Written(item), LittleEndian16(mNumbers[0]) + Streamed(text));
            break;
        }
        }
        std::string texts, model;
        for (unsigned int i = 0; i < kUserStrings; ++i) {
            texts += (i == kPopAccount ? mData.GetFullPopAccount()
                      : i == kSmtpHost ? mData.GetFullSmtpHost()
                                       : Text(i))
                         .Text() +
                     std::string("|");
            model += mTexts[i] + "|";
        }
        Same("texts", texts, model);
        Same("numbers",
             std::to_string(mData.mulFlags) + " " + std::to_string(mData.mwValue3) + " " +
                 std::to_string(mData.mwValue4) + " " + std::to_string(mData.mulValue2),
             std::to_string(mNumbers[0]) + " " + std::to_string(mNumbers[1]) + " " +
                 std::to_string(mNumbers[2]) + " " + std::to_string(mNumbers[3]));
        const std::string pop = mData.GetPopAccount().Text(), smtp = mData.GetSmtpHost().Text();
        Same("POP", pop + " " + std::to_string(mData.GetPopPort()), mPop.Shown());
        Same("option", mData.GetPopOption(), mPop.flag);
        Same("SMTP", smtp + " " + std::to_string(mData.GetSmtpPort()), mSmtp.Shown());
        const std::string empty = "Length () > 0|JXRESIDT\\JXBCKDAT.CPP\n";
        std::string reports = mReports.Take();
        for (const char* member : {"mstrPopAccount.", "mstrSmtpHost."})
            if (reports.rfind(member, 0) == 0)
                reports.erase(0, reports.find('\n') + 1);
        Same("reports", reports, "");
    }

private:
    RBString& Text(unsigned int i) {
        return i < 16             ? mData.mstrSettings[i]
               : i < 22           ? mData.mstrList[i - 16]
               : i == kLastButOne ? mData.mstr7
                                  : mData.mstr16;
    }
    std::string Plain() const {
        const auto little = [](unsigned long value) {
            return LittleEndian16(value) + LittleEndian16(value >> 16);
        };
        std::string bytes = little(mNumbers[0]) + LittleEndian16(mNumbers[1]) +
                            LittleEndian16(mNumbers[2]) + little(mNumbers[3]);
        for (const std::string& text : mTexts)
            bytes += Streamed(text);
        return bytes;
    }
    // All texts are as they were; the one that is cut is empty, and what follows stays.
    void ReadTo(unsigned int size) {
        unsigned int at = 12;
        for (unsigned int i = 0; i < kUserStrings && size >= 12; ++i) {
            at += 4 + mTexts[i].size();
            if (at > size) {
                mTexts[i].clear();
                return;
            }
            if (i == kSmtpHost)
                mSmtp.Take(mTexts[i], 25);
            if (i == kUserStrings - 1)
                mPop.Take(mTexts[kPopAccount], 110);
        }
    }

    Reports mReports;
    JxBackgndData mData;
    unsigned long mNumbers[4] = {};
    std::vector<std::string> mTexts;
    Server mPop, mSmtp;
};

TEST(Models, Users) { Compare<Users>(30, 200); }
TEST(Models, Accounts) { Compare<Accounts>(30, 200); }

} // namespace
