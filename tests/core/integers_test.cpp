#include <gmock/gmock.h>

#include <sstream>

#include "tests/core/settings.h"

static std::string Stored(const RBInt& value) { return {reinterpret_cast<const char*>(&value), 2}; }

TEST(RbInt, StandsInMemoryAndStreamsHighByteFirst) {
    RBInt value(0x1234);
    std::stringstream stream;
    stream << value;
    EXPECT_EQ(Stored(value) + stream.str(), "\x12\x34\x12\x34");
    stream.str("\x20\x0A"); // a blank and a line feed are bytes like others
    stream >> value;
    EXPECT_EQ(Stored(value), "\x20\x0A");
}

TEST(RbInt, ComputesUnsignedWithASignedOperandAndReturnsTheBytesExchanged) {
    const struct {
        RBInt (*change)(RBInt& x);
        int from, high, low;
    } cases[] = {
        {[](RBInt& x) { return x -= 2; }, 1, 0xFF, 0xFF},
        {[](RBInt& x) { return x *= 32767; }, 0xFFFF, 0x80, 0x01},
        {[](RBInt& x) { return x /= 2; }, 0xFFFF, 0x7F, 0xFF},
        {[](RBInt& x) { return x %= -10; }, 0xFFFF, 0x00, 0x05},
        {[](RBInt& x) { return x &= -256; }, 0xABCD, 0xAB, 0x00},
        {[](RBInt& x) { return x <<= 31; }, 0xFFFF, 0x00, 0x00},
        {[](RBInt& x) { return x >>= -31; }, 0x8000, 0x40, 0x00},
        {[](RBInt& x) { return ++x; }, 0xFFFF, 0x00, 0x00},
    };
    for (const auto& [change, from, high, low] : cases) {
        RBInt value(static_cast<short>(from));
        const RBInt returned = change(value);
        EXPECT_THAT(Stored(value), testing::ElementsAre(char(high), char(low)));
        EXPECT_THAT(Stored(returned), testing::ElementsAre(char(low), char(high)));
    }
}

TEST(RbRefCounter, TellsOfZeroAndReportsACountOutOfRange) {
    Reports reports;
    RbRefCounter counter(1), full(0);
    counter.Increment();
    EXPECT_FALSE(counter.Decrement());
    EXPECT_TRUE(counter.Decrement());
    EXPECT_EQ(reports.Shown().size(), 0u);
    std::stringstream counts;
    counter.Decrement();
    counts << counter << ' ';
    counter.Increment();
    std::istringstream("2147483647") >> full;
    full.Increment();
    counts << counter << ' ' << full;
    EXPECT_EQ(counts.str(), "-1 0 -2147483648");
    const std::string over = ReportText("(mlCount+1) > 0", "", 67, "JXRESIDT\\RBCOUNTR.CPP");
    const std::string under = ReportText("mlCount >= 1", "", 77, "JXRESIDT\\RBCOUNTR.CPP");
    EXPECT_THAT(reports.Texts(), testing::ElementsAre(under, over, over));
}
