#include "playback/PackParser.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

// Writes and reads fields bit by bit, as ISO/IEC 13818-1 lists them: no arithmetic in common with the parser.
class Bits {
public:
    explicit Bits(Bytes& bytes, size_t at = 0)
        : m_Bytes(bytes)
        , m_nBit(at * 8)
    {
    }
    Bits& Put(uint64_t value, int count)
    {
        for (int i = count - 1; i >= 0; --i, ++m_nBit) {
            if (m_nBit / 8 >= m_Bytes.size()) {
                m_Bytes.push_back(0);
            }
            const auto bit = static_cast<unsigned char>(0x80 >> m_nBit % 8);
            m_Bytes[m_nBit / 8] = static_cast<unsigned char>((value >> i & 1) != 0 ? m_Bytes[m_nBit / 8] | bit : m_Bytes[m_nBit / 8] & ~bit);
        }
        return *this;
    }
    uint64_t Get(int count)
    {
        uint64_t value = 0;
        for (; count > 0; --count, ++m_nBit) {
            value = value << 1 | (m_Bytes.at(m_nBit / 8) >> (7 - m_nBit % 8) & 1);
        }
        return value;
    }
    // A 33-bit stamp in three pieces, each followed by a marker bit.
    Bits& PutStamp(uint64_t stamp) { return Put(stamp >> 30, 3).Put(1, 1).Put(stamp >> 15, 15).Put(1, 1).Put(stamp, 15).Put(1, 1); }
    uint64_t GetStamp()
    {
        uint64_t stamp = 0;
        for (const int piece : {3, 15, 15}) {
            stamp = stamp << piece | Get(piece);
            EXPECT_EQ(Get(1), 1U) << "marker bit";
        }
        return stamp;
    }

private:
    Bytes& m_Bytes;
    size_t m_nBit;
};

class Stream {
public:
    Stream& Pack(uint64_t clock, int stuffing = 0)    // 2.5.3.3
    {
        Bits(m_Bytes, m_Bytes.size())
            .Put(0x000001BA, 32)
            .Put(1, 2)
            .PutStamp(clock)
            .Put(299, 9)
            .Put(1, 1)
            .Put(12345, 22)
            .Put(3, 2)
            .Put(31, 5)
            .Put(static_cast<uint64_t>(stuffing), 3);
        m_Bytes.insert(m_Bytes.end(), static_cast<size_t>(stuffing), 0xFF);
        return *this;
    }
    Stream& MPEG1Pack(uint64_t clock)
    {
        Bits(m_Bytes, m_Bytes.size()).Put(0x000001BA, 32).Put(2, 4).PutStamp(clock).Put(1, 1).Put(12345, 22).Put(1, 1);
        return *this;
    }
    Stream& SystemHeader(int entries)    // 2.5.3.5
    {
        Bits bits(m_Bytes, m_Bytes.size());
        bits.Put(0x000001BB, 32).Put(static_cast<uint64_t>(6 + 3 * entries), 16).Put(1, 1).Put(12345, 22).Put(1, 1).Put(0, 24);
        for (int i = 0; i < entries; ++i) {
            bits.Put(0xE0 + static_cast<uint64_t>(i), 8).Put(3, 2).Put(58, 14);
        }
        return *this;
    }
    Stream& Packet(unsigned id, std::optional<uint64_t> pts = {}, std::optional<uint64_t> dts = {}, size_t payload = 40)    // 2.4.3.7
    {
        Bytes packet;
        Bits bits(packet);
        const unsigned flags = dts ? 3 : pts ? 2 : 0;
        const unsigned header = flags == 3 ? 10 : flags == 2 ? 5 : 0;
        bits.Put(0x00000100 + id, 32).Put(3 + header + payload, 16).Put(2, 2).Put(0, 6).Put(flags, 2).Put(0, 6).Put(header, 8);
        if (pts) {
            bits.Put(flags, 4).PutStamp(*pts);
        }
        if (dts) {
            bits.Put(1, 4).PutStamp(*dts);
        }
        packet.insert(packet.end(), payload, 0x55);
        m_Bytes.insert(m_Bytes.end(), packet.begin(), packet.end());
        return *this;
    }
    Stream& Raw(std::initializer_list<unsigned char> bytes)
    {
        m_Bytes.insert(m_Bytes.end(), bytes);
        return *this;
    }
    size_t Size() const { return m_Bytes.size(); }
    Bytes m_Bytes;
};

