// Preference files: a list of blocks, a record of 1,500 bytes and lines of settings.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/pref_bytes.h"
#include "tests/support/reports.h"
#include "tests/support/resource_text.h"
#include "tests/support/scratch.h"
#include "tests/support/side_by_side.h"
#include "tests/support/taken_boxes.h"

namespace {

std::string BigEndian16(unsigned int value) { return {char(value >> 8), char(value)}; }
std::string LittleEndian(unsigned int value) { return {char(value), char(value >> 8)}; }

std::string All(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts)
        all += text + "\n";
    return all;
}

// "RB.DAT" as a list of blocks.
struct PrefModel {
    struct Block {
        unsigned int id, version;
        std::string bytes; // as in the file
    };
    unsigned int version = 0;
    std::string name;
    std::vector<Block> blocks;

    std::string Bytes() const {
        std::string entries, all;
        for (const Block& block : blocks) {
            const unsigned int number = entries.size() / 12 + 1;
            entries += PrefEntry(LittleEndian(block.id), LittleEndian(block.version), number,
                                 46 + 12 * blocks.size() + all.size(), block.bytes.size());
            all += block.bytes;
        }
        return PrefHeader(LittleEndian(version), name, blocks.size()) + entries + all;
    }
    Block* Find(unsigned int id) {
        for (Block& block : blocks)
            if (block.id == id)
                return &block;
        return nullptr;
    }
};

class PrefFiles : public SideBySide {
public:
    void Step(Random& random) override {
        const unsigned short id = static_cast<unsigned short>(0x0700 + random.Below(5));
        const unsigned short size = random.Of<unsigned short>({1, 19, 20, 21, 45, 300});
        std::string block = random.Bytes(size), before = block, shown;
        AppPrefTag tag{id, static_cast<unsigned short>(random.Below(1000)), size, block.data()};
        UserPrefFile file(block.data(), id, size, tag.version);
        file.SetSpecPart(mPath.c_str(), 0);
        PrefModel::Block* const there = mModel ? mModel->Find(id) : nullptr;
        const unsigned int operation = mModel ? random.Below(12) : 0;
        Say("operation", operation, "id", id, "size", size);
        if (operation > 0)
            Same("open", file.OpenPrefFile(), 1);
        switch (operation) {
        case 0: { // a new file, whose block is as in memory; the next read is passed over
            if (mModel && !random.OneIn(4))
                break;
            Same("created", file.CreatePrefsFile(mPath.c_str()), 1);
            mModel.reset(new PrefModel{tag.version, mPath, {{id, tag.version, block}}});
            Same("read", file.ReadAppPrefs(tag, 0), 1);
            Same("block", block, before);
            file.ReadAppPrefs(tag, 0);
            before = ScrambledBlock(before);
            break;
        }
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
            Same("written", file.WriteAppPrefs(tag), 1);
            Put(id, tag.version, ScrambledBlock(before));
            break;
        case 6:
        case 7:
        case 8: {
            const bool create = random.OneIn(2);
            // More than is stored cannot be read: that is what lies behind the block.
            const std::string bytes = mModel->Bytes();
            const std::size_t offset = there ? Offset(there) : 0;
            const bool fits = there && offset + size <= bytes.size();
            Same("read", file.ReadAppPrefs(tag, create), there ? fits : create);
            if (there && fits)
                before = ScrambledBlock(bytes.substr(offset, size));
            else if (there)
                before =
                    ScrambledBlock(bytes.substr(offset) + before.substr(bytes.size() - offset));
            else if (!create)
                before = ScrambledBlock(before);
            if (there && !fits)
                shown = FileMessage(605, mPath) + "\n";
            else if (!there && create)
                Put(id, tag.version, before);
            break;
        }
        case 9:
            UserPrefFile::Encode(tag);
            before = ScrambledBlock(before);
            break;
        case 10: {
            const std::string bytes = mModel->Bytes();
            const long offset = static_cast<long>(random.Below(bytes.size() + 4)) - 2;
            const bool fits = offset >= 0 && offset + size <= long(bytes.size());
            Same("header", file.ReadAppHeader(id), 1);
            Same("read", file.ReadPrefBuffer(tag, offset), fits);
            const unsigned int from =
                std::min<std::size_t>(offset < 0 ? bytes.size() : offset, bytes.size());
            before = With(before, 0, bytes.substr(from, size));
            shown = fits ? "" : FileMessage(offset < 0 ? 607 : 605, mPath) + "\n";
            break;
        }
        case 11: { // others cut it short
            file.ClosePrefFile();
            const std::string bytes = mModel->Bytes(),
                              cut = bytes.substr(0, random.Below(46 + 12 * mModel->blocks.size()));
            WriteFileBytes(mPath, cut);
            file.OpenPrefFile();
            // What stands before the cut may be all that is looked for.
            const bool found =
                there && cut.size() >= 46u + 12 * (there - mModel->blocks.data() + 1);
            if (!found) {
                Same("read", file.ReadAppPrefs(tag, 1) + file.WriteAppPrefs(tag), 0);
                shown = FileMessage(605, mPath) + "\n" + FileMessage(605, mPath) + "\n";
            }
            file.ClosePrefFile();
            Same("cut", ReadFileBytes(mPath), cut);
            WriteFileBytes(mPath, bytes);
            break;
        }
        }
        file.ClosePrefFile();
        Same("block", block, before);
        Same("boxes", All(mBoxes.TakeTexts()), shown);
        if (mModel)
            Same("file", ReadFileBytes(mPath), mModel->Bytes());
        Same("backup", FileThere(mBackup) ? ReadFileBytes(mBackup) : "", mOld);
        Same("aside", FileThere(mFolder.Path("RB.TMP")), 0);
    }

private:
    void Put(unsigned int id, unsigned int version, const std::string& bytes) {
        if (PrefModel::Block* const there = mModel->Find(id)) {
            if (there->bytes.size() == bytes.size())
                there->bytes = bytes;
            return;
        }
        mOld = mModel->Bytes();
        mModel->blocks.push_back({id, version, bytes});
    }
    std::size_t Offset(const PrefModel::Block* block) const {
        std::size_t offset = 46 + 12 * mModel->blocks.size();
        for (const PrefModel::Block* other = mModel->blocks.data(); other != block; ++other)
            offset += other->bytes.size();
        return offset;
    }

