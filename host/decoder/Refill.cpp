#include "host/decoder/Refill.h"

#include <algorithm>

namespace host {
namespace {

constexpr uint64_t kSeconds = 3;            // of the stream, from a source that is too slow
constexpr uint64_t kSecondsWhenFast = 1;
constexpr std::chrono::seconds kPatience{15};
constexpr std::chrono::milliseconds kAhead{20};    // the next look may be as late
constexpr int64_t kSilence = 90 * 40;       // 40 ms of sound are as good as none
constexpr int64_t kLeastPlayed = 45000;     // half a second: of less no rate can be told
constexpr uint64_t kLeastRate = 4000;       // bytes a second
constexpr uint64_t kHighestRate = 8000000;

}    // namespace

bool IsEnoughToPlayOn(uint64_t held, uint64_t bytesPerSecond, uint64_t received, Clock::duration waited)
{
    const auto milliseconds = static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(waited).count());
    const bool fast = received * 1000 >= bytesPerSecond * milliseconds;
    return held >= bytesPerSecond * (fast ? kSecondsWhenFast : kSeconds) || (waited >= kPatience && held >= bytesPerSecond / 2);
}

void Refill::Reset()
{
    const std::lock_guard lock(m_Mutex);
    m_Since.reset();
    m_Start.reset();
    m_nCount = 0;
}

// With nothing in the ring, what one of the two lacks will not come by itself.
bool Refill::IsDry(Clock::time_point now) const
{
    const bool pictures = m_Store.Seen(CodedStore::kVideo) && m_Store.BytesHeld(CodedStore::kVideo) == 0 && m_Present.IsDryAt(now + kAhead);
    const bool sound = m_Store.Seen(CodedStore::kAudio) && m_Store.BytesHeld(CodedStore::kAudio) == 0 && m_Sink.BufferedTicks() <= kSilence;
    return pictures || sound;
}

uint64_t Refill::BytesPerSecond(Clock::time_point now) const
{
    const uint64_t behind = m_Ring.BytesHeld() + m_Store.BytesHeld(CodedStore::kVideo) + m_Store.BytesHeld(CodedStore::kAudio);
    const uint64_t fed = m_Ring.BytesFed();
    const int64_t played = m_Start ? std::max(m_Clock.TicksAt(now) - *m_Start, kLeastPlayed) : kLeastPlayed;
    return std::clamp((fed - std::min(behind, fed)) * PlayClock::kTicksPerSecond / static_cast<uint64_t>(played), kLeastRate, kHighestRate);
}

void Refill::SourceWaits()
{
    const Clock::time_point now = Clock::now();
    const std::lock_guard lock(m_Mutex);
    if (m_Since || !m_Clock.IsRunning() || !IsDry(now) || !m_Clock.Hold(now)) {
        return;
    }
    m_Since = now;
    m_nFedThen = m_Ring.BytesFed();
    ++m_nCount;
}

void Refill::Filled(bool all)
{
    const Clock::time_point now = Clock::now();
    const std::lock_guard lock(m_Mutex);
    if (!m_Start) {
        m_Start = m_Clock.Start();
    }
    if (m_Since && (all || IsEnoughToPlayOn(m_Ring.BytesHeld(), BytesPerSecond(now), m_Ring.BytesFed() - m_nFedThen, now - *m_Since))) {
        m_Since.reset();
        m_Clock.Release(now);
    }
}

unsigned Refill::Count() const
{
    const std::lock_guard lock(m_Mutex);
    return m_nCount;
}

bool Refill::HasLasted(Clock::duration atLeast) const
{
    const std::lock_guard lock(m_Mutex);
    return m_Since && Clock::now() - *m_Since >= atLeast;
}

}    // namespace host
