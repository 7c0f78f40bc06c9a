#include "sources/ByteReader.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr std::array<uint8_t, 6> kBytes = {0x81, 0x02, 'a', 'b', 0x00, 0xFF};

TEST(ByteReader, LatchesWhatDoesNotFit)
{
    const auto overruns = [](auto read) {
        ByteReader reader(kBytes);
        EXPECT_EQ(read(reader), 0U);
        return reader.Overrun();
    };
    EXPECT_TRUE(overruns([](ByteReader& r) { return r.U8(6); }));
    EXPECT_TRUE(overruns([](ByteReader& r) { return r.BE16(5); }));
    EXPECT_TRUE(overruns([](ByteReader& r) { return r.LE16(5); }));
    EXPECT_TRUE(overruns([](ByteReader& r) { return r.BE32(3); }));
    EXPECT_TRUE(overruns([](ByteReader& r) { return r.LE32(3); }));
    EXPECT_TRUE(overruns([](ByteReader& r) { return r.LE32(SIZE_MAX - 1); }));    // offset + size wraps
    EXPECT_TRUE(overruns([](ByteReader& r) { return r.Sub(3, SIZE_MAX - 1).Size(); }));
    EXPECT_TRUE(overruns([](ByteReader& r) { return r.Text(7).size(); }));

    ByteReader reader(kBytes);
    reader.U8(6);
    EXPECT_EQ(reader.U8(0), 0x81);
    EXPECT_TRUE(reader.Overrun()) << "a good read does not take the latch back";
}

}    // namespace
