#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "resident/core/block_cache.h"
#include "resident/core/rb_string.h"

StringRep::StringRep() {
    InitVars();
    mpBuffer = mNullBuffer;
}

StringRep::StringRep(unsigned int size) : StringRep() {
    if (size == 0) {
        Error(keStringNoSize);
    } else if (size > keMaxLength) {
        Error(keStringSizeTooLarge);
    } else {
        AllocMem(size + 2);
        mpBuffer[0] = mpBuffer[1] = 0;
    }
}

StringRep::StringRep(const unsigned char* pascalText) : StringRep() {
    if (!pascalText)
        return;
    miLength = pascalText[0];
    AllocMem(miLength + 2);
    std::memcpy(mpBuffer, pascalText, miLength + 1);
    mpBuffer[miLength + 1] = 0;
}

StringRep::StringRep(const char* text, unsigned int capacity) : StringRep() {
    const unsigned int length = text ? std::strlen(text) : 0;
    SetText(text, length, capacity);
}

StringRep::StringRep(const char* first, unsigned int total, unsigned short count, void* rest)
    : StringRep() {
    if (!rest) {
        SetText(first, first ? std::strlen(first) : 0, 0);
        return;
    }
    if (total > keMaxLength)
        total = keMaxLength;
    AllocMem(total + 2);
    va_list args = static_cast<va_list>(rest);
    unsigned int length = 0;
    const char* text = first;
    for (unsigned short copied = 0; text && copied < count && length < total;) {
        const unsigned int n = std::min<unsigned int>(std::strlen(text), total - length);
        std::memcpy(mpBuffer + 1 + length, text, n);
        length += n;
        if (++copied < count)
            text = va_arg(args, const char*);
    }
    mpBuffer[1 + length] = 0;
    miLength = length;
    mpBuffer[0] = std::min<unsigned int>(length, keMaxLengthByte);
}

StringRep::~StringRep() { FreeBuffer(); }

unsigned char* StringRep::AllocMem(unsigned int size) {
    mpBuffer = static_cast<unsigned char*>(TakeBlock(size));
    return mpBuffer;
}

void StringRep::InitVars() {
    mwRefCount = 1;
    miLength = 0;
    mNullBuffer[0] = mNullBuffer[1] = 0;
}

unsigned char* StringRep::GetNullString() { return mNullBuffer; }

void StringRep::Error(StringError code) { RBString::Error(code); }

void* StringRep::operator new(std::size_t size) { return TakeBlock(size); }

void StringRep::operator delete(void* memory) {
    if (memory)
        GiveBlock(memory);
}

void StringRep::SetText(const char* text, unsigned int length, unsigned int capacity) {
    // A capacity above the largest length is ignored, one below the text's length raised to it.
    if (capacity > keMaxLength)
        capacity = 0;
    AllocMem(std::max(capacity, length) + 2);
    if (length)
        std::memcpy(mpBuffer + 1, text, length);
    mpBuffer[1 + length] = 0;
    miLength = length;
    mpBuffer[0] = std::min<unsigned int>(length, keMaxLengthByte);
}

void StringRep::FreeBuffer() {
    if (mpBuffer != mNullBuffer)
        GiveBlock(mpBuffer);
    mpBuffer = mNullBuffer;
}
