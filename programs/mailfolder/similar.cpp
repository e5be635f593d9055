#include "programs/mailfolder/similar.h"

#include <algorithm>

#include "programs/console/output.h"
#include "programs/mailfolder/command.h"

// How many letters must be changed, put in, left out or exchanged with their neighbours.
static std::size_t Distance(const std::string& left, const std::string& right) {
    std::vector<std::vector<std::size_t>> steps(left.size() + 1,
                                                std::vector<std::size_t>(right.size() + 1));
    for (std::size_t i = 0; i <= left.size(); ++i)
        for (std::size_t j = 0; j <= right.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1,
                                    steps[i - 1][j - 1] + (left[i - 1] != right[j - 1])});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1])
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
        }
    return steps[left.size()][right.size()];
}

// The commands that come closest to what was said, by their whole names or by one of their words.
static std::string Closest(const std::string& said) {
    std::size_t best = 1 + said.size() / 3;
    std::string names;
    for (const auto& [name, command] : Command::All()) {
        const std::size_t space = name.find(' ');
        std::size_t distance = Distance(said, name);
        if (space != std::string::npos)
            distance = std::min({distance, Distance(said, name.substr(0, space)),
                                 Distance(said, name.substr(space + 1))});
        if (distance > best)
            continue;
        if (distance < best)
            names.clear();
        best = distance;
        names += (names.empty() ? "\"" : " or \"") + name + "\"";
    }
    return names;
}

std::string UnknownCommand(const std::vector<std::string>& arguments) {
    std::string said;
    bool groupFound = false;
    for (const std::string& argument : arguments) {
        if (argument.starts_with("-"))
            continue;
        said += (said.empty() ? "" : " ") + argument;
        groupFound = false;
        for (const auto& [name, command] : Command::All()) {
            if (name == said)
                return {};
            groupFound = groupFound || name.starts_with(said + " ");
        }
        if (!groupFound)
            break;
    }
    if (said.empty() || groupFound)
        return {};
    const std::string closest = Closest(said);
    return fmt::format("There is no command \"{}\".{} (--help lists them.)", said,
                       closest.empty() ? "" : " Did you mean " + closest + "?");
}
