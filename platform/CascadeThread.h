// A thread of the platform that runs one procedure.
//
// Threads:   Start and WaitUntilFinished are called by the owner; the procedure runs on the new thread.
// Ownership: the destructor waits for the procedure to end.
#pragma once

#include <thread>

class CascadeThread {
public:
    using Procedure = void (*)(void* context);
    CascadeThread() = default;
    ~CascadeThread();
    CascadeThread(const CascadeThread&) = delete;
    CascadeThread& operator=(const CascadeThread&) = delete;

    bool Start(Procedure procedure, void* context);    // waits for a procedure that still runs
    void WaitUntilFinished();

private:
    std::thread m_Thread;
};
