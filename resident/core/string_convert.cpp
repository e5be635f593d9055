// Line-end conversion and formatting members of BaseString.

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "resident/core/rb_string.h"

const char* BaseString::MacToPC(const char* source) {
    const std::string text(source ? source : Text());
    std::string converted;
    for (std::size_t at = 0;;) {
        const std::size_t stretchEnd = std::min(text.find('\r', at), text.size());
        // A stretch keeps the low 16 bits of its length: programs know texts cut so.
        converted.append(text, at, (stretchEnd - at) & 0xFFFF);
        if (stretchEnd == text.size())
            break;
        converted.append("\r\n");
        at = stretchEnd + 1;
    }
    puts(converted.c_str());
    return Text();
}

const char* BaseString::PCToMac(const char* source) {
    std::string text(source ? source : Text());
    StrCpySkipLFs(text.data(), text.c_str());
    puts(text.c_str());
    return Text();
}

void BaseString::StrCpySkipLFs(char* to, const char* from) {
    for (; *from; ++from)
        if (*from != '\n')
            *to++ = *from;
    *to = 0;
}

unsigned int BaseString::CalculateBufferSize(const char* format, void* args) {
    va_list words = static_cast<va_list>(args);
    unsigned int estimate = 0;
    for (const char* p = format; *p; ++p) {
        if (*p != '%' || !p[1])
            continue;
        switch (*++p) {
        case 'R':
        case 'r':
            va_arg(words, int);
            va_arg(words, int);
            estimate += 9;
            break;
        case 's':
        case 'S':
            if (const char* text = va_arg(words, const char*))
                estimate += std::strlen(text);
            break;
        default:
            va_arg(words, int);
            estimate += 9;
            break;
        }
    }
    const unsigned int length = std::strlen(format);
    return estimate ? estimate + length + 1 : length + 1025;
}

// Measures the text: CalculateBufferSize's estimate knows no widths and no arguments of two words,
// and a text could overrun it.
const char* BaseString::FormatText(const char* format, char* args) {
    va_list measured;
    va_copy(measured, args);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0)
        return reset().Text();
    std::string text(length, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, args);
    puts(text.c_str());
    return Text();
}

const char* BaseString::Sprintf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const char* text = FormatText(format ? format : "", args);
    va_end(args);
    return text;
}

const char* BaseString::Sprintf(unsigned int resourceId, void* instance, ...) {
    getResource(resourceId, instance);
    const std::string format(Text());
    va_list args;
    va_start(args, instance);
    const char* text = FormatText(format.c_str(), args);
    va_end(args);
    return text;
}

const char* BaseString::Sprintf(BaseString& format, ...) {
    const std::string formatText(format.Text());
    va_list args;
    va_start(args, format);
    const char* text = FormatText(formatText.c_str(), args);
    va_end(args);
    return text;
}
