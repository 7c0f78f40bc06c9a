// A wake-up that sticks until it was waited for.
//
// Threads: Set from any thread; Wait from one.
#pragma once

#include "host/base/UiQueue.h"

namespace screen {

class WakeEvent {
public:
    WakeEvent();
    ~WakeEvent();
    WakeEvent(const WakeEvent&) = delete;
    WakeEvent& operator=(const WakeEvent&) = delete;

    void Set();
    bool Wait(host::Clock::time_point until);    // true: set, and now cleared

private:
    int m_Fd = -1;
};

}    // namespace screen
