// The manual page and the shells' completions, made from the definitions of the commands.

#include <functional>
#include <set>

#include "programs/mailfolder/command.h"
#include "programs/mailfolder/tool.h"

namespace {

typedef std::vector<const CLI::Option*> Options;

// Those that begin with dashes, but the help that every command has; the others stand by place.
Options NamedOptions(const CLI::App& app) {
    return app.get_options([&](const CLI::Option* option) {
        return option->nonpositional() && option != app.get_help_ptr();
    });
}

Options PlacedOptions(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return !option->nonpositional(); });
}

std::vector<std::string> Spellings(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

std::string Joined(const std::vector<std::string>& words, const char* between) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

// What an option's value is: behind the type's name stands what it is checked for.
std::string ValueName(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    return type.substr(type.find(':') + 1);
}

std::string InCapitals(std::string text) {
    for (char& c : text)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return text;
}

// The words that it may be; none when they are not listed.
std::vector<std::string> ValueWords(const CLI::Option& option) {
    const std::string name = ValueName(option);
    std::vector<std::string> words;
    if (name.size() > 2 && name.front() == '{' && name.back() == '}')
        words = CLI::detail::split(name.substr(1, name.size() - 2), ',');
    return words;
}

// Commands by the words that name them, groups left out.
void ForEachCommand(const CLI::App& app, const std::string& words,
                    const std::function<void(const std::string&, const CLI::App&)>& visit) {
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (command->get_group().empty())
            continue;
        const std::string name = words + (words.empty() ? "" : " ") + command->get_name();
        if (command->get_subcommands([](const CLI::App*) { return true; }).empty())
            visit(name, *command);
        else
            ForEachCommand(*command, name, visit);
    }
}

