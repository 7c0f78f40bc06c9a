#include "playback/PackParser.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

// ISO/IEC 13818-1 2.5.3 and table 2-22, stream identifiers.
constexpr unsigned char kProgramEnd = 0xB9;
constexpr unsigned char kPackHeader = 0xBA;
constexpr unsigned char kSystemHeader = 0xBB;
constexpr unsigned char kSequenceHeader = 0xB3;

constexpr int kStop = -1;    // answer of a walk step: nothing more to walk in this buffer
constexpr int kPackHeaderBytes = 14;    // 2.5.3.3, without stuffing
constexpr uint64_t kLargestStep = 20000;    // a greater step of the clock, or any back, is a jump

// Identifiers whose packets carry no PES header: table 2-21.
constexpr bool HasNoStamps(unsigned char id)
{
    return id == 0xBC || id == 0xBE || id == 0xBF || (id >= 0xF0 && (id == 0xF0 || id == 0xF1 || id == 0xF2 || id == 0xF8 || id == 0xFF));
}

// Big-endian words of a clock or a stamp at once: byte by byte is half of the time that the repair takes.
uint32_t Load32(const unsigned char* p)
{
    return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 | static_cast<uint32_t>(p[2]) << 8 | p[3];
}

void Store32(unsigned char* p, uint32_t value)
{
    p[0] = static_cast<unsigned char>(value >> 24);
    p[1] = static_cast<unsigned char>(value >> 16);
    p[2] = static_cast<unsigned char>(value >> 8);
    p[3] = static_cast<unsigned char>(value);
}

bool IsStartCode(const unsigned char* p, int left)
{
    return left >= 3 && p[0] == 0 && p[1] == 0 && p[2] == 1;
}

// One dot a lost byte, in blocks: a flush a dot would make garbage slower than the disk.
void PrintDots(int count)
{
    static const struct Dots {
        Dots() { std::memset(text, '.', sizeof text); }
        char text[16384];
    } dots;
    while (count > 0) {
        const int block = std::min(count, static_cast<int>(sizeof dots.text));
        std::fwrite(dots.text, 1, static_cast<size_t>(block), stdout);
        count -= block;
    }
}

// 32 bits widened with their sign. On purpose: bit 32 of the stream's 33 is not read, and bit 31 acts as a sign.
uint64_t Widen(uint32_t bits)
{
    return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(bits)));
}

// 2.5.3.3 pack header, system_clock_reference_base from byte 4 on.
uint64_t ReadClock(const unsigned char* p)
{
    const uint32_t bits = Load32(p + 4);
    return Widen((bits & 0x18000000) << 3 | (bits & 0x03FFF800) << 4 | (bits & 0x3FF) << 5 | p[8] >> 3U);
}

void WriteClock(unsigned char* p, uint64_t clock)
{
    Store32(p + 4, static_cast<uint32_t>(0x44000400 | (clock >> 3 & 0x38000000) | (clock >> 4 & 0x03FFF800) | (clock >> 5 & 0x3FF)));
    p[8] = static_cast<unsigned char>((p[8] & 0x07) | (clock & 0x1F) << 3);
}

// 2.4.3.7: 33 bits in three pieces, from the lower half of the first byte on.
uint64_t ReadStamp(const unsigned char* p)
{
    const uint32_t bits = Load32(p);
    return Widen((bits & 0x06000000) << 5 | (bits & 0x00FFFE00) << 6 | (bits & 0xFF) << 7 | p[4] >> 1U);
}

void WriteStamp(unsigned char* p, unsigned char prefix, uint64_t stamp)
{
    Store32(p, static_cast<uint32_t>(uint32_t{prefix} << 24 | 0x01000100 | (stamp >> 5 & 0x0E000000) | (stamp >> 6 & 0x00FFFE00) | (stamp >> 7 & 0xFF)));
    p[4] = static_cast<unsigned char>(stamp << 1 | 1);
}

}    // namespace

void PackParser::Reset()
{
    *this = PackParser();
}

// What every pack of every file goes through is kept small, so that it can become one loop; what a jump needs
// lies apart.

inline void PackParser::FollowClock(uint64_t current)
{
    // Unsigned, so a reference below zero counts as one far ahead.
    if (pcr_last == 0 || (pcr_last <= current && current <= pcr_last + kLargestStep)) {
        pcr_diff = current - pcr_last;
        pcr_stride = bytes_since_pcr;
        bytes_since_pcr = 0;
    } else {
        JumpTo(current);
    }
    pcr_last = current;
}

inline int PackParser::WalkPack(unsigned char* pack, int left)
{
    if (left > 4 && (pack[4] & 0xC0) != 0x40) {
        IsMPEG2 = false;    // ISO/IEC 11172-1 2.4.3.2: an MPEG-1 pack
        return kStop;
    }
    if (left < kPackHeaderBytes) {
        return kStop;
    }
    const int step = kPackHeaderBytes + (pack[13] & 0x07);    // pack_stuffing_length
    FollowClock(ReadClock(pack));
    if (pcr_offset == 0) {
        // No jump so far, as in most files ever: what was read is written, but for bit 32 and the fixed bits.
        const uint32_t bits = Load32(pack + 4);
        Store32(pack + 4, (bits & 0x1BFFFBFF) | (bits & 0x10000000) << 1 | 0x44000400);
    } else {
        WriteClock(pack, pcr_last + pcr_offset);
    }
    return step;
}

