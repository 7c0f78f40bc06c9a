// Periodic timers.
//
// Units:   milliseconds. Up to three ticks that came late are made up, more are dropped. A timer that is
//          set in OnAppInit ticks as if it had been set when the process started.
// Threads: the user-interface thread.
#pragma once

#include <cstdint>

class CascadeTimer {
public:
    CascadeTimer() = default;
    virtual ~CascadeTimer();    // kills its timers
    CascadeTimer(const CascadeTimer&) = delete;
    CascadeTimer& operator=(const CascadeTimer&) = delete;

    virtual void OnTimer(unsigned long id) = 0;
    uint32_t SetTimer(uint32_t periodMs);    // an id, never 0
    void KillTimer(uint32_t id);
};
