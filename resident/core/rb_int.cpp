#include "resident/core/rb_int.h"

#include <istream>
#include <ostream>

#include "resident/core/byte_order.h"

RBInt::RBInt() = default;

RBInt::RBInt(short value) : mwBigEndian(FlipWord(value)) {}

RBInt& RBInt::operator=(short value) {
    mwBigEndian = FlipWord(value);
    return *this;
}

RBInt RBInt::Store(unsigned int result) {
    mwBigEndian = FlipWord(static_cast<unsigned short>(result));
    // The constructor swaps the stored word once more: linked programs expect the exchanged copy.
    return RBInt(static_cast<short>(mwBigEndian));
}

RBInt RBInt::operator+=(short operand) { return Store(MachineValue() + operand); }
RBInt RBInt::operator-=(short operand) { return Store(MachineValue() - operand); }
RBInt RBInt::operator*=(short operand) {
    return Store(static_cast<unsigned int>(MachineValue()) * static_cast<unsigned int>(operand));
}
RBInt RBInt::operator/=(short operand) { return Store(MachineValue() / operand); }
RBInt RBInt::operator%=(short operand) { return Store(MachineValue() % operand); }
RBInt RBInt::operator&=(short operand) { return Store(MachineValue() & operand); }
RBInt RBInt::operator^=(short operand) { return Store(MachineValue() ^ operand); }
RBInt RBInt::operator|=(short operand) { return Store(MachineValue() | operand); }
RBInt RBInt::operator<<=(short operand) {
    return Store(static_cast<unsigned int>(MachineValue()) << (operand & 31));
}
RBInt RBInt::operator>>=(short operand) {
    return Store(static_cast<unsigned int>(MachineValue()) >> (operand & 31));
}
RBInt RBInt::operator++() { return Store(MachineValue() + 1); }
RBInt RBInt::operator--() { return Store(MachineValue() - 1); }

std::ostream& operator<<(std::ostream& out, RBInt& value) {
    return out.write(reinterpret_cast<const char*>(&value.mwBigEndian), sizeof value.mwBigEndian);
}

std::istream& operator>>(std::istream& in, RBInt& value) {
    return in.read(reinterpret_cast<char*>(&value.mwBigEndian), sizeof value.mwBigEndian);
}