    const ScratchFolder mFolder;
    const std::string mPath = mFolder.Path("RB.DAT"), mBackup = mFolder.Path("RB.BAK");
    TakenBoxes mBoxes;
    std::unique_ptr<PrefModel> mModel;
    std::string mOld; // the last file that a block was added to
};

// The record of the mail preferences, as it stands in memory and, in OEM, in the file.
class MailPrefs : public SideBySide {
public:
    MailPrefs() {
        mPrefs.SetSpecPart(mPath.c_str(), 0);
        mRecord = With(std::string(1500, '\0'), 0, Bytes("\xCB\x34\x3B\0\0\x24\x08"));
        mRecord = With(mRecord, 150, Bytes("\0\x0A\0\x0A\0\x04\0\x0A\0\x07"));
        mRecord = With(With(mRecord, 168, "\x04????"), 174, "\x04????");
        mRecord = With(mRecord, 212, Pascal(ResourceText(110)));
        mRecord = With(mRecord, 916, Bytes("\0\x2D\x10\0\x04\0\x01>"));
        mRecord = With(mRecord, 1244, Pascal(ResourceText(3424)));
    }
    void Step(Random& random) override {
        const std::string text = random.Text(9, "ab:7\xE4.") +
                                 (random.OneIn(4) ? std::string(random.Below(260), 'x') : "");
        const unsigned int operation = random.Below(17);
        std::string shown;
        JxLoggedMailUser user;
        user.SetAddress((text + "a").c_str());
        user.SetSecondText(text.c_str());
        Say("operation", operation, Shown(text));
        switch (operation) {
        case 0:
            mPrefs.SetReturnAddress(text.c_str());
            Put(514, 134, text);
            break;
        case 1:
            mPrefs.SetFullSmtpHost((text + "h").c_str());
            Put(782, 134, text + "h");
            Split(text + "h", mSmtpHost, mSmtpPort, 25);
            break;
        case 2:
            mPrefs.SetDefaultDsApiName(text.c_str());
            Put(955, 33, text);
            break;
        case 3: {
            const unsigned int level = random.Below(6);
            mPrefs.SetPriority(text.c_str(), level);
            if (level < 5)
                mRecord = With(With(mRecord, 32 + 16 * level, std::string(16, '\0')),
                               32 + 16 * level, text.substr(0, 15));
            else
                mExpected = Report("wLevel < LP_MAX_PRIORITY_LEVELS", 349);
            break;
        }
        case 4:
            mPrefs.SetUserData(user);
            Put(988, 256, text);
            Put(380, 134, text + "a");
            Split(text + "a", mPopAccount, mPopPort, 110);
            break;
        case 5:
            mPrefs.SetNewPassword(user);
            Put(988, 256, text);
            break;
        case 6: {
            int sides[4];
            std::string bytes;
            for (int& side : sides)
                side = static_cast<short>(random.Next()), bytes += BigEndian16(side);
            mPrefs.SetClientWindowRect(sides[0], sides[1], sides[2], sides[3]);
            mRecord = With(mRecord, 112, bytes);
            // A text of other programs, which has no length byte.
            const std::string plain = random.Text(15, "a\xE4\x84");
            mRecord = With(mRecord, 16, plain + std::string(16 - plain.size(), '\0'));
            std::memcpy(mPrefs.Record() + 16, &mRecord[16], 16);
            int read[4];
            mPrefs.GetClientWindowRect(read[0], read[1], read[2], read[3]);
            Same("rectangle", std::memcmp(sides, read, sizeof read), 0);
            break;
        }
        case 7: {
            const std::string path = "C:\\" + random.Text(8, "MAIL\xE4");
            FileSpec spec(path.c_str(), 1);
            mPrefs.SetMailDirectory(spec);
            mDirectory = path + (path.back() == '\\' ? "" : "\\");
            break;
        }
        case 8: {
            const bool toRecord = random.OneIn(2);
            mPrefs.FixMailDirectory(toRecord);
            FixDirectory(toRecord);
            break;
        }
        case 9: {
            const bool toOem = random.OneIn(2);
            mPrefs.ConvertPrefs(toOem ? kePrefsToOem : kePrefsToAnsi);
            mRecord = Converted(mRecord, toOem);
            mExtra = ConvertedExtra(mExtra, toOem);
            break;
        }
        case 10: { // any field, by its place
            const PrefText field = random.Of(kPrefTexts);
            mPrefs.SetText(enumPrefText(field.offset), text.c_str());
            Put(field.offset, field.size, text);
            break;
        }
        case 11: { // the record is the program's too
            const std::string bytes = random.Bytes(20);
            const unsigned int at = random.Below(1480);
            std::memcpy(mPrefs.Record() + at, bytes.data(), bytes.size());
            mRecord = With(mRecord, at, bytes);
            mExtra = random.Bytes(86);
            std::memcpy(mPrefs.ExtraTexts(), mExtra.data(), mExtra.size());
            break;
        }
        case 12: {
            FixDirectory(true);
            mFile = Converted(mRecord, true);
            mRecord = Converted(mFile, false);
            mExtra = ConvertedExtra(ConvertedExtra(mExtra, true), false);
            const bool made = FileThere(mPath);
            if (!made)
                Same("created", JXMailPrefs(1).CreatePrefsFile(mPath.c_str()), 1);
            Same("written", mPrefs.WriteJXPrefs(), 1);
            Same("file", ReadFileBytes(mPath), InFile(ScrambledBlock(mFile)));
            break;
        }
        case 13: {
            if (!FileThere(mPath)) {
                shown = FileMessage(701, mPath) + "\n";
                Same("read", mPrefs.ReadJXPrefs(), 0);
                break;
            }
            Same("read", mPrefs.ReadJXPrefs(), 1);
            mRecord = Converted(mFile, false);
            mExtra = ConvertedExtra(mExtra, false);
            FixDirectory(false);
            Split(TextOf(380, 134), mPopAccount, mPopPort, 110);
            Split(TextOf(782, 134), mSmtpHost, mSmtpPort, 25);
            Same("valid", mPrefs.IsValid(), 1);
            break;
        }
        case 14: { // another one of the same user, who may not write
            if (!FileThere(mPath))
                break;
            JxMailUserRepresentation other("Anna", mFolder.Path().c_str());
            JXMailPrefs prefs(other, 0);
            Same("valid", prefs.IsValid(), 1);
            Same("verified", mPrefs.VerifyFileExists(other), 1);
            prefs.SetReturnAddress("x");
            Same("writes", prefs.WriteJXPrefs(), 1);
            Same("file", ReadFileBytes(mPath), InFile(ScrambledBlock(mFile)));
            break;
        }
        case 15: {
            JXMailPrefs copy(0);
            copy = mPrefs;
            Same("copy", std::string(reinterpret_cast<char*>(copy.Record()), 1500), mRecord);
            Same("its extra", std::string(reinterpret_cast<char*>(copy.ExtraTexts()), 86), mExtra);
            Same("ports", copy.GetPopPort() * 65536ll + copy.GetSmtpPort(),
                 mPopPort * 65536ll + mSmtpPort);
            Same("directory", copy.MailDirectory().Text(), mDirectory);
            break;
        }
        case 16: {
            const int flag = static_cast<int>(random.Below(3)) - 1;
            const std::string name = "n" + random.Text(5, "ab");
            mPrefs.SetDialupConnection(name.c_str());
            mPrefs.SetDisconnectFlag(flag);
            RBString read;
            mPrefs.GetDialupConnection(&read);
            Same("connection", read.Text() + std::to_string(mPrefs.GetDisconnectFlag()),
                 name + std::to_string(flag != 0));
            break;
        }
        }
        CompareAll(shown);
    }

private:
    static std::string Report(const std::string& expression, int line) {
        return expression + "|" + std::to_string(line) + "|JXSYSTEM\\MAILPREF.CPP\n";
    }
    std::string InFile(const std::string& block) const {
        return PrefHeader("\x90\x01", mPath, 1) + PrefEntry("\x51\x46", "\x90\x01", 1, 58, 1500) +
               block;
    }
    void Put(unsigned int at, unsigned int size, const std::string& text) {
        mRecord =
            With(With(mRecord, at, std::string(size, '\0')), at, Pascal(text.substr(0, size - 2)));
    }
    std::string TextOf(unsigned int at, unsigned int size) const {
        const unsigned int length = static_cast<unsigned char>(mRecord[at]);
        return mRecord.substr(at + 1, std::min(length, size - 2)).c_str();
    }
    void FixDirectory(bool toRecord) {
        if (toRecord) {
            Put(280, 66,
                mDirectory.empty() || mDirectory.back() != '\\'
                    ? mDirectory
                    : mDirectory.substr(0, mDirectory.size() - 1));
            return;
        }
        // A directory's drive is the file's own unless it says another.
        const std::string text = TextOf(280, 66);
        mDirectory.clear();
        if (text.empty())
            return;
        FileSpec spec;
        spec.Build('C', nullptr, nullptr, nullptr, 0);
        mDirectory = spec.ForceToPath(text.c_str(), 0) ? "" : spec.FullSpec();
    }
    static void Split(const std::string& text, std::string& host, int& port, int defaultPort) {
        port = defaultPort;
        std::vector<std::string> words(1);
        for (const char c : text)
            c == ':' ? words.emplace_back() : words.back() += c;
        if (!text.empty())
            host = words[0];
        for (std::size_t i = 1; i < words.size(); ++i)
            if (!words[i].empty() && words[i][0] >= '0' && words[i][0] <= '9')
                port = static_cast<unsigned short>(std::strtoul(words[i].c_str(), nullptr, 10));
    }
    static void Convert(std::string& bytes, unsigned int at, unsigned int size, bool toOem) {
        const unsigned int length = strnlen(&bytes[at], size);
        (toOem ? CharToOemBuffA : OemToCharBuffA)(&bytes[at], &bytes[at], length);
    }
    static std::string Converted(std::string record, bool toOem) {
        for (const PrefText& field : kPrefTexts)
            if (field.converted)
                Convert(record, field.offset + 1, field.size - 1, toOem);
        for (unsigned int at = 16; at < 112; at += 16)
            Convert(record, at, 16, toOem);
        return record;
    }
    static std::string ConvertedExtra(std::string texts, bool toOem) {
        Convert(texts, 19, 33, toOem);
        Convert(texts, 53, 33, toOem);
        return texts;
    }
    void CompareAll(const std::string& shown) {
        Same("record", std::string(reinterpret_cast<char*>(mPrefs.Record()), 1500), mRecord);
        Same("extra", std::string(reinterpret_cast<char*>(mPrefs.ExtraTexts()), 86), mExtra);
        for (const PrefText& field : kPrefTexts)
            Same("text", mPrefs.Text(enumPrefText(field.offset)).Text(),
                 TextOf(field.offset, field.size));
        Same("return address", mPrefs.GetReturnAddress().Text(), TextOf(514, 134));
        Same("domain", mPrefs.GetDefaultDomain().Text(), TextOf(648, 134));
        for (unsigned int level = 0; level < 5; ++level)
            Same("priority", mPrefs.GetPriority(level).Text(),
                 mRecord.substr(32 + 16 * level, 16).c_str());
        Same("directory", mPrefs.MailDirectory().Text(), mDirectory);
        const std::pair<void (JXMailPrefs::*)(RBString*) const, const char*> folders[] = {
            {&JXMailPrefs::GetLocalInboxDir, "InBox"},
            {&JXMailPrefs::GetLocalOutboxDir, "OutBox"},
            {&JXMailPrefs::GetLocalMailLogDir, "MailLog"},
            {&JXMailPrefs::GetLocalPublicDir, "Public"},
            {&JXMailPrefs::GetLocalTrashDir, "Trash"},
            {&JXMailPrefs::GetBackgndWorkDir, "BckgWork"},
            {&JXMailPrefs::GetLocalSentMailDir, "SentMail"},
            {&JXMailPrefs::GetLocalDeadMailDir, "DeadMail"}};
        for (const auto& [get, name] : folders) {
            RBString folder;
            (mPrefs.*get)(&folder);
            Same("folder", folder.Text(), mDirectory + name + "\\");
        }
        Same("ports", mPrefs.GetPopPort() * 65536ll + mPrefs.GetSmtpPort(),
             mPopPort * 65536ll + mSmtpPort);
        if (mPopAccount.empty())
            mExpected += Report("mstrPopAccount.Length () > 0", 416);
        if (mSmtpHost.empty())
            mExpected += Report("mstrSmtpHost.Length () > 0", 423);
        Same("account", mPrefs.GetPopAccount(), mPopAccount);
        Same("host", mPrefs.GetSmtpHost(), mSmtpHost);
        Same("reports", mReports.Take(), mExpected);
        mExpected.clear();
        Same("boxes", All(mBoxes.TakeTexts()), shown);
    }

