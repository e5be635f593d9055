#include "resident/core/rb_string.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstring>
#include <istream>
#include <ostream>
#include <string>

#include "resident/core/block_cache.h"
#include "resident/core/byte_order.h"
#include "resident/core/rb_country.h"
#include "resident/runtime/check.h"
#include "resources/jxsysres.h"

static constexpr Reporter kReports("JXRESIDT\\RBSTRING.CPP");

// What charAt hands out when there is no such character.
static char dummyCharacter;

static unsigned int TextLength(const char* text) { return text ? std::strlen(text) : 0; }

static unsigned char* AllocBuffer(unsigned int size) {
    return static_cast<unsigned char*>(TakeBlock(size));
}

BaseString::BaseString() : mpRep(new StringRep) {}

BaseString::BaseString(const char c) : mpRep(nullptr) {
    const char text[] = {c, 0};
    mpRep = c ? new StringRep(text, 0) : new StringRep;
}

BaseString::BaseString(const char* text, unsigned int capacity)
    : mpRep(new StringRep(text, capacity)) {}

BaseString::BaseString(const unsigned char* pascalText) : mpRep(new StringRep(pascalText)) {}

BaseString::BaseString(const BaseString& other) : mpRep(Share(other)) {}

BaseString::~BaseString() { AdoptRep(nullptr); }

void BaseString::AdoptRep(StringRep* rep) {
    if (--mpRep->mwRefCount == 0)
        delete mpRep;
    mpRep = rep;
}

StringRep* BaseString::Share(const BaseString& other) {
    // The count is 16 bits wide: one holder more than it can count gets a copy.
    if (other.mpRep->mwRefCount == USHRT_MAX) {
        StringRep* copy = new StringRep;
        const unsigned int length = other.Length();
        std::memcpy(copy->AllocMem(length + 2), other.Pascal(), length + 2);
        copy->miLength = length;
        return copy;
    }
    ++other.mpRep->mwRefCount;
    return other.mpRep;
}

BaseString& BaseString::puts(const BaseString& other) {
    AdoptRep(Share(other));
    return *this;
}

BaseString& BaseString::puts(const char* text, unsigned int n) {
    const unsigned int size = n ? n : TextLength(text);
    if (size > StringRep::keMaxLength) {
        RBString::Error(keStringTooLong);
        return *this;
    }
    const unsigned int length = text && n ? strnlen(text, n) : TextLength(text);
    return Assign(text, length, size);
}

// `length` characters in a buffer with room for `room`.
BaseString& BaseString::Assign(const char* text, unsigned int length, unsigned int room) {
    unsigned char* buffer = AllocBuffer(room + 2);
    if (length)
        std::memcpy(buffer + 1, text, length);
    buffer[1 + length] = 0;
    return Adopt(buffer, length);
}

BaseString& BaseString::puts(const unsigned char* pascalText) {
    const unsigned char length = pascalText ? pascalText[0] : 0;
    Assign(length ? reinterpret_cast<const char*>(pascalText) + 1 : nullptr, length, length);
    // Not capped: the length byte of a Pascal string stays as it is.
    mpRep->mpBuffer[0] = length;
    return *this;
}

BaseString& BaseString::puts(std::string_view text) {
    return Assign(text.data(), text.size(), text.size());
}

BaseString& BaseString::puts(const char c) {
    const char text[] = {c, 0};
    return puts(text);
}

BaseString& BaseString::concat(const BaseString& other) {
    return other.LengthByte() ? Append(other.Text(), TextLength(other.Text())) : *this;
}

BaseString& BaseString::concat(const char* text) { return Append(text, TextLength(text)); }

BaseString& BaseString::concat(const unsigned char* pascalText) {
    return pascalText ? Append(reinterpret_cast<const char*>(pascalText) + 1, pascalText[0])
                      : *this;
}

BaseString& BaseString::concat(const char c) {
    const char text[] = {c, 0};
    return concat(text);
}

BaseString& BaseString::Append(const char* text, unsigned int n) {
    if (n == 0)
        return *this;
    if (n > StringRep::keMaxLength || Length() > StringRep::keMaxLength - n) {
        RBString::Error(keStringTooLong);
        return *this;
    }
    // Not behind the recorded length: a caller may be in the middle of writing the text.
    const unsigned int own = LengthByte() ? strnlen(Text(), Length()) : 0;
    unsigned char* buffer = AllocBuffer(Length() + n + 2);
    std::memcpy(buffer + 1, Text(), own);
    std::memcpy(buffer + 1 + own, text, n);
    buffer[1 + own + n] = 0;
    return Adopt(buffer, own + std::strlen(reinterpret_cast<const char*>(buffer) + 1 + own));
}

BaseString& BaseString::Truncate(unsigned int n) {
    if (n >= Length())
        return *this;
    if (RbCountry::Instance()->GetCountry() == 0)
        n = DoubleByteAdjLen(Text(), n);
    if (mpRep->mwRefCount == 1)
        WritableText()[n] = 0;
    else
        ReAllocMem(n + 2);
    SetLength();
    return *this;
}

