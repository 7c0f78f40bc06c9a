// Where each segment of a stream's clock lies on the one time line that is played.
//
// Units:   ticks of 90 kHz; time line = segment ticks + offset.
// Threads: any. Decided by the video side, in display order; by the sound where there is no video.
#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

#include "host/base/UiQueue.h"
#include "host/decoder/Opening.h"
#include "host/decoder/StampLine.h"

namespace host {

class SegmentOffsets {
public:
    explicit SegmentOffsets(Opening& opening) : m_Opening(opening) {}

    void Reset();
    std::optional<int64_t> Get(unsigned segment) const;    // a segment behind a hole has the offset of the one before
    void Judge(Opening::Number opening, const SegmentVerdict& verdict);
    // Waits while the segment is in doubt, until `until` at the most.
    void AwaitVerdict(Opening::Number opening, unsigned segment, Clock::time_point until);
    bool IsInDoubt(unsigned segment) const { return VerdictOn(segment) == SegmentVerdict::kDoubt; }
    bool IsHole(unsigned segment) const { return VerdictOn(segment) == SegmentVerdict::kHole; }
    void Kick();
    void Set(Opening::Number opening, unsigned segment, int64_t offset);

private:
    struct Entry {
        bool used = false;
        unsigned segment = 0;
        int64_t offset = 0;
        bool placed = false;
        SegmentVerdict::Kind verdict = SegmentVerdict::kNone;
        unsigned before = 0;
    };
    SegmentVerdict::Kind VerdictOn(unsigned segment) const;
    Entry& Slot(unsigned segment);
    const Entry* Find(unsigned segment) const;
    Opening& m_Opening;
    mutable std::mutex m_Mutex;
    std::condition_variable m_Judged;
    std::array<Entry, 16> m_Entries;
};

}    // namespace host
