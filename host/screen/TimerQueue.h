// The running timers, by when they are due.
//
// Units:   host::Clock; periods are milliseconds.
// Threads: the user-interface thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>

#include "host/base/UiQueue.h"

class CascadeTimer;

namespace screen {

class TimerQueue {
public:
    static TimerQueue& Instance();

    uint32_t Set(CascadeTimer* owner, uint32_t periodMs);
    void Kill(CascadeTimer* owner, uint32_t id);
    void KillAll(CascadeTimer* owner);

    // Runs what is due, earliest first, each at most once, and `afterEach` behind every one. A timer killed
    // by an earlier one of the same round does not run.
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
};

}    // namespace screen
