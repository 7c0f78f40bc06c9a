// A function called again and again on the remote thread.
//
// Units:     milliseconds.
// Threads:   the remote thread.
// Ownership: owns its place in the main context; stopped at the latest by its destruction, also inside its own call.
#pragma once

#include <functional>

#include <glib.h>

namespace host {

class Timer {
public:
    Timer(GMainContext* context, unsigned periodMs, std::function<void()> onTick)
        : m_pContext(context)
        , m_nPeriodMs(periodMs)
        , m_OnTick(std::move(onTick))
    {
    }
    ~Timer() { Stop(); }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    void Start()    // of no effect while it runs
    {
        if (m_pSource != nullptr) {
            return;
        }
        m_pSource = g_timeout_source_new(m_nPeriodMs);
        const GSourceFunc onTick = [](gpointer self) -> gboolean {
            static_cast<Timer*>(self)->m_OnTick();
            return G_SOURCE_CONTINUE;    // of no account when the call has stopped it
        };
        g_source_set_callback(m_pSource, onTick, this, nullptr);
        g_source_attach(m_pSource, m_pContext);
    }
    void Stop()
    {
        if (m_pSource != nullptr) {
            g_source_destroy(m_pSource);
            g_source_unref(m_pSource);
            m_pSource = nullptr;
        }
    }

private:
    GMainContext* m_pContext;
    unsigned m_nPeriodMs;
    std::function<void()> m_OnTick;
    GSource* m_pSource = nullptr;
};

}    // namespace host
