// Timestamp repair: rewrites the clock references and time stamps of an MPEG-2 program stream in place,
// so that recordings joined one after the other run as one continuous stream.
//
// Units:     ticks of 90 kHz; bytes.
// Errors:    every read is checked against the buffer's end; what is cut off there is left as it is. Lost
//            bytes and jumps of the clock are told on standard output.
// Threads:   one thread at a time: the decoder's feed while streaming, the user-interface thread else.
// Ownership: keeps nothing of the buffer.
#pragma once

#include <cstdint>

// What an endless walk asks of the one who started it.
class PackParserOwner {
public:
    virtual ~PackParserOwner() = default;
    virtual bool RestInWalk() = 0;    // rests a moment; true when the walk is to be given up
};

class PackParser {
public:
    void Reset();
    void Parse(unsigned char* buffer, int length, PackParserOwner& owner);

private:
    int FindStartCode(const unsigned char* buffer, int from, int length);
    int WalkPack(unsigned char* pack, int left);
    int WalkSystemHeader(const unsigned char* header, int left);
    int WalkPacket(unsigned char* packet, int left);
    void FollowClock(uint64_t current);
    void JumpTo(uint64_t current);
    void Shift(unsigned char* stamp, unsigned char prefix) const;

    bool IsMPEG2 = true;    // cleared by the first MPEG-1 pack: no repair until the next reset
    uint64_t pcr_offset = 0;    // added to every reference and stamp; wraps like the signed number it stands for
    uint64_t pcr_last = 0;    // last reference as it was read
    uint64_t pcr_diff = 0;    // between the last two that were continuous
    uint32_t pcr_stride = 0;    // bytes between those two
    uint32_t bytes_since_pcr = 0;    // bytes walked since the last continuous one
};
