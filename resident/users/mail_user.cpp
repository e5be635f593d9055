#include "resident/users/mail_user.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

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
            return 0;
        return theirs == TypeClass::B ? CompareNames(mstrName, other.mstrName) < 0 : 1;
    case TypeClass::C:
        if (theirs == TypeClass::A || theirs == TypeClass::B)
            return 0;
        return CompareNames(mstrName, other.mstrName) < 0;
    default:
        // Two users of class A are each less than the other; lists rely on it.
        return 1;
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
        return 0;
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
    if (!std::strchr(name.Text(), '|')) {
        out = name;
        return out;
    }
    // A share of the name, so that `out` may be it.
    const RBString kept(name);
    return OrderedUserName(out, std::string_view(kept.Text()), flags);
}

RBString& MailUser::OrderedUserName(RBString& out, std::string_view name, unsigned short flags) {
    // Bar and end in one pass: a notifier's walk comes here for every message.
    std::size_t bar = name.npos;
    std::size_t length = 0;
    for (; length != name.size() && name[length]; ++length)
        if (name[length] == '|' && bar == name.npos)
            bar = length;
    name = std::string_view(name.data(), length);
    if (bar == name.npos) {
        out.puts(name, {}, {});
        return out;
    }
    const bool givenFirst = flags & 1;
    const std::string_view between = givenFirst ? " " : ", ";
    std::string_view first(name.data(), bar);
    std::string_view last(name.data() + bar + 1, name.size() - bar - 1);
    if (givenFirst)
        std::swap(first, last);
    if (first.size() + between.size() + last.size() > keMaxDisplayName) {
        std::string whole(first);
        whole.append(between).append(last).resize(keMaxDisplayName);
        out.puts(whole, {}, {});
    } else {
        out.puts(first, between, last);
    }
    return out;
}

RBString& MailUser::OrderedUserName(RBString& out, unsigned short flags) {
    return OrderedUserName(out, mstrName, flags);
}

int MailUser::BoundryCheck(RBString& dest, const char* text, unsigned int limit) {
    if (!text || std::strlen(text) >= limit)
        return 0;
    dest.puts(text);
    return 1;
}

char MailUser::GetUserNameFirstChar() const {
    const char* const text = mstrName.Text();
    return *text == '|' ? text[1] : *text;
}
