#include "resident/users/sys_mail_user.h"
#include "resident/users/put_pascal.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>

unsigned char SysMailUser::ulrSys[2 * sizeof(SysUserLRec)];

static SysUserContinuation& Continuation() {
    return *reinterpret_cast<SysUserContinuation*>(SysMailUser::ulrSys + sizeof(SysUserLRec));
}

SysMailUser::SysMailUser() = default;
SysMailUser::SysMailUser(MailUser& other) : MailUser(other) {}
SysMailUser::SysMailUser(RBString&, RBString&) {}
SysMailUser::~SysMailUser() = default;

bool SysMailUser::IsContinued() {
    return Continuation().mark[0] == UserContinuation::keMark0 &&
           Continuation().mark[1] == UserContinuation::keMark1;
}

std::ostream& operator<<(std::ostream& out, SysUserLRec& record) {
    const auto* const bytes = reinterpret_cast<const char*>(&record);
    out.write(bytes, sizeof record);
    if (SysMailUser::IsContinued()) {
        // These 82 bytes end one behind the record: in the buffer, with the mark's first byte.
        out.write(bytes + 1, sizeof record - 1);
        out.put(static_cast<char>(Continuation().mark[0]));
    }
    return out;
}

std::istream& operator>>(std::istream& in, SysUserLRec& record) {
    if (!in.read(reinterpret_cast<char*>(&record), sizeof record))
        return in;
    const std::streampos next = in.tellg();
    if (!in.read(reinterpret_cast<char*>(&Continuation()), sizeof(SysUserContinuation))) {
        in.clear();
        in.seekg(next);
    } else if (!SysMailUser::IsContinued()) {
        in.seekg(next);
    }
    return in;
}

std::ostream& operator<<(std::ostream& out, SysMailUser& user) {
    std::memset(SysMailUser::ulrSys, 0, sizeof SysMailUser::ulrSys);
    SysUserLRec& record = SysMailUser::Record();
    PutPascal(user.mstrName, SysMailUser::ulrSys, 0, sizeof record);
    const RBString& address = user.mstrAddress;
    if (address.Length() < sizeof record.address) {
        PutPascal(address, SysMailUser::ulrSys, offsetof(SysUserLRec, address), sizeof record);
    } else {
        constexpr unsigned int first = sizeof record.address - 1;
        SysUserContinuation& rest = Continuation();
        record.address[0] = first;
        std::memcpy(record.address + 1, address.Text(), first);
        rest.mark[0] = UserContinuation::keMark0;
        rest.mark[1] = UserContinuation::keMark1;
        rest.text[0] = static_cast<unsigned char>(
            std::min<unsigned int>(address.Length() - first, sizeof rest.text - 1));
        std::memcpy(rest.text + 1, address.Text() + first, rest.text[0]);
    }
    return out << static_cast<const void*>(SysMailUser::ulrSys);
}

std::istream& operator>>(std::istream& in, SysMailUser& user) {
    std::memset(SysMailUser::ulrSys, 0, sizeof SysMailUser::ulrSys);
    SysUserLRec& record = SysMailUser::Record();
    in >> record;
    if (in.good()) {
        user.mstrName = FieldString(record.name, sizeof record.name);
        user.mstrAddress = FieldString(record.address, sizeof record.address);
        if (SysMailUser::IsContinued())
            user.mstrAddress.concat(FieldString(Continuation().text, sizeof Continuation().text));
    }
    return in;
}
