// Where each segment of a stream's clock lies on the one time line that is played.
//
// Units:   ticks of 90 kHz; time line = segment ticks + offset.
// Threads: any. Decided by the video side, in display order; by the sound where there is no video.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>

#include "host/decoder/Opening.h"

namespace host {

class SegmentOffsets {
public:
    explicit SegmentOffsets(Opening& opening) : m_Opening(opening) {}

    void Reset();
    std::optional<int64_t> Get(unsigned segment) const;
    void Set(Opening::Number opening, unsigned segment, int64_t offset);

private:
    struct Entry {
        bool used = false;
        unsigned segment = 0;
        int64_t offset = 0;
    };
    Opening& m_Opening;
    mutable std::mutex m_Mutex;
    std::array<Entry, 16> m_Entries;
};

}    // namespace host
