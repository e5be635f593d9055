#pragma once

#include <chrono>
#include <string>

namespace mime {

// What the local zone's clocks are ahead of universal time at a local time, by the rule that the
// system has for that year.
std::chrono::minutes ZoneOffset(std::chrono::local_seconds time);

// A local time as the Date field has it (RFC 5322, 3.3): "Sat, 03 Feb 2001 04:05:06 +0100".
std::string DateTime(std::chrono::local_seconds time, std::chrono::minutes offset);

// As an mbox's separator has it (RFC 4155, appendix A): "Sat Feb  3 04:05:06 2001".
std::string AscTime(std::chrono::sys_seconds time);

} // namespace mime
