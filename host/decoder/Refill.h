// Stops picture and sound when the source does not keep up, until enough is in hand to play on for a while:
// one stop of some seconds is easier on the viewer than a picture that stumbles all the time.
//
// Rules:     Playing stops when pictures or sound have run out, the ring is empty and its source is silent. It
//            goes on when the ring holds three seconds of the stream, or one when the source has become fast
//            enough meanwhile, or is full, or there is no more to come; a very slow source is not waited for
//            longer than it takes to be annoying. What counts as a second is measured on what was played.
// Units:     bytes; ticks of 90 kHz.
// Threads:   SourceWaits on the demultiplexing thread, Filled on the ring's, Reset with the opening over; the
//            getters on any.
// Ownership: stops nothing but the clock, which the rest follows; pausing and closing work meanwhile as ever.
#pragma once

#include <mutex>
#include <optional>

#include "host/decoder/AudioSink.h"
#include "host/decoder/CodedStore.h"
#include "host/decoder/FeedRing.h"
#include "host/decoder/PlayClock.h"
#include "host/decoder/Present.h"

namespace host {

// Whether to play on with `held` bytes of a stream of so many a second, when `received` came within `waited`.
bool IsEnoughToPlayOn(uint64_t held, uint64_t bytesPerSecond, uint64_t received, Clock::duration waited);

class Refill {
public:
    Refill(const FeedRing& ring, PlayClock& clock, const CodedStore& store, const Present& present, AudioSink& sink)
        : m_Ring(ring), m_Clock(clock), m_Store(store), m_Present(present), m_Sink(sink)
    {
    }

    void Reset();
    void SourceWaits();
    void Filled(bool all);

    unsigned Count() const;    // since Reset
    bool HasLasted(Clock::duration atLeast) const;    // it is on

private:
    bool IsDry(Clock::time_point now) const;
    uint64_t BytesPerSecond(Clock::time_point now) const;

    const FeedRing& m_Ring;
    PlayClock& m_Clock;
    const CodedStore& m_Store;
    const Present& m_Present;
    AudioSink& m_Sink;

    mutable std::mutex m_Mutex;
    std::optional<Clock::time_point> m_Since;    // playing was stopped then
    uint64_t m_nFedThen = 0;
    unsigned m_nCount = 0;
    std::optional<int64_t> m_Start;    // of the time line
};

}    // namespace host
