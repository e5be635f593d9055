#include "resident/files/oem_name.h"

#include <cstring>

#include "resident/core/windows_api.h"

void ConvertToOem(const char* name, char (&buffer)[keOemNameSize]) {
    if (name && std::memchr(name, 0, sizeof buffer))
        CharToOemA(name, buffer);
    else
        *buffer = 0;
}
