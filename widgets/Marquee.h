// How far a name that is too long for its row is pushed to the left: it rests, slides to its end, rests, and begins
// again; after a few rounds it stands still, so that an idle list costs nothing.
//
// Units:   logical pixels; milliseconds since the start.
// Threads: a value.
#pragma once

#include <cstdint>

class Marquee {
public:
    static constexpr uint32_t kTickMs = 40;

    void Start(int overflow, uint32_t nowMs);    // pixels that do not fit; 0: nothing moves
    void Stop() { m_nOverflow = 0; }
    bool IsRunning(uint32_t nowMs) const;
    int Offset(uint32_t nowMs) const;    // 0 to the overflow

private:
    uint32_t SlideMs() const;
    uint32_t RoundMs() const;

    int m_nOverflow = 0;
    uint32_t m_nStartedAt = 0;
};
