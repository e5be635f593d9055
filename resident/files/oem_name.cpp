#include "resident/files/oem_name.h"

#include <cstring>

#include "resident/core/windows_api.h"

bool ConvertToOem(const char* name, char (&buffer)[keOemNameSize]) {
    if (!name || std::strlen(name) >= sizeof buffer) {
        buffer[0] = 0;
        return false;
    }
    return CharToOemA(name, buffer);
}
