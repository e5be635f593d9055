#include "programs/mime/maildir.h"

namespace mime {

static constexpr std::string_view kHost = ".postrider";

std::string MaildirName(long long seconds, std::string_view identity) {
    return std::to_string(seconds) + "." + std::string(identity) + std::string(kHost);
}

std::string MaildirPlace(std::string_view unique, bool seen, char separator) {
    return seen ? "cur\\" + std::string(unique) + separator + "2,S" : "new\\" + std::string(unique);
}

std::string MaildirIdentity(std::string_view name) {
    const std::size_t end = name.find(kHost);
    const std::size_t start = name.find('.');
    if (end == name.npos || start >= end)
        return {};
    return std::string(name.substr(start + 1, end - start - 1));
}

} // namespace mime
