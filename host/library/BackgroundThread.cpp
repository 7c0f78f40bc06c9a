#include "host/library/BackgroundThread.h"

#include <linux/ioprio.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <utility>

namespace host {
namespace {

// Each of these holds for the calling thread alone. One that the system refuses is done without.
void TakeLowestPriority()
{
    const sched_param none {};
    sched_setscheduler(0, SCHED_IDLE, &none);
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 19);
    syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, 0, IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0));
}

}    // namespace

struct BackgroundThread::End {
    std::mutex mutex;
    std::condition_variable condition;
    bool reached = false;
};

BackgroundThread::~BackgroundThread()
{
    Finish(std::chrono::milliseconds(0));
}

bool BackgroundThread::Start(const char* name, std::function<void()> procedure)
{
    if (m_Thread.joinable()) {
        return false;
    }
    m_pEnd = std::make_shared<End>();
    try {
        m_Thread = std::thread([end = m_pEnd, run = std::move(procedure)]() mutable {
            TakeLowestPriority();
            run();
            run = nullptr;    // what it owns goes before the end is told
            const std::lock_guard lock(end->mutex);
            end->reached = true;
            end->condition.notify_all();
        });
    } catch (const std::system_error&) {
        return false;
    }
    pthread_setname_np(m_Thread.native_handle(), name);
    return true;
}

bool BackgroundThread::Finish(std::chrono::milliseconds within)
{
    if (!m_Thread.joinable()) {
        return true;
    }
    bool reached = false;
    {
        std::unique_lock lock(m_pEnd->mutex);
        reached = m_pEnd->condition.wait_for(lock, within, [this] { return m_pEnd->reached; });
    }
    if (reached) {
        m_Thread.join();
    } else {
        m_Thread.detach();
    }
    return reached;
}

}    // namespace host
