#pragma once

#include <string>
#include <vector>

#include "tests/support/random.h"

// Damages bytes as if they were somebody else's file: bits, numbers and lengths, pieces left out,
// repeated, put elsewhere or taken from another input, words. `unit` is the size of a record, or 0.
void Damage(std::string& bytes, const std::string& other, const std::vector<std::string>& words,
            unsigned int unit, Random& random);
