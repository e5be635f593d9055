// mailfolder: looks into mail folders and the files around them, and mends them when told to.

#include <cerrno>
#include <system_error>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/quiet.h"
#include "programs/mailfolder/tool.h"
#include "resident/core/windows_api.h"

namespace {

class CommandLine {
public:
    CommandLine();
    int Run(int argc, char** argv);

private:
    CLI::App mApp{"Looks into Postrider mail folders, and mends them when told to."};
    Command::Run mRun;
};

CommandLine::CommandLine() {
    mApp.name("mailfolder");
    mApp.require_subcommand(1);
    // A path may begin with a slash.
    mApp.allow_windows_style_options(false);
    mApp.footer("Exit codes: 0 fine, 1 could not, 2 wrong use, 3 damage found.\n"
                "mailfolder COMMAND --help tells more, with examples.");
    for (const auto& [name, command] : Command::All())
        command->AddTo(mApp, mRun);
}

int CommandLine::Run(int argc, char** argv) {
    try {
        mApp.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return mApp.exit(error) == 0 ? keFine : keWrongUse;
    }
    try {
        return mRun();
    } catch (const Failure& failure) {
        fmt::print(stderr, "{}\n", failure.text);
        return failure.code;
    } catch (const std::system_error& error) {
        // Whoever read the output has closed it, as "| head" does, and wants no words about it.
        if (error.code().value() != EINVAL && error.code().value() != EPIPE)
            fmt::print(stderr, "Cannot write the output: {}.\n", error.what());
        return keCouldNot;
    } catch (const std::exception& error) {
        fmt::print(stderr, "Cannot go on: {}.\n", error.what());
        return keCouldNot;
    }
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

int main(int argc, char** argv) {
    const Quiet quiet;
    const Utf8Console console;
    const int code = CommandLine().Run(argc, argv);
    if (std::fflush(stdout) != 0)
        return keCouldNot;
    return code;
}
