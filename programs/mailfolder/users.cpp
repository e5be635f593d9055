// User lists: the tab-separated lists that people exchange, and files of stored user records.

#include <cstring>
#include <sstream>

#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/json.h"
#include "programs/mailfolder/leftovers.h"
#include "programs/mailfolder/new_file.h"
#include "programs/mailfolder/progress.h"
#include "programs/mailfolder/writing.h"

static constexpr unsigned int kLongestLine = 1024;
static constexpr unsigned int kLongestName = 31;

namespace {

struct Options {
    std::string users;
    std::string list;
    WriteOptions write;
    bool json = false;
    bool replace = false;
    bool append = false;
};

// Reads a file's user records one after another, and tells of damage on standard error.
class UserReader {
public:
    explicit UserReader(const Path& path) : mPath(path), mFile(path) {}

    bool Next(MailUser& user) {
        if (mNext >= mFile.Size())
            return false;
        ++mNumber;
        mPosition = mNext;
        // A record, and the one that may go on with it.
        std::istringstream records(mFile.BytesAt(mPosition, 2 * sizeof(UserLRec)));
        UserLRec raw;
        records.read(reinterpret_cast<char*>(&raw), sizeof raw);
        const bool whole = records.good();
        records.clear();
        records.seekg(0);
        if (!whole || !(records >> user)) {
            Damage("is not whole: it is left out");
            mNext = mFile.Size();
            return false;
        }
        records.clear();
        mNext += static_cast<unsigned long long>(records.tellg());
        if (raw.name[0] >= sizeof raw.name)
            Damage(
                fmt::format("claims a name of {} characters: the name is cut at 31", raw.name[0]));
        if (raw.zone[0] >= sizeof raw.zone)
            Damage(fmt::format("claims an address of {} characters: the address is cut at 31",
                               raw.zone[0]));
        return true;
    }

    // Tell of the user just read: what is wrong, and what others may take amiss.
    void Damage(const std::string& what) {
        mDamaged = true;
        Note(what);
    }
    void Note(const std::string& what) const {
        Warn("{}: record {}, byte {}, {}.\n", mPath.Shown(), mNumber, mPosition, what);
    }
    bool FoundDamage() const { return mDamaged; }

private:
    Path mPath;
    InputFile mFile;
    unsigned long long mNext = 0;
    unsigned long long mPosition = 0;
    unsigned long mNumber = 0;
    bool mDamaged = false;
};

// A file of the library's in which one line stands alone, for what reads and writes lines.
class ScratchLine {
public:
    ScratchLine() : mFile(".TMP", 1, keTempExtension) {
        if (!mFile.IsValid() || !mFile.Open(keOpenUpdate))
            Fail("Cannot make a temporary file.");
    }
    ScratchLine(const ScratchLine&) = delete;
    ScratchLine& operator=(const ScratchLine&) = delete;

    enumUserListResult Export(MailUser& user, std::string& line) {
        Empty();
        const enumUserListResult result = user.Export(mFile);
        mFile.flush();
        Rewind();
        line.assign(std::istreambuf_iterator<char>(mFile), {});
        return result;
    }
    enumUserListResult Import(const std::string& line, MailUser& user) {
        Empty();
        const std::string text = line + "\r\n";
        mFile.write(text.data(), static_cast<int>(text.size()));
        mFile.flush();
        Rewind();
        return user.Import(mFile);
    }

private:
    void Rewind() {
        mFile.clear();
        mFile.seekg(0);
    }
    void Empty() {
        Rewind();
        mFile.UpdateFile();
        Rewind();
    }

    TemporaryFile mFile;
};

// What a list's lines become.
struct Imported {
    std::string records;
    unsigned long taken = 0;
    unsigned long refused = 0;
};

} // namespace

static Json AsJson(const MailUser& user) {
    RBString given;
    RBString family;
    user.SplitUserName(given, family);
    return {{"family", Utf8(family.Text())},
            {"given", Utf8(given.Text())},
            {"address", Utf8(user.Address().Text())},
            {"platform", static_cast<int>(user.Platform())},
            {"messageFormat", static_cast<int>(user.MessageFormat())},
            {"enclosureEncoding", static_cast<int>(user.EnclosureEncode())}};
}

static void NeedUserFile(const Path& path) {
    NeedReadable(path);
    const Kind kind = KindOf(path);
    // What is cut or damaged is told of, record by record.
    if (kind != Kind::UserFile && kind != Kind::Empty && kind != Kind::Other)
        Fail("{} is no file of user records: it looks like {}.", path.Shown(), Words(kind));
}

// Whether a text would break the line that it stands in.
static bool BreaksLine(const RBString& text) {
    return std::string(text.Text()).find_first_of("\t\r\n") != std::string::npos;
}

// Spreadsheets take such a field for something to be calculated.
static bool RunsInSpreadsheets(const RBString& text) {
    return text.Length() > 0 && std::strchr("=+-@", text.Text()[0]);
}

