#pragma once

#include <string>
#include <vector>

// What to say when the arguments name a command that there is not, with the names that come closest
// to it; empty when all is well, or something else is wrong with them.
std::string UnknownCommand(const std::vector<std::string>& arguments);
