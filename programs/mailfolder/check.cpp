// Reads every record of a D file and of its message files, and tells what is damaged, where, what
// would be lost, and what helps.

#include "programs/mailfolder/checker.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/recursion.h"

static std::string Where(const Problem& problem) {
    return problem.slot ? fmt::format("Slot {}, byte {}: ", *problem.slot, *problem.position) : "";
}

static Json AsJson(const Problem& problem) {
    const ProblemKind& kind = KindOfProblem(problem.what);
    return {{"what", problem.what},
            {"slot", problem.slot ? Json(*problem.slot) : Json()},
            {"position", problem.position ? Json(*problem.position) : Json()},
            {"messageFile", problem.file.empty() ? Json() : Json(Utf8(problem.file))},
            {"text", problem.text},
            {"lost", problem.lost},
            {"command", kind.command ? Json(kind.command) : Json()},
            {"advice", *kind.advice ? Json(kind.advice) : Json()}};
}

namespace {

class AsText : public Findings {
public:
    explicit AsText(std::string argument) : mArgument(std::move(argument)) {}

    void Begin(const Checked& checked) override {
        Tell("{}: type {}, {}, {}, {} free\n", checked.folder.path.Shown(),
             static_cast<int>(checked.folder.type), Count(checked.folder.Slots(), "slot"),
             Count(checked.messages, "message"), checked.freeSlots);
    }
    void Note(const std::string& text) override { Tell("  {}\n", text); }
    void Add(const Problem& problem) override {
        ++mCount;
        const ProblemKind& kind = KindOfProblem(problem.what);
        Print("\n  {}{}\n", Where(problem), problem.text);
        if (!problem.lost.empty())
            Print("    Lost: {}\n", problem.lost);
        if (*kind.advice)
            Print("    {}\n", kind.advice);
        // What was interrupted is mended first.
        if (kind.command && mCommand != "recover")
            mCommand = kind.command;
    }
    void Finish() const {
        if (mCount == 0)
            return Tell("No damage found.\n");
        Print("\n{} found.\n", Count(mCount, "problem"));
        if (!mCommand.empty())
            Print("To mend it: mailfolder {} {}\n", mCommand, mArgument);
    }
    bool Any() const { return mCount > 0; }

private:
    std::string mArgument;
    std::string mCommand;
    unsigned long long mCount = 0;
};

class AsList : public Findings {
public:
    void Begin(const Checked& checked) override {
        mProblems.emplace(Json{{"file", checked.folder.path.Given()},
                               {"type", static_cast<int>(checked.folder.type)},
                               {"slots", checked.folder.Slots()},
                               {"messages", checked.messages},
                               {"freeSlots", checked.freeSlots}},
                          "problems");
    }
    void Note(const std::string& text) override { mNotes.push_back(text); }
    void Add(const Problem& problem) override {
        mAny = true;
        mProblems->Add(AsJson(problem));
    }
    void Finish() { mProblems->Finish({{"notes", mNotes}}); }
    bool Any() const { return mAny; }

private:
    std::optional<JsonList> mProblems;
    Json mNotes = Json::array();
    bool mAny = false;
};

// How many there are of each folder, and of all.
class AsNumbers : public Findings {
public:
    void Begin(const Checked& checked) override {
        mFile = checked.folder.path.Given();
        mMessages = checked.messages;
        mProblems = 0;
        mKinds = Json::array();
        mAllMessages += mMessages;
    }
    void Note(const std::string&) override {}
    void Add(const Problem& problem) override {
        ++mProblems;
        ++mAllProblems;
        if (std::find(mKinds.begin(), mKinds.end(), problem.what) == mKinds.end())
            mKinds.push_back(problem.what);
    }
    FolderLine Line() const {
        return {
            Count(mMessages, "message") + ", " +
                (mProblems ? Count(mProblems, "problem") : "no damage"),
            {{"file", mFile}, {"messages", mMessages}, {"problems", mProblems}, {"kinds", mKinds}},
            mProblems ? keDamage : keFine};
    }
    FolderLine Summary() const {
        return {Count(mAllMessages, "message") + ", " + Count(mAllProblems, "problem"),
                {{"messages", mAllMessages}, {"problems", mAllProblems}},
                keFine};
    }

private:
    std::string mFile;
    unsigned long long mMessages = 0;
    unsigned long long mProblems = 0;
    Json mKinds;
    unsigned long long mAllMessages = 0;
    unsigned long long mAllProblems = 0;
};

} // namespace

template <class Form>
static int CheckAs(const LookOptions& options, Form form) {
    CheckFolder(Path(options.folder.path), options.folder.type, form);
    form.Finish();
    return form.Any() ? keDamage : keFine;
}

static int CheckOne(const LookOptions& options) {
    return options.json ? CheckAs(options, AsList())
                        : CheckAs(options, AsText(Printable(WideOfUtf8(options.folder.path))));
}

static int CheckAll(const LookOptions& options) {
    AsNumbers numbers;
    return ForEachFolder(
        Path(options.folder.path), Which::WithMail, options.json,
        [&](const Path& folder) {
            CheckFolder(folder, options.folder.type, numbers);
            return numbers.Line();
        },
        [&] { return numbers.Summary(); });
}

static const Command
    kCheck("check",
           "Read every record and message file; tell what is damaged, what would be lost, and what "
           "helps. Changes nothing",
           "  mailfolder check C:\\Mail\\InBox\n"
           "  mailfolder check C:\\Mail --recursive\n"
           "  mailfolder check C:\\Mail\\InBox --json",
           [](CLI::App& app) { return AddLook(app, CheckOne, CheckAll); });
