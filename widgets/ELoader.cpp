#include "widgets/ELoader.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "platform/CascadeThread.h"
#include "platform/CascadeWindow.h"

namespace {

constexpr std::chrono::milliseconds kPatience {250};    // a decoder that was told to stop needs a few

}    // namespace

struct ELoader::State {
    std::mutex mutex;
    std::condition_variable idle;
    CascadeWindow* window = nullptr;    // null: nobody wants the work any more. This and the next three guarded by mutex
    Work next;
    std::shared_ptr<std::atomic<bool>> stop;    // of the work that runs
    bool running = false;
    CascadeThread thread;    // last: it is joined before the rest goes

    static void Run(void* context);
    std::shared_ptr<std::atomic<bool>> Take(Work& work);
    bool Finished(const std::atomic<bool>& flag);
};

std::shared_ptr<std::atomic<bool>> ELoader::State::Take(Work& work)
{
    const std::lock_guard lock(mutex);
    work = std::move(next);
    next = nullptr;
    stop = std::make_shared<std::atomic<bool>>(false);
    return stop;
}

// Whether there is more to do. The window is told when the loader is idle again, not before: it may have new work.
bool ELoader::State::Finished(const std::atomic<bool>& flag)
{
    const std::lock_guard lock(mutex);
    running = static_cast<bool>(next);
    if (!flag && window != nullptr) {
        window->Redraw();
    }
    if (!running) {
        idle.notify_all();
    }
    return !running;
}

void ELoader::State::Run(void* context)
{
    auto& state = *static_cast<State*>(context);
    bool finished = false;
    while (!finished) {
        Work work;
        const std::shared_ptr<std::atomic<bool>> flag = state.Take(work);
        if (work) {    // none: taken back meanwhile
            work(*flag);
        }
        finished = state.Finished(*flag);
    }
}

ELoader::ELoader(CascadeWindow& window)
    : m_pState(std::make_unique<State>())
    , m_Window(window)
{
    m_pState->window = &window;
}

ELoader::~ELoader()
{
    Stop();
}

void ELoader::Start(Work work)
{
    State& state = *m_pState;
    {
        const std::lock_guard lock(state.mutex);
        state.next = std::move(work);
        if (state.stop != nullptr) {
            *state.stop = true;
        }
        if (state.running) {
            return;
        }
        state.running = true;
    }
    if (!state.thread.Start(&State::Run, &state)) {    // the one before has come to its end
        State::Run(&state);
    }
}

bool ELoader::IsBusy() const
{
    const std::lock_guard lock(m_pState->mutex);
    return m_pState->running;
}

void ELoader::Stop()
{
    State& state = *m_pState;
    std::unique_lock lock(state.mutex);
    state.next = nullptr;
    if (state.stop != nullptr) {
        *state.stop = true;
    }
    if (state.idle.wait_for(lock, kPatience, [&] { return !state.running; })) {
        return;
    }
    state.window = nullptr;
    lock.unlock();
    LeaveAlone();
}

namespace {

// Threads that were left alone. They are joined when they have come back; one that never does ends with the process.
template <typename State> class LeftAlone {
public:
    ~LeftAlone()
    {
        Reap();
        for (std::unique_ptr<State>& state : m_States) {
            state.release();    // joining it would wait for its disk
        }
    }
    void Add(std::unique_ptr<State> state)
    {
        Reap();
        m_States.push_back(std::move(state));
    }

private:
    void Reap()
    {
        std::erase_if(m_States, [](const std::unique_ptr<State>& state) {
            const std::lock_guard lock(state->mutex);
            return !state->running;
        });
    }
    std::vector<std::unique_ptr<State>> m_States;
};

}    // namespace

void ELoader::LeaveAlone()
{
    static LeftAlone<State> left;
    left.Add(std::move(m_pState));
    m_pState = std::make_unique<State>();
    m_pState->window = &m_Window;
}
