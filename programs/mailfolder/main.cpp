// mailfolder: looks into mail folders and the files around them, and mends them when told to.

#include <algorithm>
#include <new>
#include <system_error>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/quiet.h"
#include "programs/mailfolder/similar.h"
#include "programs/mailfolder/tool.h"
#include "resident/core/windows_api.h"

namespace {

class CommandLine {
public:
    CommandLine();
    // `arguments` are UTF-8, without the program's name.
    int Run(std::vector<std::string> arguments);

private:
    int RunCommand();

    CLI::App mApp{"Looks into Postrider mail folders, and mends them when told to."};
    Command::Run mRun;
    bool mQuiet = false;
    bool mVerbose = false;
};

CommandLine::CommandLine() {
    mApp.name("mailfolder");
    mApp.require_subcommand(1);
    // The options of all commands are known behind each.
    mApp.fallthrough();
    // A path may begin with a slash.
    mApp.allow_windows_style_options(false);
    mApp.set_version_flag("--version", "mailfolder " POSTRIDER_VERSION);
    CLI::Option* const quiet =
        mApp.add_flag("-q,--quiet", mQuiet, "Tell of failures and damage alone");
    mApp.add_flag("-v,--verbose", mVerbose, "Tell of each step")->excludes(quiet);
    mApp.footer("Exit codes: 0 fine, 1 could not, 2 wrong use, 3 damage found.\n"
                "mailfolder COMMAND --help tells more, with examples.");
    for (const auto& [name, command] : Command::All())
        command->AddTo(mApp, mRun);
}

// What a failed allocation leaves to be said with.
constexpr const char kNoMemory[] =
    "There is not enough memory to go on. What is not finished is not put in place.\n";

int CommandLine::RunCommand() {
    try {
        return mRun();
    } catch (const Failure& failure) {
        Warn("{}\n", failure.text);
        return failure.code;
    } catch (const std::bad_alloc&) {
        FlushOutput();
        std::fputs(kNoMemory, stderr);
        return keCouldNot;
    } catch (const std::system_error&) {
        throw;
    } catch (const std::exception& error) {
        Warn("Cannot go on: {}.\n", error.what());
        return keCouldNot;
    }
}

int CommandLine::Run(std::vector<std::string> arguments) {
    try {
        if (const std::string wrong = UnknownCommand(arguments); !wrong.empty()) {
            Warn("{}\n", wrong);
            return keWrongUse;
        }
        std::reverse(arguments.begin(), arguments.end());
        mApp.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream err;
        const int code = mApp.exit(error, out, err);
        Write(out.str());
        WriteError(err.str());
        return code == 0 ? keFine : keWrongUse;
    }
    talk = mQuiet ? Talk::Quiet : mVerbose ? Talk::Verbose : Talk::Normal;
    return RunCommand();
}

// A console shows UTF-8 while the tool runs.
class Utf8Console {
public:
    Utf8Console() : mPage(GetConsoleOutputCP()) { SetConsoleOutputCP(CP_UTF8); }
    Utf8Console(const Utf8Console&) = delete;
    Utf8Console& operator=(const Utf8Console&) = delete;
    ~Utf8Console() { SetConsoleOutputCP(mPage); }

private:
    UINT mPage;
};

} // namespace

int wmain(int argc, wchar_t** argv) {
    const Quiet quiet;
    const Utf8Console console;
    // The library's would ask in a box whether to go on.
    std::set_new_handler(nullptr);
    try {
        std::vector<std::string> arguments;
        for (int i = 1; i < argc; ++i)
            arguments.push_back(Utf8(argv[i]));
        const int code = CommandLine().Run(std::move(arguments));
        FlushOutput();
        return code;
    } catch (const std::bad_alloc&) {
        std::fputs(kNoMemory, stderr);
    } catch (const std::system_error& error) {
        // Whoever read the output has closed it, as "| head" does, and wants no words about it.
        if (error.code() != std::errc::broken_pipe)
            std::fprintf(stderr, "Cannot write the output: %s.\n", error.what());
    }
    return keCouldNot;
}
