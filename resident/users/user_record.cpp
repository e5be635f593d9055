#include "resident/users/user_record.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>

#include "resident/users/base_mail_user.h"
#include "resident/users/put_pascal.h"

RBString FieldString(const unsigned char* field, unsigned int size) {
    unsigned char pascalText[256];
    pascalText[0] = std::min<unsigned int>(field[0], size - 1);
    std::memcpy(pascalText + 1, field + 1, pascalText[0]);
    return RBString(pascalText);
}

void PutPascal(const RBString& string, unsigned char* record, unsigned int at,
               unsigned int recordSize) {
    std::memcpy(record + at, string.Pascal(),
                std::min<unsigned int>(string.LengthByte() + 1, recordSize - at));
}

static char* ContinuationBytes() {
    return reinterpret_cast<char*>(BaseMailUser::msUlr) + sizeof(UserLRec);
}

std::ostream& operator<<(std::ostream& out, UserLRec& record) {
    out.write(reinterpret_cast<const char*>(&record), sizeof record);
    if (BaseMailUser::Continued())
        out.write(ContinuationBytes(), sizeof(UserContinuation));
    return out;
}

std::istream& operator>>(std::istream& in, UserLRec& record) {
    if (!in.read(reinterpret_cast<char*>(&record), sizeof record))
        return in;
    const std::streampos next = in.tellg();
    if (!in.read(ContinuationBytes(), sizeof(UserContinuation))) {
        // The end of the file is no error; a piece of a continuation stays in the buffer.
        in.clear();
        if (next != std::streampos(-1))
            in.seekg(next);
    } else if (!BaseMailUser::Continued()) {
        in.seekg(next);
    }
    return in;
}