// On purpose the prefix is always 0010 for the presentation stamp and 0011 for the decoding stamp,
// whatever flags the packet has.
inline void PackParser::Shift(unsigned char* p, unsigned char prefix) const
{
    if (pcr_offset == 0) {
        const uint32_t bits = Load32(p);
        Store32(p, static_cast<uint32_t>(prefix) << 24 | (bits & 0x06FFFEFF) | (bits & 0x04000000) << 1 | 0x01000100);
        p[4] |= 1;
    } else {
        WriteStamp(p, prefix, ReadStamp(p) + pcr_offset);
    }
}

inline int PackParser::WalkPacket(unsigned char* packet, int left)
{
    if (left < 6) {
        return kStop;
    }
    const int length = packet[4] << 8 | packet[5];
    if (!HasNoStamps(packet[3]) && left > 7 && (packet[7] & 0x80) != 0) {
        // ISO/IEC 13818-1 2.4.3.7: PTS_DTS_flags in the top bits of byte 7, the stamps from byte 9 on.
        const bool both = packet[7] >= 0xC0;
        if (left >= 14) {
            Shift(packet + 9, 0x20);
        }
        if (both && left >= 19) {
            Shift(packet + 14, 0x30);
        }
    }
    bytes_since_pcr += static_cast<uint32_t>(length) + 6;
    if (length == 0) {
        std::printf("Packet length zero!\n");
        return kStop;
    }
    return length + 6;
}

// The header's own length is not used: stream entries of three bytes follow for as long as one begins
// with a stream identifier, and the next start code begins with a zero.
int PackParser::WalkSystemHeader(const unsigned char* header, int left)
{
    int step = 12;
    while (step < left && (header[step] & 0xF0) != 0) {
        step += 3;
    }
    bytes_since_pcr += static_cast<uint32_t>(step);
    return step;
}

// Where the next start code begins; `length` when there is none. Tells each byte on the way.
int PackParser::FindStartCode(const unsigned char* buffer, int from, int length)
{
    int i = from;
    while (i < length && !IsStartCode(buffer + i, length - i)) {
        ++i;
    }
    if (i > from) {
        bytes_since_pcr += static_cast<uint32_t>(i - from);
        PrintDots(i - from);
    }
    if (i >= length) {
        std::printf("lost sync in buffer!\n");
    }
    return i;
}

void PackParser::Parse(unsigned char* buffer, int length, PackParserOwner& owner)
{
    if (!IsMPEG2) {
        return;
    }
    int i = 0;
    while (i < length) {
        if (length - i < 4 || Load32(buffer + i) >> 8 != 1) {
            i = FindStartCode(buffer, i, length);
            if (length - i < 4) {
                return;
            }
        }
        const int left = length - i;
        const unsigned char id = buffer[i + 3];
        int step = kStop;
        if (id == kPackHeader) {
            step = WalkPack(buffer + i, left);
        } else if (id == kSequenceHeader) {
            // On purpose the walk stays here for ever: this version ends no walk that meets a sequence
            // header where it expects a packet. Each round rests, and pause and close end it.
            do {
                std::printf("Sequence Start\n");
                std::fflush(stdout);
            } while (!owner.RestInWalk());
        } else if (id == kSystemHeader) {
            step = WalkSystemHeader(buffer + i, left);
        } else if (id == kProgramEnd) {
            bytes_since_pcr += static_cast<uint32_t>(length);
        } else {
            step = WalkPacket(buffer + i, left);
        }
        if (step == kStop) {
            return;
        }
        i += step;
    }
}

void PackParser::JumpTo(uint64_t current)
{
    std::printf("Discontinuity on PCR! prev: %lld cur:%lld\n", static_cast<long long>(pcr_last), static_cast<long long>(current));
    std::printf("  Prev PCR offset: %lld\n", static_cast<long long>(pcr_offset));
    pcr_offset += pcr_last - current;
    std::printf("  New  PCR offset: %lld\n", static_cast<long long>(pcr_offset));
    if (pcr_stride != 0) {
        // How far the clock would have gone over the bytes since its last reference, at the pace it had.
        const auto adj = static_cast<int32_t>(static_cast<uint32_t>(pcr_diff * bytes_since_pcr / pcr_stride));
        std::printf("  pcr adj = %d\n", adj);
        if (adj <= static_cast<int32_t>(kLargestStep)) {
            pcr_offset += static_cast<uint64_t>(static_cast<int64_t>(adj));
        } else {
            std::printf("pcr adj out of range. Ignored.\n");
        }
    }
    std::fflush(stdout);
}
