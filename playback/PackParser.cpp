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
    return id == 0xBC || id == 0xBE || id == 0xBF || id == 0xF0 || id == 0xF1 || id == 0xF2 || id == 0xF8 || id == 0xFF;
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
    return Widen((p[4] & 0x18U) << 27 | (p[4] & 0x03U) << 28 | static_cast<uint32_t>(p[5]) << 20 | (p[6] & 0xF8U) << 12 | (p[6] & 0x03U) << 13
        | static_cast<uint32_t>(p[7]) << 5 | p[8] >> 3U);
}

void WriteClock(unsigned char* p, uint64_t clock)
{
    p[4] = static_cast<unsigned char>(0x44 | (clock >> 32 & 1) << 5 | (clock >> 30 & 3) << 3 | (clock >> 28 & 3));
    p[5] = static_cast<unsigned char>(clock >> 20);
    p[6] = static_cast<unsigned char>((clock >> 15 & 0x1F) << 3 | 0x04 | (clock >> 13 & 3));
    p[7] = static_cast<unsigned char>(clock >> 5);
    p[8] = static_cast<unsigned char>((p[8] & 0x07) | (clock & 0x1F) << 3);
}

}    // namespace

void PackParser::Reset()
{
    *this = PackParser();
}

void PackParser::Parse(unsigned char* buffer, int length, PackParserOwner& owner)
{
    if (!IsMPEG2) {
        return;
    }
    int i = 0;
    while (i < length) {
        const int lostFrom = i;
        while (i < length && !IsStartCode(buffer + i, length - i)) {
            ++i;
        }
        if (i > lostFrom) {
            bytes_since_pcr += static_cast<uint32_t>(i - lostFrom);
            PrintDots(i - lostFrom);
        }
        if (i >= length) {
            std::printf("lost sync in buffer!\n");
            return;
        }
        const int left = length - i;
        if (left < 4) {
            return;
        }
        const unsigned char id = buffer[i + 3];
        int step = kStop;
        if (id == kSequenceHeader) {
            // On purpose the walk stays here for ever: this version ends no walk that meets a sequence
            // header where it expects a packet. Each round rests, and pause and close end it.
            do {
                std::printf("Sequence Start\n");
                std::fflush(stdout);
            } while (!owner.RestInWalk());
        } else if (id == kPackHeader) {
            step = WalkPack(buffer + i, left);
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

int PackParser::WalkPack(unsigned char* pack, int left)
{
    if (left > 4 && (pack[4] & 0xC0) != 0x40) {
        IsMPEG2 = false;    // ISO/IEC 11172-1 2.4.3.2: an MPEG-1 pack
        return kStop;
    }
    if (left < kPackHeaderBytes) {
        return kStop;
    }
    FollowClock(ReadClock(pack));
    WriteClock(pack, pcr_last + pcr_offset);
    return kPackHeaderBytes + (pack[13] & 0x07);    // pack_stuffing_length
}

void PackParser::FollowClock(uint64_t current)
{
    // Unsigned, so a reference below zero counts as one far ahead.
    if (pcr_last == 0 || (pcr_last <= current && current <= pcr_last + kLargestStep)) {
        pcr_diff = current - pcr_last;
        pcr_stride = bytes_since_pcr;
        bytes_since_pcr = 0;
    } else {
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
    pcr_last = current;
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

int PackParser::WalkPacket(unsigned char* packet, int left)
{
    if (left < 6) {
        return kStop;
    }
    const int length = packet[4] << 8 | packet[5];
    if (!HasNoStamps(packet[3]) && left > 7 && (packet[7] & 0x80) != 0) {
        // ISO/IEC 13818-1 2.4.3.7: PTS_DTS_flags in the top bits of byte 7, the stamps from byte 9 on.
        if (left >= 14) {
            Shift(packet + 9, 0x20);
        }
        if (packet[7] >= 0xC0 && left >= 19) {
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

// On purpose the prefix is always 0010 for the presentation stamp and 0011 for the decoding stamp,
// whatever flags the packet has.
void PackParser::Shift(unsigned char* p, unsigned char prefix) const
{
    const uint32_t read
        = (p[0] & 0x06U) << 29 | static_cast<uint32_t>(p[1]) << 22 | (p[2] & 0xFEU) << 14 | static_cast<uint32_t>(p[3]) << 7 | p[4] >> 1U;
    const uint64_t stamp = Widen(read) + pcr_offset;
    p[0] = static_cast<unsigned char>(prefix | (stamp >> 30 & 7) << 1 | 1);
    p[1] = static_cast<unsigned char>(stamp >> 22);
    p[2] = static_cast<unsigned char>((stamp >> 15 & 0x7F) << 1 | 1);
    p[3] = static_cast<unsigned char>(stamp >> 7);
    p[4] = static_cast<unsigned char>((stamp & 0x7F) << 1 | 1);
}
