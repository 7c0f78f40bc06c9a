#include "host/screen/TimerQueue.h"

#include <algorithm>
#include <vector>

#include "platform/CascadeTimer.h"

namespace screen {

using host::Clock;

namespace {
// The application's first steps are counted in beats: start-up work between them must not make it later.
constexpr long kMadeUp = 3;
}    // namespace

TimerQueue& TimerQueue::Instance()
{
    static TimerQueue queue;
    return queue;
}

uint32_t TimerQueue::Set(CascadeTimer* owner, uint32_t periodMs)
{
    do {
        ++m_nLastId;
    } while (m_nLastId == 0 || m_Timers.count(m_nLastId) != 0);
    const Clock::duration period = std::chrono::milliseconds(std::max(periodMs, 1U));
    m_Timers[m_nLastId] = {owner, period, m_Start.value_or(Clock::now()) + period};
    host::WakeUi();
    return m_nLastId;
}

void TimerQueue::Kill(CascadeTimer* owner, uint32_t id)
{
    const auto found = m_Timers.find(id);
    if (found != m_Timers.end() && found->second.owner == owner) {
        m_Timers.erase(found);
    }
}

void TimerQueue::KillAll(CascadeTimer* owner)
{
    std::erase_if(m_Timers, [&](const auto& timer) { return timer.second.owner == owner; });
}

void TimerQueue::RunDue(Clock::time_point now, const std::function<bool()>& afterEach)
{
    std::vector<std::pair<Clock::time_point, uint32_t>> due;
    for (const auto& [id, timer] : m_Timers) {
        if (timer.due <= now) {
            due.emplace_back(timer.due, id);
        }
    }
    std::sort(due.begin(), due.end());
    for (const auto& [when, id] : due) {
        const auto found = m_Timers.find(id);
        if (found == m_Timers.end()) {
            continue;
        }
        Timer& timer = found->second;
        const auto late = (now - timer.due) / timer.period;
        timer.due += timer.period * (late > kMadeUp ? late + 1 : 1);
        timer.owner->OnTimer(id);    // may kill itself and others
        if (!afterEach()) {
            return;
        }
    }
}

Clock::time_point TimerQueue::NextDue() const
{
    Clock::time_point next = Clock::time_point::max();
    for (const auto& [id, timer] : m_Timers) {
        next = std::min(next, timer.due);
    }
    return next;
}

}    // namespace screen
