#pragma once

#include <string>
#include <string_view>

namespace mime {

// A Maildir: a file a message, written in "tmp" and renamed into "new" or, with marks, into "cur".
// Names there are UNIQUE, or UNIQUE, a separator and "2," with a letter for each mark. The
// separator is ":" where file names can hold it.

// Unique names of this program hold the message's identity, by which it is known again whatever
// other programs have put behind it.
std::string MaildirName(long long seconds, std::string_view identity);
// Where a processed message goes, and any other, with a trailing slash for the folder.
std::string MaildirPlace(std::string_view unique, bool seen, char separator);
// Empty for other names.
std::string MaildirIdentity(std::string_view name);

} // namespace mime