BaseString& BaseString::reset() {
    checkdelrep();
    mpRep->mpBuffer = mpRep->mNullBuffer;
    mpRep->mwRefCount = 1;
    mpRep->miLength = 0;
    return *this;
}

char* BaseString::charAt(unsigned int i) {
    if (i >= 1 && i <= Length())
        return reinterpret_cast<char*>(mpRep->mpBuffer) + i;
    RBString::Error(keStringIndexOutOfRange);
    return &dummyCharacter;
}

BaseString& BaseString::Upper() {
    if (Length())
        CharUpperBuffA(WritableText(), Length());
    return *this;
}

BaseString& BaseString::Lower() {
    if (Length())
        CharLowerBuffA(WritableText(), Length());
    return *this;
}

bool BaseString::SetCharUpper(unsigned int i) {
    char* position = charAt(i);
    char upper = *position;
    CharUpperBuffA(&upper, 1);
    if (upper)
        *position = upper;
    return upper != 0;
}

bool BaseString::IsCharUpperA(unsigned int i) { return ::IsCharUpperA(*charAt(i)); }

int BaseString::StrICmp(const BaseString& other) const { return lstrcmpiA(Text(), other.Text()); }

int BaseString::operator==(const BaseString& other) const {
    return lstrcmpA(Text(), other.Text()) == 0;
}
int BaseString::operator==(const char* text) const { return lstrcmpA(Text(), text) == 0; }
int BaseString::operator!=(const BaseString& other) const { return !(*this == other); }
int BaseString::operator!=(const char* text) const { return !(*this == text); }
int BaseString::operator<(const BaseString& other) const {
    return lstrcmpA(Text(), other.Text()) < 0;
}
int BaseString::operator>(const BaseString& other) const {
    return lstrcmpA(Text(), other.Text()) > 0;
}
int BaseString::operator==(const unsigned char* pascalText) const {
    // The length bytes first: a shorter Pascal string ends before this one's text does.
    return pascalText && LengthByte() == pascalText[0] &&
           std::memcmp(Pascal() + 1, pascalText + 1, LengthByte()) == 0;
}
int BaseString::operator!=(const unsigned char* pascalText) const { return !(*this == pascalText); }

char* BaseString::AdjustSize(unsigned int n) {
    if (n > StringRep::keMaxLength) {
        RBString::Error(keStringTooLong);
    } else if (n == 0) {
        SetLength();
        const unsigned int length = Length();
        ReAllocMem(length + 2);
        SetLength();
    } else if (Length() == 0) {
        unsigned char* buffer = AllocMem(n + 2);
        buffer[0] = buffer[1] = 0;
        mpRep->miLength = 0;
    } else {
        // The recorded length stays, and so does room for it: what trusts it stays in the buffer.
        const unsigned int length = Length();
        ReAllocMem(std::max(n, length) + 2);
        char* const text = WritableText();
        const unsigned int kept = std::min<unsigned int>(strnlen(text, length), n);
        std::memset(text + kept, 0, length + 1 - kept);
        mpRep->mpBuffer[0] = std::min<unsigned int>(length, StringRep::keMaxLengthByte);
    }
    return WritableText();
}

// A recorded length that no longer fits would be read past the new buffer's end.
static unsigned int FittingLength(unsigned int length, unsigned int size) {
    return std::min(length, std::max(size, 2u) - 2);
}

unsigned char* BaseString::AllocMem(unsigned int size) {
    // After a detach there is no text, and no length either.
    checkdelrep();
    mpRep->miLength = FittingLength(Length(), size);
    return mpRep->AllocMem(std::max(size, 2u));
}

unsigned char* BaseString::ReAllocMem(unsigned int size) {
    size = std::max(size, 2u);
    unsigned char* buffer = AllocBuffer(size);
    const unsigned int length = FittingLength(Length(), size);
    buffer[0] = buffer[1] = 0;
    if (LengthByte()) {
        const unsigned int kept = std::min<unsigned int>(strnlen(Text(), size - 2), size - 2);
        std::memcpy(buffer, Pascal(), kept + 1);
        buffer[kept + 1] = 0;
        buffer[size - 1] = 0;
    }
    checkdelrep();
    mpRep->mpBuffer = buffer;
    mpRep->miLength = length;
    return buffer;
}

void BaseString::checkdelrep() {
    if (mpRep->mwRefCount >= 2) {
        StringRep* rep = new StringRep;
        --mpRep->mwRefCount;
        mpRep = rep;
    } else {
        mpRep->FreeBuffer();
    }
}

BaseString& BaseString::Adopt(unsigned char* buffer, unsigned int length) {
    checkdelrep();
    mpRep->mpBuffer = buffer;
    mpRep->mwRefCount = 1;
    SetLength(length);
    return *this;
}

void BaseString::SetLength(unsigned int length) {
    mpRep->miLength = length;
    mpRep->mpBuffer[0] = std::min<unsigned int>(length, StringRep::keMaxLengthByte);
}

void BaseString::SetLength() { SetLength(std::strlen(Text())); }