// Whether the target is there; fails where nothing may be written, and where it is the source.
static bool IsThereToWrite(const Path& target, const Path& source) {
    const std::wstring extension = FoldCase(ExtensionOf(target.Name()));
    const std::wstring name = FoldCase(target.Name());
    if (extension == L".BAK" || extension == L".TMP" || extension == L".EML" || name == L"DFILE" ||
        name == L"MFILE" || name == L"RB.DAT")
        Fail("{} has the name of a mail folder's file, a backup or a temporary file: choose "
             "another. Nothing was changed.",
             target.Shown());
    const Path::Thing what = target.What();
    if (what == Path::keMissing && !target.Folder().IsFolder())
        Fail("Cannot write {}: its folder is not there.", target.Shown());
    if (what == Path::keMissing)
        return false;
    if (what != Path::keFile)
        Fail("Cannot write {}: it is no plain file.", target.Shown());
    if (target.IsSameFile(source))
        Fail("{} is the file that it would be made from. Nothing was changed.", target.Shown());
    return true;
}

// A list may take the place of a list alone, and never of what it is made from.
static void NeedListTarget(const Path& list, const Path& users, bool replace) {
    if (!IsThereToWrite(list, users))
        return;
    const Kind kind = KindOf(list);
    if (kind != Kind::UserList && kind != Kind::Empty)
        Fail("{} is no list: it looks like {}. Nothing was changed.", list.Shown(), Words(kind));
    if (!replace)
        Fail("{} is there already: say --replace to write it anew.", list.Shown());
}

static int ExportAsJson(UserReader& users) {
    JsonArray list;
    MailUser user;
    while (users.Next(user))
        list.Add(AsJson(user));
    list.Finish();
    return users.FoundDamage() ? keDamage : keFine;
}

// Returns the number of lines.
static unsigned long MakeList(UserReader& users,
                              const std::function<void(const std::string&)>& put) {
    ScratchLine scratch;
    MailUser user;
    std::string line;
    unsigned long count = 0;
    while (users.Next(user)) {
        if (BreaksLine(user.Name()) || BreaksLine(user.Address())) {
            users.Damage("has a tab or a line end in it: it is left out");
            continue;
        }
        if (scratch.Export(user, line) == keUserListNoName) {
            users.Damage("has no name: it is left out");
            continue;
        }
        if (RunsInSpreadsheets(user.Name()) || RunsInSpreadsheets(user.Address()))
            users.Note("begins with a sign that spreadsheets calculate with");
        put(line);
        ++count;
    }
    return count;
}

static int ExportUsers(const Options& options) {
    const Path usersPath(options.users);
    NeedUserFile(usersPath);
    UserReader users(usersPath);
    if (options.json)
        return ExportAsJson(users);
    const Path path(options.list);
    const WriteLock lock(path);
    NeedListTarget(path, usersPath, options.replace);
    const bool replaces = path.IsThere();
    if (replaces)
        NeedBackupPlace(path, options.write.replaceBackup);
    if (replaces && !options.write.yes) {
        const unsigned long count = MakeList(users, [](const std::string&) {});
        Tell("{} would take the place of {}, which would stay as {}.\n", Count(count, "user"),
             path.Shown(), BackupOf(path).Shown());
        return NotAsked(users.FoundDamage() ? keDamage : keFine);
    }
    NewFile list(path, lock);
    const unsigned long count = MakeList(users, [&](const std::string& line) { list.Write(line); });
    list.PutInPlace();
    Tell("{} written to {}.\n", Count(count, "user"), path.Shown());
    return users.FoundDamage() ? keDamage : keFine;
}

static const char* Reason(enumUserListResult result) {
    switch (result) {
    case keUserListTooFewFields:
        return "it has fewer than three fields, with a tab between two";
    case keUserListTooLong:
        return "its name is longer than 31 characters, or its address than 111";
    case keUserListNoGivenName:
        return "its second field, the given name, is empty";
    case keUserListEmptyLine:
        return "it is empty";
    default:
        return "it cannot be read";
    }
}

// A list's lines, whatever ends them. A list is held in memory: it is one that people keep.
static std::vector<std::string> LinesOf(const Path& path) {
    const InputFile file(path);
    constexpr unsigned long long kLongestList = 64 << 20;
    if (file.Size() > kLongestList)
        Fail("{} has {} bytes: it is no list.", path.Shown(), file.Size());
    std::istringstream text(file.BytesAt(0, static_cast<std::size_t>(file.Size())));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line); lines.push_back(line))
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
    return lines;
}

