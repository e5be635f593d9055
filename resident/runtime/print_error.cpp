#include <cstdarg>
#include <cstdio>

#include "postrider_ticker.h"
#include "resident/core/rb_string.h"
#include "resident/core/windows_api.h"

int __cdecl PrintError(unsigned int textId, unsigned int captionId, int, void* instance, ...) {
    const RBString format(textId, instance);
    const RBString caption(captionId, instance);
    char text[256];
    va_list args;
    va_start(args, instance);
    std::vsnprintf(text, sizeof text, format.Text(), args);
    va_end(args);
    return MessageBoxA(nullptr, text, caption.Text(), MB_OK);
}
