// When the side file of the recording that plays is saved, beside the save at its close.
//
// Units:     milliseconds of uptime, which wrap.
// Threads:   one thread.
// Ownership: a value.
#pragma once

#include <cstdint>

class SaveSchedule {
public:
    void Begin(uint32_t now);    // a recording was opened and plays
    void Moved() { m_bMoved = true; }    // the viewer chose another place in it
    // The viewer is being asked whether to go on from where it stopped the last time, until the answer.
    void SetAsking(bool asking) { m_bAsking = asking; }
    bool IsAsking() const { return m_bAsking; }

    // Whether to save now: on leaving playback, and from time to time in it. `state` is that of the engine, 1 playing.
    bool Tick(uint32_t now, int state);

    // Whether where it stands now is worth more than where it stopped the last time.
    bool IsPastFirstSeconds() const;

private:
    uint32_t m_nLastTick = 0;
    uint32_t m_nLastSave = 0;
    uint32_t m_nPlayed = 0;    // since Begin, counted only as far as it matters
    bool m_bPlaying = false;    // at the last tick
    bool m_bMoved = false;
    bool m_bAsking = false;
};
