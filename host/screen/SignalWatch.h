// The wishes of other programs that this one end: SIGTERM, SIGINT and SIGHUP.
//
// Threads:   construct and destroy on the user-interface thread, before any other thread is started, so that all of
//            them leave these signals to the thread that waits here. `onSignal` runs on that thread.
// Ownership: owns its thread; the signals have their usual meaning again afterwards.
#pragma once

#include <csignal>
#include <functional>
#include <thread>

namespace screen {

class SignalWatch {
public:
    // `onSignal` gets the count of signals so far. The third one ends the process at once, for a loop that hangs.
    explicit SignalWatch(std::function<void(int count)> onSignal);
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    void Watch();

    std::function<void(int)> m_OnSignal;
    sigset_t m_Watched;
    sigset_t m_Before;
    std::thread m_Thread;
};

}    // namespace screen
