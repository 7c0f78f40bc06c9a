// An application loop for tests of host rooms: the thread that makes it is the user-interface thread until
// it goes. A wake is kept until the next turn; a turn runs the queue.
#pragma once

#include <condition_variable>
#include <mutex>

#include "host/base/UiQueue.h"

class FakeUiLoop : public host::UiLoop {
public:
    FakeUiLoop() { host::SetUiLoop(this); }
    ~FakeUiLoop() override
    {
        host::SetUiLoop(nullptr);
        host::ClearUiWaitEnd();
    }

    void Wake() override
    {
        const std::lock_guard lock(m_Mutex);
        m_bWoken = true;
        m_Condition.notify_all();
    }

    void TurnWhileWaiting(host::Clock::time_point until) override
    {
        {
            std::unique_lock lock(m_Mutex);
            m_Condition.wait_until(lock, until, [this] { return m_bWoken; });
            m_bWoken = false;
        }
        ++turns;
        host::DrainUiQueue();
    }

    int turns = 0;

private:
    std::mutex m_Mutex;
    std::condition_variable m_Condition;
    bool m_bWoken = false;
};
