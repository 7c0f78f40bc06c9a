// An application loop for tests on a thread of its own.
#pragma once

#include <functional>
#include <future>
#include <thread>

#include "tests/support/FakeUiLoop.h"

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
        FakeUiLoop loop;
        m_Ready.set_value();
        while (!m_bStop) {
            loop.TurnWhileWaiting(host::Clock::now() + kPatience);
        }
    }

    std::promise<void> m_Ready;
    bool m_bStop = false;    // the thread's own
    std::thread m_Thread;
};