class Owner : public PackParserOwner {
public:
    bool RestInWalk() override { return ++rests >= 2; }
    int rests = 0;
};

class PackParserTest : public ::testing::Test {
protected:
    // Parses the stream in place; what was printed.
    std::string Parse(Bytes& bytes)
    {
        testing::internal::CaptureStdout();
        m_Parser.Parse(bytes.data(), static_cast<int>(bytes.size()), m_Owner);
        return testing::internal::GetCapturedStdout();
    }
    static uint64_t ClockAt(Bytes& bytes, size_t pack)
    {
        Bits bits(bytes, pack);
        EXPECT_EQ(bits.Get(32), 0x000001BAU);
        EXPECT_EQ(bits.Get(2), 1U);
        const uint64_t clock = bits.GetStamp();
        EXPECT_EQ(bits.Get(9), 299U);    // the extension is left alone
        return clock;
    }
    static uint64_t StampAt(Bytes& bytes, size_t at, unsigned prefix)
    {
        Bits bits(bytes, at);
        EXPECT_EQ(bits.Get(4), prefix);
        return bits.GetStamp();
    }
    PackParser m_Parser;
    Owner m_Owner;
};

TEST_F(PackParserTest, LeavesAContinuousStreamAlone)
{
    Stream stream;
    stream.Pack(900000, 5).SystemHeader(3).Packet(0xE0, 903000).Packet(0xC0, 904000);
    stream.Pack(903600).Packet(0xBD, 905000).Packet(0xBE).Pack(903600 + 20000).Packet(0xE0);
    Bytes bytes = stream.m_Bytes;
    EXPECT_EQ(Parse(bytes), "");
    EXPECT_EQ(bytes, stream.m_Bytes);
}

TEST_F(PackParserTest, MovesClockAndStampsOverAJump)
{
    // Three packs of 1000 ticks and 500 bytes each, then a recording with a clock of its own.
    Stream stream;
    for (uint64_t i = 0; i < 3; ++i) {
        stream.Pack(500000 + i * 1000).Packet(0xE0, 600000, 590000, 500 - 14 - 19 + 14);
    }
    const size_t jump = stream.Size();
    stream.Pack(77).Packet(0xE0, 3077, 2077);
    const size_t last = stream.Size();
    stream.Pack(1077).Packet(0xC0, 5077);
    const std::string printed = Parse(stream.m_Bytes);

    // The clock went 1000 ticks over the 500 bytes between two packs, and 500 bytes follow the last one.
    EXPECT_EQ(printed, "Discontinuity on PCR! prev: 502000 cur:77\n  Prev PCR offset: 0\n  New  PCR offset: 501923\n  pcr adj = 1000\n");
    EXPECT_EQ(ClockAt(stream.m_Bytes, jump), 503000U);
    EXPECT_EQ(StampAt(stream.m_Bytes, jump + 14 + 9, 2), 506000U);
    EXPECT_EQ(StampAt(stream.m_Bytes, jump + 14 + 14, 3), 505000U);
    EXPECT_EQ(ClockAt(stream.m_Bytes, last), 504000U);
    EXPECT_EQ(StampAt(stream.m_Bytes, last + 14 + 9, 2), 508000U);    // prefix 0010, although no DTS follows

    m_Parser.Reset();
    Stream again;
    again.Pack(77);
    const Bytes before = again.m_Bytes;
    Parse(again.m_Bytes);
    EXPECT_EQ(again.m_Bytes, before);
}

TEST_F(PackParserTest, TellsAJumpFromAStep)
{
    struct Case {
        uint64_t first, second;
        bool jump;
    };
    const Case kCases[] = {{5000, 25000, false}, {5000, 25001, true}, {5000, 4999, true}, {5000, 5000, false}, {0, 900000, false},
        {0x7FFFFFFF, 0x80000000, true}, {0x90000000, 0x90000001, false}};
    for (const Case& c : kCases) {
        m_Parser.Reset();
        Stream stream;
        stream.Pack(c.first).Packet(0xE0).Pack(c.second);
        EXPECT_EQ(!Parse(stream.m_Bytes).empty(), c.jump) << c.first << " " << c.second;
    }
    // Bit 31 is a sign and bit 32 is not read; all 33 bits are written.
    m_Parser.Reset();
    Stream stream;
    stream.Pack(0x80000000);
    EXPECT_EQ(Parse(stream.m_Bytes), "");
    EXPECT_EQ(ClockAt(stream.m_Bytes, 0), 0x180000000U);
}

