#include "resident/users/mail_user.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <emmintrin.h>
#include <string>
#include <string_view>

#include "resident/core/translate_table.h"
#include "resident/core/windows_api.h"
#include "resident/files/rb_file.h"

MailUser::MailUser() = default;
MailUser::MailUser(MailUser& other) : BaseMailUser(other) {}
MailUser::MailUser(const MailUser& other) : BaseMailUser(other) {}
MailUser::MailUser(UserLRec* rec, UserLRec* cont) : BaseMailUser(rec, cont) {}

MailUser::MailUser(const char* name, const char* address, enumMessageFormat format,
                   enumEnclosureEncode encoding) {
    mMessageFormat = format;
    mEnclosureEncode = encoding;
    SetPlatformFromEncoding();
    mstrName.puts(name);
    mstrAddress.puts(address);
}

MailUser::MailUser(const char* name, const char* address, MailUserType type) {
    mType = type;
    mstrName.puts(name);
    mstrAddress.puts(address);
}

MailUser::MailUser(RBString& name, RbFile& file) {
    mType = keUserFile;
    mstrName = name;
    mstrAddress.puts(file.FullSpec());
}

MailUser::~MailUser() = default;

MailUser& MailUser::operator=(const MailUser& other) {
    BaseMailUser::operator=(other);
    return *this;
}

int MailUser::IsEqual(const MailUser& other) const { return BaseMailUser::operator==(other); }

// What names are compared by: their first 32 characters, bar and comma as spaces, one leading space
// left out.
static const char* ComparisonKey(const RBString& name, char (&buffer)[33]) {
    lstrcpynA(buffer, name.Text(), sizeof buffer);
    for (char* p = buffer; *p; ++p)
        if (*p == ',' || *p == '|')
            *p = ' ';
    return *buffer == ' ' ? buffer + 1 : buffer;
}

static int CompareNames(const RBString& left, const RBString& right) {
    char leftKey[33];
    char rightKey[33];
    return lstrcmpiA(ComparisonKey(left, leftKey), ComparisonKey(right, rightKey));
}

namespace {

enum class TypeClass { A, B, C, D };

TypeClass ClassOf(MailUserType type) {
    switch (type) {
    case 0x6000:
        return TypeClass::A;
    case keUserFile:
        return TypeClass::B;
    case 0x4000:
    case keUserOrdinary:
        return TypeClass::C;
    default:
        return TypeClass::D;
    }
}

} // namespace

int MailUser::IsLessThan(const MailUser& other) const {
    const TypeClass theirs = ClassOf(other.mType);
    switch (ClassOf(mType)) {
    case TypeClass::B:
        if (theirs == TypeClass::A)
            return false;
        return theirs == TypeClass::B ? CompareNames(mstrName, other.mstrName) < 0 : true;
    case TypeClass::C:
        if (theirs == TypeClass::A || theirs == TypeClass::B)
            return false;
        return CompareNames(mstrName, other.mstrName) < 0;
    default:
        // Two users of class A are each less than the other; lists rely on it.
        return true;
    }
}

int MailUser::IsGreaterThan(const MailUser& other) const {
    // Equal names count as greater here.
    if (mType == other.mType)
        return CompareNames(mstrName, other.mstrName) >= 0;
    const TypeClass theirs = ClassOf(other.mType);
    switch (ClassOf(mType)) {
    case TypeClass::B:
        return theirs == TypeClass::A;
    case TypeClass::C:
        return theirs == TypeClass::A || theirs == TypeClass::B;
    default:
        return false;
    }
}

// The text of a string for changes that its sharers see.
static char* SharedText(const RBString& string) { return const_cast<char*>(string.Text()); }

void MailUser::TranslateIn() {
    if (TranslateTable* table = TranslateTable::GetInstance())
        table->IncomingTranslate(SharedText(mstrName), mstrName.Length());
}

void MailUser::TranslateOut() {
    if (TranslateTable* table = TranslateTable::GetInstance())
        table->OutgoingTranslate(SharedText(mstrName), mstrName.Length());
}

RBString& MailUser::OrderedUserName(RBString& out, RBString& name, unsigned short flags) {
    const std::string_view whole(name.Text());
    const std::size_t bar = whole.find('|');
    if (bar == whole.npos) {
        out = name;
        return out;
    }
    std::string first(whole.substr(0, bar));
    std::string last(whole.substr(bar + 1));
    if (flags & 1)
        first.swap(last);
    first.append(flags & 1 ? " " : ", ").append(last);
    out.puts(std::string_view(first).substr(0, keMaxDisplayName));
    return out;
}

namespace {

// Puts what stands behind the bar at `bar`, a blank and what stands before it; the name alone where
// `bar` is the name's length. Copies of a fixed size, which take what follows in the record along,
// are done before a loop has begun.
[[gnu::always_inline]] inline unsigned int PutParts(char* to, const char* name, unsigned int bar,
                                                    unsigned int length) {
    constexpr unsigned int kSize = UserLRec::keNameSize;
    if (bar < length) {
        const unsigned int given = length - bar - 1;
        std::memcpy(to, name + bar + 1, kSize);
        to[given] = ' ';
        to += given + 1;
    }
    std::memcpy(to, name, kSize);
    to[bar] = 0;
    return length;
}

unsigned int PutByBytes(char* to, const char* name, unsigned int size) {
    const unsigned int length = strnlen(name, size);
    return PutParts(to, name, std::find(name, name + length, '|') - name, length);
}

// The same with a look at all characters at once: a notifier's walk comes here for every message.
[[gnu::target("sse2")]] unsigned int PutBySse2(char* to, const char* name, unsigned int size) {
    // Two halves of the field, which have a byte in common.
    constexpr unsigned int kHalf = UserLRec::keNameSize / 2 - 1;
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(name));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(name + kHalf));
    const auto places = [&](char wanted) __attribute__((target("sse2"))) {
        const __m128i all = _mm_set1_epi8(wanted);
        return static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(low, all)) |
                                         _mm_movemask_epi8(_mm_cmpeq_epi8(high, all)) << kHalf);
    };
    const unsigned int length = std::countr_zero(places(0) | 1u << size);
    return PutParts(to, name, std::countr_zero(places('|') | 1u << length), length);
}

const bool hasSse2 = IsProcessorFeaturePresent(PF_XMMI64_INSTRUCTIONS_AVAILABLE);

} // namespace

unsigned int MailUser::PutGivenFirst(char* to, const UserLRec& user) {
    const char* const name = reinterpret_cast<const char*>(user.name) + 1;
    return (hasSse2 ? PutBySse2 : PutByBytes)(to, name, user.name[0]);
}

RBString& MailUser::OrderedUserName(RBString& out, unsigned short flags) {
    return OrderedUserName(out, mstrName, flags);
}

int MailUser::BoundryCheck(RBString& dest, const char* text, unsigned int limit) {
    if (!text || std::strlen(text) >= limit)
        return false;
    dest.puts(text);
    return true;
}

char MailUser::GetUserNameFirstChar() const {
    const char* const text = mstrName.Text();
    return *text == '|' ? text[1] : *text;
}