// Null when the line became a user.
static const char* WhyRefused(ScratchLine& scratch, const std::string& line, MailUser& user) {
    if (line.size() >= kLongestLine)
        return "it is longer than 1023 characters";
    if (line.find_first_of(std::string("\0\r", 2)) != std::string::npos)
        return "it has a zero or a bare carriage return in it";
    const enumUserListResult result = scratch.Import(line, user);
    if (result != keUserListDone)
        return Reason(result);
    // The record's field would cut it.
    return user.Name().Length() > kLongestName ? Reason(keUserListTooLong) : nullptr;
}

static Imported ImportLines(const Path& path) {
    const std::vector<std::string> lines = LinesOf(path);
    Progress progress("Reading " + path.Shown());
    ScratchLine scratch;
    std::ostringstream records;
    Imported imported;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        progress.Show(i, lines.size());
        MailUser user;
        if (const char* const reason = WhyRefused(scratch, lines[i], user)) {
            ++imported.refused;
            Warn("{}: line {} is refused: {}.\n", path.Shown(), i + 1, reason);
        } else if (records << user) {
            ++imported.taken;
        }
    }
    imported.records = records.str();
    return imported;
}

// What is there already may be added to, or replaced, when it is what it should be.
static void NeedUsersTarget(const Options& options, const Path& list, const Path& users) {
    if (!IsThereToWrite(users, list))
        return;
    const Kind kind = KindOf(users);
    if (kind != Kind::UserFile && kind != Kind::Empty)
        Fail("{} is no whole file of user records: it looks like {}. Nothing was changed.",
             users.Shown(), Words(kind));
    if (!options.append && !options.replace)
        Fail("{} is there already: say --append to add to it, or --replace to write it anew.",
             users.Shown());
}

static void WriteUsers(const Path& path, const Imported& imported, bool append,
                       const WriteLock& lock) {
    NewFile made(path, lock);
    if (append)
        made.Copy(path);
    made.Write(imported.records);
    made.PutInPlace();
}

static int ImportUsers(const Options& options) {
    const Path list(options.list);
    const Path users(options.users);
    NeedReadable(list);
    if (const Kind kind = KindOf(list);
        kind != Kind::UserList && kind != Kind::Text && kind != Kind::Empty)
        Fail("{} is no list: it looks like {}.", list.Shown(), Words(kind));
    const WriteLock lock(users);
    NeedNoLeftovers(users);
    NeedUsersTarget(options, list, users);
    const bool isThere = users.IsThere();
    if (isThere)
        NeedBackupPlace(users, options.write.replaceBackup);
    const Imported imported = ImportLines(list);
    const ExitCode code = imported.refused ? keDamage : keFine;
    if (imported.taken == 0) {
        Tell("There is no user to put into {}, {} refused.\n", users.Shown(),
             Count(imported.refused, "line"));
        return code;
    }
    if (isThere && !options.write.yes) {
        Tell("{} would {} {}, which would stay as {}; {} refused.\n", Count(imported.taken, "user"),
             options.append ? "be added to" : "take the place of those in", users.Shown(),
             BackupOf(users).Shown(), Count(imported.refused, "line"));
        return NotAsked(code);
    }
    WriteUsers(users, imported, options.append && isThere, lock);
    Tell("{} put into {}, {} refused.\n", Count(imported.taken, "user"), users.Shown(),
         Count(imported.refused, "line"));
    return code;
}

static const Command
    kExport("users export", "Write a file of user records as a list, a user a line, tabs between",
            "  mailfolder users export C:\\Mail\\USERS.DAT users.txt\n"
            "  mailfolder users export C:\\Mail\\USERS.DAT users.txt --replace --yes\n"
            "  mailfolder users export C:\\Mail\\USERS.DAT --json",
            [](CLI::App& app) -> Command::Run {
                const auto given = std::make_shared<Options>();
                app.add_option("users", given->users, "The file of user records")->required();
                app.add_option("list", given->list, "The list to write, in the ANSI code page");
                app.add_flag("--replace", given->replace,
                             "Write a list anew that is there already; the old one stays as .BAK");
                AddWriteOptions(app, given->write);
                AddJson(app, given->json);
                return [given] {
                    if (given->json != given->list.empty())
                        throw Failure{"Say either the list's name or --json.", keWrongUse};
                    return ExportUsers(*given);
                };
            });

static const Command
    kImport("users import", "Put the users of a list into a file of user records",
            "  mailfolder users import users.txt C:\\Mail\\USERS.DAT\n"
            "  mailfolder users import more.txt C:\\Mail\\USERS.DAT --append --yes",
            [](CLI::App& app) -> Command::Run {
                const auto given = std::make_shared<Options>();
                app.add_option("list", given->list, "The list, in the ANSI code page")->required();
                app.add_option("users", given->users, "The file of user records")->required();
                CLI::Option* const append =
                    app.add_flag("--append", given->append, "Add to a file that is there already");
                app.add_flag("--replace", given->replace, "Write a file anew that is there already")
                    ->excludes(append);
                AddWriteOptions(app, given->write);
                return [given] { return ImportUsers(*given); };
            });
