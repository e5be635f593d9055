#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "postrider.h"

TEST(ByteOrder, FlipsExchangeAllBytes) {
    EXPECT_EQ(FlipWord(0x00FF), 0xFF00);
    EXPECT_EQ(FlipWord(0x1234), 0x3412);
    EXPECT_EQ(FlipLong(0x11223344), 0x44332211u);
}

TEST(RbInt, StandsInMemoryAndStreamsHighByteFirst) {
    RBInt value(0x1234);
    EXPECT_EQ(std::memcmp(&value, "\x12\x34", 2), 0);
    std::stringstream stream;
    stream << value;
    EXPECT_EQ(stream.str(), "\x12\x34");
    RBInt read;
    stream >> read;
    EXPECT_EQ(read, 0x1234);
}
