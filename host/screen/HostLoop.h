// The application loop: the one user-interface thread.
//
// A turn: input is taken, events are delivered one by one, posted work and due timers run, windows paint, the picture
// that is due is shown; then the loop sleeps until the next picture, timer, event or wake. While a call waits below
// the loop (host::Waiter), a small turn leaves out timers, messages and everything of the application's but
// OnKeyWhileWaiting.
//
// Threads:   the user-interface thread; Wake and IsListening from any.
// Ownership: owns the screen while it is started.
#pragma once

#include <atomic>
#include <memory>

#include "host/base/HostOptions.h"
#include "host/base/UiQueue.h"
#include "host/screen/KeyRouter.h"
#include "host/screen/Screen.h"

namespace screen {

inline constexpr const char* kWormholeAddress = "wormhole://localhost/orvandi.nuvid";

class SignalWatch;

class HostLoop : public host::UiLoop {
public:
    HostLoop();
    ~HostLoop() override;
    HostLoop(const HostLoop&) = delete;
    HostLoop& operator=(const HostLoop&) = delete;

    static HostLoop* Current();    // null: none is started
    static bool IsListening();    // whether messages are delivered

    void Start(const host::HostOptions& options);
    void Stop();

    void Run();    // until End
    void End();
    void TurnOnce(host::Clock::time_point until);    // one turn; sleeps at its end, at most until then
    bool HasEnded() const { return m_bEnded; }

    Screen& GetScreen() { return *m_pScreen; }
    void KeepScreenAwake();

    void Wake() override;
    void TurnWhileWaiting(host::Clock::time_point until) override;

private:
    void TakeInput();
    void OnCloseWanted();
    void DeliverEvents();
    void DeliverInputWhileWaiting();
    void Sleep(host::Clock::time_point until);
    void InstallHooks();

    std::unique_ptr<Screen> m_pScreen;
    std::unique_ptr<SignalWatch> m_pSignals;
    KeyRouter m_Keys;
    std::vector<Event> m_HeldBack;    // releases of keys that were pressed before a wait
    host::Clock::time_point m_AwakeUntil;    // max(): the screen saver may come
    bool m_bEnded = false;
};

}    // namespace screen
