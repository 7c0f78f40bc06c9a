// An application loop for tests: a thread that is the user-interface thread, or the test's own as one.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

#include "host/base/UiQueue.h"

inline constexpr std::chrono::seconds kPatience {20};    // of every wait for a condition

// Of a condition that nothing announces; looked at again and again.
inline bool WaitUntil(const std::function<bool()>& condition)
{
    const auto deadline = host::Clock::now() + kPatience;
    while (!condition()) {
        if (host::Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

class FakeUiLoop : public host::UiLoop {
public:
    void Wake() override
    {
        const std::lock_guard lock(m_Mutex);
        m_bWoken = true;
        m_Changed.notify_all();
    }
    void TurnWhileWaiting(host::Clock::time_point until) override
    {
        {
            std::unique_lock lock(m_Mutex);
            m_Changed.wait_until(lock, std::min(until, host::Clock::now() + kPatience), [this] { return m_bWoken; });
            m_bWoken = false;
        }
        ++m_nTurns;
        host::DrainUiQueue();
    }
    int Turns() const { return m_nTurns; }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    bool m_bWoken = false;
    std::atomic<int> m_nTurns {0};
};

// The calling thread is the user-interface thread as long as this lives.
class UiHere {
public:
    UiHere() { host::SetUiLoop(&m_Loop); }
    ~UiHere()
    {
        host::SetUiLoop(nullptr);
        host::ClearUiWaitEnd();
    }
    FakeUiLoop& Loop() { return m_Loop; }

private:
    FakeUiLoop m_Loop;
};

// A thread of its own is the user-interface thread as long as this lives.
class UiThread {
public:
    UiThread()
        : m_Thread([this] { Run(); })
    {
        m_Ready.get_future().wait();
    }
    ~UiThread()
    {
        host::PostToUi([this] { m_bStop = true; });
        m_Thread.join();
    }
    // Runs `work` there and waits for it.
    void Do(const std::function<void()>& work)
    {
        std::promise<void> done;
        host::PostToUi([&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }

private:
    void Run()
    {
        host::SetUiLoop(&m_Loop);
        m_Ready.set_value();
        while (!m_bStop) {
            m_Loop.TurnWhileWaiting(host::Clock::now() + kPatience);
        }
        host::SetUiLoop(nullptr);
    }

    FakeUiLoop m_Loop;
    std::promise<void> m_Ready;
    bool m_bStop = false;    // the thread's own
    std::thread m_Thread;
};
