// User lists: the tab-separated lists that people exchange, and files of stored user records.

#include <sstream>

#include "programs/console/text.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/progress.h"
#include "programs/mailfolder/tool.h"

static constexpr unsigned int kLongestLine = 1024;
static constexpr unsigned int kLongestName = 31;

namespace {

// A file that is closed whatever happens.
struct ClosedFile : RbFile {
    explicit ClosedFile(const std::string& path) : RbFile(SpecOf(path)) {}
    ~ClosedFile() override {
        if (isOpen())
            close();
    }
};

// Reads a file's user records one after another, and tells of damage on standard error.
class UserReader {
public:
    explicit UserReader(const std::string& path) : mPath(path), mFile(path) {
        NeedReadable(path);
        if (!mFile.Open(keOpenRead))
            Fail("Cannot read {}: opening it failed.", Printable(path));
        mFile.seekg(0, std::ios::end);
        mSize = mFile.tellg();
        mFile.seekg(0);
    }

    bool Next(MailUser& user) {
        const long position = mFile.tellg();
        if (position >= mSize)
            return false;
        ++mNumber;
        UserLRec raw;
        mFile.read(reinterpret_cast<char*>(&raw), sizeof raw);
        const bool whole = mFile.good();
        mFile.clear();
        mFile.seekg(position);
        if (!whole || !(mFile >> user)) {
            Damage(position, "is not whole: it is left out");
            mFile.clear();
            mFile.seekg(mSize);
            return false;
        }
        if (raw.name[0] >= sizeof raw.name)
            Damage(position, fmt::format("claims a name of {} characters: the name is cut at 31",
                                         raw.name[0]));
        if (raw.zone[0] >= sizeof raw.zone)
            Damage(position,
                   fmt::format("claims an address of {} characters: the address is cut at 31",
                               raw.zone[0]));
        mPosition = position;
        return true;
    }

    // Tells that the user just read cannot be passed on.
    void LeaveOut(const char* reason) { Damage(mPosition, reason); }
    bool FoundDamage() const { return mDamaged; }

private:
    void Damage(long position, const std::string& what) {
        mDamaged = true;
        fmt::print(stderr, "{}: record {}, byte {}, {}.\n", Printable(mPath), mNumber, position,
                   what);
    }

