#include "system/prefs/jx_dat_header.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>

JXDatHeader::JXDatHeader() = default;

char* JXDatHeader::SetName(const char* newName) {
    if (!newName)
        newName = "";
    // `newName` may be the stored name itself.
    const std::size_t length = std::strlen(newName);
    const std::size_t kept = std::min<std::size_t>(length, keMaxName);
    std::memmove(name, newName, kept);
    std::memset(name + kept, 0, sizeof name - kept);
    nameLength = static_cast<unsigned char>(length);
    return name;
}

std::ostream& operator<<(std::ostream& out, JXDatHeader& header) {
    return out.write(reinterpret_cast<const char*>(&header), sizeof header);
}

std::istream& operator>>(std::istream& in, JXDatHeader& header) {
    return in.read(reinterpret_cast<char*>(&header), sizeof header);
}

std::ostream& operator<<(std::ostream& out, JXExtendDatHeader& header) {
    out << static_cast<JXDatHeader&>(header);
    return out.good() ? out << header.number : out;
}

std::istream& operator>>(std::istream& in, JXExtendDatHeader& header) {
    in >> static_cast<JXDatHeader&>(header);
    return in.good() ? in >> header.number : in;
}
