// The clock that pictures and sound are played by: which tick of the time line is seen and heard when.
//
// It stands until the start is known (the first picture, or the first sound where there is no picture) and
// sound is ready or has not come in time; then it runs on steady time, led by what the sound device has
// really taken. Pausing holds it, and so does a source that does not keep up (Refill): it goes on from where it stood.
//
// Units:   ticks of 90 kHz on the time line; times are host::Clock.
// Threads: any. The listener is called without a lock held, on the thread that changed something.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

#include "host/base/UiQueue.h"
#include "host/decoder/Opening.h"

namespace host {

class PlayClock {
public:
    using Time = Clock::time_point;
    static constexpr int64_t kTicksPerSecond = 90000;

    explicit PlayClock(Opening& opening) : m_Opening(opening) {}

    void SetListener(std::function<void()> listener) { m_Listener = std::move(listener); }    // before any thread runs
    void Reset();                      // keeps whether it is paused
    void SetPaused(bool paused, Time now);
    bool Hold(Time now);               // for lack of data; false: it did not run
    void Release(Time now);
    void SetSoundExpected(bool expected);
    void SetDeviceLatency(int64_t ticks);

    // What the start is aligned on; only the first of the two counts.
    void FirstPicture(int64_t ticks, Time now);
    void FirstSound(Opening::Number opening, int64_t ticks, Time now);
    void SoundPrimed(Opening::Number opening);
    void TryStart(Time now);
    Time StartDeadline() const;        // when TryStart is worth calling again; max: not before something changes

    // Playing goes on from `ticks` now: what should have come in time has come late, sound and all.
    void Rebase(int64_t ticks, Time now);
    // A sound device says that at `now` it lets `ticks` be heard.
    void Observe(int64_t ticks, Time now);

    bool IsRunning() const;
    bool IsPaused() const;
    bool IsHeld() const;
    std::optional<int64_t> Start() const;
    unsigned Serial() const;           // counts the starts and rebases
    int64_t TicksAt(Time now) const;
    Time TimeOf(int64_t ticks) const;  // max while the clock stands

    // Waits for a start to be known or `until`, whichever is first.
    bool WaitForStart(Opening::Number opening, Time until);
    // Waits for a change of the clock's state or `until`.
    void WaitForChange(Opening::Number opening, Time until);
    void Kick();

private:
    bool Runs() const { return m_bStarted && !m_bPaused && !m_bHeld; }
    int64_t TicksAtLocked(Time now) const;
    void Tell();

    Opening& m_Opening;
    std::function<void()> m_Listener;
    mutable std::mutex m_Mutex;
    std::condition_variable m_StartKnown;
    std::optional<int64_t> m_Start;
    Time m_StartKnownAt{};
    bool m_bSoundExpected = false;
    bool m_bSoundPrimed = false;
    bool m_bStarted = false;
    bool m_bPaused = true;
    bool m_bHeld = false;
    unsigned m_nSerial = 0;
    int64_t m_nLatency = 0;
    int64_t m_nAnchorTicks = 0;
    Time m_AnchorTime{};
};

// Conversions between ticks and time.
constexpr std::chrono::nanoseconds TicksToTime(int64_t ticks)
{
    return std::chrono::nanoseconds(ticks * 100000 / 9);
}
constexpr int64_t TimeToTicks(std::chrono::nanoseconds time)
{
    return time.count() * 9 / 100000;
}

}    // namespace host
