// Runs one piece of work after another on a thread of its own, of which only the newest counts.
//
// The user-interface thread never waits for a disk: work that was overtaken is told to stop, the newest begins as soon
// as it has, and a thread that hangs in a dead server's read is left alone until it comes back.
//
// Threads:   all calls on the user-interface thread; the work runs on the loader's thread, at most one at a time. It
//            must not touch its owner, only what it shares with it: it may go on after the owner is gone.
// Ownership: the window is not owned and outlives the loader.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

class CascadeWindow;

class ELoader {
public:
    using Work = std::function<void(const std::atomic<bool>& stop)>;

    explicit ELoader(CascadeWindow& window);    // is redrawn when work has been finished that was not overtaken
    ~ELoader();
    ELoader(const ELoader&) = delete;
    ELoader& operator=(const ELoader&) = delete;

    void Start(Work work);    // returns at once
    bool IsBusy() const;
    // Tells the work to stop and waits until it has, for a moment only: then its thread is left to itself.
    void Stop();

private:
    struct State;
    void LeaveAlone();
    std::unique_ptr<State> m_pState;
    CascadeWindow& m_Window;
};