// The texts' lengths, under the rules by which the rep's constructor copies them.
static unsigned int SumOfLengths(const char* first, unsigned short count, va_list args) {
    unsigned long long total = 0;
    const char* text = first;
    for (unsigned short n = 0; text && n < count && total <= StringRep::keMaxLength;) {
        total += std::strlen(text);
        if (++n < count)
            text = va_arg(args, const char*);
    }
    return static_cast<unsigned int>(std::min<unsigned long long>(total, UINT_MAX));
}

RBString::RBString() = default;
RBString::RBString(const char c) : BaseString(c) {}
RBString::RBString(const char* text, unsigned int capacity) : BaseString(text, capacity) {}
RBString::RBString(const unsigned char* pascalText) : BaseString(pascalText) {}
RBString::RBString(const BaseString& other) : BaseString(other) {}
RBString::RBString(const RBString& other) : BaseString(other) {}

RBString::RBString(unsigned short count, const char* first, ...) : BaseString() {
    va_list args;
    va_start(args, first);
    va_list sumArgs;
    va_copy(sumArgs, args);
    const unsigned int total = SumOfLengths(first, count, sumArgs);
    va_end(sumArgs);
    if (total > StringRep::keMaxLength)
        Error(keStringTooLong);
    AdoptRep(new StringRep(first, total, count, args));
    va_end(args);
}

RBString::RBString(unsigned int id, void* hInstance) { getResource(id, hInstance); }

RBString::~RBString() = default;

RBString& RBString::operator=(const RBString& other) {
    puts(other);
    return *this;
}

RBString& RBString::operator=(const BaseString& other) {
    puts(other);
    return *this;
}

RBString& RBString::operator=(const char* text) {
    puts(text);
    return *this;
}

RBString& RBString::getResource(unsigned int id, void* hInstance) {
    reset();
    char text[256];
    if (LoadStringA(static_cast<HINSTANCE>(hInstance), id, text, 255))
        puts(text);
    return *this;
}

RBString& RBString::StripChars(char c, unsigned int where) {
    std::string text(Text());
    if (where & keStripTrailing)
        text.resize(text.find_last_not_of(c) + 1);
    if (where & keStripLeading)
        text.erase(0, text.find_first_not_of(c));
    puts(text.c_str());
    return *this;
}

void RBString::Error(StringError) {
    const auto resources = static_cast<HINSTANCE>(GetJxSystemResHandle());
    char caption[256] = "";
    char text[256] = "";
    LoadStringA(resources, 149, caption, 255);
    LoadStringA(resources, 3409, text, 255);
    MessageBoxA(nullptr, text, caption, MB_TASKMODAL | MB_ICONSTOP);
}

std::ostream& operator<<(std::ostream& out, const RBString& string) {
    const unsigned long length = FlipLong(string.Length());
    out.write(reinterpret_cast<const char*>(&length), sizeof length);
    if (out.good())
        out.write(string.Text(), string.Length());
    return out;
}

// Reads `length` bytes of text into a new buffer that grows with what the stream really holds: a
// damaged length is never allocated. Returns null when the stream ends before.
static unsigned char* ReadText(std::istream& in, unsigned int length) {
    constexpr unsigned int kTrusted = 0x10000;
    unsigned int room = std::min(length, kTrusted);
    unsigned int held = 0;
    unsigned char* buffer = AllocBuffer(room + 2);
    while (in.read(reinterpret_cast<char*>(buffer) + 1 + held, room - held)) {
        held = room;
        if (held == length) {
            buffer[1 + length] = 0;
            return buffer;
        }
        room = length - held > held ? held * 2 : length;
        unsigned char* larger = AllocBuffer(room + 2);
        std::memcpy(larger + 1, buffer + 1, held);
        GiveBlock(buffer);
        buffer = larger;
    }
    GiveBlock(buffer);
    return nullptr;
}

std::istream& operator>>(std::istream& in, RBString& string) {
    unsigned long length = 0;
    in.read(reinterpret_cast<char*>(&length), sizeof length);
    length = std::min<unsigned long>(FlipLong(length), StringRep::keMaxLength);
    unsigned char* buffer = in.good() && length ? ReadText(in, length) : nullptr;
    if (buffer)
        string.Adopt(buffer, length);
    else
        string.reset();
    return in;
}

bool LStrNCpyAndNullTerminate(char* pszCopyTo, const char* pszCopyFrom, unsigned int iiBufSize) {
    kReports.CheckAt(47, iiBufSize > 1, "iiBufSize > 1");
    kReports.CheckAt(48, pszCopyTo != nullptr && pszCopyFrom != nullptr,
                     "pszCopyTo != NULL && pszCopyFrom != NULL");
    if (!pszCopyTo || iiBufSize == 0)
        return false;
    if (!pszCopyFrom)
        pszCopyFrom = "";
    lstrcpynA(pszCopyTo, pszCopyFrom, static_cast<int>(std::min<unsigned int>(iiBufSize, INT_MAX)));
    pszCopyTo[iiBufSize - 1] = 0;
    return std::strlen(pszCopyFrom) <= iiBufSize - 1;
}
