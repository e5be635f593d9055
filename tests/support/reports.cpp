#include "tests/support/reports.h"

#include <sstream>

Reports::~Reports() {
    RbAssertSelectOutput(RB_OUTPUT_DIALOG, nullptr);
    RbAssertSetCount(static_cast<int>(mCount));
}

std::string Reports::Take() {
    std::string reports;
    for (const std::string& text : mOutput.TakeTexts()) {
        std::istringstream lines(text);
        std::string line, report;
        // Failed expectations are sent to the debugger output, too.
        if (!std::getline(lines, line) || line != "Assert Failed!")
            continue;
        const bool known = text.find("\nJXSYSTEM\\DIRF") == text.npos;
        while (std::getline(lines, line))
            if (known || line.empty() || line.find_first_not_of("0123456789") != line.npos ||
                line == "0")
                report += (report.empty() ? "" : "|") + line;
        reports += report + "\n";
    }
    return reports;
}