TEST_F(PackParserTest, IgnoresAnAdjustmentOutOfRange)
{
    Stream stream;
    stream.Pack(1000).Packet(0xE0, {}, {}, 5).Pack(21000).Packet(0xE0, {}, {}, 60000).Pack(50);
    const size_t jump = stream.Size() - 14;
    EXPECT_NE(Parse(stream.m_Bytes).find("pcr adj out of range. Ignored.\n"), std::string::npos);
    EXPECT_EQ(ClockAt(stream.m_Bytes, jump), 21000U);
}

TEST_F(PackParserTest, StopsForGoodAtAnMPEG1Pack)
{
    Stream stream;
    stream.Pack(500000).Packet(0xE0).MPEG1Pack(500).Pack(10);
    Bytes bytes = stream.m_Bytes;
    EXPECT_EQ(Parse(bytes), "");
    EXPECT_EQ(bytes, stream.m_Bytes);
    Stream next;
    next.Pack(900).Pack(10);
    bytes = next.m_Bytes;
    EXPECT_EQ(Parse(bytes), "");
    EXPECT_EQ(bytes, next.m_Bytes);
    m_Parser.Reset();
    EXPECT_NE(Parse(bytes), "");
}

TEST_F(PackParserTest, TellsLostBytesAndEnds)
{
    Stream garbage;
    garbage.m_Bytes.assign(40000, 0x00);
    EXPECT_EQ(Parse(garbage.m_Bytes), std::string(40000, '.') + "lost sync in buffer!\n");
    Stream mixed;
    mixed.Raw({1, 2, 3}).Pack(5000).Raw({9}).Packet(0xE0).Raw({0, 0, 1, 0xE0, 0, 0, 7, 7});
    EXPECT_EQ(Parse(mixed.m_Bytes), "....Packet length zero!\n");
    Stream ended;
    ended.Pack(5100).Raw({0, 0, 1, 0xB9}).Raw({1, 2, 3, 4});
    EXPECT_EQ(Parse(ended.m_Bytes), "");
}

TEST_F(PackParserTest, EndlessWalkRestsUntilItsOwnerGivesUp)
{
    Stream stream;
    stream.Pack(5000).Raw({0, 0, 1, 0xB3}).Pack(1);
    EXPECT_EQ(Parse(stream.m_Bytes), "Sequence Start\nSequence Start\n");
    EXPECT_EQ(m_Owner.rests, 2);
}

TEST_F(PackParserTest, StaysInsideWhateverItIsGiven)
{
    Stream stream;
    stream.Pack(900000, 7).SystemHeader(4).Packet(0xE0, 903000, 901000, 9).Pack(10).Packet(0xBD, 905000, {}, 3).Packet(0xF0).SystemHeader(1);
    testing::internal::CaptureStdout();
    for (size_t length = 0; length <= stream.Size(); ++length) {
        Bytes prefix(stream.m_Bytes.begin(),
            stream.m_Bytes.begin() + static_cast<std::ptrdiff_t>(length));    // of that very size: a sanitizer sees each step over it
        m_Parser.Reset();
        m_Parser.Parse(prefix.data(), static_cast<int>(length), m_Owner);
        for (size_t i = 0; i < length; ++i) {
            Bytes flipped = prefix;
            flipped[i] ^= static_cast<unsigned char>(1U << length % 8);
            m_Parser.Parse(flipped.data(), static_cast<int>(length), m_Owner);
        }
    }
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i) {
        Bytes soup(random() % 200);
        for (unsigned char& byte : soup) {
            const unsigned char usual[] = {0, 0, 0, 1, 0xBA, 0xBB, 0xE0, 0xFF, 0x44, static_cast<unsigned char>(random())};
            byte = usual[random() % sizeof usual];
        }
        m_Parser.Parse(soup.data(), static_cast<int>(soup.size()), m_Owner);
    }
    testing::internal::GetCapturedStdout();
}

}    // namespace