// Text for roff: a line that begins with a dot or an apostrophe would be a request.
std::string Roff(const std::string& text) {
    std::string roff;
    for (const char c : text) {
        const bool atStart = roff.empty() || roff.back() == '\n';
        if (atStart && (c == '.' || c == '\''))
            roff += "\\&";
        roff += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return roff;
}

void PrintManualOptions(const CLI::App& app) {
    for (const CLI::Option* option : NamedOptions(app)) {
        const std::string value =
            option->get_type_size() > 0 ? " \\fI" + Roff(ValueName(*option)) + "\\fR" : "";
        Print(".TP\n\\fB{}\\fR{}\n{}\n", Roff(Joined(Spellings(*option), ", ")), value,
              Roff(option->get_description()));
    }
}

void PrintManual(const CLI::App& tool) {
    Print(".TH MAILFOLDER 1 \"\" Postrider\n.SH NAME\nmailfolder \\- {}\n",
          "look into Postrider mail folders, and get the mail out");
    Print(".SH SYNOPSIS\n.B mailfolder\n\\fICOMMAND\\fR [\\fIOPTIONS\\fR]\n");
    Print(".SH DESCRIPTION\n{}\n", Roff(tool.get_description()));
    PrintManualOptions(tool);
    Print(".SH COMMANDS\n");
    ForEachCommand(tool, "", [](const std::string& words, const CLI::App& command) {
        std::string places;
        for (const CLI::Option* option : PlacedOptions(command))
            places += " " + (option->get_required() ? InCapitals(option->get_name())
                                                    : "[" + InCapitals(option->get_name()) + "]");
        Print(".SS {} \\fI{}\\fR\n{}.\n", Roff(words), Roff(places),
              Roff(command.get_description()));
        for (const CLI::Option* option : PlacedOptions(command))
            Print(".TP\n\\fI{}\\fR\n{}\n", Roff(InCapitals(option->get_name())),
                  Roff(option->get_description()));
        PrintManualOptions(command);
        Print(".PP\n.nf\n{}\n.fi\n", Roff(command.get_footer()));
    });
    Print(".SH NOTES\n.nf\n{}\n.fi\n", Roff(tool.get_footer()));
}

// One line for each command and each option with words for its value; "*" stands for the tool.
void PrintBash(const CLI::App& tool) {
    Print("# bash completion for mailfolder\n"
          "_mailfolder() {{\n"
          "    local cur=${{COMP_WORDS[COMP_CWORD]}} prev=${{COMP_WORDS[COMP_CWORD-1]}}\n"
          "    local words=\"${{COMP_WORDS[*]:1:COMP_CWORD-1}} \" commands options values\n");
    std::string commands;
    std::string cases;
    ForEachCommand(tool, "", [&](const std::string& words, const CLI::App& command) {
        std::string options;
        for (const CLI::Option* option : NamedOptions(command)) {
            options += (options.empty() ? "" : " ") + Joined(Spellings(*option), " ");
            const std::vector<std::string> values = ValueWords(*option);
            if (!values.empty())
                cases += fmt::format("    [[ $words == '{} '* && $prev == --{} ]] && values='{}'\n",
                                     words, option->get_lnames().front(), Joined(values, " "));
        }
        cases += fmt::format("    [[ $words == '{} '* ]] && options='{}'\n", words, options);
        commands += (commands.empty() ? "" : "|") + words;
    });
    Print("{}", cases);
    Print(
        "    commands=$(tr '|' '\\n' <<<'{}' | grep \"^$words\" | cut -c$((${{#words}} + 1))- |\n"
        "        cut -d' ' -f1)\n"
        "    [ $COMP_CWORD = 1 ] && commands=$(tr '|' '\\n' <<<'{}' | cut -d' ' -f1 | sort -u)\n"
        "    if [ -n \"$values\" ]; then COMPREPLY=($(compgen -W \"$values\" -- \"$cur\"))\n"
        "    elif [[ $cur == -* ]]; then COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
        "    elif [ -n \"$commands\" ]; then COMPREPLY=($(compgen -W \"$commands\" -- \"$cur\"))\n"
        "    else COMPREPLY=($(compgen -f -- \"$cur\"))\n"
        "    fi\n"
        "}}\n"
        "complete -o filenames -F _mailfolder mailfolder mailfolder.exe\n",
        commands, commands);
}

void PrintPowerShell(const CLI::App& tool) {
    Print("# PowerShell completion for mailfolder\n$mailfolderWords = @{{\n");
    ForEachCommand(tool, "", [&](const std::string& words, const CLI::App& command) {
        std::vector<std::string> options;
        std::string values;
        for (const CLI::Option* option : NamedOptions(command)) {
            for (const std::string& name : Spellings(*option))
                options.push_back("'" + name + "'");
            if (const auto known = ValueWords(*option); !known.empty())
                values += fmt::format("    '{} --{}' = '{}'\n", words, option->get_lnames().front(),
                                      Joined(known, "', '"));
        }
        Print("    '{}' = {}\n{}", words, Joined(options, ", "), values);
    });
    Print("}}\n"
          "Register-ArgumentCompleter -Native -CommandName mailfolder, mailfolder.exe -ScriptBlock "
          "{{\n"
          "    param($word, $line, $position)\n"
          "    $before = @($line.CommandElements | Select-Object -Skip 1 |\n"
          "        Where-Object {{ $_.Extent.EndOffset -lt $position }} | ForEach-Object {{ \"$_\" "
          "}})\n"
          "    $command = (1, 2 | ForEach-Object {{ $before[0..($_ - 1)] -join ' ' }} |\n"
          "        Where-Object {{ $mailfolderWords.ContainsKey($_) }} | Select-Object -First 1)\n"
          "    $known = if (-not $command) {{\n"
          "        $start = if ($before.Count) {{ ($before -join ' ') + ' ' }} else {{ '' }}\n"
          "        $mailfolderWords.Keys | Where-Object {{ $_ -notmatch '--' -and "
          "$_.StartsWith($start) }} |\n"
          "            ForEach-Object {{ $_.Substring($start.Length).Split(' ')[0] }}\n"
          "    }} elseif ($mailfolderWords.ContainsKey(\"$command $($before[-1])\")) {{\n"
          "        $mailfolderWords[\"$command $($before[-1])\"]\n"
          "    }} elseif ($word -like '-*') {{ $mailfolderWords[$command] }}\n"
          "    $known | Sort-Object -Unique | Where-Object {{ $_ -like \"$word*\" }}\n"
          "}}\n");
}

const Command kDocuments("documents", "Print the manual page, or a shell's completions",
                         "  mailfolder documents man\n"
                         "  mailfolder documents powershell",
                         [](CLI::App& app) -> Command::Run {
                             const auto what = std::make_shared<std::string>();
                             app.group("");
                             app.add_option("what", *what, "Which of them")
                                 ->required()
                                 ->check(CLI::IsMember({"man", "bash", "powershell"}));
                             return [what, tool = app.get_parent()] {
                                 (*what == "man"    ? PrintManual
                                  : *what == "bash" ? PrintBash
                                                    : PrintPowerShell)(*tool);
                                 return static_cast<int>(keFine);
                             };
                         });

} // namespace
