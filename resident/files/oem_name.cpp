#include "resident/files/oem_name.h"

#include <cstring>

#include "resident/core/windows_api.h"

bool ConvertToOem(const char* name, char (&buffer)[keOemNameSize]) {
    if (!name || !std::memchr(name, 0, sizeof buffer)) {
        buffer[0] = 0;
        return false;
    }
    return CharToOemA(name, buffer);
}
