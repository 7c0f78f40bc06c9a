#include "host/decoder/PlayClock.h"

#include <algorithm>
#include <cstdlib>

namespace host {
namespace {

// How long a shown first picture waits for its sound.
constexpr std::chrono::milliseconds kSoundPatience{150};
constexpr int64_t kStepTicks = 5400;     // 60 ms: an observation farther off is a fact, not jitter
constexpr int64_t kFollow = 16;          // part of an error that is corrected at once

}    // namespace

void PlayClock::Reset()
{
    std::lock_guard lock(m_Mutex);
    m_Start.reset();
    m_bSoundExpected = false;
    m_bSoundPrimed = false;
    m_bStarted = false;
    m_bHeld = false;
    m_nAnchorTicks = 0;
    ++m_nSerial;
}

int64_t PlayClock::TicksAtLocked(Time now) const
{
    return Runs() ? m_nAnchorTicks + TimeToTicks(now - m_AnchorTime) : m_nAnchorTicks;
}

void PlayClock::SetPaused(bool paused, Time now)
{
    {
        std::lock_guard lock(m_Mutex);
        if (paused == m_bPaused) {
            return;
        }
        if (paused) {
            m_nAnchorTicks = TicksAtLocked(now);
        }
        m_AnchorTime = now;
        m_bPaused = paused;
        if (!m_bStarted) {
            m_StartKnownAt = now;
        }
    }
    Tell();
}

bool PlayClock::Hold(Time now)
{
    {
        std::lock_guard lock(m_Mutex);
        if (!Runs()) {
            return false;
        }
        m_nAnchorTicks = TicksAtLocked(now);
        m_AnchorTime = now;
        m_bHeld = true;
    }
    Tell();
    return true;
}

void PlayClock::Release(Time now)
{
    {
        std::lock_guard lock(m_Mutex);
        if (!m_bHeld) {
            return;
        }
        m_AnchorTime = now;
        m_bHeld = false;
    }
    Tell();
}

void PlayClock::SetSoundExpected(bool expected)
{
    std::lock_guard lock(m_Mutex);
    m_bSoundExpected = expected;
}

void PlayClock::SetDeviceLatency(int64_t ticks)
{
    std::lock_guard lock(m_Mutex);
    m_nLatency = ticks;
}

void PlayClock::FirstPicture(int64_t ticks, Time now)
{
    {
        std::lock_guard lock(m_Mutex);
        if (m_Start) {
            return;
        }
        m_Start = ticks;
        m_StartKnownAt = now;
        m_nAnchorTicks = ticks;
    }
    m_StartKnown.notify_all();
}

void PlayClock::FirstSound(Opening::Number opening, int64_t ticks, Time now)
{
    {
        std::lock_guard lock(m_Mutex);
        if (m_Start || !m_Opening.Is(opening)) {
            return;
        }
        m_Start = ticks;
        m_StartKnownAt = now;
        m_nAnchorTicks = ticks;
    }
    m_StartKnown.notify_all();
}

void PlayClock::SoundPrimed(Opening::Number opening)
{
    {
        std::lock_guard lock(m_Mutex);
        if (m_bSoundPrimed || !m_Opening.Is(opening)) {
            return;
        }
        m_bSoundPrimed = true;
    }
    TryStart(Clock::now());
}

void PlayClock::TryStart(Time now)
{
    {
        std::lock_guard lock(m_Mutex);
        if (m_bStarted || m_bPaused || !m_Start || (m_bSoundExpected && !m_bSoundPrimed && now < m_StartKnownAt + kSoundPatience)) {
            return;
        }
        m_bStarted = true;
        m_nAnchorTicks = *m_Start - m_nLatency;
        m_AnchorTime = now;
    }
    Tell();
}

PlayClock::Time PlayClock::StartDeadline() const
{
    std::lock_guard lock(m_Mutex);
    return m_bStarted || m_bPaused || !m_Start ? Time::max() : m_StartKnownAt + kSoundPatience;
}

void PlayClock::Rebase(int64_t ticks, Time now)
{
    {
        std::lock_guard lock(m_Mutex);
        if (!m_bStarted) {
            return;
        }
        m_Start = ticks;
        m_nAnchorTicks = ticks - m_nLatency;
        m_AnchorTime = now;
        ++m_nSerial;
    }
    m_StartKnown.notify_all();
    Tell();
}

void PlayClock::Observe(int64_t ticks, Time now)
{
    std::lock_guard lock(m_Mutex);
    if (!Runs()) {
        return;
    }
    const int64_t error = ticks - TicksAtLocked(now);
    m_nAnchorTicks += std::llabs(error) > kStepTicks ? error : error / kFollow;
}

bool PlayClock::IsRunning() const
{
    std::lock_guard lock(m_Mutex);
    return Runs();
}

bool PlayClock::IsPaused() const
{
    std::lock_guard lock(m_Mutex);
    return m_bPaused;
}

bool PlayClock::IsHeld() const
{
    std::lock_guard lock(m_Mutex);
    return m_bHeld;
}

std::optional<int64_t> PlayClock::Start() const
{
    std::lock_guard lock(m_Mutex);
    return m_Start;
}

unsigned PlayClock::Serial() const
{
    std::lock_guard lock(m_Mutex);
    return m_nSerial;
}

int64_t PlayClock::TicksAt(Time now) const
{
    std::lock_guard lock(m_Mutex);
    return TicksAtLocked(now);
}

PlayClock::Time PlayClock::TimeOf(int64_t ticks) const
{
    std::lock_guard lock(m_Mutex);
    if (!Runs()) {
        return Time::max();
    }
    return m_AnchorTime + std::chrono::duration_cast<Clock::duration>(TicksToTime(ticks - m_nAnchorTicks));
}

bool PlayClock::WaitForStart(Opening::Number opening, Time until)
{
    std::unique_lock lock(m_Mutex);
    m_StartKnown.wait_until(lock, until, [&] { return !m_Opening.Is(opening) || m_Start; });
    return m_Start.has_value() && m_Opening.Is(opening);
}

void PlayClock::WaitForChange(Opening::Number opening, Time until)
{
    std::unique_lock lock(m_Mutex);
    const unsigned serial = m_nSerial;
    m_StartKnown.wait_until(lock, until, [&] { return !m_Opening.Is(opening) || m_nSerial != serial; });
}

void PlayClock::Kick()
{
    { std::lock_guard lock(m_Mutex); }
    m_StartKnown.notify_all();
}

void PlayClock::Tell()
{
    if (m_Listener) {
        m_Listener();
    }
}

}    // namespace host
