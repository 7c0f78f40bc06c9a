// Work that may block for ever (a disk that was pulled, a share whose server has gone), done by a thread of
// its own while the user-interface thread looks in from time to time.
//
// Errors:    Start answers false when no thread can be had; nothing runs then.
// Threads:   every operation: the thread that owns the job. The work runs on the job's thread.
// Ownership: the work owns all that it touches, and the job's state is shared with its thread, so a job may be
//            forgotten, or destroyed, while its thread still hangs. Nothing ever waits for that thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

// Asked by the work between two steps: true once nobody waits for its result.
using JobStop = std::atomic<bool>;

template <typename Result> class BackgroundJob {
public:
    using Work = std::function<Result(const JobStop& stop)>;

    BackgroundJob() = default;
    ~BackgroundJob() { Abandon(); }
    BackgroundJob(const BackgroundJob&) = delete;
    BackgroundJob& operator=(const BackgroundJob&) = delete;

    // Abandons what ran before.
    bool Start(Work work)
    {
        Abandon();
        auto state = std::make_shared<State>();
        try {
            std::thread([state, todo = std::move(work)] {
                state->result.emplace(todo(state->stop));
                const std::lock_guard lock(state->mutex);
                state->done.store(true, std::memory_order_release);
                state->finished.notify_all();
            }).detach();
        } catch (const std::system_error&) {
            return false;
        }
        m_pState = std::move(state);
        return true;
    }

    bool IsRunning() const { return m_pState != nullptr; }    // until its result is taken

    // Gives a job that is usually done at once the time for it; whether the result is there.
    bool Wait(std::chrono::milliseconds longest)
    {
        if (!m_pState) {
            return false;
        }
        std::unique_lock lock(m_pState->mutex);
        return m_pState->finished.wait_for(lock, longest, [this] { return m_pState->done.load(); });
    }

    // The result, once, when it is there.
    std::optional<Result> Take()
    {
        if (!m_pState || !m_pState->done.load(std::memory_order_acquire)) {
            return std::nullopt;
        }
        const std::shared_ptr<State> state = std::move(m_pState);
        return std::move(state->result);
    }

    void Abandon()
    {
        if (m_pState) {
            m_pState->stop = true;
            m_pState.reset();
        }
    }

private:
    struct State {
        JobStop stop {false};
        std::mutex mutex;
        std::condition_variable finished;
        std::atomic<bool> done {false};
        std::optional<Result> result;
    };
    std::shared_ptr<State> m_pState;
};
