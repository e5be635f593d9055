#include "tests/fuzz/format.h"

Input::Input(const std::string& whole) : mChoices(whole.substr(0, keChoices)) {
    mChoices.resize(keChoices);
    if (whole.size() > keChoices)
        bytes = whole.substr(keChoices);
}

unsigned int Input::Number() {
    unsigned int number = 0;
    for (unsigned int i = 0; i < sizeof number; ++i)
        number = number << 8 | Choice();
    return number;
}

unsigned int Input::Below(unsigned int limit) {
    return limit ? (limit <= 256 ? Choice() : Number()) % limit : 0;
}

std::string Input::Text() {
    const unsigned int from = Below(bytes.size() + 1), size = Below(256);
    std::string text = bytes.substr(from, size);
    std::erase(text, '\0');
    return size == 255 ? std::string(10000, text.empty() ? 'x' : text[0]) : text;
}
