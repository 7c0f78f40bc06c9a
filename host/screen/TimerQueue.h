// The running timers, by when they are due.
//
// Units:   host::Clock; periods are milliseconds.
// Threads: the user-interface thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include "host/base/UiQueue.h"

class CascadeTimer;

namespace screen {

class TimerQueue {
public:
    static TimerQueue& Instance();

    // Timers that are set from now on beat as if they had been set at `start`; nothing: at the moment they
    // are set. So the time that the program takes to start is inside the first beats, not before them.
    void CountFrom(std::optional<host::Clock::time_point> start) { m_Start = start; }

    uint32_t Set(CascadeTimer* owner, uint32_t periodMs);
    void Kill(CascadeTimer* owner, uint32_t id);
    void KillAll(CascadeTimer* owner);

    // Runs what is due, earliest first, each at most once, and `afterEach` behind every one. A timer killed
    // by an earlier one of the same round does not run. Up to three beats that came late are made up, one a
    // round; more are dropped.
    void RunDue(host::Clock::time_point now, const std::function<bool()>& afterEach);
    host::Clock::time_point NextDue() const;    // max(): none

private:
    struct Timer {
        CascadeTimer* owner;
        host::Clock::duration period;
        host::Clock::time_point due;
    };
    std::map<uint32_t, Timer> m_Timers;
    uint32_t m_nLastId = 0;
    std::optional<host::Clock::time_point> m_Start;
};

}    // namespace screen