    std::string mPath;
    ClosedFile mFile;
    long mSize = 0;
    long mPosition = 0;
    unsigned long mNumber = 0;
    bool mDamaged = false;
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

// Whether a text would break the line that it stands in.
static bool BreaksLine(const RBString& text) {
    return std::string(text.Text()).find_first_of("\t\r\n") != std::string::npos;
}

static int ExportUsers(const std::string& usersArgument, const std::string& listArgument,
                       bool replace) {
    UserReader users(FullPath(usersArgument));
    MailUser user;
    if (listArgument.empty()) {
        Json list = Json::array();
        while (users.Next(user))
            list.push_back(AsJson(user));
        PrintJson(list);
        return users.FoundDamage() ? keDamage : keFine;
    }
    const std::string path = FullPath(listArgument);
    if (IsThere(path) && !replace)
        Fail("{} is there already: say --replace to write it anew.", Printable(path));
    ClosedFile list(path);
    if (!list.Open(keOpenRewrite))
        Fail("Cannot write {}.", Printable(path));
    unsigned long count = 0;
    while (users.Next(user)) {
        if (BreaksLine(user.Name()) || BreaksLine(user.Address())) {
            users.LeaveOut("has a tab or a line end in it: it is left out");
            continue;
        }
        const enumUserListResult result = user.Export(list);
        if (result == keUserListNoName)
            users.LeaveOut("has no name: it is left out");
        else if (result != keUserListDone)
            Fail("Cannot write {}: it is not whole.", Printable(path));
        else
            ++count;
    }
    if (!list.flush())
        Fail("Cannot write {}: it is not whole.", Printable(path));
    fmt::print("{} written to {}.\n", Count(count, "user"), Printable(path));
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

// A list's lines, whatever ends them.
static std::vector<std::string> LinesOf(const std::string& path) {
    NeedReadable(path);
    ClosedFile file(path);
    if (!file.Open(keOpenRead))
        Fail("Cannot read {}: opening it failed.", Printable(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line); lines.push_back(line))
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
    return lines;
}

// Takes one line by way of a scratch file, in which it stands alone.
static enumUserListResult ImportLine(TemporaryFile& scratch, const std::string& line,
                                     MailUser& user) {
    const std::string text = line + "\r\n";
    const auto rewind = [&] {
        scratch.clear();
        scratch.seekg(0);
    };
    rewind();
    scratch.UpdateFile();
    rewind();
    scratch.write(text.data(), static_cast<int>(text.size()));
    scratch.flush();
    rewind();
    return user.Import(scratch);
}

enum class ImportInto { NewFile, Append, Replace };

static int ImportUsers(const std::string& listArgument, const std::string& usersArgument,
                       ImportInto into) {
    const std::string listPath = FullPath(listArgument);
    const std::string usersPath = FullPath(usersArgument);
    const std::vector<std::string> lines = LinesOf(listPath);
    if (into == ImportInto::NewFile && IsThere(usersPath))
        Fail("{} is there already: say --append to add to it, or --replace to write it anew.",
             Printable(usersPath));

    TemporaryFile scratch(".TMP", 1, keTempExtension);
    if (!scratch.IsValid() || !scratch.Open(keOpenUpdate))
        Fail("Cannot make a temporary file.");
    std::ostringstream records;
    unsigned long taken = 0;
    unsigned long refused = 0;
    {
        Progress progress("Reading " + Printable(listPath));
        const auto refuse = [&](std::size_t number, const char* reason) {
            ++refused;
            fmt::print(stderr, "{}: line {} is refused: {}.\n", Printable(listPath), number,
                       reason);
        };
        for (std::size_t i = 0; i < lines.size(); ++i) {
            progress.Show(i, lines.size());
            MailUser user;
            if (lines[i].size() >= kLongestLine) {
                refuse(i + 1, "it is longer than 1023 characters");
                continue;
            }
            if (lines[i].find_first_of(std::string("\0\r", 2)) != std::string::npos) {
                refuse(i + 1, "it has a zero or a bare carriage return in it");
                continue;
            }
            const enumUserListResult result = ImportLine(scratch, lines[i], user);
            if (result != keUserListDone)
                refuse(i + 1, Reason(result));
            else if (user.Name().Length() > kLongestName)
                refuse(i + 1, Reason(keUserListTooLong)); // the record's field cuts it
            else if (records << user)
                ++taken;
        }
    }
    const std::string bytes = records.str();
    if (!bytes.empty()) {
        ClosedFile users(usersPath);
        const bool append = into == ImportInto::Append && IsThere(usersPath);
        if (!users.Open(append ? keOpenAppend : keOpenRewrite))
            Fail("Cannot write {}.", Printable(usersPath));
        const long before = append ? users.tellg() : 0;
        if (before % static_cast<long>(sizeof(UserLRec)))
            Fail("{} ends inside a record; nothing was added to it.", Printable(usersPath));
        users.write(bytes.data(), static_cast<int>(bytes.size()));
        if (!users.flush())
            Fail("Cannot write {}: it is not whole.", Printable(usersPath));
    }
    fmt::print("{} put into {}, {} refused.\n", Count(taken, "user"), Printable(usersPath),
               Count(refused, "line"));
    return refused ? keDamage : keFine;
}

namespace {

struct Options {
    std::string users;
    std::string list;
    bool json = false;
    bool replace = false;
    bool append = false;
};

} // namespace

static const Command
    kExport("export", "Write a file of user records as a list, a user a line, tabs between",
            "  mailfolder export C:\\Mail\\USERS.DAT users.txt\n"
            "  mailfolder export C:\\Mail\\USERS.DAT --json",
            [](CLI::App& app) -> Command::Run {
                const auto given = std::make_shared<Options>();
                app.add_option("users", given->users, "The file of user records")->required();
                app.add_option("list", given->list, "The list to write, in the ANSI code page");
                app.add_flag("--replace", given->replace,
                             "Write a list anew that is there already");
                AddJson(app, given->json);
                return [given] {
                    if (given->json != given->list.empty())
                        throw Failure{"Say either the list's name or --json.", keWrongUse};
                    return ExportUsers(given->users, given->list, given->replace);
                };
            });

static const Command
    kImport("import", "Put the users of a list into a file of user records",
            "  mailfolder import users.txt C:\\Mail\\USERS.DAT\n"
            "  mailfolder import more.txt C:\\Mail\\USERS.DAT --append",
            [](CLI::App& app) -> Command::Run {
                const auto given = std::make_shared<Options>();
                app.add_option("list", given->list, "The list, in the ANSI code page")->required();
                app.add_option("users", given->users, "The file of user records")->required();
                CLI::Option* const append =
                    app.add_flag("--append", given->append, "Add to a file that is there already");
                app.add_flag("--replace", given->replace, "Write a file anew that is there already")
                    ->excludes(append);
                return [given] {
                    return ImportUsers(given->list, given->users,
                                       given->append    ? ImportInto::Append
                                       : given->replace ? ImportInto::Replace
                                                        : ImportInto::NewFile);
                };
            });
