#pragma once

#include <string>

#include "resident/core/rb_string.h"
#include "resources/jxsysres.h"

// A string of the product's resource library.
inline std::string ResourceText(unsigned int identifier) {
    return RBString(identifier, GetJxSystemResHandle()).Text();
}

// A message that names a file, with its name.
inline std::string FileMessage(unsigned int identifier, const std::string& path) {
    const std::string text = ResourceText(identifier);
    return std::string(text).replace(text.find("%s"), 2, path);
}
