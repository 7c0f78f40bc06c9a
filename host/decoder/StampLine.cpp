#include "host/decoder/StampLine.h"

#include <cstdlib>

namespace host {
namespace {

constexpr int64_t kSecond = 90000;
constexpr int64_t kForwardJump = kSecond;
constexpr int64_t kBackwardJitter = kSecond / 100;
constexpr int64_t kLooseBackward = kSecond;          // presentation stamps of reordered pictures
constexpr int64_t kSmallSoundStep = kSecond * 3 / 10;
constexpr int64_t kNear = kSecond * 3 / 2;           // how far two streams of one multiplex lie apart
constexpr int64_t kLongestHole = 12 * kSecond;
constexpr int64_t kProof = kSecond / 4;              // so far beyond the hole's begin the other stream must go
constexpr int64_t kBase = int64_t{1} << 33;          // room for stamps a little before a segment's first

}    // namespace

void StampLine::Reset()
{
    *this = StampLine();
}

void StampLine::Break()
{
    for (Track& track : m_Tracks) {
        track.mustMove = track.known;
    }
}

int64_t StampLine::Keep(Track& track, int64_t ticks)
{
    track.last = ticks;
    track.known = true;
    track.mustMove = false;
    Segment& segment = Slot(track.segment);
    if (!segment.used || segment.number != track.segment || ticks > segment.last) {
        segment = {track.segment, track.clock, ticks, true};
    }
    return SegmentStamp::Make(track.segment, ticks & SegmentStamp::kMask);
}

bool StampLine::JoinNewer(Track& track, int64_t raw)
{
    const unsigned oldest = m_nNewest >= m_Segments.size() ? m_nNewest - static_cast<unsigned>(m_Segments.size()) + 1 : 0;
    for (unsigned number = track.segment + 1 > oldest ? track.segment + 1 : oldest; number <= m_nNewest; ++number) {
        const Segment& segment = Slot(number);
        if (segment.used && segment.number == number && std::llabs(StampDifference(raw, segment.last)) <= kNear) {
            track.segment = number;
            track.clock = segment.clock;
            track.ignoredStep = false;
            track.last = segment.last + StampDifference(raw, segment.last);
            return true;
        }
    }
    return false;
}

int64_t StampLine::OpenNew(Track& track, int64_t raw)
{
    if (m_bAny) {
        ++m_nNewest;
    }
    m_bAny = true;
    track.segment = track.clock = m_nNewest;
    track.ignoredStep = false;
    return Keep(track, raw + kBase);
}

int64_t StampLine::OpenDoubtful(Kind kind, int64_t ticks)
{
    Track& track = m_Tracks[kind];
    const unsigned before = track.segment;
    ++m_nNewest;
    DoubtOf(m_nNewest) = {true, kind, m_nNewest, before, track.last + kProof};
    m_Verdicts.push_back({SegmentVerdict::kDoubt, m_nNewest, before});
    track.segment = m_nNewest;
    track.ignoredStep = false;
    return Keep(track, ticks);
}

// The stream `kind` has a new stamp: what does it say about the segments that the other one opened?
void StampLine::Judge(Kind kind)
{
    const Track& track = m_Tracks[kind];
    for (Doubt& doubt : m_Doubts) {
        if (!doubt.open || doubt.opener == kind) {
            continue;
        }
        if (track.segment >= doubt.segment) {
            m_Verdicts.push_back({SegmentVerdict::kJoint, doubt.segment, doubt.before});
            doubt.open = false;
        } else if (track.clock == Slot(doubt.segment).clock && track.last > doubt.limit) {
            m_Verdicts.push_back({SegmentVerdict::kHole, doubt.segment, doubt.before});
            doubt.open = false;
        }
    }
}

SegmentVerdict StampLine::NextVerdict()
{
    if (m_Verdicts.empty()) {
        return {};
    }
    const SegmentVerdict verdict = m_Verdicts.front();
    m_Verdicts.pop_front();
    return verdict;
}

int64_t StampLine::Place(Kind kind, int64_t order, bool exact)
{
    const int64_t placed = PlaceUnjudged(kind, order & (kBase - 1), exact);
    Judge(kind);
    return placed;
}

int64_t StampLine::PlaceUnjudged(Kind kind, int64_t raw, bool exact)
{
    Track& track = m_Tracks[kind];
    const Track& other = m_Tracks[1 - kind];
    if (!track.known && other.known && !other.mustMove && std::llabs(StampDifference(raw, other.last)) <= 20 * kSecond) {
        const int64_t ticks = other.last + StampDifference(raw, other.last);
        track.segment = other.segment;
        track.clock = other.clock;
        for (const Doubt* doubt = &DoubtOf(track.segment); doubt->open && doubt->segment == track.segment && ticks <= doubt->limit; doubt = &DoubtOf(track.segment)) {
            track.segment = doubt->before;
        }
        for (Doubt& doubt : m_Doubts) {    // a stream that only begins here has not jumped
            if (doubt.open && doubt.segment <= track.segment) {
                m_Verdicts.push_back({SegmentVerdict::kHole, doubt.segment, doubt.before});
                doubt.open = false;
            }
        }
        return Keep(track, ticks);
    }
    if (!track.known || track.mustMove) {
        return JoinNewer(track, raw) ? Keep(track, track.last) : OpenNew(track, raw);
    }
    const int64_t step = StampDifference(raw, track.last);
    const bool back = step < -(exact ? kBackwardJitter : kLooseBackward);
    const bool forward = step > kForwardJump;
    if (!back && !forward) {
        if (track.ignoredStep && JoinNewer(track, raw)) {
            return Keep(track, track.last);
        }
        return Keep(track, track.last + step);
    }
    const bool sameClock = other.known && !other.mustMove && other.clock == track.clock;
    const Doubt& doubt = DoubtOf(other.segment);
    if (forward && doubt.open && doubt.segment == other.segment && doubt.opener != kind && JoinNewer(track, raw)) {
        return Keep(track, track.last);    // both have jumped
    }
    if (forward && sameClock && std::llabs(StampDifference(raw, other.last)) <= kNear) {
        return Keep(track, track.last + step);    // a hole in this stream only
    }
    if (JoinNewer(track, raw)) {
        return Keep(track, track.last);
    }
    if (kind == kAudio && back && step > -kSmallSoundStep) {
        track.ignoredStep = true;
        return Keep(track, track.last + step);
    }
    if (forward && (sameClock || !other.known) && step <= kLongestHole) {
        return OpenDoubtful(kind, track.last + step);
    }
    return OpenNew(track, raw);
}

}    // namespace host
