#include "playback/SaveSchedule.h"

#include <algorithm>

namespace {

constexpr int kPlaying = 1;
// A saved point is at most ten seconds old, with the time that a slow medium takes.
constexpr uint32_t kPeriodMs = 9000;
constexpr uint32_t kFirstSecondsMs = 8000;    // shorter than the period, so that the first save has the new point

}    // namespace

void SaveSchedule::Begin(uint32_t now)
{
    *this = SaveSchedule();
    m_nLastTick = now;
    m_nLastSave = now;
    m_bPlaying = true;
}

bool SaveSchedule::Tick(uint32_t now, int state)
{
    const uint32_t passed = now - m_nLastTick;
    const bool playing = state == kPlaying;
    const bool stayed = playing == m_bPlaying;
    m_nLastTick = now;
    m_bPlaying = playing;
    if (playing && stayed) {
        m_nPlayed = std::min(m_nPlayed + std::min(passed, kFirstSecondsMs), kFirstSecondsMs);
    }
    if (playing ? now - m_nLastSave < kPeriodMs : stayed) {
        return false;
    }
    m_nLastSave = now;
    return true;
}

bool SaveSchedule::IsPastFirstSeconds() const
{
    return !m_bAsking && (m_bMoved || m_nPlayed >= kFirstSecondsMs);
}
