#include "programs/mailfolder/extract/csv.h"

namespace extract {

static std::string Cell(const std::string& text) {
    const bool isFormula =
        !text.empty() && std::string_view("=+-@\t\r").find(text.front()) != std::string::npos;
    const std::string shown = isFormula ? "'" + text : text;
    if (shown.find_first_of(",\"\r\n") == std::string::npos)
        return shown;
    std::string quoted = "\"";
    for (const char c : shown)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

std::string CsvLine(const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i)
        line += (i ? "," : "") + Cell(cells[i]);
    return line + "\r\n";
}

} // namespace extract
