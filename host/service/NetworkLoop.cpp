#include "host/service/NetworkLoop.h"

#include <glib-unix.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace host {

bool NetworkLoop::Start()
{
    m_nWakeFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (m_nWakeFd < 0) {
        return false;
    }
    m_pContext = g_main_context_new();
    m_pLoop = g_main_loop_new(m_pContext, FALSE);
    m_pWake = g_unix_fd_source_new(m_nWakeFd, G_IO_IN);
    const GUnixFDSourceFunc onWake = [](gint, GIOCondition, gpointer self) -> gboolean {
        static_cast<NetworkLoop*>(self)->RunPosted();
        return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(m_pWake, reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(onWake)), this, nullptr);
    g_source_attach(m_pWake, m_pContext);
    {
        const std::lock_guard lock(m_Mutex);
        m_bAccepting = true;
    }
    m_Thread = std::thread([this] {
        g_main_context_push_thread_default(m_pContext);
        g_main_loop_run(m_pLoop);
        g_main_context_pop_thread_default(m_pContext);
    });
    return true;
}

void NetworkLoop::Stop()
{
    if (!m_Thread.joinable()) {
        return;
    }
    Post([this] { g_main_loop_quit(m_pLoop); });
    {
        const std::lock_guard lock(m_Mutex);
        m_bAccepting = false;
    }
    m_Thread.join();
    g_source_destroy(m_pWake);
    g_source_unref(m_pWake);
    g_main_loop_unref(m_pLoop);
    g_main_context_unref(m_pContext);
    close(m_nWakeFd);
    m_pContext = nullptr;
}

void NetworkLoop::Post(std::function<void()> work)
{
    const std::lock_guard lock(m_Mutex);
    if (m_bAccepting) {
        m_Posted.push_back(std::move(work));
        eventfd_write(m_nWakeFd, 1);
    }
}

void NetworkLoop::RunPosted()
{
    eventfd_t count = 0;
    eventfd_read(m_nWakeFd, &count);
    std::vector<std::function<void()>> posted;
    {
        const std::lock_guard lock(m_Mutex);
        posted.swap(m_Posted);
    }
    for (const auto& work : posted) {
        work();
    }
}

}    // namespace host
