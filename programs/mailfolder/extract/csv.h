#pragma once

#include <string>
#include <vector>

namespace extract {

// A line of comma-separated values (RFC 4180), ended by CR LF. Cells are UTF-8. One that a
// spreadsheet would take for a formula gets an apostrophe before it, as spreadsheets have it.
std::string CsvLine(const std::vector<std::string>& cells);

} // namespace extract
