// Work that other threads hand to the user-interface thread, and waiting on that thread without stopping it.
//
// Threads:   PostToUi, WakeUi and EndUiWait may be called from any thread; the rest as said below.
// Ownership: posted work is owned by the queue until it has run. What is still queued when the program
//            ends is dropped unrun.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>

namespace host {

using Clock = std::chrono::steady_clock;

// What the application loop (host/screen) provides. Without a loop (unit tests) work is run by DrainUiQueue
// and a wait on any thread is an ordinary wait.
struct UiLoop {
    virtual ~UiLoop() = default;
    virtual void Wake() = 0;                            // any thread: the loop turns at least once more
    virtual void TurnWhileWaiting(Clock::time_point until) = 0;    // user-interface thread: one small turn (paint, present, queue; no timers), blocking at most until then
};
void SetUiLoop(UiLoop* loop);    // called on the thread that becomes the user-interface thread; null at the end

bool IsUiThread();
void PostToUi(std::function<void()> work);
void WakeUi();
void DrainUiQueue();    // user-interface thread: runs what is queued now, not what that queues anew

// Ends what the user-interface thread waits for now, and every further wait until its current event has
// been left (ClearUiWaitEnd, called by the loop at depth 0).
void EndUiWait();
bool UiWaitWasEnded();
void ClearUiWaitEnd();
// Whether a Waiter was notified since a wait last looked: the turn of the loop must not sleep then.
bool UiWaitNotified();
int UiWaitDepth();    // user-interface thread: how many waits are on the stack

// Lets one thread end the waits of another: the decoder sets one for its feeding thread.
class InterruptToken {
public:
    void Interrupt();    // sticky until Reset
    void Reset();
    bool IsInterrupted() const;

    // The token of the calling thread, or null.
    static InterruptToken* Current();
    class Scope {
    public:
        explicit Scope(InterruptToken* token);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        InterruptToken* m_pPrevious;
    };

private:
    friend class Waiter;
    std::stop_token Token() const;
    mutable std::mutex m_Mutex;
    std::stop_source m_Source;    // guarded by m_Mutex; Reset takes a new one
};

enum class WaitResult { kDone, kTimedOut, kInterrupted };

// A condition that an ordinary thread and the user-interface thread can both wait for. On the
// user-interface thread the application loop keeps turning, and EndUiWait ends the wait; on a thread with
// an InterruptToken, Interrupt does. `ready` is called with `lock` held, and is asked before anything else:
// what is ready is kDone even past the deadline or after an interrupt.
class Waiter {
public:
    void NotifyAll();    // after the change, with or without the callers' mutex held
    WaitResult Wait(std::unique_lock<std::mutex>& lock, const std::function<bool()>& ready, Clock::time_point deadline);

private:
    std::condition_variable_any m_Condition;
    std::atomic<int> m_nUiWaiting{0};    // raised under the callers' mutex before `ready` is asked
};

}    // namespace host
