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
    // True: set, and now cleared. Also ends when there is something to read from `other`.
    bool Wait(host::Clock::time_point until, int other = -1);

private:
    int m_Fd = -1;
};

}    // namespace screen
