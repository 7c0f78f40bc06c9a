// The thread of a service (external control, the phone remote, the session bus): one GLib main context, and work handed to it.
//
// Threads:   Start, Stop and destruction on the user-interface thread; Post from any. Posted work, and every
//            source attached to Context(), runs on that thread.
// Ownership: owns the thread and the context. Work posted after Stop is dropped unrun.
#pragma once

#include <functional>
#include <mutex>
#include <thread>
#include <vector>

typedef struct _GMainContext GMainContext;
typedef struct _GMainLoop GMainLoop;
typedef struct _GSource GSource;

namespace host {

class NetworkLoop {
public:
    NetworkLoop() = default;
    ~NetworkLoop() { Stop(); }
    NetworkLoop(const NetworkLoop&) = delete;
    NetworkLoop& operator=(const NetworkLoop&) = delete;

    bool Start();    // false: out of file descriptors
    void Stop();    // runs what was posted before, then ends the thread
    void Post(std::function<void()> work);
    GMainContext* Context() const { return m_pContext; }

private:
    void RunPosted();

    GMainContext* m_pContext = nullptr;
    GMainLoop* m_pLoop = nullptr;
    GSource* m_pWake = nullptr;
    int m_nWakeFd = -1;
    std::thread m_Thread;
    std::mutex m_Mutex;
    bool m_bAccepting = false;    // guarded by m_Mutex
    std::vector<std::function<void()>> m_Posted;    // guarded by m_Mutex
};

}    // namespace host
