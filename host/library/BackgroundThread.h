// A thread of lowest priority for work that nobody waits for: it gets the processor and the disk when the picture
// that plays leaves them.
//
// Threads:   Start, Finish and destruction by the owner. The procedure may be stuck on a dead disk when the program
//            ends: it is left behind then, so it owns (shares) everything that it uses and touches nothing else after
//            its owner has told it to end.
// Ownership: owns the thread until Finish.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace host {

class BackgroundThread {
public:
    BackgroundThread() = default;
    ~BackgroundThread();
    BackgroundThread(const BackgroundThread&) = delete;
    BackgroundThread& operator=(const BackgroundThread&) = delete;

    // `name` is what the system's tools show, at most 15 bytes. False: no thread could be made.
    bool Start(const char* name, std::function<void()> procedure);
    bool IsStarted() const { return m_Thread.joinable(); }

    // Waits so long for the procedure to return, after the owner has told it to. False: it was left behind.
    bool Finish(std::chrono::milliseconds within);

private:
    struct End;
    std::shared_ptr<End> m_pEnd;
    std::thread m_Thread;
};

}    // namespace host
