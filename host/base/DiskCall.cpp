#include "host/base/DiskCall.h"

#include <deque>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace host {

namespace {

// So many calls may hang at once before further ones are refused.
constexpr size_t kMostThreads = 32;
// The user-interface loop is not turned for what a healthy disk does.
constexpr auto kShortWait = std::chrono::milliseconds(20);

thread_local int t_nNoTurn = 0;

struct Call {
    std::function<void()> work;
    std::mutex mutex;
    std::condition_variable soon;
    Waiter later;
    bool done = false;
};

struct Pool {
    std::mutex mutex;
    std::condition_variable wanted;
    std::deque<std::shared_ptr<Call>> calls;
    size_t idle = 0;
    size_t threads = 0;
};

// Never destroyed: its threads may still run when the program ends.
Pool& ThePool()
{
    static Pool* const pool = new Pool;
    return *pool;
}

void Run(Call& call)
{
    call.work();
    call.work = nullptr;
    {
        const std::lock_guard lock(call.mutex);
        call.done = true;
    }
    call.soon.notify_all();
    call.later.NotifyAll();
}

void Serve()
{
    Pool& pool = ThePool();
    std::unique_lock lock(pool.mutex);
    while (true) {
        ++pool.idle;
        pool.wanted.wait(lock, [&] { return !pool.calls.empty(); });
        --pool.idle;
        std::shared_ptr<Call> call = std::move(pool.calls.front());
        pool.calls.pop_front();
        lock.unlock();
        Run(*call);
        call.reset();    // what it held may close a file
        lock.lock();
    }
}

// False: no thread is free and no further one is started.
bool Submit(const std::shared_ptr<Call>& call)
{
    Pool& pool = ThePool();
    const std::lock_guard lock(pool.mutex);
    if (pool.idle <= pool.calls.size()) {
        if (pool.threads >= kMostThreads) {
            return false;
        }
        try {
            std::thread(Serve).detach();
        } catch (const std::system_error&) {
            return false;
        }
        ++pool.threads;
    }
    pool.calls.push_back(call);
    pool.wanted.notify_one();
    return true;
}

}    // namespace

NoTurnScope::NoTurnScope()
{
    ++t_nNoTurn;
}

NoTurnScope::~NoTurnScope()
{
    --t_nNoTurn;
}

bool CanEndWait()
{
    return IsUiThread() ? t_nNoTurn == 0 : InterruptToken::Current() != nullptr;
}

WaitResult CallDisk(std::function<void()> work, Clock::duration patience)
{
    if (!CanEndWait()) {
        work();
        return WaitResult::kDone;
    }
    const auto call = std::make_shared<Call>();
    call->work = std::move(work);
    if (!Submit(call)) {
        return WaitResult::kInterrupted;
    }
    const Clock::time_point deadline = Clock::now() + patience;
    std::unique_lock lock(call->mutex);
    const auto done = [&] { return call->done; };
    if (IsUiThread() && call->soon.wait_for(lock, kShortWait, done)) {
        return WaitResult::kDone;
    }
    return call->later.Wait(lock, done, deadline);
}

}    // namespace host
