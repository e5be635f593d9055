#pragma once

#include <sstream>
#include <string>

// The bytes of a literal, zeros too.
template <unsigned int size>
std::string Bytes(const char (&literal)[size]) {
    return std::string(literal, size - 1);
}

inline std::string Pascal(const std::string& text) { return char(text.size()) + text; }

inline std::string With(std::string record, unsigned int offset, const std::string& bytes) {
    return record.replace(offset, bytes.size(), bytes);
}

template <class T>
std::string Written(T& object) {
    std::ostringstream out;
    out << object;
    return out.str();
}
