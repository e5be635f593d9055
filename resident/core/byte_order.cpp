#include "resident/core/byte_order.h"

int FlipWord(unsigned short value) { return (value >> 8) | ((value & 0xFF) << 8); }

unsigned long FlipLong(unsigned long value) { return __builtin_bswap32(value); }
