// Makes one line of time out of the stamps of a stream: unwraps 33 bits, and numbers the stretches
// ("segments") between two jumps of the stream's clock.
//
// A stamp leaves as one 64-bit word, segment number in the upper bits, unwrapped ticks in the lower 36, so
// that it passes through parser and codec like any stamp; where the segment lies on the screen's time line
// is decided behind the codec (SegmentOffsets).
//
// One of two streams that runs ahead by some seconds may have a hole of its own (a picture that stands, a
// moment without sound) or be the first over a joint. That shows when the other one either goes on or
// jumps as well: until then the new segment is in doubt, and the verdict comes later.
//
// Units:   ticks of 90 kHz.
// Threads: the demultiplexing thread.
#pragma once

#include <array>
#include <cstdint>
#include <deque>

namespace host {

struct SegmentStamp {
    static constexpr int kBits = 36;
    static constexpr int64_t kMask = (int64_t{1} << kBits) - 1;
    static constexpr int64_t Make(unsigned segment, int64_t ticks) { return (static_cast<int64_t>(segment) << kBits) + ticks; }
    static constexpr unsigned Segment(int64_t stamp) { return static_cast<unsigned>(stamp >> kBits); }
    static constexpr int64_t Ticks(int64_t stamp) { return stamp & kMask; }
};

// The difference a - b of two 33-bit stamps, the short way round.
constexpr int64_t StampDifference(int64_t a, int64_t b)
{
    constexpr int64_t kWrap = int64_t{1} << 33;
    const int64_t d = (a - b) & (kWrap - 1);
    return d >= kWrap / 2 ? d - kWrap : d;
}

// What is found out about a segment that `before` runs into: kHole, its clock is the one of `before`;
// kJoint, it is another.
struct SegmentVerdict {
    enum Kind { kNone, kDoubt, kHole, kJoint };
    Kind kind = kNone;
    unsigned segment = 0;
    unsigned before = 0;
};

class StampLine {
public:
    enum Kind { kVideo = 0, kAudio = 1 };

    void Reset();
    void Break();    // what comes next has nothing to do with what came before (another program)

    // `order` is the decoding stamp (the presentation stamp where there is none), `exact` says that it
    // really rises from packet to packet. Answers the segment stamp for it.
    int64_t Place(Kind kind, int64_t order, bool exact);

    // What Place has found out since it was asked last, oldest first; kNone when that is all.
    SegmentVerdict NextVerdict();

private:
    struct Doubt {
        bool open = false;
        Kind opener = kVideo;
        unsigned segment = 0;
        unsigned before = 0;
        int64_t limit = 0;           // where the other stream proves a hole
    };
    struct Track {
        bool known = false;
        bool mustMove = false;       // a break: the next stamp opens or joins a newer segment
        bool ignoredStep = false;    // a small step back that may turn out to be a joint
        unsigned segment = 0;
        unsigned clock = 0;          // the segment whose clock this one's ticks are
        int64_t last = 0;            // unwrapped
    };
    struct Segment {
        unsigned number = 0;
        unsigned clock = 0;
        int64_t last = 0;
        bool used = false;
    };
    int64_t Keep(Track& track, int64_t ticks);
    bool JoinNewer(Track& track, int64_t raw);
    int64_t OpenNew(Track& track, int64_t raw);
    int64_t OpenDoubtful(Kind kind, int64_t ticks);
    void Judge(Kind kind);
    int64_t PlaceUnjudged(Kind kind, int64_t raw, bool exact);
    Segment& Slot(unsigned number) { return m_Segments[number % m_Segments.size()]; }

    Doubt& DoubtOf(unsigned number) { return m_Doubts[number % m_Doubts.size()]; }

    std::array<Track, 2> m_Tracks;
    std::array<Segment, 8> m_Segments;
    std::array<Doubt, 8> m_Doubts;
    std::deque<SegmentVerdict> m_Verdicts;
    unsigned m_nNewest = 0;
    bool m_bAny = false;
};

}    // namespace host
