// Reads every record of a D file and of its message files, and tells what is damaged, where, what
// would be lost, and what helps.

#include "programs/mailfolder/checker.h"
#include "programs/mailfolder/command.h"
#include "programs/mailfolder/recursion.h"

static std::string Where(const Problem& problem) {
    return problem.slot ? fmt::format("Slot {}, byte {}: ", *problem.slot, *problem.position) : "";
}

static Json OrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

static Json AsJson(const Problem& problem) {
    const ProblemKind& kind = KindOfProblem(problem.what);
    return {{"what", problem.what},
            {"slot", problem.slot ? Json(*problem.slot) : Json()},
            {"position", problem.position ? Json(*problem.position) : Json()},
            {"messageFile", problem.file.empty() ? Json() : Json(Utf8(problem.file))},
            {"text", problem.text},
            {"lost", problem.lost},
            {"command", kind.command ? Json(kind.command) : Json()},
            {"advice", OrNull(kind.advice)}};
}

static void PrintJsonOf(const Checked& checked) {
    JsonList problems({{"file", checked.folder.path.Shown()},
                       {"type", static_cast<int>(checked.folder.type)},
                       {"slots", checked.folder.Slots()},
                       {"messages", checked.messages},
                       {"freeSlots", checked.freeSlots},
                       {"notes", checked.notes}},
                      "problems");
    for (const Problem& problem : checked.problems)
        problems.Add(AsJson(problem));
    problems.Finish();
}

// The commands that mend something here, each once, in the order in which to use them.
static void PrintAdvice(const Checked& checked, const std::string& argument) {
    for (const char* command : {"recover", "rebuild"}) {
        const bool helps = std::any_of(
            checked.problems.begin(), checked.problems.end(), [&](const Problem& problem) {
                const char* const its = KindOfProblem(problem.what).command;
                return its && std::string(its) == command;
            });
        if (helps) {
            Print("To mend it: mailfolder {} {}\n", command, argument);
            return;
        }
    }
}

static void PrintText(const Checked& checked, const std::string& argument) {
    Tell("{}: type {}, {}, {}, {} free\n", checked.folder.path.Shown(),
         static_cast<int>(checked.folder.type), Count(checked.folder.Slots(), "slot"),
         Count(checked.messages, "message"), checked.freeSlots);
    for (const std::string& note : checked.notes)
        Tell("  {}\n", note);
    for (const Problem& problem : checked.problems) {
        Print("\n  {}{}\n", Where(problem), problem.text);
        if (!problem.lost.empty())
            Print("    Lost: {}\n", problem.lost);
        const ProblemKind& kind = KindOfProblem(problem.what);
        if (*kind.advice)
            Print("    {}\n", kind.advice);
    }
    if (checked.problems.empty()) {
        Tell("No damage found.\n");
        return;
    }
    Print("\n{} found.\n", Count(checked.problems.size(), "problem"));
    PrintAdvice(checked, argument);
}

static int CheckOne(const LookOptions& options) {
    const Checked checked = CheckFolder(Path(options.folder.path), options.folder.type);
    if (options.json)
        PrintJsonOf(checked);
    else
        PrintText(checked, Printable(WideOfUtf8(options.folder.path)));
    return checked.problems.empty() ? keFine : keDamage;
}

static int CheckAll(const LookOptions& options) {
    unsigned long long messages = 0;
    unsigned long long problems = 0;
    return ForEachFolder(
        Path(options.folder.path), options.json,
        [&](const Path& folder) -> FolderLine {
            const Checked checked = CheckFolder(folder, options.folder.type);
            messages += checked.messages;
            problems += checked.problems.size();
            Json kinds = Json::array();
            for (const Problem& problem : checked.problems)
                if (std::find(kinds.begin(), kinds.end(), problem.what) == kinds.end())
                    kinds.push_back(problem.what);
            return {Count(checked.messages, "message") + ", " +
                        (checked.problems.empty() ? "no damage"
                                                  : Count(checked.problems.size(), "problem")),
                    {{"file", checked.folder.path.Shown()},
                     {"messages", checked.messages},
                     {"problems", checked.problems.size()},
                     {"kinds", kinds}},
                    checked.problems.empty() ? keFine : keDamage};
        },
        [&]() -> FolderLine {
            return {Count(messages, "message") + ", " + Count(problems, "problem"),
                    {{"messages", messages}, {"problems", problems}},
                    keFine};
        });
}

static const Command
    kCheck("check",
           "Read every record and message file; tell what is damaged, what would be lost, and what "
           "helps. Changes nothing",
           "  mailfolder check C:\\Mail\\InBox\n"
           "  mailfolder check C:\\Mail --recursive\n"
           "  mailfolder check C:\\Mail\\InBox --json",
           [](CLI::App& app) { return AddLook(app, CheckOne, CheckAll); });
