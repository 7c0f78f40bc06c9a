#include "host/base/UiQueue.h"

#include <cstdint>
#include <deque>
#include <thread>
#include <utility>

namespace host {
namespace {

struct PostedWork {
    uint64_t number;
    std::function<void()> run;
};

std::mutex g_QueueMutex;
std::deque<PostedWork> g_Queue;    // guarded by g_QueueMutex
uint64_t g_nPosted = 0;    // guarded by g_QueueMutex

std::atomic<UiLoop*> g_pLoop {nullptr};
std::atomic<std::thread::id> g_UiThread {};
// Calls of UiLoop::Wake under way. Counted instead of locked, so that no lock is held around a wake: the
// loop's own locks can then never be taken in the wrong order.
std::atomic<int> g_nWaking {0};
std::atomic<bool> g_bWaitEnded {false};
std::atomic<bool> g_bNotified {false};

thread_local int t_nWaitDepth = 0;
thread_local InterruptToken* t_pToken = nullptr;

}    // namespace

void SetUiLoop(UiLoop* loop)
{
    g_UiThread = loop == nullptr ? std::thread::id() : std::this_thread::get_id();
    g_pLoop = loop;
    // A wake that saw the earlier loop has to be over before that loop may go.
    for (int waking = g_nWaking; waking != 0; waking = g_nWaking) {
        g_nWaking.wait(waking);
    }
}

bool IsUiThread()
{
    return g_UiThread.load() == std::this_thread::get_id();
}

void PostToUi(std::function<void()> work)
{
    {
        const std::lock_guard lock(g_QueueMutex);
        g_Queue.push_back({++g_nPosted, std::move(work)});
    }
    WakeUi();
}

void WakeUi()
{
    ++g_nWaking;
    if (UiLoop* const loop = g_pLoop) {
        loop->Wake();
    }
    --g_nWaking;
    g_nWaking.notify_all();
}

void DrainUiQueue()
{
    std::unique_lock lock(g_QueueMutex);
    // One by one from the front: work that waits drains the queue from inside, and the order holds.
    const uint64_t last = g_nPosted;
    while (!g_Queue.empty() && g_Queue.front().number <= last) {
        std::function<void()> work = std::move(g_Queue.front().run);
        g_Queue.pop_front();
        lock.unlock();
        work();
        work = nullptr;    // what it holds may post when it goes
        lock.lock();
    }
}

void EndUiWait()
{
    g_bWaitEnded = true;
    WakeUi();
}

bool UiWaitWasEnded()
{
    return g_bWaitEnded;
}

void ClearUiWaitEnd()
{
    g_bWaitEnded = false;
}

bool UiWaitNotified()
{
    return g_bNotified;
}

int UiWaitDepth()
{
    return t_nWaitDepth;
}

void InterruptToken::Interrupt()
{
    std::stop_source source;
    {
        const std::lock_guard lock(m_Mutex);
        source = m_Source;
    }
    source.request_stop();
}

void InterruptToken::Reset()
{
    const std::lock_guard lock(m_Mutex);
    m_Source = std::stop_source();
}

bool InterruptToken::IsInterrupted() const
{
    return Token().stop_requested();
}

std::stop_token InterruptToken::Token() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Source.get_token();
}

InterruptToken* InterruptToken::Current()
{
    return t_pToken;
}

InterruptToken::Scope::Scope(InterruptToken* token)
    : m_pPrevious(std::exchange(t_pToken, token))
{
}

InterruptToken::Scope::~Scope()
{
    t_pToken = m_pPrevious;
}

void Waiter::NotifyAll()
{
    m_Condition.notify_all();
    if (m_nUiWaiting != 0) {
        g_bNotified = true;
        WakeUi();
    }
}

WaitResult Waiter::Wait(std::unique_lock<std::mutex>& lock, const std::function<bool()>& ready, Clock::time_point deadline)
{
    if (!IsUiThread()) {
        const std::stop_token token = t_pToken == nullptr ? std::stop_token() : t_pToken->Token();
        if (m_Condition.wait_until(lock, token, deadline, ready)) {
            return WaitResult::kDone;
        }
        return token.stop_requested() ? WaitResult::kInterrupted : WaitResult::kTimedOut;
    }
    ++t_nWaitDepth;
    ++m_nUiWaiting;
    WaitResult result = WaitResult::kDone;
    while (g_bNotified = false, !ready()) {
        UiLoop* const loop = g_pLoop;
        if (g_bWaitEnded || loop == nullptr) {
            result = WaitResult::kInterrupted;
            break;
        }
        if (Clock::now() >= deadline) {
            result = WaitResult::kTimedOut;
            break;
        }
        lock.unlock();
        loop->TurnWhileWaiting(deadline);
        lock.lock();
    }
    g_bNotified = true;    // for a wait around this one: it asks again
    --m_nUiWaiting;
    --t_nWaitDepth;
    return result;
}

}    // namespace host
