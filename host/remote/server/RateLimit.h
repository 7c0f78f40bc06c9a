// So many in a row, then so many a second: a bucket that fills again.
//
// Units:   events; times are host::Clock, given by the caller.
// Threads: one at a time.
#pragma once

#include <algorithm>
#include <chrono>

#include "host/base/UiQueue.h"

namespace host {

class RateLimit {
public:
    RateLimit(double burst, double perSecond)
        : m_dBurst(burst)
        , m_dPerSecond(perSecond)
        , m_dLeft(burst)
    {
    }

    bool Take(Clock::time_point now)    // false: too many
    {
        if (m_Last != Clock::time_point()) {
            m_dLeft = std::min(m_dBurst, m_dLeft + std::chrono::duration<double>(now - m_Last).count() * m_dPerSecond);
        }
        m_Last = now;
        if (m_dLeft < 1) {
            return false;
        }
        m_dLeft -= 1;
        return true;
    }

private:
    double m_dBurst;
    double m_dPerSecond;
    double m_dLeft;
    Clock::time_point m_Last;
};

}    // namespace host
