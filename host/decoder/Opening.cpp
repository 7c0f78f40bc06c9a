#include "host/decoder/Opening.h"

namespace host {

Opening::Number Opening::Begin()
{
    std::lock_guard lock(m_Mutex);
    m_nCurrent = ++m_nLast;
    m_Changed.notify_all();
    return m_nLast;
}

void Opening::End()
{
    std::lock_guard lock(m_Mutex);
    m_nCurrent = 0;
}

void Opening::Quit()
{
    std::lock_guard lock(m_Mutex);
    m_nCurrent = 0;
    m_bQuit = true;
    m_Changed.notify_all();
}

Opening::Number Opening::WaitForOther(Number done)
{
    std::unique_lock lock(m_Mutex);
    m_Changed.wait(lock, [&] { return m_bQuit || (m_nCurrent != 0 && m_nCurrent != done); });
    return m_bQuit ? 0 : m_nCurrent.load();
}

Opening::Number Opening::WaitForOther(Number done, std::chrono::milliseconds atMost)
{
    std::unique_lock lock(m_Mutex);
    if (!m_Changed.wait_for(lock, atMost, [&] { return m_bQuit || (m_nCurrent != 0 && m_nCurrent != done); })) {
        return done;
    }
    return m_bQuit ? 0 : m_nCurrent.load();
}

}    // namespace host
