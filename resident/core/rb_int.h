#pragma once

#include <iosfwd>

#include "resident/core/jx_api.h"

// A 16-bit integer kept in big-endian byte order, so that it can stand in a record of a shared file
// and be written as it is: 2 bytes, high byte first.
//
// The arithmetic operators change the object and return a new RBInt whose two bytes are exchanged
// against the object's. Linked programs have always had it so; use the object, not the result.
class JX_API RBInt {
public:
    // 0, or a value in the machine's order.
    RBInt();
    RBInt(short value);
    RBInt(const RBInt& other) = default;

    RBInt& operator=(const RBInt& other) = default;
    // Takes a value in the machine's order.
    RBInt& operator=(short value);

    // The value in the machine's order, signed: one of 0x8000 or more reads as negative. Where a
    // field is unsigned, cast it: static_cast<unsigned short>(record.index).
    operator short() const { return static_cast<short>(MachineValue()); }

    // The stored value counts as unsigned, `operand` as signed; 32-bit results keep their low 16
    // bits. A zero divisor is the processor's division fault.
    RBInt operator+=(short operand);
    RBInt operator-=(short operand);
    RBInt operator*=(short operand);
    RBInt operator/=(short operand);
    RBInt operator%=(short operand);
    RBInt operator&=(short operand);
    RBInt operator^=(short operand);
    RBInt operator|=(short operand);
    // Shift by the low five bits of `operand`; to the right, zeros come in.
    RBInt operator<<=(short operand);
    RBInt operator>>=(short operand);
    RBInt operator++();
    RBInt operator--();

    // The two stored bytes, unformatted.
    friend JX_API std::ostream& operator<<(std::ostream& out, RBInt& value);
    friend JX_API std::istream& operator>>(std::istream& in, RBInt& value);

private:
    int MachineValue() const { return __builtin_bswap16(mwBigEndian); }
    RBInt Store(unsigned int result);

    unsigned short mwBigEndian = 0;
};