    const ScratchFolder mFolder;
    const std::string mPath = mFolder.Path("RB.DAT");
    TakenBoxes mBoxes;
    Reports mReports;
    JXMailPrefs mPrefs{JXMailPrefs::keAllowWriting};
    std::string mRecord, mExtra = std::string(86, '\0');
    std::string mFile, mDirectory, mPopAccount, mSmtpHost, mExpected;
    int mPopPort = 110, mSmtpPort = 25;
};

// Sections and lines, read as a stream.
class Settings : public SideBySide {
public:
    void Step(Random& random) override {
        std::string text;
        for (unsigned int lines = random.Below(12); lines--;)
            text +=
                random.Of<std::string>({"[mail]", " [MAIL] ; x", "[mailbox]", "[next]", "key=value",
                                        "  name = v w \t", ";", "a=b=c", "\tempty = ", "",
                                        "no setting", "=nothing", "k\xE4=7\r"}) +
                random.Of<std::string>({"\n", "\n", "\n", ""});
        Say(Shown(text));
        WriteFileBytes(mPath, text);
        SystemPrefFile file{RBString(mPath.c_str())};
        Same("open", file.OpenPrefFile(), 1);
        std::vector<std::string> lines(1);
        for (const char c : text)
            c == '\n' ? lines.emplace_back() : lines.back() += c;
        if (lines.back().empty())
            lines.pop_back();
        std::size_t at = 0;
        char key[40] = "", value[40];
        for (unsigned int calls = 0; calls < 8; ++calls) {
            const int keySize = random.Of<int>({40, 4, 2}), valueSize = random.Of<int>({40, 3, 1});
            const bool without = random.OneIn(4);
            if (random.OneIn(6)) {
                file.OpenPrefFile();
                at = 0, *key = 0;
            }
            std::strcpy(value, "before");
            std::string expected = *key ? Next(lines, at, keySize, valueSize, key) : "";
            if (!*key) {
                while (at < lines.size() && !IsHeader(Clean(lines[at])))
                    ++at;
                if (at++ < lines.size())
                    expected = Next(lines, at, keySize, valueSize, key);
                else
                    expected = std::string("|") +
                               (without ? "" : std::string("default").substr(0, valueSize - 1)) +
                               "|-1";
            }
            const int result = file.GetNextUnKeyPrefLine(
                "mail", key, keySize, without ? nullptr : "default", value, valueSize);
            Same("line", key + std::string("|") + value + "|" + std::to_string(result), expected);
        }
        // And by the system's functions, which have their own idea of blanks.
        const int number = static_cast<int>(random.Next());
        Same("set", file.SetToken("s", "k", number, 0) != 0, 1);
        Same("number", file.GetToken("s", "k", 7), number);
        Same("long number", file.GetToken("s", "k", 7l), number);
        Same("removed", file.SetToken("s", "k", number, 1) != 0, 1);
        Same("default", file.GetToken("s", "k", number), number);
        Same("text", file.GetToken("s", "k", "default"), "default");
        file.ClosePrefFile();
    }

private:
    static std::string Clean(const std::string& line) {
        const std::size_t first = line.find_first_not_of(" \t");
        return first == line.npos ? ""
                                  : line.substr(first, line.find_last_not_of(" \t") + 1 - first);
    }
    static bool IsHeader(const std::string& line) {
        return _strnicmp(line.c_str(), "[mail]", 6) == 0;
    }
    // "key|value|result" of the next line with a setting.
    static std::string Next(const std::vector<std::string>& lines, std::size_t& at, int keySize,
                            int valueSize, const char* key) {
        for (; at < lines.size(); ++at) {
            const std::string line = Clean(lines[at]);
            const std::size_t equals = line.find('=');
            if (!line.empty() && line[0] == '[')
                return ++at, key + std::string("|before|-1");
            if (equals == line.npos)
                continue;
            ++at;
            const std::string value = Clean(line.substr(equals + 1)).substr(0, valueSize - 1);
            return line.substr(0, equals).substr(0, keySize - 1) + "|" + value + "|" +
                   std::to_string(value.size());
        }
        return key + std::string("|before|-2");
    }

    const ScratchFolder mFolder;
    const std::string mPath = mFolder.Path("set.ini");
};

TEST(Models, PrefFiles) { Compare<PrefFiles>(15, 60); }
TEST(Models, MailPrefs) { Compare<MailPrefs>(15, 80); }
TEST(Models, Settings) { Compare<Settings>(10, 40); }

} // namespace
